#include "peer_world.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QLocalSocket>

#include <limits>
#include <stdexcept>

using rpcwire::JsonRpcException;
using rpcwire::Limits;
using rpcwire::Peer;

namespace {

const QString kClosedByOther = QStringLiteral("closed Connection closed by the other side");

QByteArray object(const QByteArray& members)
{
    return R"({"jsonrpc":"2.0",)" + members + "}\n";
}

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

class tst_Peer : public QObject
{
    Q_OBJECT

private slots:
    void needsAConnectedSocket();
    void talksToAnotherPeer_data() { addTransportRows(); }
    void talksToAnotherPeer();
    void writesOneMessageALine();
    void deliversWhatComesIn_data();
    void deliversWhatComesIn();
    void framesCutAtEveryByteGiveTheSame();
    void framesThatComeByteByByteGiveTheSame();
    void readsWhatCameBeforeIt();
    void closesOnWhatCannotBeTrusted_data();
    void closesOnWhatCannotBeTrusted();
    void refusesBadRequestsAndGoesOn_data();
    void refusesBadRequestsAndGoesOn();
    void logsOnlyTheStartOfALongName();
    void takesFramesUpToTheLimit_data();
    void takesFramesUpToTheLimit();
    void closesOnAFrameOverTheLimit_data();
    void closesOnAFrameOverTheLimit();
    void answersMayComeInAnyOrder();
    void readsErrorAnswers_data();
    void readsErrorAnswers();
    void dropsAnswersThatNobodyWaitsFor_data();
    void dropsAnswersThatNobodyWaitsFor();
    void forgottenRequestsStaySilent();
    void deliversOneMessageATurn();
    void deliversAFloodInOrder_data() { addTransportRows(); }
    void deliversAFloodInOrder();
    void refusesTooManyOpenRequests();
    void dropsASecondAnswer();
    void ownFramesOverTheLimitAreNotSent();
    void dropsWhoDoesNotRead_data() { addTransportRows(); }
    void dropsWhoDoesNotRead();
};

void tst_Peer::needsAConnectedSocket()
{
    const char* const text = "Peer needs a connected QLocalSocket or QTcpSocket";
    const auto failure = [](QIODevice* device) {
        try {
            Peer peer(device);
        } catch (const std::invalid_argument& error) {
            return QString::fromUtf8(error.what());
        }
        return QString();
    };
    QLocalSocket unconnected;
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    QCOMPARE(failure(&unconnected), QLatin1String(text));
    QCOMPARE(failure(&buffer), QLatin1String(text));
    QCOMPARE(failure(nullptr), QLatin1String(text));
}

void tst_Peer::talksToAnotherPeer()
{
    QFETCH(Transport, transport);
    PeerWorld world(Limits(), transport);
    Peer other(world.far.release());
    connect(&other, &Peer::requestReceived, this, [&other](const Peer::Request& request) {
        if (request.method == "fail")
            other.answerError(request, JsonRpcException("It failed", Json::Value("why"), -5));
        else
            other.answer(request, request.params);
    });

    other.notify("hello", Json::Value(Json::objectValue));
    world.request("echo");
    world.request("fail");
    QTRY_COMPARE(world.events.size(), 3);
    QCOMPARE(world.events,
             QStringList({QStringLiteral("notification hello {}"), QStringLiteral("answer 1 null"),
                          QStringLiteral("error 2 It failed")}));
    other.close("Enough");
    QTRY_COMPARE(world.events.size(), 4);
    QCOMPARE(world.events.last(), kClosedByOther);
    QVERIFY(world.logLines.isEmpty());
}

void tst_Peer::writesOneMessageALine()
{
    PeerWorld world;
    Json::Value params(Json::objectValue);
    params["text"] = "two\nlines \xFF";
    params["real"] = 5.0;
    world.peer->notify("with \"params\"", params);
    world.peer->notify("without", Json::Value());
    QCOMPARE(world.peer->request("ask", Json::Value(Json::arrayValue), nullptr), 1);
    world.send(object(R"("id":"x","method":"a")") + object(R"("id":null,"method":"b")"));
    QTRY_COMPARE(world.requests.size(), std::size_t(2));
    world.peer->answer(world.requests[0], Json::Value());
    world.peer->answerError(world.requests[1], JsonRpcException("No"));

    QTRY_COMPARE(world.received().size(), 5);
    QCOMPARE(world.received(),
             QStringList({QStringLiteral(R"({"jsonrpc":"2.0","method":"with \"params\"",)") +
                              QString::fromUtf8("\"params\":{\"real\":5.0,\"text\":\"two\\nlines "
                                                "\xEF\xBF\xBD\"}}"),
                          QStringLiteral(R"({"jsonrpc":"2.0","method":"without"})"),
                          QStringLiteral(R"({"jsonrpc":"2.0","id":1,"method":"ask","params":[]})"),
                          QStringLiteral(R"({"jsonrpc":"2.0","id":"x","result":null})"),
                          QStringLiteral(R"({"jsonrpc":"2.0","id":null,)"
                                         R"("error":{"code":-32000,"message":"No"}})")}));
}

void tst_Peer::deliversWhatComesIn_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("events");

