#pragma once

#include "trovek-ui/export.h"

class QSettings;

namespace trovek {

class TrovekQt;
class WidgetFactory;

/**
 * From now on until the program ends, warns of every machine that comes with a firmware older than
 * the host expects, and offers to upgrade it.
 *
 * A machine that is warned about already is not warned about twice at once. The user may switch
 * the warning off, which is kept under "MessageBox/skipWarningForOldFirmware".
 * @param facade   not owned; must outlive the program's last event loop, as the other two must
 * @param factory  opens the window in which firmware is upgraded
 * @param settings may be null: the warning cannot be switched off then
 */
TROVEK_UI_EXPORT void enableOldFirmwareCheck(TrovekQt& facade, WidgetFactory* factory,
                                             QSettings* settings);

} // namespace trovek
