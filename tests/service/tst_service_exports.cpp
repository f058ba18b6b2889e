#include "service_world.h"
#include "support/test_log.h"

#include <service/gcode/file_access.h>
#include <service/gcode/machine_definition.h>
#include <service/gcode/machine_file_writer.h>
#include <service/gcode/start_end_code.h>

#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <algorithm>

using namespace trovek;

class tst_ServiceExports : public QObject
{
    Q_OBJECT

private slots:
    void writesTheMachineFile_data();
    void writesTheMachineFile();
    void slicingCopiesGCodeByteForByte_data();
    void slicingCopiesGCodeByteForByte();
    void slicingAddsStartAndEndCode_data();
    void slicingAddsStartAndEndCode();
    void exportsForAConnectedMachineWhileItMoves();
    void replacesWhatStoodInTheOutput();
    void refusesFormats_data();
    void refusesFormats();
    void refusesOutputs_data();
    void refusesOutputs();
    void refusesTheInputAsOutput();
    void refusesToWriteForAnUnknownMachine();
    void failsWithAnEmptyOutput_data();
    void failsWithAnEmptyOutput();
    void aCanceledExportLeavesTheOutputEmpty_data();
    void aCanceledExportLeavesTheOutputEmpty();
    void manyExportsAtOnceAllEnd();
    void tellsProgressInOrder();
};

namespace {

struct Fixture
{
    Fixture()
    {
        world.start();
        client.connectToDaemon(world.address());
        archetype = client.printers().front()->key();
        for (const Printer* printer : client.printers()) {
            if (printer->type() == Printer::Fabrino2)
                archetype = printer->key();
        }
    }

    std::string input(const QByteArray& text = squareGCode())
    {
        return world.writeFile(QStringLiteral("part.gcode"), text);
    }

    int printToFile(const std::string& in, const std::string& out, const char* format,
                    bool skipStartEnd = true)
    {
        return client.printToFile(archetype, in, out, {}, {"pla"}, skipStartEnd, format);
    }

    Job conclude(int job)
    {
        if (!waitForConclusion(client, job))
            qWarning("The job did not conclude");
        return client.jobFromID(job);
    }

    TestLog log;
    ServiceWorld world;
    RecordingTrovek client;
    MachineName archetype;
};

service::MachineDefinition definitionOf(const MachineName& key)
{
    for (const auto& archetype : service::defaultMachineDefinitions().archetypes) {
        if (archetype.key == key.name())
            return archetype;
    }
    throw std::runtime_error("No such archetype");
}

service::StartEndCode codeFor(const MachineName& key)
{
    return service::startEndCode(definitionOf(key), {"pla"}, SlicerConfiguration());
}

} // namespace

void tst_ServiceExports::writesTheMachineFile_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<bool>("skipStartEnd");

    QTest::newRow("x3g alone") << QByteArray("x3g") << true;
    QTest::newRow("x3g with start and end code") << QByteArray("x3g") << false;
    QTest::newRow("s3g alone") << QByteArray("s3g") << true;
    QTest::newRow("s3g with start and end code") << QByteArray("s3g") << false;
}

