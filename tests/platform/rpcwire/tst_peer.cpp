#include "peer_world.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QLocalSocket>

#include <stdexcept>

using rpcwire::JsonRpcException;
using rpcwire::Limits;
using rpcwire::Peer;

namespace {

const QString kClosedByOther = QStringLiteral("closed Connection closed by the other side");

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
    void answersMayComeInAnyOrder();
    void readsErrorAnswers_data();
    void readsErrorAnswers();
    void dropsAnswersThatNobodyWaitsFor_data();
    void dropsAnswersThatNobodyWaitsFor();
    void forgottenRequestsStaySilent();
    void deliversOneMessageATurn();
    void deliversAFloodInOrder_data() { addTransportRows(); }
    void deliversAFloodInOrder();
    void dropsASecondAnswer();
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
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("id");

    const QByteArray right = object(R"("id":1,"result":true)");
    const auto row = [&right](const char* name, const char* id) {
        QTest::newRow(name) << object(QByteArray("\"id\":") + id + R"(,"result":1)") + right
                            << QString::fromLatin1(id);
    };
    row("unknown id", "2");
    row("negative id", "-1");
    row("zero", "0");
    row("huge id", "18446744073709551615");
    row("id that wraps to the right one", "4294967297");
    QTest::newRow("second answer")
        << right + object(R"("id":1,"error":{"code":1,"message":"m"})") << QStringLiteral("1");
}

void tst_Peer::dropsAnswersThatNobodyWaitsFor()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, id);

    PeerWorld world;
    world.request("a");
    world.send(bytes + notificationBytes(0));
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

    world.send(object(R"("id":1,"result":1)") + object(R"("id":2,"result":2)"));
    QTRY_COMPARE(world.logLines.size(), 2);
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

QTEST_GUILESS_MAIN(tst_Peer)
#include "tst_peer.moc"
