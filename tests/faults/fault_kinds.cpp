#include "fault_kinds.h"

namespace trovek {

const char* nameOf(FaultKind kind)
{
    switch (kind) {
    case FaultKind::Late:
        return "answers late";
    case FaultKind::Never:
        return "never answers";
    case FaultKind::NamedError:
        return "an error with a name";
    case FaultKind::BareError:
        return "an error without data";
    case FaultKind::OddNull:
        return "answers null";
    case FaultKind::OddText:
        return "answers a text";
    case FaultKind::OddList:
        return "answers a list";
    case FaultKind::OddObject:
        return "answers another object";
    case FaultKind::DropBefore:
        return "the link ends before the answer";
    case FaultKind::DropAfter:
        return "the link ends after the answer";
    case FaultKind::StopBefore:
        return "the service has stopped";
    case FaultKind::StopUnseen:
        return "the service has just stopped";
    case FaultKind::StopDuring:
        return "the service stops meanwhile";
    case FaultKind::KillDuring:
        return "the service is killed meanwhile";
    case FaultKind::UnplugBefore:
        return "the machine has gone";
    case FaultKind::UnplugAtOnce:
        return "the machine goes with the request";
    case FaultKind::UnplugDuring:
        return "the machine goes meanwhile";
    case FaultKind::OtherPort:
        return "the machine is on another port";
    case FaultKind::OtherFirmware:
        return "the machine has another firmware";
    case FaultKind::UploadFailsAt0:
        return "fails at 0 %";
    case FaultKind::UploadFailsAt50:
        return "fails at 50 %";
    case FaultKind::UploadFailsAt99:
        return "fails at 99 %";
    }
    return "";
}

const std::vector<FaultKind>& usualFaults()
{
    static const std::vector<FaultKind> kinds = {
        FaultKind::Late,         FaultKind::Never,      FaultKind::NamedError,
        FaultKind::BareError,    FaultKind::OddNull,    FaultKind::OddText,
        FaultKind::OddList,      FaultKind::OddObject,  FaultKind::DropBefore,
        FaultKind::DropAfter,    FaultKind::StopBefore, FaultKind::StopUnseen,
        FaultKind::StopDuring,   FaultKind::KillDuring, FaultKind::UnplugBefore,
        FaultKind::UnplugAtOnce, FaultKind::OtherPort,  FaultKind::OtherFirmware,
    };
    return kinds;
}

bool isHeardOfBefore(FaultKind kind)
{
    return kind == FaultKind::StopBefore || kind == FaultKind::UnplugBefore ||
           kind == FaultKind::OtherPort || kind == FaultKind::OtherFirmware;
}

Json::Value oddAnswer(FaultKind kind)
{
    Json::Value value;
    if (kind == FaultKind::OddText) {
        value = "odd";
    } else if (kind == FaultKind::OddList) {
        value.append(1);
        value.append("odd");
    } else if (kind == FaultKind::OddObject) {
        value["id"] = "odd";
        value["eeprom_map"] = 7;
    }
    return value;
}

} // namespace trovek
