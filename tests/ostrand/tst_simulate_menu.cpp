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
    QTRY_COMPARE(world.texts(), QStringList({QStringLiteral("Dual 1 (Orvane Fabrino (Dual))"),
                                             QStringLiteral("R&&D")}));
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
    QTRY_COMPARE(world.texts().size(), 2);
    world.menu.actions().at(1)->trigger();
    QTRY_COMPARE(world.service.requests("simulate_plug_in").size(), std::size_t(1));
    QCOMPARE(world.service.lastRequest("simulate_plug_in")["name"].asString(), std::string("R&D"));
    QTRY_COMPARE(world.texts().size(), 2);
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
    QTRY_COMPARE(world.texts().size(), 2);
    QSignalSpy failed(&world.menu, &SimulateMenu::failed);
    log.expectError("It is stuck");
    world.menu.actions().at(0)->trigger();
    QTRY_COMPARE(failed.count(), 1);
    QCOMPARE(failed.first().first().toString(), QStringLiteral("It is stuck"));
    // The tick is where the service says.
    QTRY_VERIFY(world.menu.actions().at(0)->isChecked());
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
    QTRY_COMPARE(world.texts().size(), 2);
    world.service.stop();
    QTRY_COMPARE(world.texts(), QStringList(QStringLiteral("No virtual machines")));
}

QTEST_MAIN(tst_SimulateMenu)
#include "tst_simulate_menu.moc"
