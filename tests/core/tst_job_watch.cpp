#include "support/scripted_service.h"
#include "support/test_log.h"

#include <trovek-ui/job_watch.h>
#include <trovek-ui/trovekqt.h>

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace trovek;

namespace {

Job::Data jobWith(int id, int conclusion)
{
    Job::Data data;
    data.id = id;
    data.conclusion = static_cast<JobConclusion>(conclusion);
    return data;
}

/** A connected facade, a watch, and the watch's signals in order, in words. */
struct World
{
    World()
    {
        facade.connectToDaemon(service.address());
        watch = std::make_unique<JobWatch>(facade, "test watch");
        note(&JobWatch::changed, "changed");
        note(&JobWatch::ended, "ended");
        note(&JobWatch::failed, "failed");
        note(&JobWatch::canceled, "canceled");
    }

    void note(void (JobWatch::*signal)(Job::ID), const char* word)
    {
        QObject::connect(watch.get(), signal, &context, [this, word](Job::ID id) {
            lines.append(QStringLiteral("%1 %2").arg(QString::fromLatin1(word)).arg(id));
        });
    }

    /** The service says that the job changed, and the watch has heard it. */
    void change(int id)
    {
        QSignalSpy heard(&facade, &TrovekQt::jobChanged);
        service.notifyJobChanged(id);
        QTRY_COMPARE(heard.count(), 1);
    }

    ScriptedService service;
    TrovekQt facade;
    std::unique_ptr<JobWatch> watch;
    QStringList lines;
    QObject context;
};

QStringList words(std::initializer_list<const char*> texts)
{
    QStringList list;
    for (const char* text : texts)
        list.append(QString::fromLatin1(text));
    return list;
}

} // namespace

class tst_JobWatch : public QObject
{
    Q_OBJECT

private slots:
    void declaresItsSignalsAndSlotsInOrder();
    void watchesNothingAtFirst();
    void followsAJobToItsConclusion_data();
    void followsAJobToItsConclusion();
    void tellsAConclusionOnce();
    void tellsAJobThatIsOverBeforeItIsWatched();
    void ignoresOtherJobs();
    void ignoresEveryJobAfterClearing();
    void watchesAnotherJobAfterAConclusion();
    void cancelsARunningJobOnly();
    void survivesACancelThatFails();
    void survivesAnUnknownJob();
    void survivesALostLink();
    void givesTheJob();
    void isConcludedDuringItsSignal();
    void looksAgainAfterASignal_data();
    void looksAgainAfterASignal();
    void mayBeDeletedInItsSignal_data();
    void mayBeDeletedInItsSignal();
    void logsWhatItDoes();
    void doesNotCancelWhenItGoes();
};

void tst_JobWatch::declaresItsSignalsAndSlotsInOrder()
{
    TestLog log;
    QStringList signatures;
    const QMetaObject& meta = JobWatch::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        signatures.append(QString::fromLatin1(meta.method(i).methodSignature()));

    QCOMPARE(QByteArray(meta.className()), QByteArray("trovek::JobWatch"));
    QCOMPARE(signatures,
             words({"changed(trovek::Job::ID)", "ended(trovek::Job::ID)", "failed(trovek::Job::ID)",
                    "canceled(trovek::Job::ID)", "clearJobID()", "setJobID(trovek::Job::ID)",
                    "cancelJob()", "jobChanged(trovek::Job::ID)"}));
}

void tst_JobWatch::watchesNothingAtFirst()
{
    TestLog log;
    World world;

    QCOMPARE(world.watch->jobID(), Job::kInvalidID);
    QVERIFY_EXCEPTION_THROWN(world.watch->job(), std::exception);
}

void tst_JobWatch::followsAJobToItsConclusion_data()
{
    QTest::addColumn<int>("conclusion");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("ended") << 0 << words({"changed 5", "changed 5", "changed 5", "ended 5"});
    QTest::newRow("failed") << 1 << words({"changed 5", "changed 5", "changed 5", "failed 5"});
    QTest::newRow("canceled") << 2 << words({"changed 5", "changed 5", "changed 5", "canceled 5"});
    QTest::newRow("still running") << 3 << words({"changed 5", "changed 5", "changed 5"});
}

