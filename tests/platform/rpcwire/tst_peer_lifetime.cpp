#include "peer_world.h"

#include <QEventLoop>
#include <QLocalSocket>

#include <stdexcept>

using rpcwire::ConnectionError;
using rpcwire::Limits;
using rpcwire::Peer;

namespace {

const QString kClosedByOther = QStringLiteral("Connection closed by the other side");

} // namespace

/** How a peer's connection ends, and what may happen to a peer while it delivers. */
class tst_PeerLifetime : public QObject
{
    Q_OBJECT

private slots:
    void theOtherSideVanishes_data() { addTransportRows(); }
    void theOtherSideVanishes();
    void deliversWhatCameBeforeTheEnd_data() { addTransportRows(); }
    void deliversWhatCameBeforeTheEnd();
    void logsAFrameThatTheEndCutOff();
    void closesFromTheEventLoop();
    void keepsTheFirstReason();
    void isSilentAfterClosing();
    void closesAfterWriting_data() { addTransportRows(); }
    void closesAfterWriting();
    void readsNothingWhileClosing();
    void closesAfterAWhileWhenTheOtherSideDoesNotRead();
    void mayBeDeletedWhileItDelivers_data();
    void mayBeDeletedWhileItDelivers();
    void mayBeDeletedByAHandlerThatThrows();
    void handlersDoNotRunAfterDeletion();
    void logsHandlersThatThrow();
    void mayDoWithoutAHandlerAndALog();
    void deliversInANestedEventLoop();
    void mayBeClosedInAReceiver();
};

void tst_PeerLifetime::theOtherSideVanishes()
{
    QFETCH(Transport, transport);
    PeerWorld world(Limits(), transport);
    world.request("a");
    world.request("b");
    QTRY_COMPARE(world.received().size(), 2);
    vanish(*world.far);
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events, QStringList({QStringLiteral("error 1 ") + kClosedByOther,
                                        QStringLiteral("error 2 ") + kClosedByOther,
                                        QStringLiteral("closed ") + kClosedByOther}));
    QVERIFY(!world.peer->isOpen());
    QVERIFY(world.logLines.isEmpty());
}

void tst_PeerLifetime::deliversWhatCameBeforeTheEnd()
{
    QFETCH(Transport, transport);
    PeerWorld world(Limits(), transport);
    world.request("a");
    QTRY_COMPARE(world.received().size(), 1);
    world.send(notificationBytes(0) + object(R"("id":1,"result":1)") + notificationBytes(1));
    vanish(*world.far);
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events,
             QStringList({notificationEvent(0), QStringLiteral("answer 1 1"), notificationEvent(1),
                          QStringLiteral("closed ") + kClosedByOther}));
}

void tst_PeerLifetime::logsAFrameThatTheEndCutOff()
{
    PeerWorld world;
    world.send(notificationBytes(0) + notificationBytes(1).chopped(1));
    vanish(*world.far);
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events,
             QStringList({notificationEvent(0), QStringLiteral("closed ") + kClosedByOther}));
    QCOMPARE(world.logLines, QStringList(QStringLiteral("1 The connection ended within a frame")));
}

void tst_PeerLifetime::closesFromTheEventLoop()
{
    PeerWorld world;
    world.request("a");
    world.sendAndRead(notificationBytes(0));
    QVERIFY(world.peer->closeReason().empty());
    world.peer->close("Enough");
    QVERIFY(!world.peer->isOpen());
    QCOMPARE(world.peer->closeReason(), std::string("Enough"));
    QVERIFY(world.events.isEmpty());

    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events, QStringList({notificationEvent(0), QStringLiteral("error 1 Enough"),
                                        QStringLiteral("closed Enough")}));
    QVERIFY(world.logLines.isEmpty());
    QTRY_VERIFY(hasEnded(*world.far));
}

void tst_PeerLifetime::keepsTheFirstReason()
{
    PeerWorld world;
    world.peer->close("first");
    world.peer->close("second");
    world.peer->closeAfterWriting("third");
    vanish(*world.far);
    QTRY_VERIFY(world.hasClosed());
    QCoreApplication::processEvents();
    QCOMPARE(world.events, QStringList(QStringLiteral("closed first")));
}

