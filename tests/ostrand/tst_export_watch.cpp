#include "support/scripted_service.h"
#include "support/test_log.h"

#include "apps/ostrand/export_watch.h"

#include <trovek-ui/export_job_mover.h>
#include <trovek-ui/trovekqt.h>
#include <trovek/wire.h>

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace ostrand;
using namespace trovek;

namespace {

struct World
{
    ScriptedService service;
    QTemporaryDir folder;
    TrovekQt facade;
    ExportJobMover mover{facade};
    ExportWatch watch{facade, [this] {
                          return mover.pendingExports();
                      }};
    QSignalSpy interrupted{&watch, &ExportWatch::interrupted};
    QSignalSpy lost{&watch, &ExportWatch::lost};
    QSignalSpy settled{&watch, &ExportWatch::settled};

    World() { connect(); }

    void connect() { facade.connectToDaemon(service.address()); }

    /** An export whose job runs; the service has written "result" already. */
    QString add(int id, const QString& name)
    {
        setJob(id, JobNotConcluded);
        QFile source(folder.filePath(name + QStringLiteral(".source")));
        if (!source.open(QIODevice::WriteOnly) || source.write("result") != 6)
            qFatal("cannot write %s", qPrintable(source.fileName()));
        const QString destination = folder.filePath(name);
        mover.addExport(id, destination, source.fileName());
        return destination;
    }

    void setJob(int id, JobConclusion conclusion)
    {
        Job::Data job;
        job.id = id;
        job.kind = "print_to_file";
        job.conclusion = conclusion;
        service.setJob(job);
    }

    void loseLink()
    {
        QSignalSpy gone(&facade, &TrovekQt::disconnected);
        service.dropConnections();
        QVERIFY(gone.wait());
    }

    static QStringList named(const QSignalSpy& spy)
    {
        return spy.isEmpty() ? QStringList() : spy.first().first().toStringList();
    }
};

} // namespace

class tst_ExportWatch : public QObject
{
    Q_OBJECT

private slots:
    void saysNothingWithoutExports();
    void namesWhatIsUnderWayWhenTheLinkBreaks();
    void anExportThatGoesOnIsNotLost();
    void anExportThatEndedMeanwhileIsFinished();
    void anExportThatFailedMeanwhileIsLost();
    void anExportThatWasCanceledMeanwhileIsNotLost();
    void anExportThatTheServiceForgotIsLostOnce();
    void aRefusalIsNotALoss();
    void aSecondLossInTheMiddleIsTakenUpByTheNextLink();
};

void tst_ExportWatch::saysNothingWithoutExports()
{
    TestLog log;
    World world;
    world.loseLink();
    world.connect();
    QTRY_VERIFY(world.settled.count() > 0);
    QCOMPARE(world.interrupted.count(), 0);
    QCOMPARE(world.lost.count(), 0);
}

void tst_ExportWatch::namesWhatIsUnderWayWhenTheLinkBreaks()
{
    TestLog log;
    World world;
    const QString b = world.add(2, QStringLiteral("b.x3g"));
    const QString a = world.add(1, QStringLiteral("a.x3g"));
    QCOMPARE(world.watch.unfinished(), QStringList({a, b}));
    world.loseLink();
    QCOMPARE(world.interrupted.count(), 1);
    QCOMPARE(world.named(world.interrupted), QStringList({a, b}));
}

void tst_ExportWatch::anExportThatGoesOnIsNotLost()
{
    TestLog log;
    World world;
    const QString path = world.add(1, QStringLiteral("a.x3g"));
    world.loseLink();
    world.settled.clear();
    world.connect();
    QTRY_COMPARE(world.settled.count(), 1);
    QCOMPARE(world.lost.count(), 0);
    QCOMPARE(world.watch.unfinished(), QStringList(path));
}

void tst_ExportWatch::anExportThatEndedMeanwhileIsFinished()
{
    TestLog log;
    World world;
    const QString path = world.add(1, QStringLiteral("a.x3g"));
    world.loseLink();
    world.settled.clear();
    world.setJob(1, JobEnded);
    world.connect();
    QTRY_COMPARE(world.settled.count(), 1);
    QVERIFY(world.watch.unfinished().isEmpty());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("result"));
}

void tst_ExportWatch::anExportThatFailedMeanwhileIsLost()
{
    TestLog log;
    World world;
    const QString path = world.add(1, QStringLiteral("a.x3g"));
    world.loseLink();
    world.setJob(1, JobFailed);
    world.connect();
    QTRY_COMPARE(world.lost.count(), 1);
    QCOMPARE(world.named(world.lost), QStringList(path));
    QVERIFY(!QFile::exists(path));
    QVERIFY(world.watch.unfinished().isEmpty());
}

void tst_ExportWatch::anExportThatWasCanceledMeanwhileIsNotLost()
{
    TestLog log;
    World world;
    const QString path = world.add(1, QStringLiteral("a.x3g"));
    world.loseLink();
    world.settled.clear();
    world.setJob(1, JobCanceled);
    world.connect();
    QTRY_COMPARE(world.settled.count(), 1);
    QCOMPARE(world.lost.count(), 0);
    QVERIFY(!QFile::exists(path));
}

void tst_ExportWatch::anExportThatTheServiceForgotIsLostOnce()
{
    TestLog log;
    World world;
    const QString gone = world.add(1, QStringLiteral("a.x3g"));
    world.service.failAlways("get_job", wire::makeError(wire::error::kUnknownJob, "No such job"));
    world.loseLink();
    world.connect();
    QTRY_COMPARE(world.lost.count(), 1);
    QCOMPARE(world.named(world.lost), QStringList(gone));
    QVERIFY(world.watch.unfinished().isEmpty());

    // The next loss is not about it any more.
    world.interrupted.clear();
    world.settled.clear();
    world.loseLink();
    world.connect();
    QTRY_COMPARE(world.settled.count(), 1);
    QCOMPARE(world.interrupted.count(), 0);
    QCOMPARE(world.lost.count(), 1);
}

void tst_ExportWatch::aRefusalIsNotALoss()
{
    TestLog log;
    World world;
    const QString path = world.add(1, QStringLiteral("a.x3g"));
    world.loseLink();
    world.settled.clear();
    world.service.failNext("get_job", wire::makeError(wire::error::kTooManyRequests, "later"));
    world.connect();
    QTRY_COMPARE(world.settled.count(), 1);
    QCOMPARE(world.lost.count(), 0);
    QCOMPARE(world.watch.unfinished(), QStringList(path));
}

void tst_ExportWatch::aSecondLossInTheMiddleIsTakenUpByTheNextLink()
{
    TestLog log;
    log.allowErrors("");
    World world;
    const QString path = world.add(1, QStringLiteral("a.x3g"));
    world.loseLink();
    world.settled.clear();
    world.service.dropConnectionOn("get_job");
    QSignalSpy gone(&world.facade, &TrovekQt::disconnected);
    world.connect();
    QVERIFY(gone.wait());
    QCOMPARE(world.settled.count(), 0);
    QCOMPARE(world.lost.count(), 0);
    world.service.clearScripts("get_job");
    world.setJob(1, JobEnded);
    world.connect();
    QTRY_COMPARE(world.settled.count(), 1);
    QVERIFY(world.watch.unfinished().isEmpty());
}

QTEST_GUILESS_MAIN(tst_ExportWatch)
#include "tst_export_watch.moc"
