#include "fake_slicer.h"
#include "slice_world.h"
#include "test_models.h"

#include <trovek/text.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace trovek;

/** How jobs with models take turns and end, with a slicer that does what a test wants. */
class tst_SliceQueue : public QObject
{
    Q_OBJECT

private slots:
    void slicesTakeTurns();
    void printsAndExportsGoBeforePreviews();
    void onlyPreviewsGiveWay_data();
    void onlyPreviewsGiveWay();
    void cancelingOneThatWaitsTakesNoTime();
    void cancelingOneThatSlicesEndsTheSlicer_data();
    void cancelingOneThatSlicesEndsTheSlicer();
    void gcodeNeedsNotWaitForSlices();
    void slicesWhatTheModelWasWhenItWasAskedFor();
    void readsTheProfileWhenItIsAskedFor();
    void aPrintHoldsItsMachineWhileItSlices();
    void cancelingAPrintFreesItsMachineAtOnce();
    void unpluggingEndsThePrintAndTheSlicer();
    void endingTheServiceEndsEverything();
    void removesWhatAKilledServiceLeft();
    void replacesWhatIsNoFolderOfItsOwn_data();
    void replacesWhatIsNoFolderOfItsOwn();
    void tellsProgressInOrder();
    void failuresEmptyTheOutput_data();
    void failuresEmptyTheOutput();
    void aMistakeInTheProfileIsToldBeforeSlicing();
    void nothingIsLeftOfManySlices();
};

namespace {

/** Slices until it is told to go on: by the model's text, so that each job can be told apart. */
const QByteArray kPatient = "name=$(cat \"$model\")\n"
                            "echo $$ > \"$test/$name.pid\"\n"
                            "echo $name >> \"$test/order\"\n"
                            "nice > \"$test/$name.nice\"\n"
                            "while [ ! -e \"$test/$name.go\" ]; do sleep 0.01; done\n"
                            "finish";

std::string modelOf(const SliceWorld& f, const char* name)
{
    return f.world.writeFile(QString::fromLatin1(name) + QStringLiteral(".stl"), name);
}

std::string outputOf(const SliceWorld& f, const char* name)
{
    return f.world.writeFile(QString::fromLatin1(name) + QStringLiteral(".gcode"), "old");
}

const QByteArray kResult = QByteArray("G1 X10 Y10 Z0.2 E1\n") + kEndOfResult;

int count(const char* folder)
{
    return QDir(QString::fromLatin1(folder))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

} // namespace

void tst_SliceQueue::slicesTakeTurns()
{
    const FakeSlicer slicer(kPatient);
    SliceWorld f(slicer.program(), 1);
    const std::string out = outputOf(f, "two");
    const int one = f.preview(modelOf(f, "one"), outputOf(f, "one"));
    QVERIFY(slicer.processId("one.pid") > 0);

    const int two = f.preview(modelOf(f, "two"), out);

    QVERIFY(f.waitForStage(two, "Waiting for other slices"));
    QCOMPARE(f.job(two).progress(), 0);
    slicer.write("one.go");
    QCOMPARE(f.conclude(one).conclusion(), JobEnded);
    QVERIFY(f.waitForStage(two, "Slicing"));
    QCOMPARE(f.job(two).conclusion(), JobNotConcluded);
    slicer.write("two.go");
    QCOMPARE(f.conclude(two).conclusion(), JobEnded);
    QCOMPARE(ServiceWorld::read(out), kResult);
    QTRY_COMPARE(f.leftovers(), QStringList());
}

void tst_SliceQueue::printsAndExportsGoBeforePreviews()
{
    const FakeSlicer slicer(kPatient);
    SliceWorld f(slicer.program(), 1);
    ServiceWorld::openMachine(f.client);
    f.preview(modelOf(f, "first"), outputOf(f, "first"));
    QVERIFY(slicer.processId("first.pid") > 0);
    std::vector<int> ids;
    ids.push_back(f.preview(modelOf(f, "preview1"), outputOf(f, "preview1")));
    QVERIFY(f.waitForStage(ids.back(), "Waiting"));
    ids.push_back(f.exportTo(modelOf(f, "export"), outputOf(f, "export"), "x3g", true));
    QVERIFY(f.waitForStage(ids.back(), "Waiting"));
    ids.push_back(f.preview(modelOf(f, "preview2"), outputOf(f, "preview2")));
    QVERIFY(f.waitForStage(ids.back(), "Waiting"));
    ids.push_back(f.print(modelOf(f, "print"), true));
    QVERIFY(f.waitForStage(ids.back(), "Waiting"));

    for (const char* const name :
         {"first.go", "preview1.go", "export.go", "preview2.go", "print.go"})
        slicer.write(name);

    for (const int id : ids)
        f.conclude(id);
    QCOMPARE(slicer.read("order"), QByteArray("first\nexport\nprint\npreview1\npreview2\n"));
}

void tst_SliceQueue::onlyPreviewsGiveWay_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<bool>("givesWay");