void tst_PeerLifetime::isSilentAfterClosing()
{
    PeerWorld world;
    world.send(object(R"("id":1,"method":"r")"));
    QTRY_COMPARE(world.requests.size(), std::size_t(1));
    world.peer->close("Enough");
    QTRY_VERIFY(world.hasClosed());
    world.events.clear();

    world.peer->notify("n", Json::Value());
    world.peer->answer(world.requests.front(), 1);
    world.peer->answerError(world.requests.front(), rpcwire::JsonRpcException("no"));
    world.request("late");
    const int forgotten = world.request("forgotten");
    world.peer->forget(forgotten);
    QVERIFY(world.events.isEmpty());
    bool thrown = false;
    try {
        world.peer->call("a", Json::Value(), 60000);
    } catch (const ConnectionError& error) {
        thrown = true;
        QCOMPARE(error.what(), "Enough");
    }
    QVERIFY(thrown);

    QTRY_COMPARE(world.events.size(), 1);
    QVERIFY(world.events.first().startsWith(QLatin1String("error ")));
    QVERIFY(world.events.first().endsWith(QLatin1String(" Enough")));
    QVERIFY(world.logLines.isEmpty());
    QVERIFY(world.received().isEmpty());
}

void tst_PeerLifetime::closesAfterWriting()
{
    QFETCH(Transport, transport);
    // More than the system's buffers take.
    constexpr int size = 20 * 1024 * 1024;
    PeerWorld world(Limits(), transport);
    world.request("pending");
    Json::Value params(Json::arrayValue);
    params.append(std::string(size, 'x'));
    world.peer->notify("n", params);
    world.peer->closeAfterWriting("Enough");
    QVERIFY(!world.peer->isOpen());
    QCOMPARE(world.peer->closeReason(), std::string("Enough"));
    world.peer->notify("not sent", Json::Value());

    QTRY_VERIFY_WITH_TIMEOUT(world.received().size() == 2, 60000);
    QVERIFY(world.received().last().size() > size);
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events,
             QStringList({QStringLiteral("error 1 Enough"), QStringLiteral("closed Enough")}));
}

void tst_PeerLifetime::readsNothingWhileClosing()
{
    PeerWorld world;
    Json::Value params(Json::arrayValue);
    params.append(std::string(5 * 1024 * 1024, 'x'));
    world.peer->notify("n", params);
    world.peer->closeAfterWriting("Enough");
    world.send(notificationBytes(0) + "garbage\n");
    QTRY_VERIFY(!world.received().isEmpty());
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events, QStringList(QStringLiteral("closed Enough")));
    QVERIFY(world.logLines.isEmpty());
}

void tst_PeerLifetime::closesAfterAWhileWhenTheOtherSideDoesNotRead()
{
    Limits limits;
    limits.closingMs = 50;
    PeerWorld world(limits);
    // Once it has that byte it takes nothing more.
    qobject_cast<QLocalSocket*>(world.far.get())->setReadBufferSize(1);
    Json::Value params(Json::arrayValue);
    params.append(std::string(5 * 1024 * 1024, 'x'));
    world.peer->notify("n", params);
    world.peer->closeAfterWriting("Enough");
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events, QStringList(QStringLiteral("closed Enough")));
}

void tst_PeerLifetime::mayBeDeletedWhileItDelivers_data()
{
    QTest::addColumn<QString>("where");
    for (const char* where : {"notification", "request", "answer", "error", "closed"})
        QTest::newRow(where) << QString::fromLatin1(where);
}