void tst_JobWatch::followsAJobToItsConclusion()
{
    TestLog log;
    QFETCH(int, conclusion);
    World world;
    world.service.setJob(jobWith(5, JobNotConcluded));

    world.watch->setJobID(5);
    QCOMPARE(world.lines, words({"changed 5"}));
    world.change(5);
    QCOMPARE(world.lines, words({"changed 5", "changed 5"}));
    world.service.setJob(jobWith(5, conclusion));
    world.change(5);

    QTEST(world.lines, "expected");
    QCOMPARE(world.watch->jobID(), 5);
}

void tst_JobWatch::tellsAConclusionOnce()
{
    TestLog log;
    World world;
    world.service.setJob(jobWith(5, JobNotConcluded));
    world.watch->setJobID(5);
    world.lines.clear();
    world.service.setJob(jobWith(5, JobFailed));

    world.change(5);
    world.change(5);

    QCOMPARE(world.lines, words({"changed 5", "failed 5"}));
}

void tst_JobWatch::tellsAJobThatIsOverBeforeItIsWatched()
{
    TestLog log;
    World world;
    world.service.setJob(jobWith(5, JobEnded));

    world.watch->setJobID(5);

    QCOMPARE(world.lines, words({"changed 5", "ended 5"}));
}

void tst_JobWatch::ignoresOtherJobs()
{
    TestLog log;
    World world;
    world.service.setJob(jobWith(5, JobNotConcluded));
    world.service.setJob(jobWith(6, JobEnded));
    world.watch->setJobID(5);
    world.lines.clear();
    world.service.clearRequests();

    world.change(6);

    QCOMPARE(world.lines, QStringList());
    QCOMPARE(world.service.requests().size(), std::size_t(0));
}

void tst_JobWatch::ignoresEveryJobAfterClearing()
{
    TestLog log;
    World world;
    world.service.setJob(jobWith(5, JobNotConcluded));
    world.watch->setJobID(5);
    world.lines.clear();

    world.watch->clearJobID();
    world.change(5);

    QCOMPARE(world.watch->jobID(), Job::kInvalidID);
    QCOMPARE(world.lines, QStringList());
}

void tst_JobWatch::watchesAnotherJobAfterAConclusion()
{
    TestLog log;
    World world;
    world.service.setJob(jobWith(5, JobEnded));
    world.service.setJob(jobWith(6, JobCanceled));

    world.watch->setJobID(5);
    world.watch->setJobID(6);
    world.watch->setJobID(6);

    QCOMPARE(world.lines,
             words({"changed 5", "ended 5", "changed 6", "canceled 6", "changed 6", "canceled 6"}));
}

void tst_JobWatch::cancelsARunningJobOnly()
{
    TestLog log;
    World world;
    world.service.setJob(jobWith(5, JobNotConcluded));

    world.watch->cancelJob();
    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(0));

    world.watch->setJobID(5);
    world.watch->cancelJob();
    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(1));
    QCOMPARE(world.service.lastRequest("cancel_job")["id"].asInt(), 5);

    QTRY_COMPARE(world.lines.last(), QStringLiteral("canceled 5"));
    world.watch->cancelJob();
    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(1));

    world.watch->clearJobID();
    world.watch->cancelJob();
    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(1));
}

void tst_JobWatch::survivesACancelThatFails()
{
    TestLog log;
    log.expectError("test watch: not now");
    World world;
    world.service.setJob(jobWith(5, JobNotConcluded));
    world.service.failNext("cancel_job", JsonRpcException("not now"));
    world.watch->setJobID(5);

    world.watch->cancelJob();

    QCOMPARE(world.lines, words({"changed 5"}));
}

void tst_JobWatch::survivesAnUnknownJob()
{
    TestLog log;
    log.expectError("test watch: never heard of it");
    World world;
    world.service.failNext("get_job", JsonRpcException("never heard of it"));

    world.watch->setJobID(5);

    QCOMPARE(world.lines, QStringList());
    QCOMPARE(world.watch->jobID(), 5);
}

