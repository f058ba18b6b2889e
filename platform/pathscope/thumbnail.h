#pragma once

#include "pathscope/export.h"

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>

#include <vector>

namespace pathscope {

struct Toolpaths;

/**
 * A picture of a sliced file without a window or OpenGL; may run in any thread.
 *
 * What remains of the print is drawn from the front right and above, as large as fits, on a
 * transparent ground: without travels, skirts, brims and prime towers.
 *
 * @param size     in device pixels, up to 8192 each way
 * @param colours  one an extruder; what is missing gets a colour of its own
 * @return a null picture when the file cannot be read, or shows nothing
 */
PATHSCOPE_EXPORT QImage renderThumbnail(const QString& file, QSize size,
                                        const std::vector<QColor>& colours = {});

/** The same of paths that were read already. */
PATHSCOPE_EXPORT QImage renderThumbnail(const Toolpaths& toolpaths, QSize size,
                                        const std::vector<QColor>& colours = {});

} // namespace pathscope
