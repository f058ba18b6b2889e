#include "link.h"

#include <rpcwire/json_text.h>
#include <rpcwire/peer.h>

#include <QElapsedTimer>
#include <QTest>

#include <atomic>

using rpcwire::ConnectionError;
using rpcwire::JsonRpcException;
using rpcwire::Limits;
using rpcwire::Peer;

namespace {

/** No call of these tests may take so long, unless it waits for its deadline. */
constexpr int kLongMs = 60000;

QByteArray notification(int number)
{
    return object(R"("method":"n","params":[)" + QByteArray::number(number) + "]");
}

Json::Value parsed(const QByteArray& line)
{
    Json::Value value;
    rpcwire::parseJson(line.toStdString(), &value, nullptr);
    return value;
}

QByteArray idOf(const QByteArray& line)
{
    return QByteArray::number(parsed(line)["id"].asInt());
}

QByteArray resultFor(const QByteArray& line, const QByteArray& result)
{
    return object("\"id\":" + idOf(line) + ",\"result\":" + result);
}

/** Answers every request with its params, and lets notifications pass. */
void echo(QIODevice& socket, const QByteArray& line)
{
    const Json::Value message = parsed(line);
    if (message.isMember("id"))
        writeNow(socket, resultFor(line, QByteArray::fromStdString(
                                             rpcwire::toJsonLine(message["params"]))));
}

/** What the call came to: its result as text, or the kind and text of what it threw. */
QString outcomeOf(Peer& peer, const std::string& method, int timeoutMs = kLongMs,
                  const Json::Value& params = Json::Value())
{
    try {
        return QString::fromStdString(rpcwire::toJsonLine(peer.call(method, params, timeoutMs)));
    } catch (const JsonRpcException& error) {
        return QStringLiteral("error %1").arg(QString::fromUtf8(error.what()));
    } catch (const ConnectionError& error) {
        return QStringLiteral("lost: %1").arg(QString::fromUtf8(error.what()));
    }
}

/** All that a peer emits, in order. */
class Events
{
public:
    explicit Events(Peer& peer)
    {
        QObject::connect(&peer, &Peer::notificationReceived, &peer,
                         [this](const std::string&, const Json::Value& params) {
                             list += QStringLiteral("n%1").arg(params[0].asInt());
                         });
        QObject::connect(
            &peer, &Peer::requestReceived, &peer, [this](const Peer::Request& request) {
                list += QStringLiteral("request ") + QString::fromStdString(request.method);
            });
        QObject::connect(&peer, &Peer::closed, &peer, [this](const std::string& reason) {
            list += QStringLiteral("closed ") + QString::fromStdString(reason);
        });
    }

    Peer::AnswerHandler handler(const QString& name)
    {
        return [this, name](const Json::Value& result, const std::exception* error) {
            list += name + QLatin1Char(' ') +
                    (error ? QString::fromUtf8(error->what())
                           : QString::fromStdString(rpcwire::toJsonLine(result)));
        };
    }

    QStringList list;
};

} // namespace

/** Calls, each with the other end in a thread of its own. */
class tst_PeerCall : public QObject
{
    Q_OBJECT

private slots:
    void returnsTheResult_data() { addTransportRows(); }
    void returnsTheResult();
    void throwsTheErrorAnswer();
    void countsCalls();
    void takesLargeMessagesBothWays_data() { addTransportRows(); }
    void takesLargeMessagesBothWays();
    void answersCutAtEveryByteGiveTheSame();
    void deliversNothingInsideTheCall();
    void overtakesWhatIsQueued();
    void readsAFloodBeforeItsAnswer();
    void mayBeMadeInReceivers();
    void ignoresAnswersToOthers();
    void refusesAMessageOverTheLimitAndGoesOn();
    void closesWhenTheDeadlinePasses_data();
    void closesWhenTheDeadlinePasses();
    void endsAtOnceWhenTheConnectionIsLost_data();
    void endsAtOnceWhenTheConnectionIsLost();
    void endsAtOnceOnWhatCannotBeTrusted_data();
    void endsAtOnceOnWhatCannotBeTrusted();
    void returnsAnAnswerThatStandsBeforeTheEnd();
    void throwsAtOnceWhenClosed();
};