void tst_JobWatch::survivesALostLink()
{
    TestLog log;
    log.allowErrors("");
    World world;
    world.service.setJob(jobWith(5, JobNotConcluded));
    world.watch->setJobID(5);
    world.lines.clear();
    world.service.dropConnectionOn("get_job");

    world.watch->setJobID(5);

    QVERIFY(log.contains("test watch: ", Log::Error));
    QCOMPARE(world.lines, QStringList());
    QVERIFY(!world.facade.isConnected());
    world.watch->cancelJob();
}

void tst_JobWatch::givesTheJob()
{
    TestLog log;
    World world;
    Job::Data data = jobWith(5, JobNotConcluded);
    data.name = "cube";
    world.service.setJob(data);

    world.watch->setJobID(5);

    QCOMPARE(world.watch->job().name(), std::string("cube"));
}

void tst_JobWatch::isConcludedDuringItsSignal()
{
    TestLog log;
    World world;
    world.service.setJob(jobWith(5, JobFailed));
    connect(world.watch.get(), &JobWatch::failed, this, [&world] { world.watch->cancelJob(); });

    world.watch->setJobID(5);

    QCOMPARE(world.lines, words({"changed 5", "failed 5"}));
    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(0));
}

void tst_JobWatch::looksAgainAfterASignal_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("cleared") << QStringLiteral("clear") << words({"changed 5"});
    QTest::newRow("another job") << QStringLiteral("other")
                                 << words({"changed 5", "changed 6", "failed 6"});
    QTest::newRow("the same job again")
        << QStringLiteral("same") << words({"changed 5", "changed 5", "ended 5"});
}

void tst_JobWatch::looksAgainAfterASignal()
{
    TestLog log;
    QFETCH(QString, action);
    World world;
    world.service.setJob(jobWith(5, JobEnded));
    world.service.setJob(jobWith(6, JobFailed));
    bool done = false;
    connect(world.watch.get(), &JobWatch::changed, this, [&] {
        if (std::exchange(done, true))
            return;
        if (action == QLatin1String("clear"))
            world.watch->clearJobID();
        else
            world.watch->setJobID(action == QLatin1String("other") ? 6 : 5);
    });

    world.watch->setJobID(5);

    QTEST(world.lines, "expected");
}

void tst_JobWatch::mayBeDeletedInItsSignal_data()
{
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<bool>("atOnce");

    QTest::newRow("changed") << words({"changed 5"}) << true;
    QTest::newRow("ended") << words({"changed 5", "ended 5"}) << false;
}

void tst_JobWatch::mayBeDeletedInItsSignal()
{
    TestLog log;
    QFETCH(bool, atOnce);
    World world;
    world.service.setJob(jobWith(5, JobEnded));
    connect(world.watch.get(), atOnce ? &JobWatch::changed : &JobWatch::ended, this,
            [&world] { world.watch.reset(); });

    world.watch->setJobID(5);

    QVERIFY(world.watch == nullptr);
    QTEST(world.lines, "expected");
    world.change(5);
}

void tst_JobWatch::logsWhatItDoes()
{
    TestLog log;
    World world;
    world.service.setJob(jobWith(5, JobEnded));
    world.service.setJob(jobWith(6, JobFailed));
    world.service.setJob(jobWith(7, JobCanceled));

    world.watch->setJobID(5);
    world.watch->setJobID(6);
    world.watch->setJobID(7);
    world.watch->clearJobID();

    std::vector<std::string> lines;
    for (const LogEntry& entry : log.sink().entries()) {
        if (entry.file == "src\\core\\job_watch") {
            QCOMPARE(entry.severity, 1);
            QVERIFY(entry.function.find("JobWatch::") != std::string::npos);
            lines.push_back(entry.message);
        }
    }
    QCOMPARE(lines, (std::vector<std::string>{"test watch: set job ID 5", "Job 5 concluded",
                                              "test watch: set job ID 6", "Job 6 failed",
                                              "test watch: set job ID 7", "Job 7 canceled",
                                              "test watch: clear job ID"}));
}

void tst_JobWatch::doesNotCancelWhenItGoes()
{
    TestLog log;
    World world;
    world.service.setJob(jobWith(5, JobNotConcluded));
    world.watch->setJobID(5);

    world.watch.reset();

    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(0));
}

QTEST_MAIN(tst_JobWatch)
#include "tst_job_watch.moc"
