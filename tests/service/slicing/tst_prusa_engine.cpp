#include "fake_slicer.h"
#include "support/thrown_text.h"

#include <service/gcode/gcode_estimate.h>
#include <service/gcode/machine_definition.h>
#include <service/slicing/child_process.h>
#include <service/slicing/prusa_engine.h>
#include <service/slicing/prusa_options.h>
#include <service/slicing/slice_settings.h>

#include <trovek/text.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <functional>

#include <unistd.h>

using namespace trovek;
using namespace trovek::service;

/** What the engine does with a slicer of any kind: fakes of a few lines each. */
class tst_PrusaEngine : public QObject
{
    Q_OBJECT

private slots:
    void handsOverModelAndOptions();
    void givesTheSlicerNothingOfItsOwn();
    void lowersThePriorityOfPreviewsOnly_data();
    void lowersThePriorityOfPreviewsOnly();
    void tellsProgressInOrder();
    void endsAsSoonAsTheSlicerDoes();
    void failsAndLeavesNothing_data();
    void failsAndLeavesNothing();
    void cancelingEndsEverythingThatRuns_data();
    void cancelingEndsEverythingThatRuns();
    void whatTheSlicerLeftRunningEndsWithIt();
    void aFloodOfOutputDoesNoHarm();
    void noSlicerIsAReasonToFail_data();
    void noSlicerIsAReasonToFail();
};

namespace {

const SliceSettings kSettings = [] {
    SliceSettings settings;
    settings.tools.resize(1);
    settings.tools[0].celsius = 210;
    return settings;
}();

class RecordingControl : public SlicerEngine::Control
{
public:
    bool isCanceled() const override { return wantsCancel && wantsCancel(); }
    void setProgress(int percent, const QString& stage) override
    {
        percents.push_back(percent);
        if (stages.isEmpty() || stages.last() != stage)
            stages.append(stage);
    }

    std::function<bool()> wantsCancel;
    std::vector<int> percents;
    QStringList stages;
};

struct Fixture
{
    explicit Fixture(const QByteArray& body)
        : slicer(body)
        , machine(defaultMachineDefinitions().archetypes.front())
        , engine(slicer.program())
    {
        QFile model(work.filePath(QStringLiteral("model.stl")));
        model.open(QIODevice::WriteOnly);
        model.write("a model");
        job.machine = &machine;
        job.settings = &kSettings;
        job.modelPath = model.fileName();
        job.outputPath = work.filePath(QStringLiteral("out.gcode"));
        job.workFolder = work.path();
    }

    void slice() { engine.slice(job, control); }

    FakeSlicer slicer;
    QTemporaryDir work;
    MachineDefinition machine;
    SliceJob job;
    RecordingControl control;
    PrusaEngine engine;
};

} // namespace

void tst_PrusaEngine::handsOverModelAndOptions()
{
    Fixture f("echo \"$arguments\" > \"$test/arguments\"\n"
              "cp \"$model\" \"$test/model\"\n"
              "cp \"$options\" \"$test/options\"\n"
              "finish");

    f.slice();

    QCOMPARE(QString::fromUtf8(f.slicer.read("arguments").trimmed()),
             QStringLiteral("-g -o %1 --datadir %2 --load %2/options.ini %3")
                 .arg(f.job.outputPath, f.job.workFolder, f.job.modelPath));
    QCOMPARE(f.slicer.read("model"), QByteArray("a model"));
    QCOMPARE(f.slicer.read("options").toStdString(), prusaOptions(f.machine, kSettings));
    QFile output(f.job.outputPath);
    QVERIFY(output.open(QIODevice::ReadOnly));
    QCOMPARE(output.readAll(), QByteArray("G1 X10 Y10 Z0.2 E1\n") + kEndOfResult);
}