    QTest::newRow("slice") << QByteArray("gcode") << true;
    QTest::newRow("print_to_file") << QByteArray("x3g") << false;
}

void tst_SliceQueue::onlyPreviewsGiveWay()
{
    QFETCH(QByteArray, format);
    QFETCH(bool, givesWay);
    const FakeSlicer slicer(kPatient);
    SliceWorld f(slicer.program());
    slicer.write("a.go");

    f.conclude(f.exportTo(modelOf(f, "a"), outputOf(f, "a"), format.constData(), true));

    QCOMPARE(slicer.read("a.nice").trimmed().toInt() >= 15, givesWay);
}

void tst_SliceQueue::cancelingOneThatWaitsTakesNoTime()
{
    const FakeSlicer slicer(kPatient);
    SliceWorld f(slicer.program(), 1);
    const std::string out = outputOf(f, "two");
    const int one = f.preview(modelOf(f, "one"), outputOf(f, "one"));
    QVERIFY(slicer.processId("one.pid") > 0);
    const int two = f.preview(modelOf(f, "two"), out);
    QVERIFY(f.waitForStage(two, "Waiting for other slices"));

    f.client.cancelJob(two);

    QCOMPARE(f.conclude(two).conclusion(), JobCanceled);
    QCOMPARE(f.job(one).conclusion(), JobNotConcluded);
    QCOMPARE(ServiceWorld::read(out), QByteArray());
    QTRY_COMPARE(f.leftovers().size(), 1);
    slicer.write("one.go");
    QCOMPARE(f.conclude(one).conclusion(), JobEnded);
    QCOMPARE(slicer.read("order"), QByteArray("one\n"));
}

void tst_SliceQueue::cancelingOneThatSlicesEndsTheSlicer_data()
{
    QTest::addColumn<QByteArray>("format");

    QTest::newRow("slice") << QByteArray("gcode");
    QTest::newRow("print_to_file") << QByteArray("x3g");
}

void tst_SliceQueue::cancelingOneThatSlicesEndsTheSlicer()
{
    QFETCH(QByteArray, format);
    const FakeSlicer slicer(kPatient);
    SliceWorld f(slicer.program());
    const std::string out = outputOf(f, "a");
    const int id = f.exportTo(modelOf(f, "a"), out, format.constData());
    const qint64 process = slicer.processId("a.pid");
    QVERIFY(isAlive(process));

    f.client.cancelJob(id);
    QCOMPARE(f.conclude(id).conclusion(), JobCanceled);

    QVERIFY(!isAlive(process));
    QCOMPARE(ServiceWorld::read(out), QByteArray());
    QTRY_COMPARE(f.leftovers(), QStringList());
}

void tst_SliceQueue::gcodeNeedsNotWaitForSlices()
{
    const FakeSlicer slicer(kPatient);
    SliceWorld f(slicer.program(), 1);
    f.preview(modelOf(f, "one"), outputOf(f, "one"));
    QVERIFY(slicer.processId("one.pid") > 0);
    f.preview(modelOf(f, "two"), outputOf(f, "two"));
    const std::string gcode = f.world.writeFile(QStringLiteral("square.gcode"), squareGCode());

    const Job job =
        f.conclude(f.exportTo(gcode, f.world.emptyFile(QStringLiteral("square.x3g")), "x3g"));

    QCOMPARE(job.conclusion(), JobEnded);
}