void tst_PeerLifetime::mayBeDeletedWhileItDelivers()
{
    QFETCH(QString, where);
    PeerWorld world;
    bool deleted = false;
    const auto destroy = [&](const QString& place) {
        if (place == where) {
            world.peer.reset();
            deleted = true;
        }
    };
    // What the handlers get must stay readable when the peer is gone.
    std::string lastText;
    connect(world.peer.get(), &Peer::notificationReceived, this,
            [&](const std::string& method, const Json::Value& params) {
                destroy(QStringLiteral("notification"));
                lastText = method + rpcwire::toJsonLine(params);
            });
    connect(world.peer.get(), &Peer::requestReceived, this, [&](const Peer::Request& request) {
        destroy(QStringLiteral("request"));
        lastText = request.method + rpcwire::toJsonLine(request.params);
    });
    connect(world.peer.get(), &Peer::closed, this, [&](const std::string& reason) {
        destroy(QStringLiteral("closed"));
        lastText = reason;
    });
    const auto handler = [&](const Json::Value& result, const std::exception* error) {
        destroy(error ? QStringLiteral("error") : QStringLiteral("answer"));
        lastText = error ? error->what() : rpcwire::toJsonLine(result);
    };
    world.peer->request("a", Json::Value(), handler);
    world.peer->request("b", Json::Value(), handler);
    world.peer->request("c", Json::Value(), handler);
    QTRY_COMPARE(world.received().size(), 3);
    world.send(notificationBytes(0) +
               object(R"("id":9,"method":"a long request's name","params":[])") +
               object(R"("id":1,"result":"a result that is long enough")") +
               object(R"("id":2,"error":{"message":"an error that is long enough"})"));
    vanish(*world.far);
    QTRY_VERIFY(deleted);
    QCoreApplication::processEvents();
    QVERIFY(!lastText.empty());
}

void tst_PeerLifetime::mayBeDeletedByAHandlerThatThrows()
{
    PeerWorld world;
    world.peer->request("a", Json::Value(), [&world](const Json::Value&, const std::exception*) {
        world.peer.reset();
        throw std::runtime_error("gone");
    });
    world.send(object(R"("id":1,"result":1)"));
    QTRY_COMPARE(world.logLines,
                 QStringList(QStringLiteral("0 A handler of an answer failed: gone")));
}

void tst_PeerLifetime::handlersDoNotRunAfterDeletion()
{
    PeerWorld world;
    world.request("answered");
    world.request("pending");
    world.sendAndRead(object(R"("id":1,"result":1)") + notificationBytes(0));
    world.peer.reset();
    QCoreApplication::processEvents();
    QVERIFY(world.events.isEmpty());
}

void tst_PeerLifetime::logsHandlersThatThrow()
{
    PeerWorld world;
    world.peer->request("a", Json::Value(), [](const Json::Value&, const std::exception*) {
        throw rpcwire::JsonRpcException("odd answer");
    });
    world.send(object(R"("id":1,"result":1)") + notificationBytes(0));
    QTRY_COMPARE(world.events, notificationEvents(1));
    QCOMPARE(world.logLines,
             QStringList(QStringLiteral("0 A handler of an answer failed: odd answer")));
}

void tst_PeerLifetime::mayDoWithoutAHandlerAndALog()
{
    PeerWorld world;
    world.peer->setLogFunction(nullptr);
    world.peer->request("a", Json::Value(), nullptr);
    world.send(object(R"("id":1,"result":1)") + object(R"("id":5,"result":1)") + "garbage\n");
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events.size(), 1);
}

void tst_PeerLifetime::deliversInANestedEventLoop()
{
    PeerWorld world;
    QEventLoop nested;
    bool returned = false;
    connect(world.peer.get(), &Peer::notificationReceived, this,
            [&](const std::string&, const Json::Value& params) {
                if (params[0].asInt() == 0) {
                    nested.exec();
                    returned = true;
                } else if (params[0].asInt() == 2) {
                    nested.quit();
                }
            });
    world.send(notificationBytes(0) + notificationBytes(1) + notificationBytes(2) +
               notificationBytes(3));
    QTRY_VERIFY(returned);
    QTRY_COMPARE(world.events, notificationEvents(4));
}

void tst_PeerLifetime::mayBeClosedInAReceiver()
{
    PeerWorld world;
    world.request("a");
    connect(world.peer.get(), &Peer::notificationReceived, this,
            [&world](const std::string&, const Json::Value& params) {
                if (params[0].asInt() == 0)
                    world.peer->close("Enough");
            });
    world.send(notificationBytes(0) + notificationBytes(1));
    QTRY_VERIFY(world.hasClosed());
    QCOMPARE(world.events,
             QStringList({notificationEvent(0), notificationEvent(1),
                          QStringLiteral("error 1 Enough"), QStringLiteral("closed Enough")}));
}

QTEST_GUILESS_MAIN(tst_PeerLifetime)
#include "tst_peer_lifetime.moc"
