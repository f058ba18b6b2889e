#include "peer_world.h"

using rpcwire::Limits;

namespace {

/** A notification whose frame has that many bytes. */
QByteArray notificationOfSize(int bytes)
{
    const QByteArray start = R"({"jsonrpc":"2.0","method":"n","params":[")";
    const QByteArray end = "\"]}";
    return start + QByteArray(bytes - start.size() - end.size(), 'x') + end;
}

Limits frameLimit(int bytes)
{
    Limits limits;
    limits.frameBytes = bytes;
    return limits;
}

} // namespace

/** What a peer does not take from the other side, and what it does not send itself. */
class tst_PeerDistrust : public QObject
{
    Q_OBJECT

private slots:
    void closesOnWhatCannotBeTrusted_data();
    void closesOnWhatCannotBeTrusted();
    void refusesBadRequestsAndGoesOn_data();
    void refusesBadRequestsAndGoesOn();
    void logsOnlyTheStartOfALongName();
    void takesFramesUpToTheLimit_data();
    void takesFramesUpToTheLimit();
    void closesOnAFrameOverTheLimit_data();
    void closesOnAFrameOverTheLimit();
    void refusesTooManyOpenRequests();
    void ownFramesOverTheLimitAreNotSent();
    void dropsWhoDoesNotRead_data() { addTransportRows(); }
    void dropsWhoDoesNotRead();
    void readsNoFurtherWhileManyMessagesWait();
};

void tst_PeerDistrust::closesOnWhatCannotBeTrusted_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("reply");

    const auto row = [](const char* name, const QByteArray& bytes, const char* reason,
                        const char* reply = "") {
        QTest::newRow(name) << bytes << QString::fromUtf8(reason) << QString::fromUtf8(reply);
    };
    const char* const parseError =
        R"({"jsonrpc":"2.0","id":null,"error":{"code":-32700,"message":"Parse error"}})";
    const char* const invalidRequest =
        R"({"jsonrpc":"2.0","id":null,"error":{"code":-32600,"message":"Invalid request"}})";
    row("garbage", "hello\n", "A frame is not JSON: syntax error at byte 1", parseError);
    row("zero bytes", QByteArray("\0\0\n", 3), "A frame is not JSON: zero byte or byte order mark",
        parseError);
    row("trailing data", "{} {}\n", "A frame is not JSON: syntax error at byte 4", parseError);
    row("cut object", "{\"jsonrpc\":\n", "A frame is not JSON: syntax error at byte 12",
        parseError);
    row("nested too deeply", QByteArray(501, '[') + '\n', "A frame is not JSON: nested too deeply",
        parseError);
    row("wrong charset", "\xFF\xFEh\n", "A frame is not JSON: syntax error at byte 2", parseError);
    row("a number", "1\n", "A frame is not a JSON object", invalidRequest);
    row("a batch", "[" + notificationBytes(0).trimmed() + "]\n", "A frame is not a JSON object",
        invalidRequest);
    row("empty object", "{}\n", "An answer is odd: \"jsonrpc\" is not \"2.0\"");
    row("answer of version 1", "{\"id\":1,\"result\":1}\n",
        "An answer is odd: \"jsonrpc\" is not \"2.0\"");
    row("version as a number", "{\"jsonrpc\":2.0,\"id\":1,\"result\":1}\n",
        "An answer is odd: \"jsonrpc\" is not \"2.0\"");
    row("neither result nor error", object(R"("id":1)"),
        R"(An answer is odd: it needs either "result" or "error")");
    row("result and error", object(R"("id":1,"result":1,"error":{"code":1,"message":"m"})"),
        R"(An answer is odd: it needs either "result" or "error")");
    row("null as error", object(R"("id":1,"error":null)"),
        R"(An answer is odd: "error" is not an object with a "message")");
    row("text as error", object(R"("id":1,"error":"no")"),
        R"(An answer is odd: "error" is not an object with a "message")");
    row("error without message", object(R"("id":1,"error":{"code":1})"),
        R"(An answer is odd: "error" is not an object with a "message")");
    row("number as message", object(R"("id":1,"error":{"code":1,"message":5})"),
        R"(An answer is odd: "error" is not an object with a "message")");
    row("answer without id", object(R"("result":1)"),
        R"(An answer is odd: "id" is not an integer)");
    row("text as id", object(R"("id":"1","result":1)"),
        R"(An answer is odd: "id" is not an integer)");
    row("real as id", object(R"("id":1.0,"result":1)"),
        R"(An answer is odd: "id" is not an integer)");
    row("null as id", object(R"("id":null,"result":1)"),
        R"(An answer is odd: "id" is not an integer)");
    row("error for no request", object(R"("id":null,"error":{"code":-32700,"message":"Bad"})"),
        R"(An answer is odd: it belongs to no request and says "Bad")");
}

