#include "support/scripted_service.h"
#include "support/test_log.h"

#include "apps/ostrand/job_list_model.h"

#include <trovek-ui/trovekqt.h>
#include <trovek/wire.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace ostrand;
using namespace trovek;

namespace {

struct World
{
    ScriptedService service;
    TrovekQt facade;
    JobListModel model{facade};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};

    World()
    {
        Printer::Data machine = ScriptedService::machine("left", Printer::Fabrino2);
        machine.displayName = "Left machine";
        service.addPrinter(machine);
        facade.connectToDaemon(service.address());
    }

    Job::Data add(int id, const std::string& name = "part", const std::string& kind = "print")
    {
        Job::Data job;
        job.id = id;
        job.name = name;
        job.kind = kind;
        job.machine = MachineName("left");
        job.stage = "Heating";
        job.secondsLeft = 90;
        service.setJob(job);
        service.notifyJobAdded(id);
        return job;
    }

    QString text(int row, int column) const { return model.index(row, column).data().toString(); }
};

} // namespace

class tst_JobListModel : public QObject
{
    Q_OBJECT

private slots:
    void namesItsColumns();
    void showsAJobThatWasAdded();
    void showsAJobOfWhichOnlyAChangeWasHeard();
    void followsProgress();
    void asksOnceForManyNotifications();
    void showsHowAJobEnded_data();
    void showsHowAJobEnded();
    void saysWhatHasBecomeOfIt_data();
    void saysWhatHasBecomeOfIt();
    void leavesShortMotionsOut_data();
    void leavesShortMotionsOut();
    void cancelsARunningJob();
    void cancelsNothingElse();
    void survivesARefusedCancel();
    void clearsOnlyWhatHasEnded();
    void keepsAnOddNameAsItIs();
    void marksRunningJobsWithoutALink();
    void takesJobsUpAgainAfterALoss();
    void losesJobsThatTheServiceForgot();
    void ignoresAnUnknownJob();
    void namesTheMachineByItsKeyWhenItIsGone();
    void textOfADuration_data();
    void textOfADuration();
};

void tst_JobListModel::namesItsColumns()
{
    World world;
    QStringList names;
    for (int column = 0; column < world.model.columnCount(); ++column)
        names.append(world.model.headerData(column, Qt::Horizontal).toString());
    QCOMPARE(names,
             QStringList({QStringLiteral("Job"), QStringLiteral("Machine"), QStringLiteral("Stage"),
                          QStringLiteral("Progress"), QStringLiteral("Time left")}));
}

void tst_JobListModel::showsAJobThatWasAdded()
{
    TestLog log;
    World world;
    QSignalSpy counts(&world.model, &JobListModel::countsChanged);
    world.add(7);
    QTRY_COMPARE(world.model.rowCount(), 1);
    QCOMPARE(counts.count(), 1);
    QCOMPARE(world.text(0, JobListModel::NameColumn), QStringLiteral("part"));
    QCOMPARE(world.text(0, JobListModel::MachineColumn), QStringLiteral("Left machine"));
    QCOMPARE(world.text(0, JobListModel::StageColumn), QStringLiteral("Heating"));
    QCOMPARE(world.text(0, JobListModel::ProgressColumn), QStringLiteral("0%"));
    QCOMPARE(world.text(0, JobListModel::TimeLeftColumn), QStringLiteral("2 min"));
    QCOMPARE(world.model.index(0, 0).data(JobListModel::IDRole).toInt(), 7);
    QCOMPARE(world.model.runningCount(), 1);
    QCOMPARE(world.model.runningPrintCount(), 1);
    QVERIFY(world.model.isPrint(0));
}

void tst_JobListModel::showsAJobOfWhichOnlyAChangeWasHeard()
{
    World world;
    Job::Data job;
    job.id = 3;
    job.name = "older";
    job.kind = "print_to_file";
    world.service.setJob(job);
    world.service.notifyJobChanged(3);
    QTRY_COMPARE(world.model.rowCount(), 1);
    QCOMPARE(world.text(0, JobListModel::StageColumn), QStringLiteral("Waiting"));
    QCOMPARE(world.model.runningPrintCount(), 0);
}

