#include "service/slicing/sliced_gcode.h"

#include <gcode/machine_definition.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <set>

/** The program as a user starts it, driven by itself. */
class tst_Tour : public QObject
{
    Q_OBJECT

private slots:
    void printsAndExportsEachFile();
    void leavesNothingBehind();
    void tellsByItsExitStatusThatAFileIsMissing();
    void makesModels();
    void tellsThatAModelCannotBeMade();
    void refusesAWrongCommandLine();
    void namesItsVersionWithoutADisplay();

private:
    struct Run
    {
        int status;
        QString output;
        QString errors;
    };

    /** Everything that the program may write lies below the folder. */
    static Run run(const QTemporaryDir& folder, const QStringList& arguments,
                   const QString& platform = QStringLiteral("offscreen"))
    {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
        environment.insert(QStringLiteral("HOME"), folder.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), folder.filePath(QStringLiteral("c")));
        environment.insert(QStringLiteral("XDG_DATA_HOME"), folder.filePath(QStringLiteral("d")));
        environment.remove(QStringLiteral("XDG_RUNTIME_DIR"));
        QDir(folder.path()).mkpath(QStringLiteral("t"));
        environment.insert(QStringLiteral("TMPDIR"), folder.filePath(QStringLiteral("t")));
        program.setProcessEnvironment(environment);
        program.start(QStringLiteral(OSTRAND_PROGRAM), arguments);
        program.closeWriteChannel();
        if (!program.waitForFinished(240000)) {
            program.kill();
            program.waitForFinished();
            return {-1, QString::fromUtf8(program.readAllStandardOutput()),
                    QStringLiteral("It did not end")};
        }
        return {program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1,
                QString::fromUtf8(program.readAllStandardOutput()),
                QString::fromUtf8(program.readAllStandardError())};
    }

    static void checkExport(const QString& path, const trovek::service::MachineDefinition& machine,
                            const std::set<int>& tools);

    static QString data(const char* name)
    {
        return QDir(QStringLiteral(TEST_DATA)).filePath(QLatin1String(name));
    }
};

void tst_Tour::printsAndExportsEachFile()
{
    QTemporaryDir folder;
    const QString out = folder.filePath(QStringLiteral("out"));
    const Run tour =
        run(folder, {QStringLiteral("--tour"), out, QStringLiteral("--file"),
                     data("cube_single.gcode"), QStringLiteral("--file"), data("cube_dual.gcode")});
    QVERIFY2(tour.status == 0, qPrintable(tour.output + tour.errors));
    const QDir exports(out + QStringLiteral("/exports"));
    QCOMPARE(exports.entryList(QDir::Files, QDir::Name),
             QStringList({QStringLiteral("cube_dual.gcode"), QStringLiteral("cube_dual.s3g"),
                          QStringLiteral("cube_dual.x3g"), QStringLiteral("cube_single.gcode"),
                          QStringLiteral("cube_single.s3g"), QStringLiteral("cube_single.x3g")}));
    for (const QFileInfo& exported : exports.entryInfoList(QDir::Files)) {
        QVERIFY2(exported.size() > 1000, qPrintable(exported.fileName()));
        QVERIFY(tour.output.contains(
            QStringLiteral("exported %1, %2 bytes").arg(exported.filePath()).arg(exported.size())));
    }
    const QStringList pictures =
        QDir(out).entryList({QStringLiteral("*.png")}, QDir::Files, QDir::Name);
    QCOMPARE(pictures.size(), 55);
    QCOMPARE(pictures.first(), QStringLiteral("01-start.png"));
    for (const QString& picture : pictures)
        QVERIFY2(!QImage(QDir(out).filePath(picture)).isNull(), qPrintable(picture));
    QVERIFY(QFile::exists(out + QStringLiteral("/index.html")));
    QVERIFY(tour.output.contains(QStringLiteral("  printed cube_single.gcode to the end\n")));
    QVERIFY(tour.output.contains(QStringLiteral("  printed cube_dual.gcode to the end\n")));
    QVERIFY(tour.output.contains(QStringLiteral("  kept over a restart: number ")));
}

void tst_Tour::leavesNothingBehind()
{
    QTemporaryDir folder;
    QTemporaryDir home;
    const Run tour = run(home, {QStringLiteral("--tour"), folder.path(), QStringLiteral("--file"),
                                data("cube_single.gcode")});
    QVERIFY2(tour.status == 0, qPrintable(tour.output + tour.errors));
    // Nor is anything left in the folder for temporary files.
    QStringList left = QDir(home.filePath(QStringLiteral("t")))
                           .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    left = left.filter(QRegularExpression(QStringLiteral("^(?!runtime-)")));
    QVERIFY2(left.isEmpty(), qPrintable(left.join(QLatin1Char(' '))));
    QVERIFY(!QFile::exists(home.filePath(QStringLiteral("c/Orvane"))));
    QVERIFY(!QFile::exists(home.filePath(QStringLiteral("d/Orvane"))));
    QVERIFY(!QFile::exists(home.filePath(QStringLiteral("d/trovek"))));
}

