#include "make_window.h"

#include <trovek-ui/profile_combo_box.h>

namespace trovek {

using namespace made;

namespace {

/** A print with the user's own profile, which the service looks at before. */
class PrintWithProfile : public MakeWindow
{
public:
    /** @param strandel the name of a file in the tests' data */
    PrintWithProfile(FaultScene& scene, const char* strandel, bool isUpgraded)
        : MakeWindow(scene, ForThing, QString())
        , m_strandel(
              readFile(QStringLiteral(TROVEK_TEST_DATA "/strandel/") + QLatin1String(strandel)))
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

WindowOperation operation(const char* name, const char* method, const char* strandel,
                          bool isUpgraded)
{
    WindowOperation made;
    made.name = name;
    made.method = method;
    made.open = [=](FaultScene& scene) {
        return std::make_unique<PrintWithProfile>(scene, strandel, isUpgraded);
    };
    return made;
}

WindowOperation checking()
{
    WindowOperation made =
        operation("make thing, check of a profile", "strandel_config_version_check",
                  "version_1_upgraded.json", false);
    made.refused = made.broken = shows(kNotStarted);
    made.special[FaultKind::StopBefore] = made.special[FaultKind::UnplugBefore] = Verdict();
    // The print itself finds out.
    made.special[FaultKind::DropAfter] = showsAfterSomeLines(kNotStarted);
    made.special[FaultKind::UnplugAtOnce] = shows(kServiceError);
    return made;
}

WindowOperation upgrading()
{
    WindowOperation made = operation("make thing, upgrade of a profile", "upgrade_strandel_config",
                                     "version_1.json", true);
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

std::vector<WindowOperation> profileCheckOperations()
{
    return {checking(), upgrading()};
}

} // namespace trovek
