#include "pathscope/camera_gestures.h"

#include <cmath>

namespace pathscope {

namespace {

constexpr double kZoomAStep = 1.15;
constexpr double kUnitsAStep = 120;

} // namespace

bool CameraGestures::press(Qt::MouseButton button, Qt::KeyboardModifiers modifiers,
                           QPointF position)
{
    const bool isLeft = button == Qt::LeftButton;
    if (m_kind != Kind::None || (!isLeft && button != Qt::MiddleButton))
        return false;
    m_kind = isLeft && (modifiers & Qt::ShiftModifier) == 0 ? Kind::Turn : Kind::Move;
    m_button = button;
    m_last = position;
    return true;
}

bool CameraGestures::drag(Camera& camera, Qt::MouseButtons held, QPointF position, QSizeF window,
                          bool orthographic)
{
    if (m_kind != Kind::None && (held & m_button) == 0)
        release(m_button);
    if (m_kind == Kind::None)
        return false;
    const Camera before = camera;
    const QPointF delta = position - m_last;
    m_last = position;
    if (m_kind == Kind::Turn)
        camera.orbit(delta);
    else
        camera.pan(delta, window, orthographic);
    return camera != before;
}

void CameraGestures::release(Qt::MouseButton button)
{
    if (button != m_button)
        return;
    m_kind = Kind::None;
    m_button = Qt::NoButton;
}

bool CameraGestures::wheel(Camera& camera, int units, QPointF position, QSizeF window,
                           bool orthographic)
{
    const Camera before = camera;
    camera.zoom(float(std::pow(kZoomAStep, units / kUnitsAStep)), position, window, orthographic);
    return camera != before;
}

} // namespace pathscope