void tst_ServiceExports::writesTheMachineFile()
{
    QFETCH(QByteArray, format);
    QFETCH(bool, skipStartEnd);
    Fixture f;
    const service::MachineDefinition definition = definitionOf(f.archetype);
    const service::StartEndCode code = codeFor(f.archetype);
    QByteArray expected;
    service::writeMachineFile(
        definition, *service::machineFileFormatFromName(format.toStdString()), "part",
        [&] {
            std::vector<service::GCodeSection> sections;
            if (!skipStartEnd)
                sections.push_back({"Start code", service::byteSourceOf(code.start)});
            sections.push_back({"", service::byteSourceOf(squareGCode().toStdString())});
            if (!skipStartEnd)
                sections.push_back({"End code", service::byteSourceOf(code.end)});
            return sections;
        },
        [&](const char* bytes, std::size_t size) {
            expected.append(bytes, static_cast<int>(size));
        });

    const std::string out = f.world.emptyFile(QStringLiteral("out.") + QString::fromLatin1(format));
    const Job job = f.conclude(f.printToFile(f.input(), out, format.constData(), skipStartEnd));

    QCOMPARE(job.failure(), std::string());
    QCOMPARE(job.conclusion(), JobEnded);
    QCOMPARE(job.kind(), std::string("print_to_file"));
    QCOMPARE(job.progress(), 100);
    QCOMPARE(ServiceWorld::read(out), expected);
    QVERIFY(expected.size() > 1000);
    QCOMPARE(static_cast<unsigned char>(expected[0]), format == "x3g" ? 157U : 153U);
}

void tst_ServiceExports::slicingCopiesGCodeByteForByte_data()
{
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("G-code") << squareGCode();
    QTest::newRow("no line break at the end") << QByteArray("G28\nG1 X1");
    QTest::newRow("line breaks of another system") << QByteArray("G28\r\nG1 X1\r\n");
    QTest::newRow("bytes of any value") << QByteArray("; \xff\xfe\x80 caf\xe9\n\0G28\n", 17);
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("several buffers") << QByteArray("G1 X1 Y1\n").repeated(100000);
}

void tst_ServiceExports::slicingCopiesGCodeByteForByte()
{
    QFETCH(QByteArray, text);
    Fixture f;
    const std::string out = f.world.emptyFile(QStringLiteral("out.gcode"));

    const Job job = f.conclude(
        f.client.slice(f.archetype, f.input(text), out, SlicerConfiguration(), {"pla"}, false));

    QCOMPARE(job.conclusion(), JobEnded);
    QCOMPARE(job.kind(), std::string("slice"));
    QCOMPARE(ServiceWorld::read(out), text);
}

void tst_ServiceExports::slicingAddsStartAndEndCode_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("expectedMiddle");

    QTest::newRow("whole lines") << QByteArray("G28\n") << QByteArray("G28\n");
    QTest::newRow("a last line without a break") << QByteArray("G28") << QByteArray("G28\n");
    QTest::newRow("nothing") << QByteArray() << QByteArray();
}

void tst_ServiceExports::slicingAddsStartAndEndCode()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, expectedMiddle);
    Fixture f;
    const std::string out = f.world.emptyFile(QStringLiteral("out.gcode"));

    const Job job = f.conclude(
        f.client.slice(f.archetype, f.input(text), out, SlicerConfiguration(), {"pla"}, true));

    QCOMPARE(job.conclusion(), JobEnded);
    const service::StartEndCode code = codeFor(f.archetype);
    QCOMPARE(ServiceWorld::read(out), QByteArray::fromStdString(code.start) + expectedMiddle +
                                          QByteArray::fromStdString(code.end));
}

void tst_ServiceExports::exportsForAConnectedMachineWhileItMoves()
{
    Fixture f;
    ServiceWorld::openMachine(f.client);
    const MachineName machine(ServiceWorld::kMachine);
    const std::string in = f.input();
    f.client.jog(machine, Printer::XAxis, 1, 100000);
    const std::string out = f.world.emptyFile(QStringLiteral("out.x3g"));

    const Job job = f.conclude(f.client.printToFile(machine, in, out, {}, {"pla"}, true, "x3g"));

    QCOMPARE(job.conclusion(), JobEnded);
    QVERIFY(!ServiceWorld::read(out).isEmpty());
}

void tst_ServiceExports::replacesWhatStoodInTheOutput()
{
    Fixture f;
    const std::string out = f.world.writeFile(QStringLiteral("out.gcode"), QByteArray(100000, 'x'));

    f.conclude(
        f.client.slice(f.archetype, f.input("G28\n"), out, SlicerConfiguration(), {"pla"}, false));

    QCOMPARE(ServiceWorld::read(out), QByteArray("G28\n"));
}

