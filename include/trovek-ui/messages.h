#pragma once

/**
 * Every message that the library and its host show, each a class of its own in the namespace
 * `message`: make it, call exec(). See message.h for what they share.
 */

#include "trovek-ui/messages/files.h"
#include "trovek-ui/messages/firmware.h"
#include "trovek-ui/messages/models.h"
#include "trovek-ui/messages/onboard_preferences.h"
#include "trovek-ui/messages/printing.h"
#include "trovek-ui/messages/profiles.h"
#include "trovek-ui/messages/scans.h"
#include "trovek-ui/messages/service.h"
#include "trovek-ui/messages/sharing.h"
