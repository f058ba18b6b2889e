#include "support/thrown_text.h"

#include <rpcwire/json_text.h>
#include <trovek/simulated_fault.h>
#include <trovek/wire.h>

#include <QTest>

using namespace trovek;

Q_DECLARE_METATYPE(trovek::SimulatedFault)

/** What is asked to go wrong, on its way over the wire. */
class tst_SimulatedFault : public QObject
{
    Q_OBJECT

private slots:
    void travelsAsItIs_data();
    void travelsAsItIs();
    void needsWhatItsKindNeeds_data();
    void needsWhatItsKindNeeds();
    void happensOnceUnlessItIsSaid();
};

namespace {

Json::Value json(const QByteArray& text)
{
    Json::Value value;
    if (!rpcwire::parseJson(std::string_view(text.constData(), std::size_t(text.size())), &value,
                            nullptr))
        qFatal("Test data is not JSON: %s", text.constData());
    return value;
}

} // namespace

void tst_SimulatedFault::travelsAsItIs_data()
{
    QTest::addColumn<SimulatedFault>("fault");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("late")
        << SimulatedFault::late("print", 70).forTimes(3)
        << QByteArray(R"({"method": "print", "kind": "late", "times": 3, "delay_ms": 70})");
    QTest::newRow("never") << SimulatedFault::never("*").always()
                           << QByteArray(R"({"method": "*", "kind": "never", "times": 0})");
    QTest::newRow("error") << SimulatedFault::error("jog", wire::makeError("SomeError", "No"))
                           << QByteArray(
                                  R"({"method": "jog", "kind": "error", "times": 1, "message": "No",
                                      "data": {"name": "SomeError", "message": "No"}})");
    QTest::newRow("an error with odd data")
        << SimulatedFault::error("jog", JsonRpcException("No", Json::Value(5)))
        << QByteArray(
               R"({"method": "jog", "kind": "error", "times": 1, "message": "No", "data": 5})");
    QTest::newRow("answer")
        << SimulatedFault::answer("get_job", json(R"([1, {"a": null}])"))
        << QByteArray(
               R"({"method": "get_job", "kind": "answer", "times": 1, "result": [1, {"a": null}]})");
    QTest::newRow("drop before") << SimulatedFault::dropBefore("home")
                                 << QByteArray(
                                        R"({"method": "home", "kind": "drop_before", "times": 1})");
    QTest::newRow("drop after") << SimulatedFault::dropAfter("home")
                                << QByteArray(
                                       R"({"method": "home", "kind": "drop_after", "times": 1})");
    QTest::newRow("unplug") << SimulatedFault::unplug("home", "left", 9)
                            << QByteArray(R"({"method": "home", "kind": "unplug", "times": 1,
                                              "machine": "left", "delay_ms": 9})");
}

void tst_SimulatedFault::travelsAsItIs()
{
    QFETCH(SimulatedFault, fault);
    QFETCH(QByteArray, expected);

    const Json::Value written = wire::toJson(fault);

    QCOMPARE(rpcwire::toJsonLine(written), rpcwire::toJsonLine(json(expected)));
    const SimulatedFault read = wire::simulatedFaultFromJson(written);
    QCOMPARE(rpcwire::toJsonLine(wire::toJson(read)), rpcwire::toJsonLine(written));
}

void tst_SimulatedFault::needsWhatItsKindNeeds_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("refusal");

    QTest::newRow("no object") << QByteArray("[]")
                               << QByteArray("No JSON object around member \"method\"");
    QTest::newRow("no method") << QByteArray(R"({"kind": "never"})")
                               << QByteArray("Missing member \"method\"");
    QTest::newRow("no kind") << QByteArray(R"({"method": "jog"})")
                             << QByteArray("Missing member \"kind\"");
    QTest::newRow("a kind in capitals") << QByteArray(R"({"method": "jog", "kind": "Never"})")
                                        << QByteArray("Member \"kind\" is no kind of fault: Never");
    QTest::newRow("late without a delay") << QByteArray(R"({"method": "jog", "kind": "late"})")
                                          << QByteArray("Missing member \"delay_ms\"");
    QTest::newRow("an error without a text") << QByteArray(R"({"method": "jog", "kind": "error"})")
                                             << QByteArray("Missing member \"message\"");
    QTest::newRow("a cable of no machine") << QByteArray(R"({"method": "jog", "kind": "unplug"})")
                                           << QByteArray("Missing member \"machine\"");
    QTest::newRow("half a time") << QByteArray(
                                        R"({"method": "jog", "kind": "never", "times": 0.5})")
                                 << QByteArray("Member \"times\" is not an integer of 32 bits");
}

void tst_SimulatedFault::needsWhatItsKindNeeds()
{
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, refusal);
    QCOMPARE(thrownText([&] { wire::simulatedFaultFromJson(json(value)); }), refusal.toStdString());
}

void tst_SimulatedFault::happensOnceUnlessItIsSaid()
{
    const SimulatedFault fault = wire::simulatedFaultFromJson(
        json(R"({"method": "jog", "kind": "unplug", "machine": "a"})"));
    QCOMPARE(fault.times, 1);
    QCOMPARE(fault.delayMs, 0);
    // The copy, not the one that it is made of.
    QCOMPARE(fault.always().times, 0);
    QCOMPARE(fault.times, 1);
}

QTEST_GUILESS_MAIN(tst_SimulatedFault)
#include "tst_simulated_fault.moc"
