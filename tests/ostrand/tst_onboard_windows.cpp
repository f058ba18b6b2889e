#include "support/modal_driver.h"
#include "support/scripted_service.h"
#include "support/test_log.h"

#include "apps/ostrand/onboard_windows.h"

#include <trovek-ui/json_widgets.h>
#include <trovek-ui/onboard_preferences.h>
#include <trovek-ui/trovekqt.h>

#include <json/value.h>

#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace ostrand;
using namespace trovek;

namespace {

const QString kLeft = QStringLiteral("left");
const QString kRight = QStringLiteral("right");

struct World
{
    ScriptedService service;
    QTemporaryDir folder;
    QSettings settings{folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat};
    TrovekQt facade;
    QWidget parent;
    OnboardWindows windows{facade, settings, &parent};

    World()
    {
        Json::Value map(Json::objectValue);
        Json::Value& entry = map["eeprom_map"]["sound"];
        entry["offset"] = 0;
        entry["type"] = "B";
        entry["value"].append(1);
        for (const char* key : {"left", "right"}) {
            service.setEeprom(key, map);
            service.addPrinter(ScriptedService::machine(key, Printer::Fabrino2));
        }
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        facade.connectToDaemon(service.address());
        QTRY_COMPARE(added.count(), 2);
    }

    void change(const QString& machine) const
    {
        windows.window(machine)->findChild<JsonSpinBox*>()->setValue(5);
    }
};

} // namespace

class tst_OnboardWindows : public QObject
{
    Q_OBJECT

private slots:
    void opensOneWindowAMachine();
    void opensAClosedOneAnew();
    void opensNothingForAMachineThatHasGone();
    void closesAllThatAreUnchanged();
    void keepsAWindowWhoseChangesAreWanted();
    void keepsThePlaceInTheSettings();
};

void tst_OnboardWindows::opensOneWindowAMachine()
{
    TestLog log;
    World world;
    world.windows.open(kLeft);
    QPointer<ui::OnboardPreferences> left = world.windows.window(kLeft);
    QVERIFY(left && left->isVisible());
    QCOMPARE(left->parentWidget(), &world.parent);
    world.windows.open(kRight);
    QVERIFY(world.windows.window(kRight) != left);
    world.windows.open(kLeft);
    QCOMPARE(world.windows.window(kLeft), left.data());
    QCOMPARE(int(world.service.requests("read_eeprom").size()), 2);
    QTRY_VERIFY(left->isActiveWindow());
}

void tst_OnboardWindows::opensAClosedOneAnew()
{
    TestLog log;
    World world;
    world.windows.open(kLeft);
    world.windows.window(kLeft)->close();
    QVERIFY(!world.windows.window(kLeft));
    // Before the closed one is deleted, too.
    world.windows.open(kLeft);
    QVERIFY(world.windows.window(kLeft));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(world.windows.window(kLeft));
    QCOMPARE(world.parent.findChildren<ui::OnboardPreferences*>().size(), 1);
}

void tst_OnboardWindows::opensNothingForAMachineThatHasGone()
{
    TestLog log;
    log.expectError("Null machine");
    World world;
    ModalDriver driver;
    driver.expectMessage({QStringLiteral("Error displaying onboard preferences"),
                          QStringLiteral("Printer is not connected.")});
    world.windows.open(QStringLiteral("gone"));
    QVERIFY(!world.windows.window(QStringLiteral("gone")));
}

void tst_OnboardWindows::closesAllThatAreUnchanged()
{
    TestLog log;
    World world;
    QVERIFY(world.windows.closeAll());
    world.windows.open(kLeft);
    world.windows.open(kRight);
    QVERIFY(world.windows.closeAll());
    QVERIFY(!world.windows.window(kLeft));
    QVERIFY(!world.windows.window(kRight));
}

void tst_OnboardWindows::keepsAWindowWhoseChangesAreWanted()
{
    TestLog log;
    World world;
    world.windows.open(kLeft);
    world.windows.open(kRight);
    world.change(kRight);
    ModalDriver driver;
    driver.expect([](QDialog* box) { pressButton(box, QStringLiteral("&Cancel")); });
    QVERIFY(!world.windows.closeAll());
    QVERIFY(world.windows.window(kRight));
    driver.expect([](QDialog* box) { pressButton(box, QStringLiteral("Close &without Saving")); });
    QVERIFY(world.windows.closeAll());
    QVERIFY(!world.windows.window(kRight));
}

void tst_OnboardWindows::keepsThePlaceInTheSettings()
{
    TestLog log;
    World world;
    world.windows.open(kLeft);
    world.windows.window(kLeft)->resize(905, 605);
    QVERIFY(world.windows.closeAll());
    world.windows.open(kLeft);
    QCOMPARE(world.windows.window(kLeft)->size(), QSize(905, 605));
}

QTEST_MAIN(tst_OnboardWindows)
#include "tst_onboard_windows.moc"
