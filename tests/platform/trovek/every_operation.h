#pragma once

#include <trovek/machine_name.h>
#include <trovek/slicer_configuration.h>
#include <trovek/trovek.h>

#include <json/value.h>

#include <QByteArray>
#include <QMetaType>

#include <functional>

namespace trovek {

class ScriptedService;

/** A call of one operation, its result thrown away. */
using Operation = std::function<void(Trovek&)>;

const MachineName kLeft("left");

/** Ends the program when the text is none: it is the test's own. */
Json::Value json(const QByteArray& text);
SlicerConfiguration configuration();

/**
 * Test data: a row for each operation that asks the service, with the columns "operation",
 * "method", "params" (JSON, what is sent) and "deadlineMs".
 */
void addEveryOperation();
/** What the operations of addEveryOperation() need to succeed. */
void addWhatEveryOperationNeeds(ScriptedService& service);

} // namespace trovek

Q_DECLARE_METATYPE(trovek::Operation)
