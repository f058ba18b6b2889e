#pragma once

#include "window_operation.h"

#include <trovek-ui/trovekqt.h>

#include <QObject>
#include <QTemporaryDir>

#include <vector>

namespace trovek {

/** Every fault at every operation of some windows: the window stays usable, and tells the truth. */
class FaultTable : public QObject
{
    Q_OBJECT

public:
    explicit FaultTable(std::vector<WindowOperation> operations);

private slots:
    void staysUsable_data();
    void staysUsable();

private:
    const std::vector<WindowOperation> m_operations;
    const QTemporaryDir m_temporary;
    /** One for the process, as in a host: the export mover keeps the first that it is given. */
    TrovekQt m_facade;
};

} // namespace trovek
