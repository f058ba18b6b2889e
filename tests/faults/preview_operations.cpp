#include "make_window.h"

#include <trovek-ui/pathscope_dialog.h>

#include <QCheckBox>
#include <QProgressBar>

namespace trovek {

using namespace made;

namespace {

/** A preview before an export. */
class Preview : public MakeWindow
{
public:
    explicit Preview(FaultScene& scene)
        : MakeWindow(scene, ForThing, QStringLiteral("x3g"))
    {}

    bool prepare() override
    {
        find<QCheckBox>("previewWanted").setChecked(true);
        m_isShown = false;
        return MakeWindow::prepare();
    }
    void announceQuestions(ModalDriver&) override {}
    void announceResult(ModalDriver& driver) override
    {
        driver.expect<PathscopeDialog>([this](PathscopeDialog* preview) {
            m_isShown = true;
            QTest::mouseClick(preview->findChild<QPushButton*>(QStringLiteral("cancelButton")),
                              Qt::LeftButton);
        });
    }
    bool isDone() override { return m_isShown && !isSlicing(); }

protected:
    bool isSlicing() const { return find<QProgressBar>("previewProgress").isVisible(); }

    bool m_isShown = false;
};

/** The end of a preview that the user does not want to wait for. */
class CanceledPreview : public Preview
{
public:
    using Preview::Preview;
    ~CanceledPreview() override { QFile::remove(m_scene.sliceBarrier()); }

    bool prepare() override
    {
        if (isSlicing())
            return find<QPushButton>("cancelPreviewButton").isEnabled();
        writeFile(m_scene.sliceBarrier(), QByteArray());
        if (!Preview::prepare() || !m_scene.facade.isConnected())
            return false;
        QTest::mouseClick(&find<QPushButton>("mainButton"), Qt::LeftButton);
        return isSlicing();
    }
    void press() override
    {
        QTest::mouseClick(&find<QPushButton>("cancelPreviewButton"), Qt::LeftButton);
    }
    bool isDone() override { return !isSlicing() && find<QPushButton>("mainButton").isEnabled(); }
};

WindowOperation slicing()
{
    WindowOperation made = operation<Preview>("preview, slice", "slice");
    made.success.hasResult = true;
    made.refused = shows(kServiceError);
    made.broken = shows(kNotStarted);
    made.special[FaultKind::StopBefore] = shows(kNoService);
    // An archetype is sliced for as well.
    made.special[FaultKind::UnplugBefore] = made.special[FaultKind::UnplugAtOnce] = made.success;
    made.special[FaultKind::DropAfter] = showsAfterSomeLines(kNoService);
    return made;
}

WindowOperation asking()
{
    WindowOperation made = operation<Preview>("preview, job", "get_job");
    made.success.hasResult = true;
    made.refused = made.broken = showsAfterSomeLines(kNotStarted);
    for (const FaultKind kind :
         {FaultKind::Never, FaultKind::DropBefore, FaultKind::DropAfter, FaultKind::StopDuring,
          FaultKind::KillDuring, FaultKind::StopBefore})
        made.special[kind] = showsAfterSomeLines(kNoService);
    made.special[FaultKind::UnplugBefore] = made.success;
    made.special[FaultKind::UnplugAtOnce] = made.success;
    return made;
}

WindowOperation canceling()
{
    WindowOperation made = operation<CanceledPreview>("preview, cancel", "cancel_job");
    made.answerIsRead = false;
    // The window waits no longer, whatever the service says; only the log has it.
    made.refused = made.broken = Verdict();
    made.refused.effect = made.broken.effect = Verdict::Done;
    for (const FaultKind odd :
         {FaultKind::OddNull, FaultKind::OddText, FaultKind::OddList, FaultKind::OddObject,
          FaultKind::UnplugBefore, FaultKind::UnplugAtOnce})
        made.special[odd] = made.success;
    // There is no preview that could be canceled.
    made.notMet = {FaultKind::StopBefore, FaultKind::StopUnseen};
    return made;
}

} // namespace

std::vector<WindowOperation> previewOperations()
{
    return {slicing(), asking(), canceling()};
}

} // namespace trovek