    const auto row = [](const char* name, const QByteArray& bytes, const QStringList& events) {
        QTest::newRow(name) << bytes << events;
    };
    row("notification", object(R"("method":"n","params":{"a":1})"),
        {QStringLiteral("notification n {\"a\":1}")});
    row("params as an array", object(R"("method":"n","params":[1,2.0])"),
        {QStringLiteral("notification n [1,2.0]")});
    row("no params", object(R"("method":"n")"), {QStringLiteral("notification n null")});
    row("empty method", object(R"("method":"")"), {QStringLiteral("notification  null")});
    row("unknown members", object(R"("method":"n","extra":[])"),
        {QStringLiteral("notification n null")});
    row("method beside a result", object(R"("method":"n","result":1)"),
        {QStringLiteral("notification n null")});
    row("request", object(R"("id":7,"method":"r","params":[])"),
        {QStringLiteral("request r [] 7")});
    row("text as id", object(R"("id":"7","method":"r")"), {QStringLiteral("request r null \"7\"")});
    row("null as id", object(R"("id":null,"method":"r")"), {QStringLiteral("request r null null")});
    row("real as id", object(R"("id":1.5,"method":"r")"), {QStringLiteral("request r null 1.5")});
    row("huge id", object(R"("id":18446744073709551615,"method":"r")"),
        {QStringLiteral("request r null 18446744073709551615")});
    row("same id twice", object(R"("id":1,"method":"r")").repeated(2),
        {QStringLiteral("request r null 1"), QStringLiteral("request r null 1")});
    row("many in one piece", notificationBytes(0) + notificationBytes(1) + notificationBytes(2),
        notificationEvents(3));
    row("CR LF", notificationBytes(0).replace("\n", "\r\n") + notificationBytes(1),
        notificationEvents(2));
    row("empty lines", "\n\r\n\n" + notificationBytes(0) + "\r\n\n" + notificationBytes(1) + '\n',
        notificationEvents(2));
    row("white space around", "  " + notificationBytes(0).replace("\n", " \t\n"),
        notificationEvents(1));
}

void tst_Peer::deliversWhatComesIn()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, events);

    PeerWorld world;
    // The last one proves that nothing else came of the bytes.
    world.send(bytes + object(R"("method":"last")"));
    QTRY_VERIFY(world.events.contains(QStringLiteral("notification last null")));
    QCOMPARE(world.events, events + QStringList(QStringLiteral("notification last null")));
    QVERIFY(world.peer->isOpen());
    QVERIFY(world.logLines.isEmpty());
}

namespace {

const QByteArray kMixedStream = notificationBytes(0) + object(R"("id":1,"result":{"a":"ö"})") +
                                object(R"("id":9,"method":"r","params":[1])") + "\r\n" +
                                object(R"("id":2,"error":{"code":1,"message":"no"})") +
                                notificationBytes(1);

const QStringList kMixedEvents = {notificationEvent(0), QStringLiteral("answer 1 {\"a\":\"ö\"}"),
                                  QStringLiteral("request r [1] 9"), QStringLiteral("error 2 no"),
                                  notificationEvent(1)};

} // namespace

void tst_Peer::framesCutAtEveryByteGiveTheSame()
{
    for (int cut = 1; cut < kMixedStream.size(); ++cut) {
        PeerWorld world;
        world.request("first");
        world.request("second");
        world.sendAndRead(kMixedStream.left(cut));
        world.sendAndRead(kMixedStream.mid(cut));
        QTRY_COMPARE(world.events.size(), kMixedEvents.size());
        QCOMPARE(world.events, kMixedEvents);
        QVERIFY(world.logLines.isEmpty());
    }
}

void tst_Peer::framesThatComeByteByByteGiveTheSame()
{
    PeerWorld world;
    world.request("first");
    world.request("second");
    for (const char byte : kMixedStream)
        world.sendAndRead(QByteArray(1, byte));
    QTRY_COMPARE(world.events.size(), kMixedEvents.size());
    QCOMPARE(world.events, kMixedEvents);
}

