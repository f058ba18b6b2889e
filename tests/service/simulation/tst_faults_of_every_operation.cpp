#include "fault_world.h"
#include "platform/trovek/every_operation.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek/wire.h>

#include <QTest>

using namespace trovek;

/** Every operation of a client against a service that fails on request. */
class tst_FaultsOfEveryOperation : public QObject
{
    Q_OBJECT

private slots:
    void failsAsItIsAskedTo_data() { addEveryOperation(); }
    void failsAsItIsAskedTo();
};

void tst_FaultsOfEveryOperation::failsAsItIsAskedTo()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, method);
    QFETCH(int, deadlineMs);
    const std::string name = method.toStdString();
    if (name.rfind("simulate", 0) == 0)
        QSKIP("These never fail");
    TestLog log;
    log.allowErrors("Firmware version left out");
    FaultWorld world;
    const auto outcomeOf = [&](const SimulatedFault& fault) {
        if (!world.client->isConnected())
            world.connect();
        world.client->simulateFault(fault);
        const std::string outcome = thrownText([&] { operation(*world.client); });
        // It was this request that used the fault up.
        RecordingTrovek other;
        other.connectToDaemon(world.service.address());
        return other.simulatedFaults().empty() ? outcome : "the fault is still there";
    };
    // Most of them are refused, since there is no machine "left".
    const std::string usual = thrownText([&] { operation(*world.client); });

    QCOMPARE(outcomeOf(SimulatedFault::error(name, wire::makeError("SomeError", "It is odd"))),
             std::string("It is odd"));
    QCOMPARE(outcomeOf(SimulatedFault::late(name, 1)), usual);
    const std::string odd = outcomeOf(SimulatedFault::answer(name, Json::Value(true)));
    QVERIFY2(odd == "nothing thrown" || odd.rfind("Odd answer to " + name, 0) == 0, odd.c_str());
    QVERIFY(world.client->isConnected());
    QCOMPARE(outcomeOf(SimulatedFault::unplug(name, ServiceWorld::kMachine)), usual);
    QCOMPARE(outcomeOf(SimulatedFault::dropBefore(name)),
             std::string("Connection closed by the other side"));
    QVERIFY(!world.client->isConnected());
    QCOMPARE(outcomeOf(SimulatedFault::dropAfter(name)), usual);
    QTRY_VERIFY(!world.client->isConnected());
    world.connect();
    world.client->simulateFault(SimulatedFault::never(name));
    world.client->setDeadlineScale(0.0005);
    QCOMPARE(thrownText([&] { operation(*world.client); }),
             "No answer to \"" + name + "\" within " + std::to_string(deadlineMs / 2000) + " ms");
    world.connect();
    QCOMPARE(thrownText([&] { operation(*world.client); }), usual);
}

QTEST_GUILESS_MAIN(tst_FaultsOfEveryOperation)
#include "tst_faults_of_every_operation.moc"