void tst_Tour::tellsByItsExitStatusThatAFileIsMissing()
{
    QTemporaryDir folder;
    const Run tour =
        run(folder, {QStringLiteral("--tour"), folder.filePath(QStringLiteral("out")),
                     QStringLiteral("--file"), folder.filePath(QStringLiteral("none.gcode"))});
    QCOMPARE(tour.status, 1);
    QVERIFY2(tour.output.contains(QStringLiteral("FAILED: ")), qPrintable(tour.output));
}

void tst_Tour::tellsThatAModelCannotBeMade()
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("part.stl")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    const Run tour = run(folder, {QStringLiteral("--tour"), folder.filePath(QStringLiteral("out")),
                                  QStringLiteral("--file"), file.fileName()});
    QCOMPARE(tour.status, 1);
    QVERIFY2(tour.output.contains(QStringLiteral("FAILED: Print Failed")), qPrintable(tour.output));
}

void tst_Tour::makesModels()
{
    QTemporaryDir folder;
    const QString out = folder.filePath(QStringLiteral("out"));
    const Run tour = run(folder, {QStringLiteral("--tour"), out, QStringLiteral("--file"),
                                  data("models/bracket.stl"), QStringLiteral("--file"),
                                  data("models/two_colors.amf")});
    QVERIFY2(tour.status == 0, qPrintable(tour.output + tour.errors));
    QVERIFY(tour.output.contains(QStringLiteral("  printed bracket.stl to the end\n")));
    QVERIFY(tour.output.contains(QStringLiteral("  printed two_colors.amf to the end\n")));

    const QDir exports(out + QStringLiteral("/exports"));
    int count = 0;
    for (const trovek::service::MachineDefinition& machine :
         trovek::service::defaultMachineDefinitions().archetypes) {
        const QString type = QString::fromStdString(trovek::service::machineTypeName(machine.type));
        checkExport(exports.filePath(QStringLiteral("bracket-%1.gcode").arg(type)), machine, {0});
        ++count;
        const QString dual = exports.filePath(QStringLiteral("two_colors-%1.gcode").arg(type));
        QCOMPARE(QFile::exists(dual), machine.extruders == 2);
        if (machine.extruders < 2)
            continue;
        checkExport(dual, machine, {0, 1});
        ++count;
    }
    // And one of each with a profile of the user's.
    for (const char* name : {"bracket-profile.gcode", "two_colors-profile.gcode"})
        QVERIFY(SlicedGCode::readFile(exports.filePath(QLatin1String(name))).hasStartCode);
    QCOMPARE(exports.entryList(QDir::Files).size(), count + 2);
}

void tst_Tour::checkExport(const QString& path, const trovek::service::MachineDefinition& machine,
                           const std::set<int>& tools)
{
    const SlicedGCode code = SlicedGCode::readFile(path);
    const std::vector<double> heights = code.modelHeights();
    // The preset "Standard", of parts that are 20 and 12 mm high.
    QCOMPARE(int(heights.size()), tools.size() == 1 ? 100 : 60);
    for (std::size_t i = 0; i < heights.size(); ++i)
        QVERIFY2(qAbs(heights[i] - 0.2 * double(i + 1)) < 0.001, qPrintable(path));
    QCOMPARE(code.tools(), tools);
    // The bracket's arm hangs over.
    if (tools.size() == 1)
        QVERIFY2(code.features().count("Support material") == 1, qPrintable(path));
    for (const int tool : tools) {
        const auto celsius = code.toolCelsius.find(tool);
        QVERIFY(celsius != code.toolCelsius.end());
        QVERIFY(std::count(celsius->second.begin(), celsius->second.end(), 230.0) > 0);
    }
    QVERIFY(code.hasStartCode);
    QVERIFY(code.hasEndCode);
    QVERIFY(code.minX >= machine.buildVolume[0].min && code.maxX <= machine.buildVolume[0].max);
    QVERIFY(code.minY >= machine.buildVolume[1].min && code.maxY <= machine.buildVolume[1].max);
    QVERIFY(code.maxZ <= machine.buildVolume[2].max);
}

void tst_Tour::refusesAWrongCommandLine()
{
    QTemporaryDir folder;
    const Run wrong = run(folder, {QStringLiteral("--tour"), folder.path()});
    QCOMPARE(wrong.status, 2);
    QVERIFY2(wrong.errors.contains(QStringLiteral("ostrand: --tour needs at least one --file.\n")),
             qPrintable(wrong.errors));
}

void tst_Tour::namesItsVersionWithoutADisplay()
{
    QTemporaryDir folder;
    const Run version = run(folder, {QStringLiteral("--version")}, QStringLiteral("none"));
    QCOMPARE(version.status, 0);
    QVERIFY(version.output.startsWith(QStringLiteral("Ostrand ")));
    const Run help = run(folder, {QStringLiteral("--help")}, QStringLiteral("none"));
    QCOMPARE(help.status, 0);
    QVERIFY(help.output.contains(QStringLiteral("--tour")));
}

QTEST_GUILESS_MAIN(tst_Tour)
#include "tst_tour.moc"