void tst_Peer::readsWhatCameBeforeIt()
{
    Link link;
    writeNow(*link.far, notificationBytes(0));
    QVERIFY(link.near->waitForReadyRead(10000));
    Peer peer(link.near.release());
    int count = 0;
    connect(&peer, &Peer::notificationReceived, this, [&count] { ++count; });
    QTRY_COMPARE(count, 1);
}

void tst_Peer::closesOnWhatCannotBeTrusted_data()
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
    row("garbage", "hello\n", "A frame is not JSON: value expected at byte 0", parseError);
    row("zero bytes", QByteArray("\0\0\n", 3), "A frame is not JSON: value expected at byte 0",
        parseError);
    row("trailing data", "{} {}\n", "A frame is not JSON: more than one value at byte 3",
        parseError);
    row("cut object", "{\"jsonrpc\":\n",
        "A frame is not JSON: text ends where a value is expected at byte 11", parseError);
    row("nested too deeply", QByteArray(501, '[') + '\n',
        "A frame is not JSON: nested too deeply at byte 500", parseError);
    row("wrong charset", "\xFF\xFEh\n", "A frame is not JSON: value expected at byte 0",
        parseError);
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

void tst_Peer::closesOnWhatCannotBeTrusted()
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

void tst_Peer::refusesBadRequestsAndGoesOn_data()
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

void tst_Peer::refusesBadRequestsAndGoesOn()
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

void tst_Peer::logsOnlyTheStartOfALongName()
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

void tst_Peer::takesFramesUpToTheLimit_data()
{
    QTest::addColumn<QByteArray>("lineBreak");
    QTest::newRow("LF") << QByteArray("\n");
    QTest::newRow("CR LF") << QByteArray("\r\n");
}

void tst_Peer::takesFramesUpToTheLimit()
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

void tst_Peer::closesOnAFrameOverTheLimit_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("whole") << notificationOfSize(101) + '\n';
    QTest::newRow("unfinished") << notificationOfSize(101);
    QTest::newRow("only carriage returns") << QByteArray(102, '\r');
    QTest::newRow("far over") << QByteArray(300000, ' ');
}

void tst_Peer::closesOnAFrameOverTheLimit()
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

void tst_Peer::answersMayComeInAnyOrder()
{
    PeerWorld world;
    world.request("a");
    world.request("b");
    world.request("c");
    world.send(object(R"("id":3,"result":"c")") + object(R"("id":1,"result":"a")") +
               notificationBytes(0) + object(R"("id":2,"result":"b")"));
    QTRY_COMPARE(world.events.size(), 4);
    QCOMPARE(world.events,
             QStringList({QStringLiteral("answer 3 \"c\""), QStringLiteral("answer 1 \"a\""),
                          notificationEvent(0), QStringLiteral("answer 2 \"b\"")}));
}

void tst_Peer::readsErrorAnswers_data()
{
    QTest::addColumn<QByteArray>("error");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("data");

    QTest::newRow("complete") << QByteArray(R"({"code":-32601,"message":"m","data":{"name":"N"}})")
                              << -32601 << QByteArray(R"({"name":"N"})");
    QTest::newRow("message only") << QByteArray(R"({"message":"m"})") << -32000
                                  << QByteArray("null");
    QTest::newRow("text as code") << QByteArray(R"({"code":"x","message":"m"})") << -32000
                                  << QByteArray("null");
    QTest::newRow("code out of range")
        << QByteArray(R"({"code":4294967296,"message":"m"})") << -32000 << QByteArray("null");
    QTest::newRow("odd data") << QByteArray(R"({"code":1,"message":"m","data":[1]})") << 1
                              << QByteArray("[1]");
}

void tst_Peer::readsErrorAnswers()
{
    QFETCH(QByteArray, error);
    QFETCH(int, code);
    QFETCH(QByteArray, data);

    PeerWorld world;
    int calls = 0;
    world.peer->request(
        "a", Json::Value(), [&](const Json::Value& result, const std::exception* exception) {
            ++calls;
            QVERIFY(result.isNull());
            const auto* const answer = dynamic_cast<const JsonRpcException*>(exception);
            QVERIFY(answer);
            QCOMPARE(answer->message(), std::string("m"));
            QCOMPARE(answer->what(), "m");
            QCOMPARE(answer->code(), code);
            QCOMPARE(QByteArray::fromStdString(rpcwire::toJsonLine(answer->data())), data);
        });
    world.send(object("\"id\":1,\"error\":" + error));
    QTRY_COMPARE(calls, 1);
}

