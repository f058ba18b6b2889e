#include "support/scripted_service.h"
#include "support/test_log.h"

#include "apps/ostrand/machine_menu.h"

#include <trovek-ui/trovekqt.h>

#include <QSignalSpy>
#include <QTest>

using namespace ostrand;
using namespace trovek;

namespace {

Printer::Data machine(const char* key, const char* name)
{
    Printer::Data data = ScriptedService::machine(key, Printer::Fabrino2);
    data.displayName = name;
    return data;
}

struct World
{
    ScriptedService service;
    TrovekQt facade;
    MachineMenu menu{facade};

    QStringList texts() const
    {
        QStringList result;
        for (const QAction* action : menu.actions())
            result.append(action->text());
        return result;
    }

    QAction* preferences(const char* key) const
    {
        return menu.findChild<QAction*>(MachineMenu::preferencesActionName(QString::fromUtf8(key)));
    }
};

/** Above the machines. */
const QStringList kPanel = {QStringLiteral("&Control Panel..."), QString()};
const QStringList kNone = kPanel + QStringList{QStringLiteral("No machine is connected")};

} // namespace

class tst_MachineMenu : public QObject
{
    Q_OBJECT

private slots:
    void saysThatThereIsNoMachine();
    void listsTheMachinesThatCanPrint();
    void asksForTheMachinesPreferences();
    void followsTheMachines();
    void staysOpenWhileAMachineTellsItsTemperatures();
};

void tst_MachineMenu::saysThatThereIsNoMachine()
{
    TestLog log;
    World world;
    QCOMPARE(world.texts(), kNone);
    QVERIFY(!world.menu.actions().last()->isEnabled());
    QCOMPARE(world.menu.title(), QStringLiteral("M&achine"));
}

void tst_MachineMenu::listsTheMachinesThatCanPrint()
{
    TestLog log;
    World world;
    world.service.addPrinter(machine("1", "Left"));
    world.service.addPrinter(ScriptedService::archetype(Printer::Fabrino2X));
    world.service.addPrinter(machine("2", "R&D"));
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(world.texts(),
                 kPanel + QStringList({QStringLiteral("Left"), QStringLiteral("R&&D")}));
    const QMenu* const sub = world.menu.actions().at(2)->menu();
    QStringList tools;
    for (const QAction* action : sub->actions())
        tools.append(action->text());
    QCOMPARE(tools, QStringList({QStringLiteral("&Direct Controls..."),
                                 QStringLiteral("&Onboard Preferences..."),
                                 QStringLiteral("&Upload Firmware...")}));
    QCOMPARE(sub->actions().at(1)->statusTip(),
             QStringLiteral("Change the settings in this machine's own memory"));
}

void tst_MachineMenu::asksForTheMachinesPreferences()
{
    TestLog log;
    World world;
    world.service.addPrinter(machine("1", "Left"));
    world.service.addPrinter(machine("2", "Right"));
    world.facade.connectToDaemon(world.service.address());
    QTRY_VERIFY(world.preferences("2"));
    QSignalSpy requested(&world.menu, &MachineMenu::preferencesRequested);
    world.preferences("2")->trigger();
    QTRY_COMPARE(requested.count(), 1);
    QCOMPARE(requested[0][0].toString(), QStringLiteral("2"));
}

void tst_MachineMenu::followsTheMachines()
{
    TestLog log;
    World world;
    world.service.addPrinter(machine("1", "Left"));
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(world.texts(), kPanel + QStringList({QStringLiteral("Left")}));
    world.service.changePrinter(machine("1", "Renamed"));
    QTRY_COMPARE(world.texts(), kPanel + QStringList({QStringLiteral("Renamed")}));
    world.service.removePrinter("1");
    QTRY_COMPARE(world.texts(), kNone);
    world.service.addPrinter(machine("1", "Left"));
    QTRY_COMPARE(world.texts(), kPanel + QStringList({QStringLiteral("Left")}));
    world.service.stop();
    QTRY_COMPARE(world.texts(), kNone);
}

void tst_MachineMenu::staysOpenWhileAMachineTellsItsTemperatures()
{
    TestLog log;
    World world;
    Printer::Data data = machine("1", "Left");
    world.service.addPrinter(data);
    world.facade.connectToDaemon(world.service.address());
    QTRY_VERIFY(world.preferences("1"));
    const QAction* const action = world.preferences("1");
    QSignalSpy changed(&world.facade, &TrovekQt::printerChanged);
    data.platformTargetTemperature = 60;
    world.service.changePrinter(data);
    QTRY_COMPARE(changed.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(world.preferences("1"), action);
}

QTEST_MAIN(tst_MachineMenu)
#include "tst_machine_menu.moc"
