#include <service/gcode/machine_definition.h>
#include <service/slicing/prusa_output.h>
#include <service/slicing/slicer_engine.h>

#include <QTest>

#include <csignal>

using namespace trovek::service;

class tst_PrusaOutput : public QObject
{
    Q_OBJECT

private slots:
    void namesTheStage_data();
    void namesTheStage();
    void neverFallsBack();
    void creepsTowardsTheNextMarkOnly();
    void isNeverDone();
    void putsLinesTogether();
    void keepsComplaintsOnly();
    void keepsTheEndOfEndlessComplaints();
    void saysWhyItFailed_data();
    void saysWhyItFailed();
};

void tst_PrusaOutput::namesTheStage_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("stage");

    QTest::newRow("nothing yet") << QByteArray() << QStringLiteral("Slicing");
    QTest::newRow("a stage") << QByteArray("20 => Generating perimeters\n")
                             << QStringLiteral("Slicing: generating perimeters");
    QTest::newRow("without the path") << QByteArray("90 => Exporting G-code to /home/a b/x.gcode\n")
                                      << QStringLiteral("Slicing: exporting G-code");
    QTest::newRow("not known here") << QByteArray("65 => Searching new things\n")
                                    << QStringLiteral("Slicing: searching new things");
    QTest::newRow("very long") << "20 => " + QByteArray(500, 'x') + "\n"
                               << QStringLiteral("Slicing: ") + QString(60, QLatin1Char('x'));
    QTest::newRow("no number") << QByteArray("Slicing result exported to /x\n")
                               << QStringLiteral("Slicing");
    QTest::newRow("no text") << QByteArray("20 =>\n") << QStringLiteral("Slicing");
    QTest::newRow("line breaks of another system")
        << QByteArray("30 => Preparing infill\r\n") << QStringLiteral("Slicing: preparing infill");
}

void tst_PrusaOutput::namesTheStage()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, stage);
    PrusaOutput output;

    output.add(line, 0);

    QCOMPARE(output.stage(), stage);
}

void tst_PrusaOutput::neverFallsBack()
{
    PrusaOutput output;

    output.add("10 => Processing triangulated mesh\n", 1);
    QCOMPARE(output.percent(1), 10);
    output.add("70 => Infilling layers\n", 2);
    QCOMPARE(output.percent(2), 70);
    output.add("30 => Preparing infill\n", 3);
    QCOMPARE(output.percent(2), 70);
    QCOMPARE(output.stage(), QStringLiteral("Slicing: preparing infill"));

    // Nor when it had crept beyond what is told later.
    const int crept = output.percent(1e6);
    output.add("71 => Infilling layers\n", 1e6);
    QVERIFY(output.percent(1e6) >= crept);
}

void tst_PrusaOutput::creepsTowardsTheNextMarkOnly()
{
    PrusaOutput output;
    output.add("20 => Generating perimeters\n", 100);

    int last = output.percent(100);
    QCOMPARE(last, 20);
    for (double now = 100; now < 400; now += 0.5) {
        const int percent = output.percent(now);
        QVERIFY(percent >= last && percent < 70);
        last = percent;
    }
    QVERIFY(last > 60);
    QVERIFY(output.percent(1e12) < 70);
}

void tst_PrusaOutput::isNeverDone()
{
    PrusaOutput output;
    output.add("100 => Done\n", 1);
    QCOMPARE(output.percent(1e12), 99);
    output.add("999 => Done\n", 2);
    QCOMPARE(output.percent(1e12), 99);
}

void tst_PrusaOutput::putsLinesTogether()
{
    PrusaOutput output;
    for (const char byte : QByteArray("junk\n20 => Generating perimeters\n30"))
        output.add(QByteArray(1, byte), 1);

    QCOMPARE(output.percent(1), 20);
    QCOMPARE(output.stage(), QStringLiteral("Slicing: generating perimeters"));
    QCOMPARE(output.complaints(), QByteArray("junk\n"));
}

void tst_PrusaOutput::keepsComplaintsOnly()
{
    PrusaOutput output;
    output.add("[2026-01-01 00:00:00.000000] [0x00007f] [trace]   Initializing\n"
               "10 => Processing triangulated mesh\n\n"
               "one.stl: Loading of a model file failed.\n",
               1);

    QCOMPARE(output.complaints(), QByteArray("one.stl: Loading of a model file failed.\n"));
}

