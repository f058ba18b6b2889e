#include "apps/ostrand/options.h"

#include <QTest>

#include <stdexcept>

using namespace ostrand;

class tst_Options : public QObject
{
    Q_OBJECT

private slots:
    void nothingGivenMeansTheOwnServiceInTheStandardPlaces();
    void readsEveryOption();
    void takesFilesWithAndWithoutTheOption();
    void tourAndGallery();
    void helpAndVersionNeedNothingElse();
    void refusesWhatMakesNoSense_data();
    void refusesWhatMakesNoSense();
    void helpNamesEveryOption();

private:
    static Options parse(const QStringList& arguments)
    {
        return parseOptions(QStringList(QStringLiteral("ostrand")) + arguments);
    }
};

void tst_Options::nothingGivenMeansTheOwnServiceInTheStandardPlaces()
{
    const Options options = parse({});
    QVERIFY(options.serviceAddress.isEmpty());
    QVERIFY(options.settingsFile.isEmpty());
    QVERIFY(options.stateDir.isEmpty());
    QVERIFY(options.machinesFile.isEmpty());
    QCOMPARE(options.timeScale, 1.0);
    QVERIFY(options.files.isEmpty());
    QVERIFY(options.tourDir.isEmpty());
    QVERIFY(options.galleryDir.isEmpty());
    QVERIFY(!options.dark);
}

void tst_Options::readsEveryOption()
{
    const Options own =
        parse({QStringLiteral("--settings"), QStringLiteral("a b.ini"),
               QStringLiteral("--state=dir"), QStringLiteral("--machines"),
               QStringLiteral("m.json"), QStringLiteral("--time-scale"), QStringLiteral("2.5")});
    QCOMPARE(own.settingsFile, QStringLiteral("a b.ini"));
    QCOMPARE(own.stateDir, QStringLiteral("dir"));
    QCOMPARE(own.machinesFile, QStringLiteral("m.json"));
    QCOMPARE(own.timeScale, 2.5);

    const Options foreign =
        parse({QStringLiteral("--service"), QStringLiteral("tcp:127.0.0.1:4000"),
               QStringLiteral("--token-file"), QStringLiteral("token")});
    QCOMPARE(foreign.serviceAddress, QStringLiteral("tcp:127.0.0.1:4000"));
    QCOMPARE(foreign.tokenFile, QStringLiteral("token"));
}

void tst_Options::takesFilesWithAndWithoutTheOption()
{
    const Options options =
        parse({QStringLiteral("--file"), QStringLiteral("a.gcode"), QStringLiteral("c.gcode"),
               QStringLiteral("--file"), QStringLiteral("b.gcode")});
    QCOMPARE(options.files, QStringList({QStringLiteral("a.gcode"), QStringLiteral("b.gcode"),
                                         QStringLiteral("c.gcode")}));
}

void tst_Options::tourAndGallery()
{
    const Options tour = parse({QStringLiteral("--tour"), QStringLiteral("out"),
                                QStringLiteral("--file"), QStringLiteral("a.gcode")});
    QCOMPARE(tour.tourDir, QStringLiteral("out"));
    const Options gallery =
        parse({QStringLiteral("--gallery"), QStringLiteral("out"), QStringLiteral("--dark")});
    QCOMPARE(gallery.galleryDir, QStringLiteral("out"));
    QVERIFY(gallery.dark);
}

void tst_Options::helpAndVersionNeedNothingElse()
{
    QVERIFY(
        parse({QStringLiteral("--help"), QStringLiteral("--tour"), QStringLiteral("x")}).showHelp);
    QVERIFY(parse({QStringLiteral("-h")}).showHelp);
    QVERIFY(parse({QStringLiteral("--version")}).showVersion);
}

void tst_Options::refusesWhatMakesNoSense_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const char* arguments, const char* text) {
        QTest::newRow(name) << QString::fromLatin1(arguments) << QString::fromLatin1(text);
    };
    row("unknown option", "--nonsense", "Unknown option 'nonsense'.");
    row("option without its value", "--settings", "Missing value after '--settings'.");
    row("time scale of zero", "--time-scale 0",
        "--time-scale needs a number above zero, not \"0\".");
    row("negative time scale", "--time-scale=-1",
        "--time-scale needs a number above zero, not \"-1\".");
    row("time scale without end", "--time-scale inf",
        "--time-scale needs a number above zero, not \"inf\".");
    row("time scale in words", "--time-scale fast",
        "--time-scale needs a number above zero, not \"fast\".");
    row("address of no kind", "--service nowhere", "Invalid service address: nowhere");
    row("token without a service", "--token-file t", "--token-file is for a tcp service only.");
    row("token for a local service", "--service local:x --token-file t",
        "--token-file is for a tcp service only.");
    row("state of somebody else's service", "--service local:x --state d",
        "--state, --machines and --time-scale are for the own service only, not together with "
        "--service.");
    row("time of somebody else's service", "--service local:x --time-scale 1",
        "--state, --machines and --time-scale are for the own service only, not together with "
        "--service.");
    row("tour without a file", "--tour out", "--tour needs at least one --file.");
    row("tour and gallery", "--tour a --gallery b --file c",
        "--tour and --gallery cannot be used together.");
    row("dark without a gallery", "--dark", "--dark is for the gallery only.");
    row("empty folder", "--tour= --file a", "--tour must not be empty.");
}

void tst_Options::refusesWhatMakesNoSense()
{
    QFETCH(QString, arguments);
    QFETCH(QString, text);
    try {
        parse(arguments.split(QLatin1Char(' ')));
        QFAIL("No exception");
    } catch (const std::runtime_error& error) {
        QCOMPARE(QString::fromUtf8(error.what()), text);
    }
}

void tst_Options::helpNamesEveryOption()
{
    const QString help = optionsHelp();
    for (const char* option :
         {"--help", "--version", "--service", "--token-file", "--settings", "--state", "--machines",
          "--time-scale", "--file", "--tour", "--gallery", "--dark"})
        QVERIFY2(help.contains(QLatin1String(option)), option);
}

QTEST_GUILESS_MAIN(tst_Options)
#include "tst_options.moc"
