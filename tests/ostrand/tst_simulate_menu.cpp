#include "support/scripted_service.h"
#include "support/test_log.h"

#include "apps/ostrand/simulate_menu.h"

#include <trovek-ui/trovekqt.h>
#include <trovek/wire.h>

#include <QSignalSpy>
#include <QTest>

#include <atomic>

using namespace ostrand;
using namespace trovek;

namespace {

Json::Value machine(const char* name, const char* type, bool pluggedIn)
{
    Json::Value value;
    value["name"] = name;
    value["type_name"] = type;
    value["plugged_in"] = pluggedIn;
    return value;
}

struct World
{
    ScriptedService service;
    TrovekQt facade;
    SimulateMenu menu{facade};

    void offer(const Json::Value& machines)
    {
        service.onRequest("simulated_machines",
                          [machines](const Json::Value&) { return machines; });
    }

    QStringList texts() const
    {
        QStringList result;
        for (const QAction* action : menu.actions())
            result.append(action->text());
        return result;
    }
};

Json::Value two()
{
    Json::Value machines(Json::arrayValue);
    machines.append(machine("Dual 1", "Orvane Fabrino (Dual)", true));
    machines.append(machine("R&D", "", false));
    return machines;
}

} // namespace

class tst_SimulateMenu : public QObject
{
    Q_OBJECT

private slots:
    void isEmptyWithoutALink();
    void listsTheMachines();
    void plugsInAndOut();
    void saysWhatWasRefused();
    void givesAnotherFirmware();
    void leavesOutOddFirmwares();
    void makesTrouble();
    void survivesAServiceWithoutVirtualMachines();
    void survivesAnOddAnswer_data();
    void survivesAnOddAnswer();
    void emptiesItselfWhenTheLinkIsLost();
};

void tst_SimulateMenu::isEmptyWithoutALink()
{
    World world;
    QCOMPARE(world.texts(), QStringList(QStringLiteral("No virtual machines")));
    QVERIFY(!world.menu.actions().first()->isEnabled());
}

void tst_SimulateMenu::listsTheMachines()
{
    TestLog log;
    World world;
    world.offer(two());
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(world.texts(),
                 QStringList({QStringLiteral("Dual 1 (Orvane Fabrino (Dual))"),
                              QStringLiteral("R&&D"), QString(), QStringLiteral("&Trouble")}));
    QVERIFY(world.menu.actions().at(0)->isChecked());
    QVERIFY(!world.menu.actions().at(1)->isChecked());
}

void tst_SimulateMenu::plugsInAndOut()
{
    TestLog log;
    World world;
    world.offer(two());
    for (const char* method : {"simulate_plug_in", "simulate_unplug"})
        world.service.onRequest(method, [](const Json::Value&) { return Json::Value(); });
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(world.texts().size(), 4);
    world.menu.actions().at(1)->trigger();
    QTRY_COMPARE(world.service.requests("simulate_plug_in").size(), std::size_t(1));
    QCOMPARE(world.service.lastRequest("simulate_plug_in")["name"].asString(), std::string("R&D"));
    QTRY_COMPARE(world.texts().size(), 4);
    world.menu.actions().at(0)->trigger();
    QTRY_COMPARE(world.service.requests("simulate_unplug").size(), std::size_t(1));
    QCOMPARE(world.service.lastRequest("simulate_unplug")["name"].asString(),
             std::string("Dual 1"));
}

void tst_SimulateMenu::saysWhatWasRefused()
{
    TestLog log;
    World world;
    world.offer(two());
    world.service.failAlways("simulate_unplug", wire::makeError("Odd", "It is stuck"));
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(world.texts().size(), 4);
    QSignalSpy failed(&world.menu, &SimulateMenu::failed);
    log.expectError("It is stuck");
    world.menu.actions().at(0)->trigger();
    QTRY_COMPARE(failed.count(), 1);
    QCOMPARE(failed.first().first().toString(), QStringLiteral("It is stuck"));
    // The tick is where the service says.
    QTRY_VERIFY(world.menu.actions().at(0)->isChecked());
}

void tst_SimulateMenu::givesAnotherFirmware()
{
    TestLog log;
    World world;
    Json::Value machines = two();
    for (const char* version : {"7.5", "7.6"})
        machines[1]["firmware_versions"].append(version);
    machines[1]["firmware_version"] = "7.5";
    world.offer(machines);
    world.service.onRequest("simulate_firmware", [](const Json::Value&) { return Json::Value(); });
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(
        world.texts(),
        QStringList({QStringLiteral("Dual 1 (Orvane Fabrino (Dual))"), QStringLiteral("R&&D"),
                     QString(), QStringLiteral("&Firmware"), QStringLiteral("&Trouble")}));
    const QMenu* firmware = world.menu.actions().at(3)->menu();
    QVERIFY(firmware);
    QCOMPARE(firmware->actions().size(), 1);
    QCOMPARE(firmware->actions().at(0)->text(), QStringLiteral("R&&D"));
    const QList<QAction*> versions = firmware->actions().at(0)->menu()->actions();
    QCOMPARE(versions.size(), 2);
    QCOMPARE(versions[0]->text(), QStringLiteral("7.5"));
    QVERIFY(versions[0]->isChecked() && !versions[1]->isChecked());

    machines[1]["firmware_version"] = "7.6";
    world.offer(machines);
    versions[1]->trigger();

    QTRY_COMPARE(world.service.requests("simulate_firmware").size(), std::size_t(1));
    const Json::Value request = world.service.lastRequest("simulate_firmware");
    QCOMPARE(request["name"].asString(), std::string("R&D"));
    QCOMPARE(request["version"].asString(), std::string("7.6"));
    // The menu follows, and the one before has gone.
    QTRY_VERIFY(
        world.menu.actions().at(3)->menu()->actions().at(0)->menu()->actions().at(1)->isChecked());
    QTRY_COMPARE(world.menu.findChildren<QMenu*>().size(), 6);
    world.service.failAlways("simulate_firmware", wire::makeError("Odd", "It is printing"));
    QSignalSpy failed(&world.menu, &SimulateMenu::failed);
    log.expectError("It is printing");
    world.menu.actions().at(3)->menu()->actions().at(0)->menu()->actions().at(0)->trigger();
    QTRY_COMPARE(failed.count(), 1);
    QCOMPARE(failed.first().first().toString(), QStringLiteral("It is printing"));
}

