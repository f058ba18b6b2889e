#pragma once

#include <QImage>
#include <QSize>

#include <atomic>

namespace trovek::geometry {
struct Mesh;
}

namespace ostrand {

/**
 * The model as it lies on the platform, seen from the front, a little from the right and above, lit
 * from the upper left; as large as it fits, on a transparent ground.
 *
 * Runs on any thread, and needs neither OpenGL nor the widgets.
 * @param size     in pixels
 * @param canceled looked at now and then; the picture is null when it turns true
 */
QImage renderModel(const trovek::geometry::Mesh& mesh, const QSize& size,
                   const std::atomic<bool>& canceled);

} // namespace ostrand
