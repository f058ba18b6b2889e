#include "service_world.h"
#include "support/test_log.h"

#include <service/job_list.h>
#include <service/running_job.h>

#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace trovek;
using namespace trovek::service;

class tst_JobList : public QObject
{
    Q_OBJECT

private slots:
    void numbersNeverRepeat();
    void numbersNeverRepeatAfterACrash();
    void aSpoiltStateFileStartsAnew_data();
    void aSpoiltStateFileStartsAnew();
    void refusesJobsThatItCannotNumber();
    void announcesBeforeItStarts();
    void tellsChangesAtMostTenTimesASecond();
    void theLastChangeIsNeverLost();
    void theConclusionIsToldAtOnceAndLast();
    void aJobMayConcludeWhileItStarts();
    void aJobThatCannotStartFails();
    void nothingChangesAfterTheConclusion();
    void keepsTheLastThousandConcludedJobs();
    void refusesTooManyJobs();
    void abortsAll();
    void concludedJobsAreDestroyedSoon();
};

namespace {

/** A job that does what the test says. */
class ScriptedJob : public RunningJob
{
public:
    explicit ScriptedJob(bool concludesAtOnce = false)
        : RunningJob(trovek::Job::Data())
        , m_concludesAtOnce(concludesAtOnce)
    {}

    void start() override
    {
        started = true;
        if (m_concludesAtOnce)
            conclude(JobEnded);
    }
    void cancel() override { conclude(JobCanceled); }
    void abort(const QString& reason) override { conclude(JobFailed, reason); }

    using RunningJob::conclude;
    using RunningJob::setProgress;
    using RunningJob::setSecondsLeft;
    using RunningJob::setStage;

    bool started = false;

private:
    const bool m_concludesAtOnce;
};

struct Fixture
{
    Fixture() { open(); }

    void open()
    {
        list.reset();
        list = std::make_unique<JobList>(file());
        QObject::connect(list.get(), &JobList::added, list.get(),
                         [this](int id) { events += QStringLiteral("added %1").arg(id); });
        QObject::connect(list.get(), &JobList::changed, list.get(),
                         [this](int id) { events += QStringLiteral("changed %1").arg(id); });
        QObject::connect(list.get(), &JobList::concluded, list.get(),
                         [this](int id) { events += QStringLiteral("concluded %1").arg(id); });
    }

    QString file() const { return folder.filePath(QStringLiteral("jobs.json")); }

    int add()
    {
        auto owned = std::make_unique<ScriptedJob>();
        job = owned.get();
        return list->add(std::move(owned));
    }

    TestLog log;
    QTemporaryDir folder;
    std::unique_ptr<JobList> list;
    QStringList events;
    ScriptedJob* job = nullptr;
};

} // namespace

void tst_JobList::numbersNeverRepeat()
{
    Fixture f;
    QCOMPARE(f.add(), 1);
    QCOMPARE(f.add(), 2);
    int last = 2;
    for (int i = 0; i < 5; ++i) {
        f.open();
        const int next = f.add();
        QVERIFY(next > last);
        last = next;
    }
}

void tst_JobList::numbersNeverRepeatAfterACrash()
{
    Fixture f;
    int last = 0;
    for (int i = 0; i < 150; ++i) {
        last = f.add();
        f.job->cancel();
    }
    // As a second service finds it, with the first one never having shut down.
    JobList second(f.file());

    QVERIFY(second.add(std::make_unique<ScriptedJob>()) > last);
}

void tst_JobList::aSpoiltStateFileStartsAnew_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("expectsError");

    QTest::newRow("no JSON") << QByteArray("spoilt") << true;
    QTest::newRow("nothing") << QByteArray() << true;
    QTest::newRow("a list") << QByteArray("[]") << false;
    QTest::newRow("a text") << QByteArray("{\"next_job\": \"7\"}") << false;
    QTest::newRow("a negative number") << QByteArray("{\"next_job\": -7}") << false;
    QTest::newRow("too large a number") << QByteArray("{\"next_job\": 1e12}") << false;
}

void tst_JobList::aSpoiltStateFileStartsAnew()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, expectsError);
    Fixture f;
    QFile file(f.file());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    if (expectsError)
        f.log.expectError("Cannot read ");

    f.open();

    QCOMPARE(f.add(), 1);
}

void tst_JobList::refusesJobsThatItCannotNumber()
{
    TestLog log;
    log.expectError("Cannot write ");
    JobList list(QStringLiteral("/nowhere/at/all/jobs.json"));

    QVERIFY_EXCEPTION_THROWN(list.add(std::make_unique<ScriptedJob>()), JsonRpcException);

    QVERIFY(list.jobs().empty());
}

void tst_JobList::announcesBeforeItStarts()
{
    Fixture f;
    bool wasStarted = true;
    QObject::connect(f.list.get(), &JobList::added, f.list.get(),
                     [&] { wasStarted = f.job->started; });

    const int id = f.add();

    QVERIFY(!wasStarted);
    QVERIFY(f.job->started);
    QCOMPARE(f.events, QStringList{QStringLiteral("added %1").arg(id)});
    QCOMPARE(f.list->job(id).conclusion, JobNotConcluded);
}