void tst_SliceQueue::slicesWhatTheModelWasWhenItWasAskedFor()
{
    const FakeSlicer slicer(kPatient);
    SliceWorld f(slicer.program(), 1);
    f.preview(modelOf(f, "one"), outputOf(f, "one"));
    QVERIFY(slicer.processId("one.pid") > 0);
    const std::string changed = modelOf(f, "changed");
    const std::string removed = modelOf(f, "removed");
    // One after the other: what is read first is sliced first.
    const int first = f.preview(changed, outputOf(f, "changed"));
    QVERIFY(f.waitForStage(first, "Waiting"));
    const int second = f.preview(removed, outputOf(f, "removed"));
    QVERIFY(f.waitForStage(second, "Waiting"));

    f.world.writeFile(QStringLiteral("changed.stl"), "another");
    QVERIFY(QFile::remove(toQString(removed)));
    for (const char* const name : {"one.go", "changed.go", "removed.go"})
        slicer.write(name);

    QCOMPARE(f.conclude(first).conclusion(), JobEnded);
    QCOMPARE(f.conclude(second).conclusion(), JobEnded);
    QCOMPARE(slicer.read("order"), QByteArray("one\nchanged\nremoved\n"));
}

void tst_SliceQueue::readsTheProfileWhenItIsAskedFor()
{
    const FakeSlicer slicer("cp \"$options\" \"$test/options\"\n" + kPatient);
    SliceWorld f(slicer.program(), 1);
    f.preview(modelOf(f, "one"), outputOf(f, "one"));
    QVERIFY(slicer.processId("one.pid") > 0);
    const QDir profile(toQString(f.world.path(QStringLiteral("profile"))));
    QVERIFY(profile.mkpath(QStringLiteral(".")));
    for (const char* const name : {"strandel.json", "start.gcode", "end.gcode"}) {
        const QString file = QString::fromLatin1(name);
        QVERIFY(QFile::copy(QStringLiteral(TROVEK_PROFILES "/Orvane PLA Standard/") + file,
                            profile.filePath(file)));
        QFile::setPermissions(profile.filePath(file), QFile::ReadOwner | QFile::WriteOwner);
    }
    f.configuration.setProfilePath(toStdString(profile.path()));
    const std::string out = outputOf(f, "two");
    const int two = f.exportTo(modelOf(f, "two"), out, "gcode");
    QVERIFY(f.waitForStage(two, "Waiting"));

    QVERIFY(QDir(profile).removeRecursively());
    slicer.write("one.go");
    slicer.write("two.go");

    QCOMPARE(f.conclude(two).failure(), std::string());
    const QByteArray gcode = ServiceWorld::read(out);
    QVERIFY(gcode.contains(kResult));
    QVERIFY(!gcode.startsWith(kResult));
    QVERIFY(!gcode.endsWith(kResult));
}

void tst_SliceQueue::aPrintHoldsItsMachineWhileItSlices()
{
    const FakeSlicer slicer(kPatient);
    SliceWorld f(slicer.program());
    ServiceWorld::openMachine(f.client);
    const std::string other = f.world.writeFile(QStringLiteral("s.gcode"), squareGCode());
    const int id = f.print(modelOf(f, "a"), true);
    QVERIFY(slicer.processId("a.pid") > 0);

    QCOMPARE(errorOf([&] { f.print(other); }), std::string("PrintQueuedException"));
    QCOMPARE(errorOf([&] { f.print(modelOf(f, "b")); }), std::string("PrintQueuedException"));
    QCOMPARE(errorOf([&] { f.client.home(f.machine); }), std::string("MachineStateException"));

    f.client.cancelJob(id);
}

void tst_SliceQueue::cancelingAPrintFreesItsMachineAtOnce()
{
    // Even a slicer that does not want to end.
    const FakeSlicer slicer("trap '' TERM\n" + kPatient);
    SliceWorld f(slicer.program());
    ServiceWorld::openMachine(f.client);
    const std::string other = f.world.writeFile(QStringLiteral("s.gcode"), squareGCode());
    const int id = f.print(modelOf(f, "a"), true);
    const qint64 process = slicer.processId("a.pid");
    QVERIFY(f.waitForStage(id, "Slicing"));

    f.client.cancelJob(id);

    QCOMPARE(f.job(id).conclusion(), JobCanceled);
    const int next = f.print(other, true);
    QTRY_VERIFY(!isAlive(process));
    QCOMPARE(f.conclude(next).conclusion(), JobEnded);
    QTRY_COMPARE(f.leftovers(), QStringList());
}