void tst_ServiceExports::refusesFormats_data()
{
    QTest::addColumn<QByteArray>("format");

    for (const char* format : {"gcode", "", "X3G", "x3g ", "s4g"})
        QTest::newRow(format) << QByteArray(format);
}

void tst_ServiceExports::refusesFormats()
{
    QFETCH(QByteArray, format);
    Fixture f;
    const std::string out = f.world.writeFile(QStringLiteral("out"), "kept");

    QCOMPARE(errorOf([&] { f.printToFile(f.input(), out, format.constData()); }),
             std::string("InvalidArgumentError"));

    QCOMPARE(ServiceWorld::read(out), QByteArray("kept"));
}

void tst_ServiceExports::refusesOutputs_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("missing") << QStringLiteral("nothing.x3g");
    QTest::newRow("a folder") << QStringLiteral(".");
    QTest::newRow("a link") << QStringLiteral("link.x3g");
    QTest::newRow("in a missing folder") << QStringLiteral("nowhere/out.x3g");
    QTest::newRow("a file with two names") << QStringLiteral("second.x3g");
    QTest::newRow("a pipe") << QStringLiteral("pipe.x3g");
}

void tst_ServiceExports::refusesOutputs()
{
    QFETCH(QString, name);
    Fixture f;
    const std::string kept = f.world.writeFile(QStringLiteral("kept.x3g"), "kept");
    const auto run = [&](const char* program, const QString& first, const QString& second) {
        QProcess::execute(QString::fromLatin1(program), {first, second});
    };
    QFile::link(toQString(kept), toQString(f.world.path(QStringLiteral("link.x3g"))));
    if (name.startsWith(QLatin1String("second")))
        run("ln", toQString(kept), toQString(f.world.path(name)));
    if (name.startsWith(QLatin1String("pipe")))
        run("mkfifo", QStringLiteral("--"), toQString(f.world.path(name)));

    QCOMPARE(errorOf([&] { f.printToFile(f.input(), f.world.path(name), "x3g"); }),
             std::string("FileAccessError"));

    QCOMPARE(ServiceWorld::read(kept), QByteArray("kept"));
    QVERIFY(!QFile::exists(toQString(f.world.path(QStringLiteral("nothing.x3g")))));
    QVERIFY(eventsOf(f.client, "job").empty());
}

void tst_ServiceExports::refusesTheInputAsOutput()
{
    Fixture f;
    const std::string in = f.input("G28\n");

    for (const QString& name : {QStringLiteral("part.gcode"), QStringLiteral("./part.gcode"),
                                QStringLiteral("../files/part.gcode")}) {
        QCOMPARE(errorOf([&] {
                     f.client.slice(f.archetype, in, f.world.path(name), SlicerConfiguration(),
                                    {"pla"}, false);
                 }),
                 std::string("FileAccessError"));
    }

    const std::string link = f.world.path(QStringLiteral("link.gcode"));
    QVERIFY(QFile::link(toQString(in), toQString(link)));
    QCOMPARE(errorOf([&] {
                 f.client.slice(f.archetype, link, in, SlicerConfiguration(), {"pla"}, false);
             }),
             std::string("FileAccessError"));
    QCOMPARE(ServiceWorld::read(in), QByteArray("G28\n"));
}

void tst_ServiceExports::refusesToWriteForAnUnknownMachine()
{
    Fixture f;
    f.archetype = MachineName("nobody");

    QCOMPARE(
        errorOf([&] { f.printToFile(f.input(), f.world.emptyFile(QStringLiteral("o")), "x3g"); }),
        std::string("UnknownMachineError"));
}

