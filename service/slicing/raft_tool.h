#pragma once

#include <QString>

#include <functional>

namespace trovek::service {

struct SliceSettings;

/** Whether raft and supports come from different tools, which prusa-slicer cannot do by itself. */
bool raftHasItsOwnTool(const SliceSettings& settings);

/**
 * Lets the raft of what prusa-slicer has sliced be printed by the raft's tool.
 *
 * The slicer prints it with the tool of the supports. Everything below the model's first layer
 * counts as raft. The file is written anew as a whole, or left as it is.
 * @param path G-code with relative extruder distances, beginning with tool 0
 * @param goOn asked often; false ends it
 * @throws std::runtime_error for a user when it cannot be read or written
 * @throws GCodeCanceled
 */
void printRaftWithItsTool(const SliceSettings& settings, const QString& path,
                          const std::function<bool()>& goOn);

} // namespace trovek::service
