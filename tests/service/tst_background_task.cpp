#include <service/background_task.h>

#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <atomic>
#include <stdexcept>

using namespace trovek::service;

class tst_BackgroundTask : public QObject
{
    Q_OBJECT

private slots:
    void worksOnAnotherThreadAndTellsOnThisOne();
    void tellsWhatTheWorkThrew();
    void cancelingAsksTheWorkToReturn();
    void destroyingWaitsForTheWork();
    void destroyingATaskThatWaitsForItsTurnNeverRunsIt();
    void aTaskThatWasNeverStartedIsHarmless();
    void tellsEqualProgressOnce();
};

void tst_BackgroundTask::worksOnAnotherThreadAndTellsOnThisOne()
{
    QThreadPool pool;
    std::atomic<QThread*> worker{nullptr};
    BackgroundTask task(pool, [&](BackgroundTask::Control&) { worker = QThread::currentThread(); });
    QThread* teller = nullptr;
    QString error = QStringLiteral("none yet");
    connect(&task, &BackgroundTask::ended, this, [&](const QString& text) {
        teller = QThread::currentThread();
        error = text;
    });

    task.start();

    QTRY_VERIFY(teller != nullptr);
    QCOMPARE(teller, QThread::currentThread());
    QVERIFY(worker != teller);
    QCOMPARE(error, QString());
}

void tst_BackgroundTask::tellsWhatTheWorkThrew()
{
    QThreadPool pool;
    BackgroundTask task(pool,
                        [](BackgroundTask::Control&) { throw std::runtime_error("Disk full"); });
    QSignalSpy ended(&task, &BackgroundTask::ended);

    task.start();

    QTRY_COMPARE(ended.count(), 1);
    QCOMPARE(ended[0][0].toString(), QStringLiteral("Disk full"));
}

void tst_BackgroundTask::cancelingAsksTheWorkToReturn()
{
    QThreadPool pool;
    BackgroundTask task(pool, [](BackgroundTask::Control& control) {
        while (!control.isCanceled())
            QThread::yieldCurrentThread();
    });
    QSignalSpy ended(&task, &BackgroundTask::ended);
    task.start();

    task.cancel();

    QTRY_COMPARE(ended.count(), 1);
}

void tst_BackgroundTask::destroyingWaitsForTheWork()
{
    QThreadPool pool;
    std::atomic<bool> returned{false};
    QSemaphore begun;
    {
        BackgroundTask task(pool, [&](BackgroundTask::Control& control) {
            begun.release();
            while (!control.isCanceled())
                QThread::yieldCurrentThread();
            returned = true;
        });
        task.start();
        begun.acquire();
    }

    QVERIFY(returned);
}

void tst_BackgroundTask::destroyingATaskThatWaitsForItsTurnNeverRunsIt()
{
    QThreadPool pool;
    pool.setMaxThreadCount(1);
    QSemaphore goOn;
    std::atomic<bool> ran{false};
    BackgroundTask first(pool, [&](BackgroundTask::Control&) { goOn.acquire(); });
    first.start();
    {
        BackgroundTask second(pool, [&](BackgroundTask::Control&) { ran = true; });
        second.start();
    }
    goOn.release();
    QVERIFY(pool.waitForDone(5000));

    QVERIFY(!ran);
}

void tst_BackgroundTask::aTaskThatWasNeverStartedIsHarmless()
{
    QThreadPool pool;
    BackgroundTask task(pool, [](BackgroundTask::Control&) {});
    task.cancel();
}

void tst_BackgroundTask::tellsEqualProgressOnce()
{
    QThreadPool pool;
    BackgroundTask task(pool, [](BackgroundTask::Control& control) {
        for (int i = 0; i < 1000; ++i)
            control.setProgress(i / 500);
    });
    QSignalSpy progressed(&task, &BackgroundTask::progressed);
    QSignalSpy ended(&task, &BackgroundTask::ended);

    task.start();

    QTRY_COMPARE(ended.count(), 1);
    QCOMPARE(progressed.count(), 2);
    QCOMPARE(progressed[1][0].toInt(), 1);
}

QTEST_GUILESS_MAIN(tst_BackgroundTask)
#include "tst_background_task.moc"