void tst_JobListModel::followsProgress()
{
    World world;
    Job::Data job = world.add(7);
    QTRY_COMPARE(world.model.rowCount(), 1);
    QSignalSpy changes(&world.model, &QAbstractItemModel::dataChanged);
    job.progress = 42;
    job.stage = "Printing";
    world.service.setJob(job);
    world.service.notifyJobChanged(7);
    QTRY_COMPARE(changes.count(), 1);
    QCOMPARE(world.model.index(0, 0).data(JobListModel::ProgressRole).toInt(), 42);
    QCOMPARE(world.text(0, JobListModel::ProgressColumn), QStringLiteral("42%"));
    QCOMPARE(world.text(0, JobListModel::StageColumn), QStringLiteral("Printing"));
}

void tst_JobListModel::asksOnceForManyNotifications()
{
    World world;
    Job::Data job = world.add(7);
    QTRY_COMPARE(world.model.rowCount(), 1);
    world.service.clearRequests();
    QSignalSpy heard(&world.facade, &TrovekQt::jobChanged);
    // The facade delivers one notification a turn; from the first to the last of these no turn
    // ends.
    for (int i = 0; i < 3; ++i)
        emit world.facade.jobChanged(7);
    QCOMPARE(heard.count(), 3);
    QVERIFY(world.service.requests("get_job").empty());
    QTRY_COMPARE(world.service.requests("get_job").size(), std::size_t(1));
}

void tst_JobListModel::showsHowAJobEnded_data()
{
    QTest::addColumn<int>("conclusion");
    QTest::addColumn<QString>("failure");
    QTest::addColumn<QString>("stage");
    QTest::addColumn<QString>("progress");

    QTest::newRow("ended") << 0 << QString() << QStringLiteral("Printed") << QStringLiteral("100%");
    QTest::newRow("failed") << 1 << QStringLiteral("Too big") << QStringLiteral("Failed: Too big")
                            << QStringLiteral("30%");
    QTest::newRow("failed without a word")
        << 1 << QString() << QStringLiteral("Failed") << QStringLiteral("30%");
    QTest::newRow("canceled") << 2 << QString() << QStringLiteral("Canceled")
                              << QStringLiteral("30%");
}

void tst_JobListModel::showsHowAJobEnded()
{
    QFETCH(int, conclusion);
    QFETCH(QString, failure);
    QFETCH(QString, stage);
    QFETCH(QString, progress);
    TestLog log;
    World world;
    Job::Data job = world.add(7);
    job.progress = 30;
    world.service.setJob(job);
    QTRY_COMPARE(world.model.rowCount(), 1);
    QSignalSpy concluded(&world.model, &JobListModel::concluded);
    QSignalSpy toldOfTheEnd(&world.facade, &TrovekQt::jobConcluded);
    world.service.concludeJob(7, static_cast<JobConclusion>(conclusion), failure.toStdString());
    QTRY_COMPARE(toldOfTheEnd.count(), 1);
    QTRY_COMPARE(concluded.count(), 1);
    QCOMPARE(concluded.first().first().toInt(), 7);
    QCOMPARE(world.text(0, JobListModel::StageColumn), stage);
    QCOMPARE(world.text(0, JobListModel::ProgressColumn), progress);
    QCOMPARE(world.text(0, JobListModel::TimeLeftColumn), QString());
    QCOMPARE(world.model.index(0, 0).data(JobListModel::FailureRole).toString(), failure);
    QVERIFY(world.model.index(0, 0).data(Qt::ToolTipRole).toString().contains(failure));
    QCOMPARE(world.model.runningCount(), 0);
    QCOMPARE(world.model.finishedCount(), 1);
    // Nothing is told twice, whatever else comes.
    emit world.facade.jobChanged(7);
    QCoreApplication::processEvents();
    QCOMPARE(concluded.count(), 1);
}