void tst_SliceQueue::unpluggingEndsThePrintAndTheSlicer()
{
    const FakeSlicer slicer(kPatient);
    SliceWorld f(slicer.program());
    ServiceWorld::openMachine(f.client);
    const int id = f.print(modelOf(f, "a"), true);
    const qint64 process = slicer.processId("a.pid");

    f.client.disconnectFromPort(ServiceWorld::kPort);

    QCOMPARE(f.conclude(id).conclusion(), JobFailed);
    QTRY_VERIFY(!isAlive(process));
    QTRY_COMPARE(f.leftovers(), QStringList());
}

void tst_SliceQueue::endingTheServiceEndsEverything()
{
    // Two that do not want to end, and one that waits.
    const FakeSlicer slicer("trap '' TERM\n" + kPatient);
    SliceWorld f(slicer.program(), 2);
    const std::string out = outputOf(f, "a");
    f.preview(modelOf(f, "a"), out);
    f.exportTo(modelOf(f, "b"), outputOf(f, "b"), "x3g");
    const qint64 processes[] = {slicer.processId("a.pid"), slicer.processId("b.pid")};
    const int waiting = f.preview(modelOf(f, "c"), outputOf(f, "c"));
    QVERIFY(f.waitForStage(waiting, "Waiting"));
    f.log.allowErrors("");
    QElapsedTimer clock;
    clock.start();

    f.world.stop();

    // Both at once.
    QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    for (const qint64 process : processes)
        QVERIFY(!isAlive(process));
    QCOMPARE(f.leftovers(), QStringList());
    QCOMPARE(ServiceWorld::read(out), QByteArray());
    QCOMPARE(slicer.read("c.pid"), QByteArray());
}

void tst_SliceQueue::removesWhatAKilledServiceLeft()
{
    ServiceWorld world;
    QDir state(world.stateDir());
    QVERIFY(state.mkpath(QStringLiteral("slices/abc/def")));
    QFile::setPermissions(world.stateDir(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QFile left(state.filePath(QStringLiteral("slices/abc/sliced.gcode.tmp")));
    QVERIFY(left.open(QIODevice::WriteOnly));
    const std::string kept = world.writeFile(QStringLiteral("kept"), "kept");
    QVERIFY(QFile::link(toQString(kept), state.filePath(QStringLiteral("slices/abc/link"))));

    world.start();

    QCOMPARE(QDir(state.filePath(QStringLiteral("slices")))
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot),
             QStringList());
    QCOMPARE(ServiceWorld::read(kept), QByteArray("kept"));
}

void tst_SliceQueue::replacesWhatIsNoFolderOfItsOwn_data()
{
    QTest::addColumn<bool>("isLink");

    QTest::newRow("a file") << false;
    QTest::newRow("a link to somebody's folder") << true;
}

void tst_SliceQueue::replacesWhatIsNoFolderOfItsOwn()
{
    QFETCH(bool, isLink);
    ServiceWorld world;
    QDir state(world.stateDir());
    QVERIFY(state.mkpath(QStringLiteral(".")));
    QFile::setPermissions(world.stateDir(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const std::string kept = world.writeFile(QStringLiteral("kept"), "kept");
    const QString slices = state.filePath(QStringLiteral("slices"));
    if (isLink)
        QVERIFY(QFile::link(QFileInfo(toQString(kept)).path(), slices));
    else
        QVERIFY(QFile::copy(toQString(kept), slices));

    world.start();

    QVERIFY(QFileInfo(slices).isDir() && !QFileInfo(slices).isSymLink());
    QCOMPARE(ServiceWorld::read(kept), QByteArray("kept"));
}

void tst_SliceQueue::tellsProgressInOrder()
{
    const FakeSlicer slicer("echo '10 => Processing triangulated mesh'\n"
                            "sleep 0.3\n"
                            "echo '70 => Infilling layers'\n"
                            "echo '30 => Preparing infill'\n"
                            "sleep 0.3\n"
                            "finish");
    SliceWorld f(slicer.program());
    std::vector<int> progress;
    QStringList stages;
    f.client.onEvent = [&](const std::string& event) {
        if (event.rfind("jobChanged", 0) != 0)
            return;
        const Job job = f.job(std::stoi(event.substr(11)));
        progress.push_back(job.progress());
        if (stages.isEmpty() || stages.last() != toQString(job.stage()))
            stages.append(toQString(job.stage()));
    };

    const int id = f.preview(modelOf(f, "a"), outputOf(f, "a"));
    f.conclude(id);
    QTRY_VERIFY(!eventsOf(f.client, "jobConcluded").empty());

    QVERIFY(std::is_sorted(progress.begin(), progress.end()));
    QCOMPARE(progress.back(), 100);
    // A share is left for writing the file.
    QVERIFY(std::count(progress.begin(), progress.end(), 63) > 0);
    QVERIFY(stages.contains(QStringLiteral("Slicing: processing triangulated mesh")));
    QVERIFY(stages.contains(QStringLiteral("Slicing: preparing infill")));
    QCOMPARE(stages.last(), QStringLiteral("Done"));
}

void tst_SliceQueue::failuresEmptyTheOutput_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("failure");

    QTest::newRow("the slicer fails")
        << QByteArray("echo 'No way' >&2; exit 1") << QByteArray("The slicer failed: No way");
    QTest::newRow("nothing is printed")
        << QByteArray("printf 'G28\\n; prusaslicer_config = end\\n' > \"$out\"")
        << QByteArray("The slicer found nothing to print");
    QTest::newRow("too tall") << QByteArray("printf 'G1 X10 Y10 Z.2 E1\\nG1 Z400.5 E1\\n"
                                            "; prusaslicer_config = end\\n' > \"$out\"")
                              << QByteArray("The print is too large for the machine: on Z it "
                                            "reaches from 0.2 to 400.5 mm, and the machine from "
                                            "0 to 155 mm");
    QTest::newRow("left of the platform")
        << QByteArray("printf 'G1 X10 Y10 Z.2 E1\\nG1 X-5.006 F1\\n"
                      "; prusaslicer_config = end\\n' > \"$out\"")
        << QByteArray("The print is too large for the machine: on X it reaches from -5.01 to 10 "
                      "mm, and the machine from 0 to 285 mm");
}

void tst_SliceQueue::failuresEmptyTheOutput()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, failure);
    const FakeSlicer slicer(body);
    SliceWorld f(slicer.program());

    for (const char* const format : {"gcode", "x3g"}) {
        const std::string out = outputOf(f, "a");
        const Job job = f.conclude(f.exportTo(modelOf(f, "a"), out, format));

        QCOMPARE(job.conclusion(), JobFailed);
        QCOMPARE(QByteArray::fromStdString(job.failure()), failure);
        QCOMPARE(ServiceWorld::read(out), QByteArray());
    }
    QTRY_COMPARE(f.leftovers(), QStringList());
}

