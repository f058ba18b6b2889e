#pragma once

#include <QString>

namespace trovek {

/** Opens the file in the system's text editor and does not wait; one file for each system. */
void startTextEditor(const QString& path);

} // namespace trovek