void tst_JobListModel::saysWhatHasBecomeOfIt_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("stage");
    QTest::newRow("print") << QStringLiteral("print") << QStringLiteral("Printed");
    QTest::newRow("machine file") << QStringLiteral("print_to_file") << QStringLiteral("Exported");
    QTest::newRow("G-code") << QStringLiteral("slice") << QStringLiteral("Exported");
    QTest::newRow("something new") << QStringLiteral("scan") << QStringLiteral("Finished");
}

void tst_JobListModel::saysWhatHasBecomeOfIt()
{
    QFETCH(QString, kind);
    QFETCH(QString, stage);
    World world;
    world.add(7, "part", kind.toStdString());
    QTRY_COMPARE(world.model.rowCount(), 1);
    QVERIFY(!world.model.index(0, 0).data(Qt::DecorationRole).value<QIcon>().isNull());
    world.service.concludeJob(7, JobEnded);
    QTRY_COMPARE(world.text(0, JobListModel::StageColumn), stage);
}

void tst_JobListModel::leavesShortMotionsOut_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("jog") << QStringLiteral("jog");
    QTest::newRow("home") << QStringLiteral("home");
}

void tst_JobListModel::leavesShortMotionsOut()
{
    QFETCH(QString, kind);
    World world;
    world.add(7, "motion", kind.toStdString());
    world.add(8);
    QTRY_COMPARE(world.model.rowCount(), 1);
    QVERIFY(!world.model.indexOf(7).isValid());
    QVERIFY(world.model.indexOf(8).isValid());
}

void tst_JobListModel::cancelsARunningJob()
{
    World world;
    world.add(7);
    QTRY_COMPARE(world.model.rowCount(), 1);
    world.model.cancel(0);
    QCOMPARE(world.service.lastRequest("cancel_job")["id"].asInt(), 7);
    QTRY_COMPARE(world.model.conclusion(0), JobCanceled);
}

void tst_JobListModel::cancelsNothingElse()
{
    World world;
    world.add(7);
    QTRY_COMPARE(world.model.rowCount(), 1);
    world.service.concludeJob(7, JobEnded);
    QTRY_COMPARE(world.model.conclusion(0), JobEnded);
    world.model.cancel(0);
    world.model.cancel(1);
    world.model.cancel(-1);
    QVERIFY(world.service.requests("cancel_job").empty());
}

void tst_JobListModel::survivesARefusedCancel()
{
    TestLog log;
    World world;
    world.add(7);
    QTRY_COMPARE(world.model.rowCount(), 1);
    world.service.failNext("cancel_job", wire::makeError("Odd", "not now"));
    log.expectError("not now");
    world.model.cancel(0);
    QCOMPARE(world.model.conclusion(0), JobNotConcluded);
}

void tst_JobListModel::clearsOnlyWhatHasEnded()
{
    World world;
    for (const int id : {1, 2, 3})
        world.add(id, "job " + std::to_string(id));
    QTRY_COMPARE(world.model.rowCount(), 3);
    world.service.concludeJob(1, JobEnded);
    world.service.concludeJob(3, JobFailed, "no");
    QTRY_COMPARE(world.model.finishedCount(), 2);
    world.model.clearFinished();
    QCOMPARE(world.model.rowCount(), 1);
    QCOMPARE(world.text(0, JobListModel::NameColumn), QStringLiteral("job 2"));
    QCOMPARE(world.model.finishedCount(), 0);
    // What was cleared does not come back by a late word.
    world.service.clearRequests();
    emit world.facade.jobChanged(1);
    QCoreApplication::processEvents();
    QCOMPARE(world.model.rowCount(), 1);
}

void tst_JobListModel::keepsAnOddNameAsItIs()
{
    World world;
    world.add(7, "<b>%1 &x");
    QTRY_COMPARE(world.model.rowCount(), 1);
    QCOMPARE(world.text(0, JobListModel::NameColumn), QStringLiteral("<b>%1 &x"));
    QVERIFY(world.model.index(0, 0)
                .data(Qt::ToolTipRole)
                .toString()
                .contains(QStringLiteral("&lt;b&gt;%1 &amp;x")));
}

