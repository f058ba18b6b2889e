#pragma once

#include <QIcon>

namespace ostrand {

/** One of the host's own pictures by its name, for example "open". */
QIcon icon(const char* name);

/** The program's icon with a picture for each size. */
QIcon applicationIcon();

} // namespace ostrand
