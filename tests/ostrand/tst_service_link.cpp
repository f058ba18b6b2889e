#include "support/scripted_service.h"
#include "support/test_log.h"

#include "apps/ostrand/link_indicator.h"
#include "apps/ostrand/service_link.h"

#include <trovek-ui/trovekqt.h>

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <stdexcept>

using namespace ostrand;
using namespace trovek;

namespace {

/** A source that can be told what to do. */
class TestSource : public ServiceSource
{
public:
    explicit TestSource(ScriptedService& service)
        : m_service(service)
    {}

    Address address() override { return m_service.address(); }
    QString description() const override { return QStringLiteral("the test"); }
    bool canRestart() const override { return true; }
    void restart() override
    {
        if (refuses)
            throw std::runtime_error("will not start");
        m_service.stop();
        m_service.start();
        ++restarts;
    }

    bool refuses = false;
    int restarts = 0;

private:
    ScriptedService& m_service;
};

struct World
{
    ScriptedService service;
    TrovekQt facade;
    TestSource* source = new TestSource(service);
    ServiceLink link{facade, std::unique_ptr<ServiceSource>(source), {10, 20, 30}};
};

} // namespace

class tst_ServiceLink : public QObject
{
    Q_OBJECT

private slots:
    void connectsAtOnce();
    void keepsTryingWhenThereIsNoService();
    void comesBackAfterALoss();
    void comesBackAfterManyLosses();
    void connectingAgainWhileConnectedChangesNothing();
    void aServiceThatSaysNothingHoldsNobodyUpForLong();
    void restartsItsService();
    void aServiceThatWillNotStartIsTriedAgain();
    void anotherProgramsServiceCannotBeRestarted();
    void theIndicatorTellsTheState();
};

void tst_ServiceLink::connectsAtOnce()
{
    TestLog log;
    World world;
    QCOMPARE(world.link.state(), ServiceLink::Idle);
    QSignalSpy states(&world.link, &ServiceLink::stateChanged);
    world.link.connectNow();
    QCOMPARE(world.link.state(), ServiceLink::Connected);
    QCOMPARE(states.count(), 1);
    QVERIFY(world.link.failure().isEmpty());
}

void tst_ServiceLink::keepsTryingWhenThereIsNoService()
{
    TestLog log;
    World world;
    world.service.stop();
    world.link.connectNow();
    QCOMPARE(world.link.state(), ServiceLink::Waiting);
    QVERIFY(!world.link.failure().isEmpty());
    QVERIFY(world.link.remainingMs() > 0);
    world.service.start();
    QTRY_COMPARE(world.link.state(), ServiceLink::Connected);
    QVERIFY(world.link.failure().isEmpty());
}

void tst_ServiceLink::comesBackAfterALoss()
{
    TestLog log;
    World world;
    world.link.connectNow();
    QSignalSpy lost(&world.facade, &TrovekQt::disconnected);
    QSignalSpy back(&world.facade, &TrovekQt::connected);
    world.service.dropConnections();
    QTRY_COMPARE(lost.count(), 1);
    QTRY_COMPARE(back.count(), 1);
    QCOMPARE(world.link.state(), ServiceLink::Connected);
}

void tst_ServiceLink::comesBackAfterManyLosses()
{
    TestLog log;
    World world;
    world.link.connectNow();
    QSignalSpy back(&world.facade, &TrovekQt::connected);
    for (int i = 1; i <= 10; ++i) {
        world.service.dropConnections();
        QTRY_COMPARE(back.count(), i);
    }
}

void tst_ServiceLink::connectingAgainWhileConnectedChangesNothing()
{
    TestLog log;
    World world;
    world.link.connectNow();
    QSignalSpy states(&world.link, &ServiceLink::stateChanged);
    world.link.connectNow();
    QCOMPARE(states.count(), 0);
    QCOMPARE(world.service.requests("hello").size(), std::size_t(1));
}

void tst_ServiceLink::aServiceThatSaysNothingHoldsNobodyUpForLong()
{
    TestLog log;
    log.allowErrors("");
    World world;
    world.service.hangNext("hello");
    QElapsedTimer timer;
    timer.start();
    world.link.connectNow();
    QVERIFY(timer.elapsed() < 3000);
    QCOMPARE(world.link.state(), ServiceLink::Waiting);
    QTRY_COMPARE(world.link.state(), ServiceLink::Connected);
}

void tst_ServiceLink::restartsItsService()
{
    TestLog log;
    World world;
    world.link.connectNow();
    world.link.restartService();
    QCOMPARE(world.source->restarts, 1);
    QTRY_COMPARE(world.service.requests("hello").size(), std::size_t(2));
    QTRY_COMPARE(world.link.state(), ServiceLink::Connected);
    QVERIFY(world.facade.isConnected());
}

void tst_ServiceLink::aServiceThatWillNotStartIsTriedAgain()
{
    TestLog log;
    World world;
    world.service.stop();
    world.source->refuses = true;
    log.expectError("will not start");
    world.link.restartService();
    QCOMPARE(world.link.state(), ServiceLink::Waiting);
    QCOMPARE(world.link.failure(), QStringLiteral("will not start"));
    world.service.start();
    QTRY_COMPARE(world.link.state(), ServiceLink::Connected);
}

void tst_ServiceLink::anotherProgramsServiceCannotBeRestarted()
{
    TestLog log;
    ScriptedService service;
    TrovekQt facade;
    ServiceLink link(facade, std::make_unique<ForeignService>(Address::local("nobody")));
    QVERIFY(!link.canRestartService());
    QCOMPARE(link.description(), QStringLiteral("local:nobody"));
    log.expectError("The background service belongs to another program");
    link.restartService();
}

void tst_ServiceLink::theIndicatorTellsTheState()
{
    TestLog log;
    ScriptedService service;
    TrovekQt facade;
    ServiceLink link(facade, std::make_unique<TestSource>(service), {2500});
    LinkIndicator indicator(link);
    QCOMPARE(indicator.text(), QStringLiteral("Connecting to the background service"));
    link.connectNow();
    QCOMPARE(indicator.text(), QStringLiteral("Connected to the test"));
    service.stop();
    QTRY_COMPARE(indicator.text(),
                 QStringLiteral("No connection to the background service; next try in 3 s"));
    // It counts down by itself.
    QTRY_COMPARE(indicator.text(),
                 QStringLiteral("No connection to the background service; next try in 2 s"));
    service.start();
    QTRY_COMPARE(indicator.text(), QStringLiteral("Connected to the test"));
}

QTEST_MAIN(tst_ServiceLink)
#include "tst_service_link.moc"