void tst_ServiceExports::failsWithAnEmptyOutput_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expectedFailure");

    QTest::newRow("an empty model")
        << QStringLiteral("a.stl") << QByteArray() << QStringLiteral("The model is empty");
    QTest::newRow("a move outside of the machine, late")
        << QStringLiteral("a.gcode") << squareGCode() + "G1 X5000 F1200\n"
        << QStringLiteral("Line 209: ");
    QTest::newRow("a target above the limit")
        << QStringLiteral("a.gcode") << QByteArray("M109 S900\n") << QStringLiteral("Line 1: ");
}

void tst_ServiceExports::failsWithAnEmptyOutput()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, text);
    QFETCH(QString, expectedFailure);
    Fixture f;
    const std::string out = f.world.writeFile(QStringLiteral("out.x3g"), "old");

    const Job job = f.conclude(f.printToFile(f.world.writeFile(name, text), out, "x3g"));

    QCOMPARE(job.conclusion(), JobFailed);
    QVERIFY2(toQString(job.failure()).startsWith(expectedFailure), job.failure().c_str());
    QCOMPARE(ServiceWorld::read(out), QByteArray());
    QTRY_COMPARE(eventsOf(f.client, "jobConcluded").size(), std::size_t(1));
}

void tst_ServiceExports::aCanceledExportLeavesTheOutputEmpty_data()
{
    QTest::addColumn<bool>("waitsForOutput");

    QTest::newRow("while it reads") << false;
    QTest::newRow("while it writes") << true;
}

void tst_ServiceExports::aCanceledExportLeavesTheOutputEmpty()
{
    QFETCH(bool, waitsForOutput);
    Fixture f;
    const std::string in =
        f.input(longGCode() + QByteArray("G1 X1 F6000\nG1 X2\n").repeated(500000));
    const std::string out = f.world.emptyFile(QStringLiteral("out.x3g"));
    const int id = f.printToFile(in, out, "x3g");
    QCOMPARE(f.client.jobFromID(id).conclusion(), JobNotConcluded);
    if (waitsForOutput)
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(toQString(out)).size() > 0, 30000);

    f.client.cancelJob(id);
    f.client.cancelJob(id);

    QCOMPARE(f.conclude(id).conclusion(), JobCanceled);
    QCOMPARE(ServiceWorld::read(out), QByteArray());
}

void tst_ServiceExports::manyExportsAtOnceAllEnd()
{
    Fixture f;
    const std::string in = f.input();
    std::vector<std::pair<int, std::string>> jobs;
    for (int i = 0; i < 20; ++i) {
        const std::string out = f.world.emptyFile(QStringLiteral("out%1.x3g").arg(i));
        jobs.emplace_back(f.printToFile(in, out, "x3g"), out);
    }

    for (const auto& [id, out] : jobs) {
        QCOMPARE(f.conclude(id).conclusion(), JobEnded);
        QCOMPARE(ServiceWorld::read(out), ServiceWorld::read(jobs.front().second));
    }
    QTRY_COMPARE(eventsOf(f.client, "jobConcluded").size(), std::size_t(20));
}

void tst_ServiceExports::tellsProgressInOrder()
{
    Fixture f;
    const std::string out = f.world.emptyFile(QStringLiteral("out.x3g"));
    std::vector<int> progress;
    f.client.onEvent = [&](const std::string& event) {
        if (event.compare(0, 10, "jobChanged") == 0)
            progress.push_back(f.client.jobFromID(std::stoi(event.substr(11))).progress());
    };

    const int id = f.printToFile(f.input(longGCode()), out, "x3g", false);
    QVERIFY(waitForConclusion(f.client, id));
    QTRY_COMPARE(eventsOf(f.client, "jobConcluded").size(), std::size_t(1));

    QVERIFY(progress.size() > 2);
    QVERIFY(std::is_sorted(progress.begin(), progress.end()));
    QCOMPARE(progress.back(), 100);
}

QTEST_GUILESS_MAIN(tst_ServiceExports)
#include "tst_service_exports.moc"
