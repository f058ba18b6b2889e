#pragma once

#include "trovek-ui/export.h"

#include <trovek/firmware_version.h>

#include <QIcon>
#include <QPixmap>
#include <QString>

class QWidget;

namespace trovek {

/**
 * The picture; on a screen of high density the one whose name ends with "@2x", where there is one.
 * @throws std::runtime_error "Pixmap file not found", which is logged too
 */
TROVEK_UI_EXPORT QPixmap loadPixmap(const QString& path);

/**
 * The icon of a button with three pictures.
 * @param base the path without "_up.png", "_over.png" and "_down.png"
 * @throws std::runtime_error as loadPixmap()
 */
TROVEK_UI_EXPORT QIcon loadButtonIcon(const QString& base);

/** Opens the file in the system's text editor and does not wait. */
TROVEK_UI_EXPORT void openInNotepad(const QString& path);

/** The version's text, or "Invalid version number". */
TROVEK_UI_EXPORT QString firmwareVersionToString(const FirmwareVersion& version);

/**
 * Lets the wheel over spin boxes and combo boxes scroll the page until they are clicked.
 *
 * A wheel over a box without the focus otherwise changes a value that the user did not mean.
 * Applies to the widget itself and to every such box that is inside it now.
 */
TROVEK_UI_EXPORT void ignoreWheelUnlessFocused(QWidget* widget);

} // namespace trovek