void tst_JobListModel::marksRunningJobsWithoutALink()
{
    TestLog log;
    log.allowErrors("");
    World world;
    world.add(7);
    world.add(8);
    QTRY_COMPARE(world.model.rowCount(), 2);
    world.service.concludeJob(8, JobEnded);
    QTRY_COMPARE(world.model.finishedCount(), 1);
    world.service.stop();
    QTRY_COMPARE(world.text(0, JobListModel::StageColumn),
                 QStringLiteral("Unknown: no connection"));
    QCOMPARE(world.text(1, JobListModel::StageColumn), QStringLiteral("Printed"));
    QCOMPARE(world.model.runningCount(), 1);
}

void tst_JobListModel::takesJobsUpAgainAfterALoss()
{
    TestLog log;
    log.allowErrors("");
    World world;
    Job::Data job = world.add(7);
    world.add(8);
    QTRY_COMPARE(world.model.rowCount(), 2);
    QSignalSpy lost(&world.facade, &TrovekQt::disconnected);
    world.service.stop();
    QTRY_COMPARE(lost.count(), 1);
    job.progress = 70;
    world.service.setJob(job);
    Job::Data ended = world.service.job(8);
    ended.conclusion = JobEnded;
    world.service.setJob(ended);
    world.service.start();
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(world.text(0, JobListModel::ProgressColumn), QStringLiteral("70%"));
    QTRY_COMPARE(world.model.conclusion(1), JobEnded);
    QCOMPARE(world.model.conclusion(0), JobNotConcluded);
}

void tst_JobListModel::losesJobsThatTheServiceForgot()
{
    TestLog log;
    log.allowErrors("");
    World world;
    world.add(7);
    QTRY_COMPARE(world.model.rowCount(), 1);
    QSignalSpy concluded(&world.model, &JobListModel::concluded);
    world.service.failAlways("get_job", wire::makeError(wire::error::kUnknownJob, "No such job"));
    QSignalSpy lost(&world.facade, &TrovekQt::disconnected);
    world.service.dropConnections();
    QTRY_COMPARE(lost.count(), 1);
    world.facade.connectToDaemon(world.service.address());
    QTRY_COMPARE(concluded.count(), 1);
    QCOMPARE(world.model.conclusion(0), JobFailed);
    QCOMPARE(world.text(0, JobListModel::StageColumn),
             QStringLiteral("Failed: The background service was restarted and has lost this job."));
}

void tst_JobListModel::ignoresAnUnknownJob()
{
    TestLog log;
    World world;
    world.service.notifyJobAdded(99);
    world.add(7);
    QTRY_COMPARE(world.model.rowCount(), 1);
    QVERIFY(!world.model.indexOf(99).isValid());
}

void tst_JobListModel::namesTheMachineByItsKeyWhenItIsGone()
{
    World world;
    QSignalSpy removed(&world.facade, &TrovekQt::printerRemoved);
    world.service.removePrinter("left");
    QTRY_COMPARE(removed.count(), 1);
    world.add(7);
    QTRY_COMPARE(world.model.rowCount(), 1);
    QCOMPARE(world.text(0, JobListModel::MachineColumn), QStringLiteral("left"));
}

void tst_JobListModel::textOfADuration_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("unknown") << -1 << QString();
    QTest::newRow("none") << 0 << QStringLiteral("0 s");
    QTest::newRow("seconds") << 59 << QStringLiteral("59 s");
    QTest::newRow("one minute") << 60 << QStringLiteral("1 min");
    QTest::newRow("rounded up") << 90 << QStringLiteral("2 min");
    QTest::newRow("almost an hour") << 3569 << QStringLiteral("59 min");
    QTest::newRow("an hour") << 3570 << QStringLiteral("1 h 00 min");
    QTest::newRow("hours") << 2 * 3600 + 5 * 60 << QStringLiteral("2 h 05 min");
}

void tst_JobListModel::textOfADuration()
{
    QFETCH(int, seconds);
    QFETCH(QString, text);
    QCOMPARE(durationText(seconds), text);
}

QTEST_MAIN(tst_JobListModel)
#include "tst_job_list_model.moc"