void tst_PeerCall::returnsTheResult()
{
    QFETCH(Transport, transport);
    FarEnd far(echo, transport);
    Peer peer(far.takeNear());
    Json::Value params(Json::objectValue);
    params["text"] = "grün";
    params["real"] = 5.0;
    QCOMPARE(peer.call("echo", params, kLongMs), params);
    QCOMPARE(peer.call("echo", Json::Value(), kLongMs), Json::Value());
    QVERIFY(peer.isOpen());
}

void tst_PeerCall::throwsTheErrorAnswer()
{
    FarEnd far([](QIODevice& socket, const QByteArray& line) {
        writeNow(socket,
                 object("\"id\":" + idOf(line) +
                        R"(,"error":{"code":-7,"message":"It fails","data":{"name":"E"}})"));
    });
    Peer peer(far.takeNear());
    bool thrown = false;
    try {
        peer.call("fail", Json::Value(), kLongMs);
    } catch (const JsonRpcException& error) {
        thrown = true;
        QCOMPARE(error.message(), std::string("It fails"));
        QCOMPARE(error.what(), "It fails");
        QCOMPARE(error.code(), -7);
        QCOMPARE(error.data()["name"].asString(), std::string("E"));
    }
    QVERIFY(thrown);
    QVERIFY(peer.isOpen());
    QCOMPARE(outcomeOf(peer, "again"), QStringLiteral("error It fails"));
}

void tst_PeerCall::countsCalls()
{
    FarEnd far(echo);
    Peer peer(far.takeNear());
    QCOMPARE(peer.callCount(), quint64(0));
    peer.call("a", Json::Value(), kLongMs);
    peer.request("b", Json::Value(), nullptr);
    peer.notify("c", Json::Value());
    QCOMPARE(peer.callCount(), quint64(1));
    peer.close("Enough");
    QCOMPARE(outcomeOf(peer, "d"), QStringLiteral("lost: Enough"));
    QCOMPARE(peer.callCount(), quint64(2));
}

void tst_PeerCall::takesLargeMessagesBothWays()
{
    QFETCH(Transport, transport);
    FarEnd far(echo, transport);
    Peer peer(far.takeNear());
    Json::Value params(Json::arrayValue);
    params.append(std::string(8 * 1024 * 1024, 'x'));
    QVERIFY(peer.call("echo", params, kLongMs) == params);
}

void tst_PeerCall::answersCutAtEveryByteGiveTheSame()
{
    std::atomic<int> cut{0};
    FarEnd far([&cut](QIODevice& socket, const QByteArray& line) {
        const QByteArray bytes = notification(1) + resultFor(line, R"({"a":"ö"})");
        writeNow(socket, bytes.left(cut));
        writeNow(socket, bytes.mid(cut));
    });
    Peer peer(far.takeNear());
    Events events(peer);
    const int size = (notification(1) + object(R"("id":1,"result":{"a":"ö"})")).size();
    for (cut = 0; cut <= size; ++cut)
        QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("{\"a\":\"ö\"}"));
    QVERIFY(peer.isOpen());
    QTRY_COMPARE(events.list.size(), size + 1);
}

void tst_PeerCall::deliversNothingInsideTheCall()
{
    FarEnd far([](QIODevice& socket, const QByteArray& line) {
        if (parsed(line)["method"] == "later")
            return;
        writeNow(socket, notification(1) + object(R"("id":1,"result":"later")") +
                             object(R"("id":"x","method":"ask")") + notification(2) +
                             resultFor(line, "true") + notification(3));
    });
    Peer peer(far.takeNear());
    Events events(peer);
    peer.request("later", Json::Value(), events.handler(QStringLiteral("later")));
    QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("true"));
    QVERIFY(events.list.isEmpty());
    QTRY_COMPARE(events.list.size(), 5);
    QCOMPARE(events.list, QStringList({QStringLiteral("n1"), QStringLiteral("later \"later\""),
                                       QStringLiteral("request ask"), QStringLiteral("n2"),
                                       QStringLiteral("n3")}));
}

void tst_PeerCall::overtakesWhatIsQueued()
{
    std::atomic<int> number{0};
    FarEnd far([&number](QIODevice& socket, const QByteArray& line) {
        writeNow(socket, notification(++number) + resultFor(line, "true"));
    });
    Peer peer(far.takeNear());
    Events events(peer);
    QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("true"));
    QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("true"));
    QVERIFY(events.list.isEmpty());
    QTRY_COMPARE(events.list, QStringList({QStringLiteral("n1"), QStringLiteral("n2")}));
}

