#include "apps/ostrand/reconnector.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

using namespace ostrand;

class tst_Reconnector : public QObject
{
    Q_OBJECT

private slots:
    void pausesGrowToHalfAMinute();
    void waitsBeforeTheFirstAttempt();
    void pausesInOrderAndRepeatsTheLast();
    void stopsAfterASuccess();
    void beginsWithTheFirstPauseAfterASuccess();
    void aSecondStartChangesNothing();
    void triesAtOnceWhenAsked();
    void triesAtOnceWhenAskedDuringAPause();
    void anAttemptThatAsksForAnotherDoesNotNest();
    void anAttemptMayStopIt();
    void stopEndsThePause();
};

namespace {

std::vector<int> pausesOf(const QSignalSpy& waiting)
{
    std::vector<int> pauses;
    for (const QList<QVariant>& arguments : waiting)
        pauses.push_back(arguments.first().toInt());
    return pauses;
}

} // namespace

void tst_Reconnector::pausesGrowToHalfAMinute()
{
    QCOMPARE(Reconnector::standardPausesMs(),
             std::vector<int>({1000, 2000, 4000, 8000, 16000, 30000}));
}

void tst_Reconnector::waitsBeforeTheFirstAttempt()
{
    int attempts = 0;
    Reconnector reconnector([&] { return ++attempts > 0; }, {20});
    QElapsedTimer timer;
    timer.start();
    reconnector.start();
    QCOMPARE(attempts, 0);
    QVERIFY(reconnector.isActive());
    QVERIFY(reconnector.remainingMs() > 0);
    QTRY_COMPARE(attempts, 1);
    QVERIFY(timer.elapsed() >= 19);
}

void tst_Reconnector::pausesInOrderAndRepeatsTheLast()
{
    int attempts = 0;
    Reconnector reconnector([&] { return ++attempts == 5; }, {1, 2, 3});
    QSignalSpy waiting(&reconnector, &Reconnector::waiting);
    QSignalSpy succeeded(&reconnector, &Reconnector::succeeded);
    reconnector.start();
    QTRY_COMPARE(succeeded.count(), 1);
    QCOMPARE(pausesOf(waiting), std::vector<int>({1, 2, 3, 3, 3}));
    QCOMPARE(reconnector.attempts(), 5);
}

void tst_Reconnector::stopsAfterASuccess()
{
    Reconnector reconnector([] { return true; }, {1});
    QSignalSpy waiting(&reconnector, &Reconnector::waiting);
    QSignalSpy succeeded(&reconnector, &Reconnector::succeeded);
    reconnector.start();
    QTRY_COMPARE(succeeded.count(), 1);
    QVERIFY(!reconnector.isActive());
    QCOMPARE(reconnector.remainingMs(), 0);
    QCOMPARE(waiting.count(), 1);
}

void tst_Reconnector::beginsWithTheFirstPauseAfterASuccess()
{
    int attempts = 0;
    Reconnector reconnector([&] { return ++attempts % 3 == 0; }, {1, 2, 3});
    QSignalSpy waiting(&reconnector, &Reconnector::waiting);
    QSignalSpy succeeded(&reconnector, &Reconnector::succeeded);
    reconnector.start();
    QTRY_COMPARE(succeeded.count(), 1);
    reconnector.start();
    QTRY_COMPARE(succeeded.count(), 2);
    QCOMPARE(pausesOf(waiting), std::vector<int>({1, 2, 3, 1, 2, 3}));
}

void tst_Reconnector::aSecondStartChangesNothing()
{
    Reconnector reconnector([] { return true; }, {1000, 2000});
    QSignalSpy waiting(&reconnector, &Reconnector::waiting);
    reconnector.start();
    reconnector.start();
    QCOMPARE(waiting.count(), 1);
}

void tst_Reconnector::triesAtOnceWhenAsked()
{
    int attempts = 0;
    Reconnector reconnector([&] { return ++attempts == 2; }, {60000, 60000});
    QSignalSpy waiting(&reconnector, &Reconnector::waiting);
    reconnector.tryNow();
    QCOMPARE(attempts, 1);
    QVERIFY(reconnector.isActive());
    QCOMPARE(waiting.count(), 1);
}

void tst_Reconnector::triesAtOnceWhenAskedDuringAPause()
{
    int attempts = 0;
    Reconnector reconnector([&] { return ++attempts == 2; }, {60000, 50000, 40000});
    QSignalSpy waiting(&reconnector, &Reconnector::waiting);
    QSignalSpy succeeded(&reconnector, &Reconnector::succeeded);
    reconnector.start();
    reconnector.tryNow();
    QCOMPARE(pausesOf(waiting), std::vector<int>({60000, 50000}));
    reconnector.tryNow();
    QCOMPARE(succeeded.count(), 1);
    QVERIFY(!reconnector.isActive());
}

void tst_Reconnector::anAttemptThatAsksForAnotherDoesNotNest()
{
    int attempts = 0;
    Reconnector* self = nullptr;
    Reconnector reconnector(
        [&] {
            ++attempts;
            self->tryNow();
            return true;
        },
        {1});
    self = &reconnector;
    reconnector.tryNow();
    QCOMPARE(attempts, 1);
}

void tst_Reconnector::anAttemptMayStopIt()
{
    Reconnector* self = nullptr;
    Reconnector reconnector(
        [&] {
            self->stop();
            return false;
        },
        {1});
    self = &reconnector;
    QSignalSpy waiting(&reconnector, &Reconnector::waiting);
    QSignalSpy succeeded(&reconnector, &Reconnector::succeeded);
    reconnector.tryNow();
    QVERIFY(!reconnector.isActive());
    QCOMPARE(waiting.count(), 0);
    QCOMPARE(succeeded.count(), 0);
}

void tst_Reconnector::stopEndsThePause()
{
    Reconnector reconnector([] { return true; }, {60000});
    reconnector.start();
    reconnector.stop();
    QVERIFY(!reconnector.isActive());
    QCOMPARE(reconnector.remainingMs(), 0);
}

QTEST_GUILESS_MAIN(tst_Reconnector)
#include "tst_reconnector.moc"
