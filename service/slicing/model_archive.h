#pragma once

#include <QByteArray>

#include <functional>

class QIODevice;

namespace trovek::service {

/** What becomes of the tools that a model's file names for its parts or paints on them. */
enum class PartTools { Kept, Dropped };

/**
 * Copies a 3MF with its shapes and places, and of its settings only which parts there are and which
 * tool prints them.
 *
 * The rest of what a slicer may have left in it would count more than the request, and could even
 * name programs to run.
 * @param goOn asked often; false ends it
 * @throws std::runtime_error the second half of a sentence such as "it is damaged"
 * @throws WriteError, GCodeCanceled
 */
void copyThreeMf(QIODevice& input, QIODevice& output, PartTools tools,
                 const std::function<bool()>& goOn);

/** The same of an AMF, packed or not; the copy is not. */
void copyAmf(QIODevice& input, QIODevice& output, PartTools tools,
             const std::function<bool()>& goOn);

/** "3mf" or "amf": what a thing is inside; empty for anything else. */
QByteArray formatOfThing(QIODevice& input);

} // namespace trovek::service
