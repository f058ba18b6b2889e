#pragma once

#include <json/value.h>

#include <QMetaType>

#include <vector>

namespace trovek {

/** What goes wrong around one request of a window. */
enum class FaultKind {
    /** The answer comes, but late. */
    Late,
    Never,
    NamedError,
    /** An error without data. */
    BareError,
    OddNull,
    OddText,
    OddList,
    OddObject,
    DropBefore,
    DropAfter,
    /** The service ends, and the window has heard of it. */
    StopBefore,
    /** The service has ended, and the window finds it out by its request. */
    StopUnseen,
    StopDuring,
    KillDuring,
    /** The machine goes, and the window has heard of it. */
    UnplugBefore,
    /** The machine goes with the request. */
    UnplugAtOnce,
    /** While the request is carried out. */
    UnplugDuring,
    /** The machine goes, and comes back on another port. */
    OtherPort,
    /** The machine goes, and comes back with a firmware whose memory is laid out otherwise. */
    OtherFirmware,
    UploadFailsAt0,
    UploadFailsAt50,
    UploadFailsAt99,
};

const char* nameOf(FaultKind kind);
/** Those that any request may meet; the others need one that takes its time, or an upload. */
const std::vector<FaultKind>& usualFaults();

/** Whether the window hears of it before the request. */
bool isHeardOfBefore(FaultKind kind);
/** What the service answers instead; for the kinds that are odd. */
Json::Value oddAnswer(FaultKind kind);

} // namespace trovek

Q_DECLARE_METATYPE(trovek::FaultKind)