void tst_PrusaEngine::givesTheSlicerNothingOfItsOwn()
{
    qputenv("TROVEK_SECRET", "secret");
    // Without the flag that closes it in a child.
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("secret")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const int descriptor = ::dup(file.handle());
    Fixture f("env > \"$test/environment\"\n"
              "pwd > \"$test/folder\"\n"
              "cat > \"$test/input\"\n"
              "ls -l /proc/$$/fd > \"$test/descriptors\"\n"
              "ulimit -c > \"$test/core\"\n"
              "cat /proc/$$/oom_score_adj > \"$test/oom\"\n"
              "finish");

    f.slice();

    ::close(descriptor);
    QStringList names;
    for (const QByteArray& line : f.slicer.read("environment").trimmed().split('\n'))
        names.append(QString::fromUtf8(line.left(line.indexOf('='))));
    for (const char* const known :
         {"PATH", "HOME", "TMPDIR", "TEMP", "TMP", "LC_ALL", "LD_LIBRARY_PATH", "PWD", "OLDPWD",
          "SHLVL", "_", "_STDBUF_O", "LD_PRELOAD"})
        names.removeAll(QString::fromLatin1(known));
    QCOMPARE(names, QStringList());
    QVERIFY(f.slicer.read("environment").contains("LC_ALL=C.UTF-8\n"));
    QVERIFY(f.slicer.read("environment").contains("HOME=" + f.work.path().toUtf8() + "\n"));
    QCOMPARE(QFileInfo(QString::fromUtf8(f.slicer.read("folder").trimmed())).canonicalFilePath(),
             QFileInfo(f.work.path()).canonicalFilePath());
    QCOMPARE(f.slicer.read("input"), QByteArray());
    // Besides its three a shell keeps its script open.
    QVERIFY(!f.slicer.read("descriptors").contains(file.fileName().toUtf8()));
    QCOMPARE(f.slicer.read("core"), QByteArray("0\n"));
    QCOMPARE(f.slicer.read("oom"), QByteArray("1000\n"));
}

void tst_PrusaEngine::lowersThePriorityOfPreviewsOnly_data()
{
    QTest::addColumn<bool>("isPreview");
    QTest::addColumn<int>("nicer");
    QTest::addColumn<bool>("idleDisk");

    QTest::newRow("a preview") << true << 15 << true;
    QTest::newRow("a print") << false << 0 << false;
}

void tst_PrusaEngine::lowersThePriorityOfPreviewsOnly()
{
    QFETCH(bool, isPreview);
    QFETCH(int, nicer);
    QFETCH(bool, idleDisk);
    QProcess own;
    own.start(QStringLiteral("nice"), QStringList());
    own.waitForFinished();
    const int ownNice = own.readAll().trimmed().toInt();
    Fixture f("nice > \"$test/nice\"\n"
              "ionice -p $$ > \"$test/disk\"\n"
              "cat /proc/$$/autogroup > \"$test/session\"\n"
              "finish");
    f.job.lowPriority = isPreview;

    f.slice();

    QCOMPARE(f.slicer.read("nice").trimmed().toInt(),
             isPreview ? std::max(ownNice, nicer) : ownNice);
    QCOMPARE(f.slicer.read("disk").trimmed() == "idle", idleDisk);
    // "/autogroup-12 nice 15", where the system has such groups.
    const QByteArray session = f.slicer.read("session").trimmed();
    QVERIFY2(session.isEmpty() || session.endsWith("nice 15") == isPreview, session.constData());
}

void tst_PrusaEngine::tellsProgressInOrder()
{
    Fixture f("echo '10 => Processing triangulated mesh'\n"
              "while [ ! -e \"$test/mesh\" ]; do sleep 0.01; done\n"
              "echo '70 => Infilling layers'\n"
              "echo '30 => Preparing infill'\n"
              "while [ ! -e \"$test/infill\" ]; do sleep 0.01; done\n"
              "echo \"90 => Exporting G-code to $out\"\n"
              "finish");
    // The slicer goes on as soon as it has been understood, so its lines are not held back.
    f.control.wantsCancel = [&f] {
        if (f.control.stages.contains(QStringLiteral("Slicing: processing triangulated mesh")))
            f.slicer.write("mesh");
        if (f.control.stages.contains(QStringLiteral("Slicing: preparing infill")))
            f.slicer.write("infill");
        return false;
    };

    f.slice();

    QVERIFY(std::is_sorted(f.control.percents.begin(), f.control.percents.end()));
    QCOMPARE(f.control.percents.back(), 90);
    QStringList stages = f.control.stages;
    // Only when it is seen apart from the one behind it.
    stages.removeAll(QStringLiteral("Slicing"));
    stages.removeAll(QStringLiteral("Slicing: infilling layers"));
    QCOMPARE(stages, (QStringList{QStringLiteral("Slicing: processing triangulated mesh"),
                                  QStringLiteral("Slicing: preparing infill"),
                                  QStringLiteral("Slicing: exporting G-code")}));
}

void tst_PrusaEngine::endsAsSoonAsTheSlicerDoes()
{
    // Something keeps the pipe open behind it.
    Fixture f("sleep 1000 &\n"
              "finish");
    QElapsedTimer clock;
    clock.start();

    f.slice();

    QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
}

