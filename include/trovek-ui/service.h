#pragma once

#include "trovek-ui/export.h"

#include <QIcon>

/**
 * Control of the background service as a service of the system.
 *
 * Each action looks whether the service is there and can be asked, and then lets the system run it,
 * which asks the user for an administrator's rights. It blocks until the system's command is done,
 * for ten seconds at most. What goes wrong before is shown to the user; whether the service really
 * changed shows in the connection to it. GUI thread only.
 */
namespace trovek::service {

TROVEK_UI_EXPORT void start();
TROVEK_UI_EXPORT void stop();
TROVEK_UI_EXPORT void restart();

/** Whether the actions exist on this system. */
TROVEK_UI_EXPORT bool actions_supported();

/** The button icon that stands for a service that cannot be reached. */
TROVEK_UI_EXPORT QIcon errorIcon();

} // namespace trovek::service
