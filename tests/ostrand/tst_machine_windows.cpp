#include "support/modal_driver.h"
#include "support/scripted_service.h"
#include "support/test_log.h"

#include "apps/ostrand/machine_windows.h"

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
    MachineWindows windows{facade, settings, &parent};

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
        windows.preferences(machine)->findChild<JsonSpinBox*>()->setValue(5);
    }
};

} // namespace

class tst_MachineWindows : public QObject
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

void tst_MachineWindows::opensOneWindowAMachine()
{
    TestLog log;
    World world;
    world.windows.openPreferences(kLeft);
    QPointer<ui::OnboardPreferences> left = world.windows.preferences(kLeft);
    QVERIFY(left && left->isVisible());
    QCOMPARE(left->parentWidget(), &world.parent);
    world.windows.openPreferences(kRight);
    QVERIFY(world.windows.preferences(kRight) != left);
    world.windows.openPreferences(kLeft);
    QCOMPARE(world.windows.preferences(kLeft), left.data());
    QCOMPARE(int(world.service.requests("read_eeprom").size()), 2);
    QTRY_VERIFY(left->isActiveWindow());
}

void tst_MachineWindows::opensAClosedOneAnew()
{
    TestLog log;
    World world;
    world.windows.openPreferences(kLeft);
    world.windows.preferences(kLeft)->close();
    QVERIFY(!world.windows.preferences(kLeft));
    // Before the closed one is deleted, too.
    world.windows.openPreferences(kLeft);
    QVERIFY(world.windows.preferences(kLeft));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(world.windows.preferences(kLeft));
    QCOMPARE(world.parent.findChildren<ui::OnboardPreferences*>().size(), 1);
}

void tst_MachineWindows::opensNothingForAMachineThatHasGone()
{
    TestLog log;
    log.expectError("Null machine");
    World world;
    ModalDriver driver;
    driver.expectMessage({QStringLiteral("Error displaying onboard preferences"),
                          QStringLiteral("Printer is not connected.")});
    world.windows.openPreferences(QStringLiteral("gone"));
    QVERIFY(!world.windows.preferences(QStringLiteral("gone")));
}

void tst_MachineWindows::closesAllThatAreUnchanged()
{
    TestLog log;
    World world;
    QVERIFY(world.windows.closeAll());
    world.windows.openPreferences(kLeft);
    world.windows.openPreferences(kRight);
    QVERIFY(world.windows.closeAll());
    QVERIFY(!world.windows.preferences(kLeft));
    QVERIFY(!world.windows.preferences(kRight));
}

void tst_MachineWindows::keepsAWindowWhoseChangesAreWanted()
{
    TestLog log;
    World world;
    world.windows.openPreferences(kLeft);
    world.windows.openPreferences(kRight);
    world.change(kRight);
    ModalDriver driver;
    driver.expect([](QDialog* box) { pressButton(box, QStringLiteral("&Cancel")); });
    QVERIFY(!world.windows.closeAll());
    QVERIFY(world.windows.preferences(kRight));
    driver.expect([](QDialog* box) { pressButton(box, QStringLiteral("Close &without Saving")); });
    QVERIFY(world.windows.closeAll());
    QVERIFY(!world.windows.preferences(kRight));
}

void tst_MachineWindows::keepsThePlaceInTheSettings()
{
    TestLog log;
    World world;
    world.windows.openPreferences(kLeft);
    world.windows.preferences(kLeft)->resize(905, 605);
    QVERIFY(world.windows.closeAll());
    world.windows.openPreferences(kLeft);
    QCOMPARE(world.windows.preferences(kLeft)->size(), QSize(905, 605));
}

QTEST_MAIN(tst_MachineWindows)
#include "tst_machine_windows.moc"
