#pragma once

#include "pathscope/export.h"

#include <QImage>
#include <QSize>
#include <QString>

namespace pathscope {

/**
 * A picture of a sliced file without a window or OpenGL; may run in any thread.
 *
 * The paths are drawn in the colours of the extruders, from the front right and above, on a
 * transparent ground.
 *
 * @param size in device pixels
 * @return a null picture when the file cannot be read, or shows nothing
 */
PATHSCOPE_EXPORT QImage renderThumbnail(const QString& file, QSize size);

} // namespace pathscope
