#include "model_picture.h"

#include <geometry/mesh.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace ostrand {
namespace {

using trovek::geometry::Mesh;
using trovek::geometry::Vector;

/** Drawn this much larger, and made smaller afterwards, so that edges are smooth. */
constexpr int kOversampling = 2;
/** Part of the picture that stays free on each side. */
constexpr double kMargin = 0.04;
constexpr double kTurnDegrees = 30;
constexpr double kTiltDegrees = 28;
constexpr double kPi = 3.14159265358979323846;
/** Of a surface in full light. */
constexpr std::array<double, 3> kColor{118, 176, 222};
/** Light from everywhere, so that what is turned away is not black. */
constexpr double kAmbient = 0.34;
constexpr std::size_t kTrianglesBetweenLooks = 4096;

/** To the right, up, and towards the viewer. */
class Camera
{
public:
    Camera()
    {
        const double turn = kTurnDegrees * kPi / 180;
        const double tilt = kTiltDegrees * kPi / 180;
        m_right = {std::cos(turn), std::sin(turn), 0};
        const Vector away{-std::sin(turn), std::cos(turn), 0};
        m_up = std::cos(tilt) * Vector{0, 0, 1} + std::sin(tilt) * away;
        m_toViewer = cross(m_right, m_up);
    }

    Vector see(const Vector& point) const
    {
        return {dot(m_right, point), dot(m_up, point), dot(m_toViewer, point)};
    }

private:
    Vector m_right;
    Vector m_up;
    Vector m_toViewer;
};

class Canvas
{
public:
    explicit Canvas(const QSize& size)
        : m_image(size, QImage::Format_ARGB32_Premultiplied)
        , m_depth(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()),
                  -std::numeric_limits<float>::infinity())
    {
        m_image.fill(Qt::transparent);
    }

    /** Corners in pixels, y downwards, z towards the viewer. */
    void drawTriangle(const std::array<Vector, 3>& corners, QRgb color)
    {
        const auto [a, b, c] = corners;
        const double area = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
        if (area == 0)
            return;
        const int left = std::max(0, static_cast<int>(std::floor(std::min({a.x, b.x, c.x}))));
        const int right =
            std::min(m_image.width() - 1, static_cast<int>(std::ceil(std::max({a.x, b.x, c.x}))));
        const int top = std::max(0, static_cast<int>(std::floor(std::min({a.y, b.y, c.y}))));
        const int bottom =
            std::min(m_image.height() - 1, static_cast<int>(std::ceil(std::max({a.y, b.y, c.y}))));
        for (int y = top; y <= bottom; ++y) {
            auto* line = reinterpret_cast<QRgb*>(m_image.scanLine(y));
            float* depths = m_depth.data() + static_cast<std::ptrdiff_t>(y) * m_image.width();
            for (int x = left; x <= right; ++x) {
                // The parts of the three corners at the middle of the pixel.
                const double px = x + 0.5;
                const double py = y + 0.5;
                const double v = ((px - a.x) * (c.y - a.y) - (c.x - a.x) * (py - a.y)) / area;
                const double w = ((b.x - a.x) * (py - a.y) - (px - a.x) * (b.y - a.y)) / area;
                if (v < 0 || w < 0 || v + w > 1)
                    continue;
                const auto depth = static_cast<float>(a.z + v * (b.z - a.z) + w * (c.z - a.z));
                if (depth <= depths[x])
                    continue;
                depths[x] = depth;
                line[x] = color;
            }
        }
    }

    const QImage& image() const { return m_image; }

private:
    QImage m_image;
    std::vector<float> m_depth;
};

QRgb shade(const Vector& normal)
{
    static const Vector light = trovek::geometry::normalized({-0.45, 0.65, 0.75});
    const double brightness = kAmbient + (1 - kAmbient) * std::max(0.0, dot(normal, light));
    const auto part = [brightness](double value) {
        return static_cast<int>(std::lround(value * brightness));
    };
    return qRgb(part(kColor[0]), part(kColor[1]), part(kColor[2]));
}

/** Turns what the camera sees into pixels, in the middle of the picture. */
void fit(std::vector<Vector>& points, const QSize& size)
{
    Vector low = points.front();
    Vector high = points.front();
    for (const Vector& point : points) {
        low = {std::min(low.x, point.x), std::min(low.y, point.y), 0};
        high = {std::max(high.x, point.x), std::max(high.y, point.y), 0};
    }
    const double width = std::max(high.x - low.x, 1e-9);
    const double height = std::max(high.y - low.y, 1e-9);
    const double scale = (1 - 2 * kMargin) * std::min(size.width() / width, size.height() / height);
    const double left = (size.width() - scale * width) / 2;
    const double top = (size.height() - scale * height) / 2;
    for (Vector& point : points)
        point = {left + scale * (point.x - low.x), top + scale * (high.y - point.y),
                 scale * point.z};
}

} // namespace

QImage renderModel(const Mesh& mesh, const QSize& size, const std::atomic<bool>& canceled)
{
    if (mesh.triangles.empty() || size.isEmpty())
        return QImage();
    const Camera camera;
    std::vector<Vector> points;
    points.reserve(mesh.vertices.size());
    for (const Vector& vertex : mesh.vertices)
        points.push_back(camera.see(vertex));
    const QSize large = size * kOversampling;
    fit(points, large);

    Canvas canvas(large);
    std::size_t count = 0;
    for (const auto& triangle : mesh.triangles) {
        if (++count % kTrianglesBetweenLooks == 0 && canceled)
            return QImage();
        const std::array<Vector, 3> corners{points[triangle[0]], points[triangle[1]],
                                            points[triangle[2]]};
        Vector normal = cross(corners[1] - corners[0], corners[2] - corners[0]);
        const double size2 = length(normal);
        if (size2 == 0)
            continue;
        // The rows of the picture run downwards; and what is seen from behind is lit as well.
        normal = 1 / size2 * Vector{normal.x, -normal.y, normal.z};
        canvas.drawTriangle(corners, shade(normal.z < 0 ? -normal : normal));
    }
    return canvas.image().scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace ostrand