void tst_PeerCall::readsAFloodBeforeItsAnswer()
{
    constexpr int count = 30000;
    FarEnd far([](QIODevice& socket, const QByteArray& line) {
        QByteArray flood;
        for (int number = 0; number < count; ++number)
            flood += notification(number);
        writeNow(socket, flood + resultFor(line, "true"));
    });
    Peer peer(far.takeNear());
    Events events(peer);
    QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("true"));
    QTRY_COMPARE_WITH_TIMEOUT(events.list.size(), count, kLongMs);
    QCOMPARE(events.list.first(), QStringLiteral("n0"));
    QCOMPARE(events.list.last(), QStringLiteral("n29999"));
}

void tst_PeerCall::mayBeMadeInReceivers()
{
    FarEnd far([](QIODevice& socket, const QByteArray& line) {
        if (parsed(line)["method"] == "start")
            writeNow(socket, notification(1) + notification(2));
        else
            writeNow(socket, resultFor(line, "true"));
    });
    Peer peer(far.takeNear());
    QStringList events;
    connect(&peer, &Peer::notificationReceived, this,
            [&](const std::string&, const Json::Value& params) {
                events += QStringLiteral("n%1").arg(params[0].asInt());
                events += outcomeOf(peer, "m");
                peer.request("r", Json::Value(), [&](const Json::Value&, const std::exception*) {
                    events += QStringLiteral("handler ") + outcomeOf(peer, "m");
                });
            });
    peer.notify("start", Json::Value());
    QTRY_COMPARE(events.size(), 6);
    QCOMPARE(events, QStringList({QStringLiteral("n1"), QStringLiteral("true"),
                                  QStringLiteral("n2"), QStringLiteral("true"),
                                  QStringLiteral("handler true"), QStringLiteral("handler true")}));
}

void tst_PeerCall::ignoresAnswersToOthers()
{
    FarEnd far([](QIODevice& socket, const QByteArray& line) {
        writeNow(socket, object(R"("id":77,"result":"other")") + resultFor(line, "true") +
                             resultFor(line, "false"));
    });
    Peer peer(far.takeNear());
    QStringList log;
    peer.setLogFunction(
        [&log](int, const std::string& text) { log += QString::fromStdString(text); });
    QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("true"));
    QTRY_COMPARE(log, QStringList({QStringLiteral("Dropped the answer to the unknown request 77"),
                                   QStringLiteral("Dropped the answer to the unknown request 1")}));
    QVERIFY(peer.isOpen());
}

void tst_PeerCall::refusesAMessageOverTheLimitAndGoesOn()
{
    FarEnd far(echo);
    Limits limits;
    limits.frameBytes = 100;
    Peer peer(far.takeNear(), limits);
    Json::Value params(Json::arrayValue);
    params.append(std::string(100, 'x'));
    QCOMPARE(outcomeOf(peer, "m", kLongMs, params), QStringLiteral("lost: Message is too large"));
    QVERIFY(peer.isOpen());
    QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("null"));
}

void tst_PeerCall::closesWhenTheDeadlinePasses_data()
{
    QTest::addColumn<QByteArray>("meanwhile");
    QTest::addColumn<int>("timeoutMs");
    QTest::newRow("silence") << QByteArray() << 30;
    QTest::newRow("notifications") << notification(1) << 30;
    QTest::newRow("half an answer") << object(R"("id":2,"result":1)").left(20) << 30;
    QTest::newRow("no time at all") << QByteArray() << 0;
    QTest::newRow("less than none") << QByteArray() << -1;
}

void tst_PeerCall::closesWhenTheDeadlinePasses()
{
    QFETCH(QByteArray, meanwhile);
    QFETCH(int, timeoutMs);
    FarEnd far([meanwhile](QIODevice& socket, const QByteArray&) { writeNow(socket, meanwhile); });
    Peer peer(far.takeNear());
    Events events(peer);
    peer.request("pending", Json::Value(), events.handler(QStringLiteral("pending")));
    QElapsedTimer timer;
    timer.start();
    const QString reason = QStringLiteral("No answer to \"slow\" within %1 ms").arg(timeoutMs);
    QCOMPARE(outcomeOf(peer, "slow", timeoutMs), QStringLiteral("lost: ") + reason);
    QVERIFY(timer.elapsed() >= timeoutMs);
    QVERIFY(!peer.isOpen());
    events.list.removeAll(QStringLiteral("n1"));
    QVERIFY(events.list.isEmpty());
    QCOMPARE(outcomeOf(peer, "next"), QStringLiteral("lost: ") + reason);
    QTRY_VERIFY(events.list.contains(QStringLiteral("closed ") + reason));
    events.list.removeAll(QStringLiteral("n1"));
    QCOMPARE(events.list, QStringList({QStringLiteral("pending ") + reason,
                                       QStringLiteral("closed ") + reason}));
}

