#pragma once

#include "pathscope/camera.h"
#include "pathscope/export.h"

#include <QPointF>
#include <QSizeF>
#include <Qt>

namespace pathscope {

/**
 * What the mouse does to a camera: the left button turns it, and moves it with Shift; the middle
 * one moves it; the wheel brings it nearer. Numbers only.
 *
 * Positions are logical pixels from the picture's top left corner.
 */
class PATHSCOPE_EXPORT CameraGestures
{
public:
    enum class Kind { None, Turn, Move };

    Kind kind() const { return m_kind; }

    /** @return false when the button means nothing here, or another one is held already */
    bool press(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, QPointF position);
    /**
     * @param held  the buttons that are down; a release that nobody told of ends the gesture
     * @return false when the camera is as before
     */
    bool drag(Camera& camera, Qt::MouseButtons held, QPointF position, QSizeF window,
              bool orthographic);
    /** Of the button that was pressed first; others mean nothing. */
    void release(Qt::MouseButton button);

    /**
     * @param units  as the wheel tells them: eighths of a degree, above 0 away from the user
     * @return false when the camera is as before
     */
    static bool wheel(Camera& camera, int units, QPointF position, QSizeF window,
                      bool orthographic);

private:
    Kind m_kind = Kind::None;
    Qt::MouseButton m_button = Qt::NoButton;
    QPointF m_last;
};

} // namespace pathscope
