#include "make_window.h"

#include <trovek/wire.h>

#include <QSignalSpy>

namespace trovek {

using namespace made;

namespace {

const QStringList kBusy = {
    QStringLiteral("Printer is busy"),
    QStringLiteral("Wait until your current activity finishes before starting a new job on this "
                   "Orvane.")};

WindowOperation making(const char* name, const char* method, MakeWindow::Dialog dialog,
                       const char* suffix)
{
    WindowOperation made;
    made.name = name;
    made.method = method;
    made.refused = shows(kServiceError);
    made.broken = shows(kNotStarted);
    made.namedErrors = {{wire::makeError("PrintQueuedException", "It prints"), shows(kBusy)}};
    const QString ending = QString::fromLatin1(suffix);
    made.open = [dialog, ending](FaultScene& scene) {
        return std::make_unique<MakeWindow>(scene, dialog, ending);
    };
    if (ending.isEmpty()) {
        // There is nothing to print with.
        made.special[FaultKind::StopBefore] = Verdict();
        made.special[FaultKind::UnplugBefore] = Verdict();
        return made;
    }
    made.special[FaultKind::StopBefore] = shows(kNoService);
    made.special[FaultKind::StopBefore].isAsked = false;
    made.special[FaultKind::StopBefore].error = QStringLiteral("Trovek not connected");
    // The export stays with the mover, which never hears of its end.
    made.special[FaultKind::DropAfter] = made.success;
    made.special[FaultKind::DropAfter].effect = Verdict::Either;
    // The question for the file runs the event loop, which tells of the loss.
    made.special[FaultKind::StopUnseen] = made.special[FaultKind::StopBefore];
    made.special[FaultKind::StopUnseen].isAsked = true;
    // A file needs no machine; an archetype makes the same one.
    made.special[FaultKind::UnplugBefore] = made.success;
    made.special[FaultKind::UnplugAtOnce] = made.success;
    return made;
}

/** The answer to the last question of an export: how it has ended. */
class ExportEnd : public MakeWindow
{
public:
    explicit ExportEnd(FaultScene& scene)
        : MakeWindow(scene, ForGCode, QStringLiteral("x3g"))
    {}

    /** An export whose end the mover could not ask for stays with it. */
    QStringList leftovers() override { return {}; }
    void press() override
    {
        QSignalSpy concluded(&m_scene.facade, &TrovekQt::jobConcluded);
        MakeWindow::press();
        QTRY_VERIFY_WITH_TIMEOUT(!concluded.isEmpty() || !m_scene.facade.isConnected(), 20000);
    }
};

WindowOperation endingExport()
{
    WindowOperation made =
        making("make G-code, end of the export", "get_job", MakeWindow::ForGCode, "x3g");
    made.open = [](FaultScene& scene) {
        return std::make_unique<ExportEnd>(scene);
    };
    made.namedErrors.clear();
    // Only the log has it.
    made.refused = made.broken = Verdict();
    made.special[FaultKind::DropAfter] = made.success;
    return made;
}

} // namespace

std::vector<WindowOperation> makeGCodeOperations()
{
    return {
        making("make G-code, print", "print", MakeWindow::ForGCode, ""),
        making("make G-code, export X3G", "print_to_file", MakeWindow::ForGCode, "x3g"),
        making("make G-code, export S3G", "print_to_file", MakeWindow::ForGCode, "s3g"),
        making("make G-code, export G-code", "slice", MakeWindow::ForGCode, "gcode"),
        endingExport(),
    };
}

std::vector<WindowOperation> makeThingOperations()
{
    return {
        making("make thing, print", "print", MakeWindow::ForThing, ""),
        making("make thing, export X3G", "print_to_file", MakeWindow::ForThing, "x3g"),
        making("make thing, export G-code", "slice", MakeWindow::ForThing, "gcode"),
    };
}

} // namespace trovek