void tst_PeerDistrust::closesOnWhatCannotBeTrusted()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    QFETCH(QString, reply);

    PeerWorld world;
    world.request("pending");
    world.sendAndRead(notificationBytes(0) + bytes + notificationBytes(1));
    QVERIFY(!world.peer->isOpen());
    QCOMPARE(QString::fromStdString(world.peer->closeReason()), reason);
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events, QStringList({notificationEvent(0), QStringLiteral("error 1 ") + reason,
                                        QStringLiteral("closed ") + reason}));
    QCOMPARE(world.logLines, QStringList(QStringLiteral("0 ") + reason));
    QStringList lines(QStringLiteral(R"({"jsonrpc":"2.0","id":1,"method":"pending"})"));
    if (!reply.isEmpty())
        lines += reply;
    QTRY_COMPARE(world.received(), lines);
}

void tst_PeerDistrust::refusesBadRequestsAndGoesOn_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("defect");
    QTest::addColumn<QString>("id");

    const auto row = [](const char* name, const QByteArray& bytes, const char* defect,
                        const char* id = "") {
        QTest::newRow(name) << bytes << QString::fromUtf8(defect) << QString::fromUtf8(id);
    };
    row("number as method", object(R"("id":1,"method":5)"), "\"method\" is not a string", "1");
    row("null as method", object(R"("id":"a","method":null)"), "\"method\" is not a string",
        "\"a\"");
    row("text as params", object(R"("id":1,"method":"m","params":"p")"),
        "\"params\" is neither object nor array", "1");
    row("null as params", object(R"("id":1,"method":"m","params":null)"),
        "\"params\" is neither object nor array", "1");
    row("bad params of a notification", object(R"("method":"m","params":5)"),
        "\"params\" is neither object nor array");
    row("object as id", object(R"("id":{},"method":"m")"), "\"id\" is neither string nor number",
        "null");
    row("bool as id", object(R"("id":true,"method":"m")"), "\"id\" is neither string nor number",
        "null");
    row("no version", "{\"id\":1,\"method\":\"m\"}\n", "\"jsonrpc\" is not \"2.0\"", "1");
    row("version 1", "{\"jsonrpc\":\"1.0\",\"id\":1,\"method\":\"m\"}\n",
        "\"jsonrpc\" is not \"2.0\"", "1");
}

void tst_PeerDistrust::refusesBadRequestsAndGoesOn()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, defect);
    QFETCH(QString, id);

    PeerWorld world;
    world.send(bytes + notificationBytes(0));
    QTRY_COMPARE(world.events, notificationEvents(1));
    QVERIFY(world.peer->isOpen());
    QCOMPARE(world.logLines.size(), 1);
    QVERIFY(world.logLines.first().startsWith(QLatin1String("0 Dropped the bad request \"")));
    QVERIFY(world.logLines.first().endsWith(QStringLiteral("\": ") + defect));
    world.peer->notify("marker", Json::Value());
    QTRY_VERIFY(world.received().join(QString()).contains(QLatin1String("marker")));
    if (id.isEmpty()) {
        QCOMPARE(world.received().size(), 1);
        return;
    }
    QCOMPARE(world.received().size(), 2);
    Json::Value reply;
    QVERIFY(rpcwire::parseJson(world.received().first().toStdString(), &reply, nullptr));
    QCOMPARE(QString::fromStdString(rpcwire::toJsonLine(reply["id"])), id);
    QCOMPARE(reply["error"]["code"].asInt(), -32600);
    QCOMPARE(QString::fromStdString(reply["error"]["message"].asString()),
             QStringLiteral("Invalid request: ") + defect);
}

void tst_PeerDistrust::logsOnlyTheStartOfALongName()
{
    PeerWorld world;
    // The cut would fall into the two bytes of a letter.
    const QByteArray start = QByteArray(199, 'm');
    world.send(object("\"method\":\"" + start + "ö" + QByteArray(1000, 'x') + "\",\"params\":1"));
    QTRY_COMPARE(world.logLines.size(), 1);
    QCOMPARE(world.logLines.first(), QStringLiteral("0 Dropped the bad request \"%1\"...: "
                                                    "\"params\" is neither object nor array")
                                         .arg(QString::fromUtf8(start)));
}

void tst_PeerDistrust::takesFramesUpToTheLimit_data()
{
    QTest::addColumn<QByteArray>("lineBreak");
    QTest::newRow("LF") << QByteArray("\n");
    QTest::newRow("CR LF") << QByteArray("\r\n");
}

void tst_PeerDistrust::takesFramesUpToTheLimit()
{
    QFETCH(QByteArray, lineBreak);
    PeerWorld world(frameLimit(100));
    const QByteArray frame = notificationOfSize(100);
    QCOMPARE(frame.size(), 100);
    for (int cut : {99, 100, 101}) {
        const QByteArray bytes = frame + lineBreak;
        world.sendAndRead(bytes.left(cut));
        if (cut < bytes.size())
            world.sendAndRead(bytes.mid(cut));
    }
    QTRY_COMPARE(world.events.size(), 3);
    QVERIFY(world.peer->isOpen());
}

