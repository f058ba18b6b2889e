#include "every_operation.h"
#include "recording_trovek.h"
#include "support/scripted_service.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <rpcwire/json_text.h>
#include <trovek/wire.h>

#include <QSemaphore>
#include <QTest>

using namespace trovek;

/** Every operation against a service that fails, dies, hangs or talks nonsense. */
class tst_TrovekFaults : public QObject
{
    Q_OBJECT

private slots:
    void throwsTheServicesError_data() { addEveryOperation(); }
    void throwsTheServicesError();
    void throwsWithoutALink_data() { addEveryOperation(); }
    void throwsWithoutALink();
    void throwsWhenTheLinkWasLostBefore_data() { addEveryOperation(); }
    void throwsWhenTheLinkWasLostBefore();
    void throwsWhenTheLinkIsLostMeanwhile_data() { addEveryOperation(); }
    void throwsWhenTheLinkIsLostMeanwhile();
    void returnsWhenTheLinkIsLostAfterwards_data() { addEveryOperation(); }
    void returnsWhenTheLinkIsLostAfterwards();
    void givesUpAfterItsDeadline_data() { addEveryOperation(); }
    void givesUpAfterItsDeadline();
    void aLateAnswerReachesNobody_data() { addEveryOperation(); }
    void aLateAnswerReachesNobody();
    void aSecondAnswerReachesNobody_data() { addEveryOperation(); }
    void aSecondAnswerReachesNobody();
    void noOddAnswerHurts_data() { addEveryOperation(); }
    void noOddAnswerHurts();
};

void tst_TrovekFaults::throwsTheServicesError()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, method);
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.failNext(method.toStdString(), wire::makeError("SomeError", "It does not work"));

    try {
        operation(client);
        QFAIL("Nothing thrown");
    } catch (const JsonRpcException& e) {
        QCOMPARE(e.message(), std::string("It does not work"));
        QCOMPARE(e.data()["name"].asString(), std::string("SomeError"));
    }
    QVERIFY(client.isConnected());
}

void tst_TrovekFaults::throwsWithoutALink()
{
    QFETCH(Operation, operation);
    TestLog log;
    RecordingTrovek client;
    QCOMPARE(thrownText([&] { operation(client); }), std::string("Not connected to the service"));
}

void tst_TrovekFaults::throwsWhenTheLinkIsLostMeanwhile()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, method);
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.dropConnectionOn(method.toStdString());

    QCOMPARE(thrownText([&] { operation(client); }),
             std::string("Connection closed by the other side"));
    QVERIFY(!client.isConnected());
    QCOMPARE(client.story(), std::string());
    QTRY_COMPARE(client.story(), std::string("disconnected"));
}

void tst_TrovekFaults::givesUpAfterItsDeadline()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, method);
    QFETCH(int, deadlineMs);
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    client.setDeadlineScale(0.0005);
    service.hangNext(method.toStdString());

    QCOMPARE(thrownText([&] { operation(client); }), "No answer to \"" + method.toStdString() +
                                                         "\" within " +
                                                         std::to_string(deadlineMs / 2000) + " ms");
    // Nobody knows what the service makes of the request, so the link is not used any more.
    QVERIFY(!client.isConnected());
    QCOMPARE(thrownText([&] { operation(client); }), std::string("Not connected to the service"));
    QTRY_COMPARE(client.story(), std::string("disconnected"));
}

void tst_TrovekFaults::throwsWhenTheLinkWasLostBefore()
{
    QFETCH(Operation, operation);
    TestLog log;
    ScriptedService service;
    addWhatEveryOperationNeeds(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    // The client has not come to know it yet.
    service.stop();

    QCOMPARE(thrownText([&] { operation(client); }),
             std::string("Connection closed by the other side"));
    QVERIFY(!client.isConnected());
    service.start();
    client.connectToDaemon(service.address());
    operation(client);
    QVERIFY(client.isConnected());
}

void tst_TrovekFaults::returnsWhenTheLinkIsLostAfterwards()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, method);
    TestLog log;
    ScriptedService service;
    addWhatEveryOperationNeeds(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.dropConnectionOn(method.toStdString(), ScriptedService::Drop::AfterAnswering);

    operation(client);

    QTRY_VERIFY(!client.isConnected());
    QTRY_VERIFY(!client.events.empty());
    QTRY_COMPARE(client.events.back(), std::string("disconnected"));
    client.connectToDaemon(service.address());
    operation(client);
    QVERIFY(client.isConnected());
}

void tst_TrovekFaults::aLateAnswerReachesNobody()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, method);
    TestLog log;
    ScriptedService service;
    addWhatEveryOperationNeeds(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QSemaphore mayAnswer;
    service.onRequest(method.toStdString(), [&mayAnswer](const Json::Value&) {
        mayAnswer.acquire();
        return json(R"({"id": 99})");
    });
    client.setDeadlineScale(0.0005);

    const std::string refusal = thrownText([&] { operation(client); });
    mayAnswer.release();

    QVERIFY(refusal.find("No answer to ") == 0);
    service.clearScripts(method.toStdString());
    QTRY_VERIFY(!client.events.empty() && client.events.back() == "disconnected");
    client.setDeadlineScale(1);
    client.connectToDaemon(service.address());
    operation(client);
    QVERIFY(client.isConnected());
    for (const std::string& event : client.events)
        QVERIFY2(event != "jobAdded 99", event.c_str());
}

void tst_TrovekFaults::aSecondAnswerReachesNobody()
{
    QFETCH(Operation, operation);
    TestLog log;
    ScriptedService service;
    addWhatEveryOperationNeeds(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());

    operation(client);
    // After the greeting and the subscription.
    log.expectError("Dropped the answer to the unknown request 3");
    service.sendRaw("{\"jsonrpc\":\"2.0\",\"id\":3,\"result\":{\"id\":99}}\n");

    QTRY_VERIFY(log.contains("Dropped the answer to the unknown request 3", Log::Error));
    operation(client);
    QVERIFY(client.isConnected());
}

void tst_TrovekFaults::noOddAnswerHurts()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, method);
    TestLog log;
    log.allowErrors("Firmware version left out");
    ScriptedService service;
    addWhatEveryOperationNeeds(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());

    for (const char* const answer :
         {"null", "5", "\"id\"", "[]", "[[]]", "{}", R"({"id": null})", R"({"id": 1e300})",
          R"({"id": [7]})", R"({"id": 7, "name": 5})", R"({"eeprom_map": 5})"}) {
        service.answerNext(method.toStdString(), json(answer));
        const std::string refusal = thrownText([&] { operation(client); });
        QVERIFY2(refusal == "nothing thrown" ||
                     refusal.find("Odd answer to " + method.toStdString()) == 0,
                 refusal.c_str());
        QVERIFY2(client.isConnected(), answer);
    }
}

QTEST_GUILESS_MAIN(tst_TrovekFaults)
#include "tst_trovek_faults.moc"
