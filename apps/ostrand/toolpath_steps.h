#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace pathscope {
class ToolpathGLWidget;
}

namespace ostrand {

class Host;
class MainWindow;
class Robot;

/** Saves a picture of a window under a name, with a caption. */
using Photographer =
    std::function<void(QWidget& window, const QString& name, const QString& caption)>;

/** Waits until the file is read and its picture stands; without OpenGL, until its text does. */
void waitForToolpaths(Robot& robot, pathscope::ToolpathGLWidget& view);

/**
 * Looks through the open G-code file with the keys of its view: down by layers, without
 * perspective, in the colors of the extruders; then all is as it was.
 *
 * @throws std::runtime_error when a key does not do what it should
 */
void lookThroughToolpaths(MainWindow& window, Robot& robot, const Photographer& photograph);

/** A sliced file in the host's window and in the dialog that asks whether to go on with it. */
void photographPreview(Host& host, Robot& robot, const QString& file,
                       const Photographer& photograph);

} // namespace ostrand
