#include "make_window.h"

#include <trovek-ui/make_thing_dialog.h>
#include <trovek-ui/pathscope_dialog.h>
#include <trovek-ui/profile_combo_box.h>

#include <trovek/wire.h>

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

/** A print with the user's own profile, which the service looks at before. */
class PrintWithProfile : public MakeWindow
{
public:
    PrintWithProfile(FaultScene& scene, const char* strandel, bool isUpgraded)
        : MakeWindow(scene, ForThing, QString())
        , m_strandel(strandel)
        , m_isUpgraded(isUpgraded)
    {}

    bool prepare() override
    {
        writeProfile(m_scene.profileFolder());
        writeFile(file(), m_strandel);
        auto& profiles = find<ProfileComboBox>("profiles");
        if (!QTest::qWaitFor([&] { return profiles.findText(QStringLiteral("mine")) >= 0; }, 10000))
            return false;
        profiles.selectProfile(QStringLiteral("mine"));
        return MakeWindow::prepare();
    }
    void announceQuestions(ModalDriver& driver) override
    {
        if (!m_isUpgraded)
            return;
        driver.expect([](QDialog* box) {
            QCOMPARE(messageTexts(box).value(0), QStringLiteral("Custom profile requires upgrade"));
            pressButton(box, QStringLiteral("&Upgrade"));
        });
    }
    /** What the user has written is not lost. */
    QStringList leftovers() override
    {
        return isDone() || readFile(file()) == m_strandel
                   ? QStringList()
                   : QStringList(QString::fromUtf8(readFile(file())));
    }

private:
    QString file() const { return m_scene.profileFolder() + QStringLiteral("/strandel.json"); }

    const QByteArray m_strandel;
    const bool m_isUpgraded;
};

Verdict shows(const QStringList& message)
{
    Verdict made;
    made.messages = {message};
    return made;
}

Verdict showsAfterSomeLines(const QStringList& message)
{
    Verdict made = shows(message);
    made.logged = -1;
    return made;
}

template <typename Window, typename... Arguments>
WindowOperation operation(const char* name, const char* method, Arguments... arguments)
{
    WindowOperation made;
    made.name = name;
    made.method = method;
    made.success.effect = Verdict::Done;
    made.success.logged = 0;
    made.open = [=](FaultScene& scene) {
        return std::make_unique<Window>(scene, arguments...);
    };
    return made;
}

WindowOperation slicing()
{
    WindowOperation made = operation<Preview>("preview, slice", "slice");
    made.success.hasResult = true;
    made.refused = shows(kServiceError);
    made.broken = shows(kNotStarted);
    made.special[FaultKind::StopBefore] = shows(kNoService);
    // An archetype is sliced for as well.
    made.special[FaultKind::UnplugBefore] = made.success;
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

WindowOperation checking()
{
    WindowOperation made =
        operation<PrintWithProfile>("make thing, check of a profile",
                                    "strandel_config_version_check", "{\"version\": 2}\n", false);
    made.refused = made.broken = shows(kNotStarted);
    made.special[FaultKind::StopBefore] = made.special[FaultKind::UnplugBefore] = Verdict();
    // The print itself finds out.
    made.special[FaultKind::DropAfter] = showsAfterSomeLines(kNotStarted);
    made.special[FaultKind::UnplugAtOnce] = shows(kServiceError);
    return made;
}

WindowOperation upgrading()
{
    WindowOperation made =
        operation<PrintWithProfile>("make thing, upgrade of a profile", "upgrade_strandel_config",
                                    "{\"version\": 1, \"layerHeight\": 0.3}\n", true);
    made.refused = made.broken = shows(kNotStarted);
    made.special[FaultKind::StopBefore] = made.special[FaultKind::UnplugBefore] = Verdict();
    made.special[FaultKind::StopUnseen] = shows(kNotStarted);
    made.special[FaultKind::StopUnseen].isAsked = false;
    // Upgraded, but not printed.
    made.special[FaultKind::DropAfter] = showsAfterSomeLines(kNotStarted);
    made.special[FaultKind::DropAfter].effect = Verdict::Either;
    made.special[FaultKind::UnplugAtOnce] = shows(kServiceError);
    made.special[FaultKind::UnplugAtOnce].effect = Verdict::Either;
    // What is no less an object than an upgraded one.
    made.special[FaultKind::OddObject] = made.success;
    return made;
}

} // namespace

std::vector<WindowOperation> previewOperations()
{
    return {slicing(), asking(), canceling(), checking(), upgrading()};
}

} // namespace trovek