void tst_SliceQueue::aMistakeInTheProfileIsToldBeforeSlicing()
{
    const FakeSlicer slicer(kPatient);
    SliceWorld f(slicer.program());
    f.configuration.setProfilePath(f.world.path(QStringLiteral("nowhere")));

    const Job job = f.conclude(f.preview(modelOf(f, "a"), outputOf(f, "a")));

    QCOMPARE(job.conclusion(), JobFailed);
    QVERIFY2(toQString(job.failure()).contains(QStringLiteral("strandel.json")),
             job.failure().c_str());
    QCOMPARE(slicer.read("order"), QByteArray());
}

void tst_SliceQueue::nothingIsLeftOfManySlices()
{
    const FakeSlicer slicer("finish");
    SliceWorld f(slicer.program());
    const std::string model = modelOf(f, "a");
    const auto round = [&] {
        std::vector<int> ids;
        for (int i = 0; i < 30; ++i) {
            const std::string out = f.world.emptyFile(QStringLiteral("out%1").arg(i));
            ids.push_back(f.exportTo(model, out, i % 3 == 0 ? "x3g" : "gcode"));
            if (i % 5 == 0)
                f.client.cancelJob(ids.back());
        }
        for (const int id : ids)
            f.conclude(id);
    };
    round();
    QTRY_COMPARE(f.leftovers(), QStringList());
    const int descriptors = count("/proc/self/fd");
    const int threads = count("/proc/self/task");

    for (int i = 0; i < 3; ++i)
        round();

    QTRY_COMPARE(f.leftovers(), QStringList());
    QTRY_COMPARE(count("/proc/self/fd"), descriptors);
    QTRY_VERIFY(count("/proc/self/task") <= threads);
}

QTEST_GUILESS_MAIN(tst_SliceQueue)
#include "tst_slice_queue.moc"
