#include "fake_slicer.h"
#include "platform/trovek/recording_trovek.h"
#include "service/daemon.h"
#include "support/file_size_limit.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek/text.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace trovek;

/** The real program with a slicer: its end, however it comes, and a disk that is full. */
class tst_TrovekdSlices : public QObject
{
    Q_OBJECT

private slots:
    void takesTheSlicerAlong_data();
    void takesTheSlicerAlong();
    void startsCleanAfterItWasKilled();
    void aDiskThatIsFullForTheModelIsTold();
    void aDiskThatIsFullForTheOutputIsTold();
};

namespace {

const QByteArray kPatient = "echo $$ > \"$test/pid\"\n"
                            "echo G1 > \"$out.tmp\"\n"
                            "while [ ! -e \"$test/go\" ]; do sleep 0.01; done\n"
                            "finish";

/** Bytes. */
constexpr int kRoom = 100000;

struct Fixture
{
    explicit Fixture(const QByteArray& body)
        : slicer(body)
        , daemon(folder.path())
    {}

    void start()
    {
        const QByteArray line = daemon.start({QStringLiteral("--slicer"), slicer.program()});
        QVERIFY(!line.isEmpty());
        client = std::make_unique<RecordingTrovek>();
        client->connectToDaemon(Address::fromText(line.toStdString()));
    }

    std::string file(const char* name, const QByteArray& bytes) const
    {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        file.open(QIODevice::WriteOnly);
        file.write(bytes);
        return toStdString(file.fileName());
    }

    int slice(const QByteArray& model)
    {
        const std::string out = file("out.gcode", QByteArray());
        return client->slice(MachineName("archetype_fabrino_2"), file("a.stl", model), out, {},
                             {"pla"}, false);
    }

    Job conclude(int id)
    {
        if (!QTest::qWaitFor([&] { return client->jobFromID(id).conclusion() != JobNotConcluded; },
                             10000))
            qWarning("The job did not conclude");
        return client->jobFromID(id);
    }

    QStringList leftovers() const
    {
        return QDir(folder.filePath(QStringLiteral("state/slices")))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    TestLog log;
    QTemporaryDir folder;
    FakeSlicer slicer;
    Daemon daemon;
    std::unique_ptr<RecordingTrovek> client;
};

} // namespace

void tst_TrovekdSlices::takesTheSlicerAlong_data()
{
    QTest::addColumn<int>("signalNumber");
    QTest::addColumn<QByteArray>("body");

    for (const int signal : {SIGTERM, SIGINT, SIGKILL, SIGSEGV}) {
        QTest::addRow("signal %d", signal) << signal << kPatient;
        QTest::addRow("signal %d, deaf", signal) << signal << "trap '' TERM INT HUP\n" + kPatient;
    }
}

void tst_TrovekdSlices::takesTheSlicerAlong()
{
    QFETCH(int, signalNumber);
    QFETCH(QByteArray, body);
    Fixture f(body);
    f.start();
    f.slice("a model");
    const qint64 process = f.slicer.processId("pid");
    QVERIFY(isAlive(process));

    ::kill(static_cast<pid_t>(f.daemon.process().processId()), signalNumber);
    f.daemon.waitForEnd();

    QTRY_VERIFY(!isAlive(process));
    if (signalNumber == SIGTERM || signalNumber == SIGINT)
        QCOMPARE(f.leftovers(), QStringList());
}

void tst_TrovekdSlices::startsCleanAfterItWasKilled()
{
    Fixture f(kPatient);
    f.start();
    f.slice("a model");
    QVERIFY(f.slicer.processId("pid") > 0);
    f.daemon.process().kill();
    f.daemon.waitForEnd();
    QCOMPARE(f.leftovers().size(), 1);

    f.start();

    QCOMPARE(f.leftovers(), QStringList());
    f.slicer.write("go");
    QCOMPARE(f.conclude(f.slice("a model")).conclusion(), JobEnded);
    QCOMPARE(f.leftovers(), QStringList());
}

void tst_TrovekdSlices::aDiskThatIsFullForTheModelIsTold()
{
    Fixture f("finish");
    {
        const FileSizeLimit limit(kRoom);
        f.start();
    }
    QCOMPARE(f.conclude(f.slice(QByteArray(2 * kRoom, 'x'))).failure(),
             std::string("Cannot copy the model: File too large"));
    QTRY_COMPARE(f.leftovers(), QStringList());
    QCOMPARE(f.conclude(f.slice("small")).conclusion(), JobEnded);
}

void tst_TrovekdSlices::aDiskThatIsFullForTheOutputIsTold()
{
    Fixture f("finish");
    {
        const FileSizeLimit limit(kRoom);
        f.start();
    }
    const std::string gcode = f.file("a.gcode", QByteArray("G1 X1 Y1\n").repeated(kRoom));
    const std::string out = f.file("out.gcode", "old");

    const Job job = f.conclude(
        f.client->slice(MachineName("archetype_fabrino_2"), gcode, out, {}, {"pla"}, false));

    QCOMPARE(job.failure(), std::string("Cannot write the output: File too large"));
    QCOMPARE(QFileInfo(toQString(out)).size(), 0);
}

QTEST_GUILESS_MAIN(tst_TrovekdSlices)
#include "tst_trovekd_slices.moc"