void tst_Peer::dropsAnswersThatNobodyWaitsFor_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("id");

    QTest::newRow("unknown id") << object(R"("id":2,"result":1)") << QStringLiteral("2");
    QTest::newRow("negative id") << object(R"("id":-1,"result":1)") << QStringLiteral("-1");
    QTest::newRow("zero") << object(R"("id":0,"result":1)") << QStringLiteral("0");
    QTest::newRow("huge id") << object(R"("id":18446744073709551615,"result":1)")
                             << QStringLiteral("18446744073709551615");
    QTest::newRow("id that wraps to a known one")
        << object(R"("id":4294967297,"result":1)") << QStringLiteral("4294967297");
    QTest::newRow("second answer")
        << object(R"("id":1,"error":{"code":1,"message":"m"})") << QStringLiteral("1");
}

void tst_Peer::dropsAnswersThatNobodyWaitsFor()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, id);

    PeerWorld world;
    world.request("a");
    world.send(object(R"("id":1,"result":true)") + answer + notificationBytes(0));
    QTRY_COMPARE(world.events,
                 QStringList({QStringLiteral("answer 1 true"), notificationEvent(0)}));
    QCOMPARE(world.logLines,
             QStringList(QStringLiteral("0 Dropped the answer to the unknown request ") + id));
    QVERIFY(world.peer->isOpen());
}

void tst_Peer::forgottenRequestsStaySilent()
{
    PeerWorld world;
    const int early = world.request("early");
    const int late = world.request("late");
    world.peer->forget(early);
    world.peer->forget(1000);
    world.sendAndRead(object(R"("id":1,"result":1)") + object(R"("id":2,"result":2)") +
                      notificationBytes(0));
    // Its answer is here, but not delivered yet.
    world.peer->forget(late);
    QTRY_COMPARE(world.events, notificationEvents(1));
    QVERIFY(world.logLines.isEmpty());

    world.send(object(R"("id":1,"result":1)"));
    QTRY_COMPARE(world.logLines.size(), 1);
}

void tst_Peer::deliversOneMessageATurn()
{
    PeerWorld world;
    world.sendAndRead(notificationBytes(0) + notificationBytes(1) + notificationBytes(2));
    QVERIFY(world.events.isEmpty());
    for (int turn = 1; turn <= 3; ++turn) {
        QCoreApplication::sendPostedEvents(world.peer.get());
        QCOMPARE(world.events, notificationEvents(turn));
    }
}

void tst_Peer::deliversAFloodInOrder()
{
    QFETCH(Transport, transport);
    constexpr int count = 60000;
    Link link(transport);
    QByteArray flood;
    for (int number = 0; number < count; ++number)
        flood += notificationBytes(number);
    QVERIFY(flood.size() > 2 * 1024 * 1024);
    Peer peer(link.near.release());
    int next = 0;
    bool inOrder = true;
    QString reason;
    connect(&peer, &Peer::notificationReceived, this,
            [&](const std::string&, const Json::Value& params) {
                inOrder = inOrder && params[0].asInt() == next;
                ++next;
            });
    connect(&peer, &Peer::closed, this,
            [&](const std::string& text) { reason = QString::fromStdString(text); });
    link.far->write(flood);
    if (auto* const socket = qobject_cast<QLocalSocket*>(link.far.get()))
        socket->disconnectFromServer();
    else
        link.far->close();
    QTRY_VERIFY_WITH_TIMEOUT(!reason.isEmpty(), 60000);
    QCOMPARE(reason, QStringLiteral("Connection closed by the other side"));
    QCOMPARE(next, count);
    QVERIFY(inOrder);
}

void tst_Peer::refusesTooManyOpenRequests()
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

void tst_Peer::dropsASecondAnswer()
{
    PeerWorld world;
    world.send(object(R"("id":1,"method":"a")"));
    QTRY_COMPARE(world.requests.size(), std::size_t(1));
    world.peer->answer(world.requests[0], 1);
    world.peer->answer(world.requests[0], 2);
    world.peer->answerError(world.requests[0], JsonRpcException("late"));
    world.peer->notify("marker", Json::Value());
    QTRY_COMPARE(world.received().size(), 2);
    QCOMPARE(world.received().first(), QStringLiteral(R"({"jsonrpc":"2.0","id":1,"result":1})"));
    const QString line = QStringLiteral("0 Dropped a second answer to the request \"a\"");
    QCOMPARE(world.logLines, QStringList({line, line}));
}

void tst_Peer::ownFramesOverTheLimitAreNotSent()
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

void tst_Peer::dropsWhoDoesNotRead()
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

QTEST_GUILESS_MAIN(tst_Peer)
#include "tst_peer.moc"