void tst_PrusaOutput::keepsTheEndOfEndlessComplaints()
{
    PrusaOutput output;
    for (int i = 0; i < 2000; ++i)
        output.add(QByteArray(100, 'x'), 1);
    output.add("\nthe last\n", 1);

    QVERIFY(output.complaints().size() <= 16384);
    QVERIFY(output.complaints().endsWith("the last\n"));
}

void tst_PrusaOutput::saysWhyItFailed_data()
{
    QTest::addColumn<QByteArray>("complaints");
    QTest::addColumn<int>("signalNumber");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("too large")
        << QByteArray("terminate called after throwing an instance of 'Slic3r::RuntimeError'\n"
                      "  what():  Objects could not fit on the bed\n")
        << SIGABRT
        << QByteArray("The model is too large for the machine, which has 280 x 150 x 140.5 mm");
    QTest::newRow("flat, or with numbers that are none")
        << QByteArray("[t] [0x1] [error]   its_convex_hull: Unable to create convex hull\n"
                      "  what():  Objects could not fit on the bed\n")
        << SIGABRT << QByteArray("The model is damaged: it encloses no volume");
    QTest::newRow("tiny") << QByteArray("No layers were detected. You might want to repair\n") << 0
                          << QByteArray("The model is too small or too thin: no layer of it would "
                                        "be printed");
    QTest::newRow("empty") << QByteArray(
                                  "[t] [0x1] [error]   stl_open_count_facets: The input is an "
                                  "empty file: /w/model.stl\n"
                                  "/w/model.stl: Loading of a model file failed.\n")
                           << 0 << QByteArray("The model is empty");
    QTest::newRow("empty in other words")
        << QByteArray("/w/model.amf: The supplied file couldn't be read because it's empty\n") << 0
        << QByteArray("The model is empty");
    QTest::newRow("damaged") << QByteArray("/w/model.stl: Loading of a model file failed.\n") << 0
                             << QByteArray("The model cannot be read: it is damaged, or it is not "
                                           "in the format STL");
    QTest::newRow("full disk")
        << QByteArray("G-code export to /w/out.gcode failed\nIs the disk full?\n") << 0
        << QByteArray("There is not enough space on the disk for the sliced model");
    QTest::newRow("a file above the user's limit")
        << QByteArray() << SIGXFSZ
        << QByteArray("There is not enough space on the disk for the sliced model");
    QTest::newRow("crashed") << QByteArray() << SIGSEGV
                             << QByteArray("The slicer crashed (Segmentation fault); the model may "
                                           "be damaged");
    QTest::newRow("out of memory") << QByteArray() << SIGKILL
                                   << QByteArray("The slicer was killed; the model may need more "
                                                 "memory than there is");
    QTest::newRow("less memory than it asks for")
        << QByteArray("10 => Processing triangulated mesh\nstd::bad_alloc\n") << 0
        << QByteArray("The model needs more memory than there is");
    QTest::newRow("ended by somebody")
        << QByteArray() << SIGTERM << QByteArray("The slicer was ended from outside");
    QTest::newRow("its own words, without our paths")
        << QByteArray("[2026-01-01] [0x00007f2f545a6d80] [error]   Cannot read /w/model.stl\n"
                      "Nor write /w/out.gcode in /w\n")
        << 0 << QByteArray("The slicer failed: Cannot read model.stl Nor write out.gcode in w");
    QTest::newRow("no word") << QByteArray() << 0
                             << QByteArray("The slicer failed without a reason");
}

void tst_PrusaOutput::saysWhyItFailed()
{
    QFETCH(QByteArray, complaints);
    QFETCH(int, signalNumber);
    QFETCH(QByteArray, text);
    MachineDefinition machine;
    machine.buildVolume = {AxisRange{0, 280}, AxisRange{-75, 75}, AxisRange{0, 140.5}};
    SliceJob job;
    job.machine = &machine;
    job.modelPath = QStringLiteral("/w/model.stl");
    job.outputPath = QStringLiteral("/w/out.gcode");
    job.workFolder = QStringLiteral("/w");

    QCOMPARE(QByteArray::fromStdString(prusaFailure(job, complaints, signalNumber)), text);
}

QTEST_GUILESS_MAIN(tst_PrusaOutput)
#include "tst_prusa_output.moc"
