#include "service_world.h"
#include "support/test_log.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <map>

using namespace trovek;

/** Many jobs through one service: all of them conclude as they should, and nothing is left of them.
 */
class tst_Soak : public QObject
{
    Q_OBJECT

private slots:
    void nothingIsLeftOfManyJobs();
};

namespace {

constexpr int kJobs = 500;
/** Of ten jobs one fails and one is canceled. */
constexpr int kFailing = 3;
constexpr int kCanceled = 7;
/** So that a print of ten minutes takes none that counts. */
constexpr double kTimeScale = 50000;
/** More would wait for a thread anyway. */
constexpr int kAtOnce = 20;

/** Open descriptors and running threads of this process; -1 where the system does not tell. */
struct Resources
{
    static int count(const char* folder)
    {
        const QDir dir(QString::fromLatin1(folder));
        return dir.exists()
                   ? dir.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size()
                   : -1;
    }

    int descriptors = count("/proc/self/fd");
    int threads = count("/proc/self/task");
};

struct Expected
{
    JobConclusion conclusion;
    /** Empty for a print. */
    std::string output;
    QByteArray bytes;
};

/** Starts jobs of every kind and holds what became of them against what should have. */
class Soak
{
public:
    Soak()
    {
        m_world.start();
        m_client.connectToDaemon(m_world.address());
        ServiceWorld::openMachine(m_client);
        m_good = m_world.writeFile(QStringLiteral("good.gcode"), squareGCode());
        m_bad = m_world.writeFile(QStringLiteral("bad.gcode"), squareGCode() + "G1 X9999\n");
        m_long = m_world.writeFile(QStringLiteral("long.gcode"), longGCode());
        for (const char* const format : {"x3g", "s3g", "gcode"})
            m_references[format] = reference(format);
    }

    void run()
    {
        for (int i = 0; i < kJobs; ++i) {
            if (m_expected.size() >= kAtOnce)
                settle();
            start(i);
        }
        settle();
    }

    QStringList differences;
    std::map<JobConclusion, int> conclusions;

private:
    int make(const std::string& input, const std::string& output, const std::string& format)
    {
        const MachineName archetype(ServiceWorld::kArchetype);
        return format == "gcode"
                   ? m_client.slice(archetype, input, output, {}, {"pla"}, true)
                   : m_client.printToFile(archetype, input, output, {}, {"pla"}, false, format);
    }

    QByteArray reference(const std::string& format)
    {
        const std::string output = m_world.emptyFile(QStringLiteral("reference"));
        waitForConclusion(m_client, make(m_good, output, format));
        return ServiceWorld::read(output);
    }

    void start(int number)
    {
        const int kind = number % 10;
        // Every tenth job is a print; the machine runs one at a time.
        if (kind == 0) {
            const int id =
                m_client.print(MachineName(ServiceWorld::kMachine), m_good, {}, {"pla"}, true);
            m_expected[id] = {JobEnded, std::string(), QByteArray()};
            settle();
            return;
        }
        const std::string output = m_world.emptyFile(QStringLiteral("out%1").arg(number));
        if (kind == kFailing) {
            m_expected[make(m_bad, output, "x3g")] = {JobFailed, output, QByteArray()};
        } else if (kind == kCanceled) {
            const int id = make(m_long, output, "x3g");
            m_client.cancelJob(id);
            m_expected[id] = {JobCanceled, output, QByteArray()};
        } else {
            const char* const formats[] = {"x3g", "s3g", "gcode"};
            const std::string format = formats[number % 3];
            m_expected[make(m_good, output, format)] = {JobEnded, output, m_references[format]};
        }
    }

    /** Waits for all jobs that run. */
    void settle()
    {
        for (const auto& [id, expected] : m_expected) {
            waitForConclusion(m_client, id);
            const Job job = m_client.jobFromID(id);
            ++conclusions[job.conclusion()];
            if (job.conclusion() != expected.conclusion)
                differences.append(
                    QStringLiteral("job %1 concluded with %2").arg(id).arg(job.conclusion()));
            if (expected.output.empty())
                continue;
            if (ServiceWorld::read(expected.output) != expected.bytes)
                differences.append(QStringLiteral("job %1 wrote other bytes").arg(id));
            QFile::remove(QString::fromStdString(expected.output));
        }
        m_expected.clear();
    }

    ServiceWorld m_world{kTimeScale};
    RecordingTrovek m_client;
    std::string m_good;
    std::string m_bad;
    std::string m_long;
    std::map<std::string, QByteArray> m_references;
    std::map<int, Expected> m_expected;
};

} // namespace

void tst_Soak::nothingIsLeftOfManyJobs()
{
    TestLog log;
    // What a process keeps from its first event loop and thread on is no leftover of a job.
    {
        const Soak first;
    }
    const Resources before;
    QElapsedTimer clock;
    clock.start();

    {
        Soak soak;
        soak.run();
        QCOMPARE(soak.differences, QStringList());
        QCOMPARE(soak.conclusions[JobEnded], kJobs * 8 / 10);
        QCOMPARE(soak.conclusions[JobFailed], kJobs / 10);
        QCOMPARE(soak.conclusions[JobCanceled], kJobs / 10);
    }

    // The system may show a thread for a moment after it was joined.
    QTRY_COMPARE(Resources().threads, before.threads);
    QCOMPARE(Resources().descriptors, before.descriptors);
    qInfo("%d jobs in %lld ms", kJobs, clock.elapsed());
}

QTEST_GUILESS_MAIN(tst_Soak)
#include "tst_soak.moc"
