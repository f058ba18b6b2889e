#include "window_operation.h"

namespace trovek {

WindowInUse::~WindowInUse() = default;

Verdict Verdict::done()
{
    Verdict verdict;
    verdict.effect = Done;
    verdict.logged = 0;
    return verdict;
}

Verdict WindowOperation::verdictOf(FaultKind kind) const
{
    if (const auto found = special.find(kind); found != special.end())
        return found->second;
    const auto with = [](Verdict verdict, Verdict::Effect effect) {
        verdict.effect = effect;
        return verdict;
    };
    switch (kind) {
    case FaultKind::NamedError:
    case FaultKind::BareError:
    case FaultKind::UnplugAtOnce:
    case FaultKind::UnplugDuring:
    case FaultKind::UploadFailsAt0:
    case FaultKind::UploadFailsAt50:
    case FaultKind::UploadFailsAt99:
        return refused;
    case FaultKind::OddNull:
    case FaultKind::OddText:
    case FaultKind::OddList:
    case FaultKind::OddObject:
        return answerIsRead ? broken : with(success, Verdict::NotDone);
    case FaultKind::Never:
    case FaultKind::StopUnseen:
    case FaultKind::StopDuring:
    case FaultKind::KillDuring:
    case FaultKind::StopBefore:
    case FaultKind::UnplugBefore:
        return broken;
    case FaultKind::DropBefore:
        return with(broken, Verdict::Either);
    case FaultKind::Late:
    case FaultKind::DropAfter:
    case FaultKind::OtherPort:
    case FaultKind::OtherFirmware:
        return success;
    }
    return success;
}

} // namespace trovek
