#pragma once

#include "trovek-ui/export.h"

namespace trovek::service {

enum class Action : int;
class ServiceManager;

/** Runs the action; logs and shows why none was run. */
TROVEK_UI_EXPORT void control(ServiceManager& manager, Action action);

} // namespace trovek::service