void tst_PeerCall::endsAtOnceWhenTheConnectionIsLost_data()
{
    QTest::addColumn<Transport>("transport");
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("local socket, nothing") << Transport::Local << QByteArray();
    QTest::newRow("local socket, a notification") << Transport::Local << notification(1);
    QTest::newRow("local socket, half an answer")
        << Transport::Local << object(R"("id":2,"result":1)").left(20);
    QTest::newRow("TCP socket, nothing") << Transport::Tcp << QByteArray();
    QTest::newRow("TCP socket, a notification") << Transport::Tcp << notification(1);
}

void tst_PeerCall::endsAtOnceWhenTheConnectionIsLost()
{
    QFETCH(Transport, transport);
    QFETCH(QByteArray, before);
    FarEnd far(
        [before](QIODevice& socket, const QByteArray& line) {
            if (parsed(line)["method"] == "pending")
                return;
            writeNow(socket, before);
            vanish(socket);
        },
        transport);
    Peer peer(far.takeNear());
    Events events(peer);
    peer.request("pending", Json::Value(), events.handler(QStringLiteral("pending")));
    QElapsedTimer timer;
    timer.start();
    const QString reason = QStringLiteral("Connection closed by the other side");
    QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("lost: ") + reason);
    QVERIFY(timer.elapsed() < kLongMs / 2);
    QVERIFY(events.list.isEmpty());
    QVERIFY(!peer.isOpen());
    QTRY_VERIFY(events.list.contains(QStringLiteral("closed ") + reason));
    QStringList expected({QStringLiteral("pending ") + reason, QStringLiteral("closed ") + reason});
    if (before == notification(1))
        expected.prepend(QStringLiteral("n1"));
    QCOMPARE(events.list, expected);
}

void tst_PeerCall::endsAtOnceOnWhatCannotBeTrusted_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    QTest::newRow("garbage") << QByteArray("hello\n")
                             << QStringLiteral("A frame is not JSON: syntax error at byte 1");
    QTest::newRow("too long") << QByteArray(1000, ' ')
                              << QStringLiteral("A frame exceeds the limit of 500 bytes");
    QTest::newRow("odd answer") << object("\"id\":1")
                                << QStringLiteral(
                                       R"(An answer is odd: it needs either "result" or "error")");
}

void tst_PeerCall::endsAtOnceOnWhatCannotBeTrusted()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    FarEnd far([bytes](QIODevice& socket, const QByteArray& line) {
        writeNow(socket, bytes + resultFor(line, "true"));
    });
    Limits limits;
    limits.frameBytes = 500;
    Peer peer(far.takeNear(), limits);
    Events events(peer);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("lost: ") + reason);
    QVERIFY(timer.elapsed() < kLongMs / 2);
    QVERIFY(events.list.isEmpty());
    QTRY_COMPARE(events.list, QStringList(QStringLiteral("closed ") + reason));
}

void tst_PeerCall::returnsAnAnswerThatStandsBeforeTheEnd()
{
    FarEnd far([](QIODevice& socket, const QByteArray& line) {
        writeNow(socket, resultFor(line, "true") + "garbage\n");
        vanish(socket);
    });
    Peer peer(far.takeNear());
    Events events(peer);
    QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("true"));
    QTRY_COMPARE(events.list,
                 QStringList(QStringLiteral("closed A frame is not JSON: syntax error at byte 1")));
}

void tst_PeerCall::throwsAtOnceWhenClosed()
{
    FarEnd far(echo);
    Peer peer(far.takeNear());
    peer.closeAfterWriting("Enough");
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(outcomeOf(peer, "m"), QStringLiteral("lost: Enough"));
    QVERIFY(timer.elapsed() < kLongMs / 2);
}

QTEST_GUILESS_MAIN(tst_PeerCall)
#include "tst_peer_call.moc"