void tst_PeerDistrust::closesOnAFrameOverTheLimit_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("whole") << notificationOfSize(101) + '\n';
    QTest::newRow("unfinished") << notificationOfSize(101);
    QTest::newRow("only carriage returns") << QByteArray(102, '\r');
    QTest::newRow("far over") << QByteArray(300000, ' ');
}

void tst_PeerDistrust::closesOnAFrameOverTheLimit()
{
    QFETCH(QByteArray, bytes);
    PeerWorld world(frameLimit(100));
    world.sendAndRead(notificationBytes(0) + bytes.left(200));
    QVERIFY(!world.peer->isOpen());
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events,
             QStringList({notificationEvent(0),
                          QStringLiteral("closed A frame exceeds the limit of 100 bytes")}));
    QCOMPARE(world.logLines,
             QStringList(QStringLiteral("0 A frame exceeds the limit of 100 bytes")));
}

void tst_PeerDistrust::refusesTooManyOpenRequests()
{
    Limits limits;
    limits.openRequests = 2;
    PeerWorld world(limits);
    world.send(object(R"("id":1,"method":"a")") + object(R"("id":2,"method":"b")") +
               object(R"("id":3,"method":"c")") + notificationBytes(0));
    QTRY_COMPARE(world.events.size(), 3);
    QCOMPARE(world.events.last(), notificationEvent(0));
    QTRY_COMPARE(world.received(),
                 QStringList(QStringLiteral(
                     R"({"jsonrpc":"2.0","id":3,"error":{"code":-32000,"data":{"message":)"
                     R"("Too many requests wait for their answer","name":"TooManyRequests"},)"
                     R"("message":"Too many requests wait for their answer"}})")));
    QCOMPARE(world.logLines,
             QStringList(QStringLiteral("0 Dropped the request \"c\": too many wait")));

    world.peer->answer(world.requests[0], true);
    world.send(object(R"("id":4,"method":"d")"));
    QTRY_COMPARE(world.events.last(), QStringLiteral("request d null 4"));
}

void tst_PeerDistrust::ownFramesOverTheLimitAreNotSent()
{
    PeerWorld world(frameLimit(200));
    Json::Value large(Json::arrayValue);
    large.append(std::string(200, 'x'));
    world.peer->notify("large", large);
    QCOMPARE(world.logLines, QStringList(QStringLiteral(
                                 "0 Dropped the notification \"large\": Message is too large")));
    QString failure;
    world.peer->request("large", large,
                        [&failure](const Json::Value&, const std::exception* error) {
                            QVERIFY(dynamic_cast<const rpcwire::ConnectionError*>(error));
                            failure = QString::fromUtf8(error->what());
                        });
    QVERIFY(failure.isEmpty());
    QTRY_COMPARE(failure, QStringLiteral("Message is too large"));
    world.send(object(R"("id":5,"method":"a")"));
    QTRY_COMPARE(world.requests.size(), std::size_t(1));
    world.peer->answer(world.requests[0], large);
    QTRY_COMPARE(world.received(),
                 QStringList(QStringLiteral(R"({"jsonrpc":"2.0","id":5,"error":{"code":-32603,)"
                                            R"("message":"Message is too large"}})")));
    QCOMPARE(world.logLines.size(), 2);
    QCOMPARE(world.logLines.last(), QStringLiteral("0 The answer to \"a\" is too large"));
    QVERIFY(world.peer->isOpen());
}

void tst_PeerDistrust::dropsWhoDoesNotRead()
{
    QFETCH(Transport, transport);
    Limits limits;
    limits.pendingWriteBytes = 1024 * 1024;
    PeerWorld world(limits, transport);
    world.request("a");
    Json::Value params(Json::arrayValue);
    params.append(std::string(100000, 'x'));
    int sent = 0;
    for (; world.peer->isOpen() && sent < 1000; ++sent)
        world.peer->notify("n", params);
    QVERIFY(sent > 10);
    QVERIFY(sent < 1000);
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events, QStringList({QStringLiteral("error 1 The other side does not read"),
                                        QStringLiteral("closed The other side does not read")}));
    QCOMPARE(world.logLines, QStringList(QStringLiteral("0 The other side does not read")));
}

void tst_PeerDistrust::readsNoFurtherWhileManyMessagesWait()
{
    constexpr int count = 200000;
    PeerWorld world;
    QByteArray flood;
    for (int number = 0; number < count; ++number)
        flood += notificationBytes(number);
    world.far->write(flood);
    // Until nothing moves any more; without an event loop nothing is delivered meanwhile.
    auto* const socket = world.peer->findChild<QIODevice*>();
    while (world.far->waitForBytesWritten(50) || socket->waitForReadyRead(50)) {
    }
    QVERIFY(world.events.isEmpty());
    QVERIFY(world.far->bytesToWrite() > flood.size() / 2);

    QTRY_COMPARE_WITH_TIMEOUT(world.events.size(), count, 60000);
    QCOMPARE(world.events.last(), notificationEvent(count - 1));
}

QTEST_GUILESS_MAIN(tst_PeerDistrust)
#include "tst_peer_distrust.moc"