void tst_JobList::tellsChangesAtMostTenTimesASecond()
{
    Fixture f;
    f.add();
    QSignalSpy changes(f.list.get(), &JobList::changed);
    QElapsedTimer clock;
    clock.start();
    QTimer timer;
    int value = 0;
    connect(&timer, &QTimer::timeout, this, [&] { f.job->setSecondsLeft(++value); });
    timer.start(1);

    QTRY_VERIFY(changes.count() >= 5);
    timer.stop();
    const qint64 elapsed = clock.elapsed();

    QVERIFY2(elapsed >= 390, qPrintable(QString::number(elapsed)));
    QVERIFY(changes.count() <= 1 + elapsed / JobList::kChangeIntervalMs);
}

void tst_JobList::theLastChangeIsNeverLost()
{
    Fixture f;
    const int id = f.add();
    int seen = 0;
    QObject::connect(f.list.get(), &JobList::changed, f.list.get(),
                     [&] { seen = f.list->job(id).progress; });

    f.job->setProgress(10);
    QCOMPARE(seen, 10);
    f.job->setProgress(20);
    f.job->setProgress(30);
    QCOMPARE(seen, 10);

    QTRY_COMPARE(seen, 30);
    QCOMPARE(f.events.count(QStringLiteral("changed %1").arg(id)), 2);
}

void tst_JobList::theConclusionIsToldAtOnceAndLast()
{
    Fixture f;
    const int id = f.add();
    f.job->setProgress(10);
    f.job->setProgress(20);
    JobConclusion known = JobNotConcluded;
    QObject::connect(f.list.get(), &JobList::concluded, f.list.get(),
                     [&] { known = f.list->job(id).conclusion; });
    f.events.clear();

    f.job->conclude(JobEnded);

    QCOMPARE(f.events, (QStringList{QStringLiteral("changed %1").arg(id),
                                    QStringLiteral("concluded %1").arg(id)}));
    QCOMPARE(known, JobEnded);
    // The change that still waited must not come after the conclusion: it would be before these.
    const int next = f.add();
    f.job->setProgress(1);
    f.job->setProgress(2);
    QTRY_COMPARE(f.events.count(QStringLiteral("changed %1").arg(next)), 2);
    QCOMPARE(f.events.count(QStringLiteral("changed %1").arg(id)), 1);
}

void tst_JobList::aJobMayConcludeWhileItStarts()
{
    Fixture f;

    const int id = f.list->add(std::make_unique<ScriptedJob>(true));

    QCOMPARE(f.events,
             (QStringList{QStringLiteral("added %1").arg(id), QStringLiteral("changed %1").arg(id),
                          QStringLiteral("concluded %1").arg(id)}));
    QCOMPARE(f.list->job(id).progress, 100);
}

void tst_JobList::aJobThatCannotStartFails()
{
    class BrokenJob : public ScriptedJob
    {
    public:
        void start() override { throw std::runtime_error("No start"); }
    };
    Fixture f;

    const int id = f.list->add(std::make_unique<BrokenJob>());

    QCOMPARE(f.list->job(id).conclusion, JobFailed);
    QCOMPARE(f.list->job(id).failure, std::string("No start"));
}

void tst_JobList::nothingChangesAfterTheConclusion()
{
    Fixture f;
    const int id = f.add();
    f.job->conclude(JobFailed, QStringLiteral("Broken"));
    f.events.clear();

    f.job->setProgress(50);
    f.job->setStage(QStringLiteral("Later"));
    f.job->conclude(JobEnded);
    f.list->cancel(id);

    QCOMPARE(f.events, QStringList());
    QCOMPARE(f.list->job(id).conclusion, JobFailed);
    QCOMPARE(f.list->job(id).failure, std::string("Broken"));
    QCOMPARE(f.list->job(id).stage, std::string("Failed"));
}

void tst_JobList::keepsTheLastThousandConcludedJobs()
{
    Fixture f;
    const int running = f.add();
    std::vector<int> ids;
    for (int i = 0; i < 1100; ++i)
        ids.push_back(f.list->add(std::make_unique<ScriptedJob>(true)));

    QCOMPARE(f.list->jobs().size(), std::size_t(1001));
    QCOMPARE(f.list->job(running).conclusion, JobNotConcluded);
    QCOMPARE(f.list->job(ids[100]).conclusion, JobEnded);
    QCOMPARE(errorOf([&] { f.list->job(ids[99]); }), std::string("UnknownJobError"));
    QCOMPARE(errorOf([&] { f.list->cancel(ids[99]); }), std::string("UnknownJobError"));
    f.list->cancel(ids[100]);
}

void tst_JobList::refusesTooManyJobs()
{
    Fixture f;
    for (int i = 0; i < JobList::kRunningAtMost; ++i)
        f.add();

    QCOMPARE(errorOf([&] { f.list->add(std::make_unique<ScriptedJob>()); }),
             std::string("TooManyRequests"));

    f.list->cancel(1);
    f.add();
}

void tst_JobList::abortsAll()
{
    Fixture f;
    const int first = f.add();
    const int second = f.add();

    f.list->abortAll(QStringLiteral("The end"));

    QCOMPARE(f.list->job(first).failure, std::string("The end"));
    QCOMPARE(f.list->job(second).conclusion, JobFailed);
}

void tst_JobList::concludedJobsAreDestroyedSoon()
{
    Fixture f;
    f.add();
    const QPointer<RunningJob> job(f.job);

    job->cancel();

    QVERIFY2(job, "a job is not destroyed inside its own signal");
    QTRY_VERIFY(!job);
}

QTEST_GUILESS_MAIN(tst_JobList)
#include "tst_job_list.moc"