void tst_SimulateMenu::leavesOutOddFirmwares()
{
    TestLog log;
    World world;
    Json::Value machines = two();
    machines[0]["firmware_versions"] = "7.5";
    machines[1]["firmware_versions"].append(7.5);
    machines[1]["firmware_versions"].append("7.6");
    machines[1]["firmware_version"] = 7;
    world.offer(machines);
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(world.texts().size(), 5);
    const QList<QAction*> offered = world.menu.actions().at(3)->menu()->actions();
    QCOMPARE(offered.size(), 1);
    QCOMPARE(offered[0]->menu()->actions().size(), 1);
    QVERIFY(!offered[0]->menu()->actions().at(0)->isChecked());
}

void tst_SimulateMenu::makesTrouble()
{
    TestLog log;
    World world;
    world.offer(two());
    for (const char* method :
         {"simulate_port", "simulate_upload_failure", "simulate_fault", "simulate_no_faults"})
        world.service.onRequest(method, [](const Json::Value&) { return Json::Value(); });
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(world.texts().size(), 4);
    const auto choices = [&world](const char* name) {
        return world.menu.findChild<QMenu*>(QLatin1String(name))->actions();
    };
    const auto received = [&world](const char* method) {
        return int(world.service.requests(method).size());
    };
    choices("simulatePort").at(1)->trigger();
    QTRY_COMPARE(received("simulate_port"), 1);
    QCOMPARE(world.service.lastRequest("simulate_port")["name"].asString(), std::string("R&D"));
    choices("simulateUpload").at(0)->trigger();
    QTRY_COMPARE(received("simulate_upload_failure"), 1);
    QCOMPARE(world.service.lastRequest("simulate_upload_failure")["percent"].asInt(), 50);
    const QStringList kinds{QStringLiteral("faultLate"), QStringLiteral("faultNever"),
                            QStringLiteral("faultError"), QStringLiteral("faultAnswer"),
                            QStringLiteral("faultDrop")};
    for (int i = 0; i < kinds.size(); ++i) {
        world.menu.findChild<QAction*>(kinds[i])->trigger();
        QTRY_COMPARE(received("simulate_fault"), i + 1);
        QCOMPARE(world.service.lastRequest("simulate_fault")["fault"]["method"].asString(),
                 std::string("*"));
    }
    world.menu.findChild<QAction*>(QStringLiteral("clearFaults"))->trigger();
    QTRY_COMPARE(received("simulate_no_faults"), 1);
}

void tst_SimulateMenu::survivesAServiceWithoutVirtualMachines()
{
    TestLog log;
    World world;
    world.service.failAlways("simulated_machines", JsonRpcException("Method not found"));
    world.facade.connectToDaemon(world.service.address());
    QVERIFY(world.service.waitForRequest("hello"));
    QTRY_VERIFY(world.service.requests("simulated_machines").size() > 0);
    QTRY_COMPARE(world.texts(), QStringList(QStringLiteral("No virtual machines")));
}

void tst_SimulateMenu::survivesAnOddAnswer_data()
{
    QTest::addColumn<QString>("answer");
    QTest::newRow("null") << QStringLiteral("null");
    QTest::newRow("object") << QStringLiteral("{\"a\": 1}");
    QTest::newRow("numbers") << QStringLiteral("[1, 2]");
    QTest::newRow("nested") << QStringLiteral("[[{}]]");
    QTest::newRow("name of a wrong kind") << QStringLiteral("[{\"name\": 3}]");
}

void tst_SimulateMenu::survivesAnOddAnswer()
{
    QFETCH(QString, answer);
    TestLog log;
    World world;
    Json::Value value;
    QVERIFY(Json::Reader().parse(answer.toStdString(), value));
    world.offer(value);
    world.facade.connectToDaemon(world.service.address());
    QTRY_VERIFY(world.service.requests("simulated_machines").size() > 0);
    QCoreApplication::processEvents();
    QCOMPARE(world.texts(), QStringList(QStringLiteral("No virtual machines")));
}

void tst_SimulateMenu::emptiesItselfWhenTheLinkIsLost()
{
    TestLog log;
    World world;
    world.offer(two());
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(world.texts().size(), 4);
    world.service.stop();
    QTRY_COMPARE(world.texts(), QStringList(QStringLiteral("No virtual machines")));
}

QTEST_MAIN(tst_SimulateMenu)
#include "tst_simulate_menu.moc"