void tst_PrusaEngine::failsAndLeavesNothing_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("a status and a reason") << QByteArray("finish; echo 'What a model' >&2; exit 1")
                                           << QByteArray("The slicer failed: What a model");
    QTest::newRow("a status without a reason")
        << QByteArray("exit 3") << QByteArray("The slicer failed without a reason");
    QTest::newRow("a reason without a line break")
        << QByteArray("printf 'No' >&2; exit 1") << QByteArray("The slicer failed: No");
    QTest::newRow("it crashes") << QByteArray("finish; kill -SEGV $$")
                                << QByteArray("The slicer crashed (Segmentation fault); the model "
                                              "may be damaged");
    QTest::newRow("it is killed") << QByteArray("kill -KILL $$")
                                  << QByteArray("The slicer was killed; the model may need more "
                                                "memory than there is");
    QTest::newRow("no result") << QByteArray("exit 0")
                               << QByteArray("The slicer ended without a complete result");
    QTest::newRow("an empty result")
        << QByteArray(": > \"$out\"") << QByteArray("The slicer ended without a complete result");
    QTest::newRow("a result that is cut off")
        << QByteArray("finish; truncate -s -5 \"$out\"")
        << QByteArray("The slicer ended without a complete result");
    QTest::newRow("the beginning of a result")
        << QByteArray("echo G1 > \"$out.tmp\"; kill -KILL $$")
        << QByteArray("The slicer was killed; the model may need more memory than there is");
}

void tst_PrusaEngine::failsAndLeavesNothing()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, text);
    Fixture f(body);

    QCOMPARE(QByteArray::fromStdString(thrownText([&] { f.slice(); })), text);

    const QStringList left = QDir(f.work.path()).entryList(QDir::Files | QDir::NoDotAndDotDot);
    QCOMPARE(left, (QStringList{QStringLiteral("model.stl"), QStringLiteral("options.ini")}));
}

void tst_PrusaEngine::cancelingEndsEverythingThatRuns_data()
{
    QTest::addColumn<QByteArray>("body");

    QTest::newRow("working") << QByteArray("while :; do sleep 0.01; done");
    QTest::newRow("silent") << QByteArray("sleep 1000");
    QTest::newRow("without output") << QByteArray("exec >&- 2>&-; sleep 1000");
    QTest::newRow("stopped") << QByteArray("kill -STOP $$");
    QTest::newRow("deaf") << QByteArray("trap '' TERM; sleep 1000; sleep 1000; sleep 1000");
}

void tst_PrusaEngine::cancelingEndsEverythingThatRuns()
{
    QFETCH(QByteArray, body);
    Fixture f("sleep 1000 & echo $! > \"$test/helper\"\n"
              "echo $$ > \"$test/itself\"\n"
              "echo G1 > \"$out.tmp\"\n" +
              body);
    QElapsedTimer clock;
    f.control.wantsCancel = [&f, &clock] {
        const bool runs = f.slicer.read("itself").endsWith('\n');
        if (runs && !clock.isValid())
            clock.start();
        return runs;
    };

    QVERIFY_EXCEPTION_THROWN(f.slice(), GCodeCanceled);

    QVERIFY2(clock.elapsed() < ChildProcess::kGraceMs + 3000,
             qPrintable(QString::number(clock.elapsed())));
    QVERIFY(!isAlive(f.slicer.processId("itself")));
    QTRY_VERIFY(!isAlive(f.slicer.processId("helper")));
    QVERIFY(!QFileInfo::exists(f.job.outputPath));
    QVERIFY(!QFileInfo::exists(f.job.outputPath + QStringLiteral(".tmp")));
}

void tst_PrusaEngine::whatTheSlicerLeftRunningEndsWithIt()
{
    Fixture f("sleep 1000 & echo $! > \"$test/helper\"\n"
              "finish");

    f.slice();

    QTRY_VERIFY(!isAlive(f.slicer.processId("helper")));
}

void tst_PrusaEngine::aFloodOfOutputDoesNoHarm()
{
    Fixture f("head -c 50000000 /dev/zero\n"
              "yes | head -c 5000000\n"
              "finish");

    f.slice();

    QVERIFY(QFileInfo::exists(f.job.outputPath));
}

void tst_PrusaEngine::noSlicerIsAReasonToFail_data()
{
    QTest::addColumn<QString>("program");

    QTest::newRow("a name") << QStringLiteral("no-such-slicer");
    QTest::newRow("a path") << QStringLiteral("/nowhere/slicer");
    QTest::newRow("a folder") << QStringLiteral("/tmp");
    QTest::newRow("no program") << QStringLiteral("/etc/passwd");
}

void tst_PrusaEngine::noSlicerIsAReasonToFail()
{
    QFETCH(QString, program);
    Fixture f("finish");
    const PrusaEngine engine(program);

    QCOMPARE(thrownText([&] { engine.slice(f.job, f.control); }),
             "Models cannot be sliced: the slicer \"" + toStdString(program) +
                 "\" is not installed");
}

QTEST_GUILESS_MAIN(tst_PrusaEngine)
#include "tst_prusa_engine.moc"
