#include "pathscope/camera.h"

#include <QtMath>

#include <algorithm>
#include <array>
#include <cmath>

namespace pathscope {

namespace {

/** Beyond a kilometre floats no longer tell tenths of a millimetre apart. */
constexpr float kFarthestPoint = 1e6F;
constexpr float kNearest = 0.1F;
constexpr float kFarthest = 1e9F;
/** A point or a line is fitted as if it were this large. */
constexpr float kSmallestExtent = 1;
constexpr double kMargin = 1.08;
constexpr double kDegreesAPixel = 0.4;
/** More between near and far than this, and 24 bits of depth no longer part two layers. */
constexpr float kDepthRatio = 1e-4F;

double halfHeightAtOne()
{
    return std::tan(qDegreesToRadians(static_cast<double>(Camera::kFieldOfView)) / 2);
}

/** A window is a pixel before its first layout, and never as large as numbers can be. */
double heldPixels(double length)
{
    return std::isfinite(length) ? std::clamp(length, 1.0, 1e6) : 1.0;
}

double aspectOf(QSizeF window)
{
    return heldPixels(window.width()) / heldPixels(window.height());
}

bool isFinite(QPointF point)
{
    return std::isfinite(point.x()) && std::isfinite(point.y());
}

float held(float coordinate)
{
    return std::clamp(coordinate, -kFarthestPoint, kFarthestPoint);
}

float heldDistance(double distance)
{
    return static_cast<float>(std::clamp<double>(distance, kNearest, kFarthest));
}

/** A box turned inside out, or of numbers that are none. */
bool isNonsense(const Orvane::BoundingBox& box)
{
    return !(box.xMin <= box.xMax && box.yMin <= box.yMax && box.zMin <= box.zMax);
}

struct Extent
{
    float min;
    float max;
};

Extent heldExtent(float min, float max)
{
    return {held(min), held(max)};
}

std::array<QVector3D, 8> cornersOf(const Orvane::BoundingBox& box)
{
    const Extent x = heldExtent(box.xMin, box.xMax);
    const Extent y = heldExtent(box.yMin, box.yMax);
    const Extent z = heldExtent(box.zMin, box.zMax);
    std::array<QVector3D, 8> corners;
    for (unsigned i = 0; i < corners.size(); ++i) {
        corners[i] = QVector3D((i & 1U) != 0 ? x.max : x.min, (i & 2U) != 0 ? y.max : y.min,
                               (i & 4U) != 0 ? z.max : z.min);
    }
    return corners;
}

} // namespace

void Camera::setPreset(Preset preset)
{
    switch (preset) {
    case Top:
        m_azimuth = 0;
        m_elevation = 90;
        return;
    case Front:
        m_azimuth = 0;
        m_elevation = 0;
        return;
    case Side:
        m_azimuth = 90;
        m_elevation = 0;
        return;
    case Isometric:
        m_azimuth = Camera().m_azimuth;
        m_elevation = Camera().m_elevation;
        return;
    }
}

void Camera::fit(const Orvane::BoundingBox& box, QSizeF window, bool orthographic)
{
    if (isNonsense(box))
        return;
    const auto corners = cornersOf(box);
    m_target = (corners.front() + corners.back()) / 2;

    const double tangent = halfHeightAtOne();
    const double aspect = aspectOf(window);
    double needed = kSmallestExtent / 2 / tangent / std::min(aspect, 1.0);
    for (const QVector3D& corner : corners) {
        const QVector3D offset = corner - m_target;
        const double sideways = std::abs(QVector3D::dotProduct(offset, right())) / aspect;
        const double upwards = std::abs(QVector3D::dotProduct(offset, up()));
        // A corner nearer to the eye than the target looks larger, in perspective only.
        const double nearer = orthographic ? 0 : QVector3D::dotProduct(offset, back());
        needed = std::max(needed, nearer + std::max(sideways, upwards) * kMargin / tangent);
    }
    m_distance = heldDistance(needed);
}

void Camera::orbit(QPointF delta)
{
    if (!isFinite(delta))
        return;
    m_azimuth = static_cast<float>(std::remainder(m_azimuth - delta.x() * kDegreesAPixel, 360));
    m_elevation =
        static_cast<float>(std::clamp(m_elevation + delta.y() * kDegreesAPixel, -90.0, 90.0));
}

void Camera::pan(QPointF delta, QSizeF window, bool /*orthographic*/)
{
    if (!isFinite(delta))
        return;
    const double scale = millimetresPerPixel(window);
    moveTarget(-delta.x() * scale, delta.y() * scale);
}

void Camera::zoom(float factor, QPointF cursor, QSizeF window, bool /*orthographic*/)
{
    if (!std::isfinite(factor) || factor <= 0 || !isFinite(cursor))
        return;
    const double before = millimetresPerPixel(window);
    m_distance = heldDistance(static_cast<double>(m_distance) / factor);
    const double nearer = before - millimetresPerPixel(window);
    moveTarget((cursor.x() - heldPixels(window.width()) / 2) * nearer,
               (heldPixels(window.height()) / 2 - cursor.y()) * nearer);
}

QVector3D Camera::eye() const
{
    return m_target + back() * m_distance;
}

QMatrix4x4 Camera::view() const
{
    // Not by lookAt(): straight from above it does not know where up is.
    const QVector3D x = right();
    const QVector3D y = up();
    const QVector3D z = back();
    const QVector3D at = eye();
    return {x.x(), x.y(), x.z(), -QVector3D::dotProduct(x, at),
            y.x(), y.y(), y.z(), -QVector3D::dotProduct(y, at),
            z.x(), z.y(), z.z(), -QVector3D::dotProduct(z, at),
            0,     0,     0,     1};
}

QMatrix4x4 Camera::projection(const Orvane::BoundingBox& box, QSizeF window,
                              bool orthographic) const
{
    float nearPlane = m_distance;
    float farPlane = m_distance;
    if (!isNonsense(box)) {
        for (const QVector3D& corner : cornersOf(box)) {
            const float depth = m_distance - QVector3D::dotProduct(corner - m_target, back());
            nearPlane = std::min(nearPlane, depth);
            farPlane = std::max(farPlane, depth);
        }
    }
    const float slack = std::max((farPlane - nearPlane) * 0.01F, m_distance * 0.01F);
    nearPlane -= slack;
    farPlane += slack;

    const auto aspect = static_cast<float>(aspectOf(window));
    QMatrix4x4 matrix;
    if (orthographic) {
        const auto half = static_cast<float>(m_distance * halfHeightAtOne());
        matrix.ortho(-half * aspect, half * aspect, -half, half, nearPlane, farPlane);
    } else {
        nearPlane = std::max(nearPlane, farPlane * kDepthRatio);
        matrix.perspective(kFieldOfView, aspect, nearPlane, farPlane);
    }
    return matrix;
}

float Camera::millimetresPerPixel(QSizeF window) const
{
    return static_cast<float>(2 * m_distance * halfHeightAtOne() / heldPixels(window.height()));
}

bool Camera::operator==(const Camera& other) const
{
    return m_target == other.m_target && m_distance == other.m_distance &&
           m_azimuth == other.m_azimuth && m_elevation == other.m_elevation;
}

QVector3D Camera::right() const
{
    const double azimuth = qDegreesToRadians(static_cast<double>(m_azimuth));
    return {static_cast<float>(std::cos(azimuth)), static_cast<float>(std::sin(azimuth)), 0};
}

QVector3D Camera::up() const
{
    return QVector3D::crossProduct(back(), right());
}

QVector3D Camera::back() const
{
    const double azimuth = qDegreesToRadians(static_cast<double>(m_azimuth));
    const double elevation = qDegreesToRadians(static_cast<double>(m_elevation));
    return {static_cast<float>(std::sin(azimuth) * std::cos(elevation)),
            static_cast<float>(-std::cos(azimuth) * std::cos(elevation)),
            static_cast<float>(std::sin(elevation))};
}

void Camera::moveTarget(double rightwards, double upwards)
{
    const auto limited = [](double length) {
        return static_cast<float>(
            std::clamp<double>(length, -2 * kFarthestPoint, 2 * kFarthestPoint));
    };
    const QVector3D moved = m_target + right() * limited(rightwards) + up() * limited(upwards);
    m_target = QVector3D(held(moved.x()), held(moved.y()), held(moved.z()));
}

} // namespace pathscope
