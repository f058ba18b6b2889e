#include "make_dialog/plain_dialog.h"

#include <trovek-ui/export_job_mover.h>
#include <trovek-ui/file_system.h>

#include <trovek/wire.h>

using namespace trovek;

namespace {

constexpr char kUnit[] = "src\\make_dialog\\make_dialog";

const auto kMachine = ScriptedService::machine("left", Printer::Fabrino2);
const auto kDual = ScriptedService::machine("dual", Printer::Fabrino2X);
const auto kArchetype = ScriptedService::archetype(Printer::Fabrino2);
const auto kDualArchetype = ScriptedService::archetype(Printer::Fabrino2X);

const QString kX3gFilter = QStringLiteral("X3G, SD print for firmware 7.0 or later (*.x3g)");
const QString kS3gFilter = QStringLiteral("S3G, SD print for firmware earlier than 7.0 (*.s3g)");
const QString kGCodeFilter = QStringLiteral("GCode, slice only (*.gcode)");

QStringList flow(std::initializer_list<const char*> between)
{
    return words({"Make or export clicked"}) + words(between) + words({"End of make/export"});
}

Json::Value object(const char* name, const Json::Value& value)
{
    Json::Value result(Json::objectValue);
    result[name] = value;
    return result;
}

QString headingOf(const QWidget* box)
{
    return messageTexts(box).value(0);
}

} // namespace

/** What the main button does: the checks, the make, the export, the preview. */
class tst_MakeOrExport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void cleanup();

    void prints();
    void printsWithTheMaterialsOfItsExtruders_data();
    void printsWithTheMaterialsOfItsExtruders();
    void passesTheStartEndFlag_data();
    void passesTheStartEndFlag();
    void remembersTheMachine();
    void stopsWithoutAConnection();
    void stopsWithoutAnInputFile();
    void stopsWithoutAMachine();
    void stopsWhenTheFinalCheckFails();
    void checksInOrder();
    void refusesToPrintOnAnArchetype();
    void showsWhatTheServiceRefuses_data();
    void showsWhatTheServiceRefuses();
    void stopsWhenTheLinkBreaksInTheCall();
    void tellsOfWhatIsNoException();
    void makesAfterAnErrorWasMended();
    void ignoresASecondClickWhileItRuns();
    void survivesItsEndInAMessage();
    void survivesItsEndInTheFinalCheck();
    void looksAgainAfterTheFinalCheck_data();
    void looksAgainAfterTheFinalCheck();

    void exportsInEachFormat_data();
    void exportsInEachFormat();
    void letsTheServiceWriteTheOutput();
    void bringsTheExportToItsPlace();
    void offersThreeFormatsAndAName();
    void preselectsTheFormatUsedLast_data();
    void preselectsTheFormatUsedLast();
    void proposesTheFolderUsedLast();
    void staysOpenWhenTheExportIsCanceled();
    void refusesASuffixInUpperCase();
    void showsWhatTheServiceRefusesToExport();
    void tellsWhenTheDestinationCannotBeWritten();
    void proposesAShorterNameForTheMachine();
    void survivesItsEndInTheSaveDialog();
    void survivesItsEndInTheQuestionForAShorterName();
    void keepsNoMessages();
    void looksAgainAfterTheSaveDialog_data();
    void looksAgainAfterTheSaveDialog();

    void slicesAPreview_data();
    void slicesAPreview();
    void showsWhatTheServiceRefusesToPreview_data();
    void showsWhatTheServiceRefusesToPreview();
    void survivesItsEndWhenThePreviewStarts();

private:
    // The process's export mover belongs to it.
    TrovekQt m_facade;
};

void tst_MakeOrExport::cleanup()
{
    TemporaryDir::cleanManagedDirectories();
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeOrExport::prints()
{
    TestLog log;
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    auto* const dialog = new PlainDialog(world);
    QSignalSpy accepted(dialog, &QDialog::accepted);

    dialog->clickMain();

    QCOMPARE(accepted.count(), 1);
    const Json::Value request = world.service.lastRequest("print");
    QCOMPARE(request["machine"].asString(), std::string("left"));
    QCOMPARE(QString::fromStdString(request["input_path"].asString()), world.inputFile);
    QCOMPARE(request["slicer_config"]["layer_height"].asDouble(), 0.125);
    QCOMPARE(dialog->calls, words({"finalMakeOrExportCheck", "saveSettings", "slicerConfiguration",
                                   "skipStartEndCode"}));
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2), flow({}));
    QCOMPARE(ExportJobMover::instance(m_facade).unfinishedExports(), QStringList());
}

void tst_MakeOrExport::printsWithTheMaterialsOfItsExtruders_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QStringList>("materials");

    QTest::newRow("one extruder") << QByteArray("left") << words({"flexible"});
    QTest::newRow("two extruders, the right one first")
        << QByteArray("dual") << words({"dissolvable", "abs"});
}

void tst_MakeOrExport::printsWithTheMaterialsOfItsExtruders()
{
    TestLog log;
    QFETCH(QByteArray, key);
    MakeWorld world(m_facade, {kMachine, kDual});
    auto* const dialog = new PlainDialog(world, world.printer(key));

    dialog->clickMain();

    QTEST(textsOf(world.service.lastRequest("print")["materials"]), "materials");
}

void tst_MakeOrExport::passesTheStartEndFlag_data()
{
    QTest::addColumn<bool>("skip");

    QTest::newRow("with the code") << false;
    QTest::newRow("without the code") << true;
}

void tst_MakeOrExport::passesTheStartEndFlag()
{
    TestLog log;
    QFETCH(bool, skip);
    MakeWorld world(m_facade, {kMachine});
    auto* const dialog = new PlainDialog(world);
    dialog->skip = skip;

    dialog->clickMain();

    QCOMPARE(world.service.lastRequest("print")["skip_start_end"].asBool(), skip);
}

void tst_MakeOrExport::remembersTheMachine()
{
    TestLog log;
    const std::string key = "serial \xc3\xbc/7";
    MakeWorld world(m_facade, {ScriptedService::machine(key, Printer::Fabrino2)});
    auto* const dialog = new PlainDialog(world);

    dialog->clickMain();

    QCOMPARE(world.settings.value(QStringLiteral("make_dialog/printer")).toString(),
             QString::fromStdString(key));
    QCOMPARE(world.settings.allKeys(), words({"make_dialog/printer"}));
}

void tst_MakeOrExport::stopsWithoutAConnection()
{
    TestLog log;
    log.allowErrors("");
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    PlainDialog dialog(world);
    world.loseConnection();
    driver.expect([](QDialog* box) {
        QVERIFY(!headingOf(box).isEmpty());
        pressButton(box, QStringLiteral("&OK"));
    });

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QCOMPARE(dialog.calls, QStringList());
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2), flow({"Trovek not connected"}));
    QCOMPARE(world.settings.allKeys(), QStringList());
}

void tst_MakeOrExport::stopsWithoutAnInputFile()
{
    TestLog log;
    log.expectError("Input file does not exist");
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    PlainDialog dialog(world);
    QVERIFY(QFile::remove(world.inputFile));
    driver.expectMessage(kFileNotFound);

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2), flow({"Input file does not exist"}));
    QCOMPARE(world.service.requests("print").size(), std::size_t(0));
}

void tst_MakeOrExport::stopsWithoutAMachine()
{
    TestLog log;
    log.expectError("Machine is null");
    MakeWorld world(m_facade, {});
    ModalDriver driver;
    PlainDialog dialog(world);

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QCOMPARE(dialog.calls, QStringList());
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2), flow({"Machine is null"}));
}

void tst_MakeOrExport::stopsWhenTheFinalCheckFails()
{
    TestLog log;
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    PlainDialog dialog(world);
    dialog.finalCheck = [] {
        return false;
    };

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2), flow({"finalMakeOrExportCheck didn't pass"}));
    QCOMPARE(world.service.requests("print").size(), std::size_t(0));
    QCOMPARE(world.settings.allKeys(), QStringList());
}

void tst_MakeOrExport::checksInOrder()
{
    TestLog log;
    log.allowErrors("");
    MakeWorld world(m_facade, {});
    ModalDriver driver;
    PlainDialog dialog(world);
    dialog.finalCheck = [] {
        return false;
    };
    QVERIFY(QFile::remove(world.inputFile));
    const auto lastLine = [&log] {
        const QStringList lines = MakeWorld::logOf(log, kUnit);
        return lines.at(lines.size() - 2);
    };

    // Everything is wrong; what is mended is followed by the next complaint.
    driver.expectMessage(kFileNotFound);
    dialog.clickMain();
    QCOMPARE(lastLine(), QStringLiteral("Input file does not exist"));

    MakeWorld::writeFile(world.inputFile, "G28\n");
    dialog.clickMain();
    QCOMPARE(lastLine(), QStringLiteral("Machine is null"));

    world.service.addPrinter(kArchetype);
    QTRY_COMPARE(dialog.selected(), QStringLiteral("archetype 3"));
    dialog.clickMain();
    QCOMPARE(lastLine(), QStringLiteral("finalMakeOrExportCheck didn't pass"));
}

void tst_MakeOrExport::refusesToPrintOnAnArchetype()
{
    TestLog log;
    log.expectError("Make failed: printer is an archetype");
    Printer::Data odd = kMachine;
    odd.canPrintToFile = false;
    MakeWorld world(m_facade, {odd});
    ModalDriver driver;
    driver.expectMessage(kFailedToStartPrint);
    PlainDialog dialog(world);

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QCOMPARE(world.service.requests("print").size(), std::size_t(0));
    QCOMPARE(dialog.calls, words({"finalMakeOrExportCheck", "saveSettings", "slicerConfiguration",
                                  "skipStartEndCode"}));
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2), flow({"Make failed: printer is an archetype"}));
}

void tst_MakeOrExport::showsWhatTheServiceRefuses_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("busy") << QByteArray(R"({"name": "PrintQueuedException", "message": "m"})")
                          << kPrinterIsBusy;
    QTest::newRow("another name") << QByteArray(R"({"name": "ArchetypeError"})")
                                  << kGenericTrovekError;
    QTest::newRow("beginning of the name")
        << QByteArray(R"({"name": "PrintQueued"})") << kGenericTrovekError;
    QTest::newRow("name is no text")
        << QByteArray(R"({"name": ["PrintQueuedException"]})") << kGenericTrovekError;
    QTest::newRow("name is null") << QByteArray(R"({"name": null})") << kGenericTrovekError;
    QTest::newRow("no name") << QByteArray(R"({})") << kGenericTrovekError;
    QTest::newRow("a list") << QByteArray(R"([{"name": "PrintQueuedException"}])")
                            << kGenericTrovekError;
    QTest::newRow("a text") << QByteArray(R"("PrintQueuedException")") << kGenericTrovekError;
    QTest::newRow("a number") << QByteArray("7") << kGenericTrovekError;
    QTest::newRow("nothing") << QByteArray("null") << kGenericTrovekError;
}

void tst_MakeOrExport::showsWhatTheServiceRefuses()
{
    TestLog log;
    log.expectError("the service's words");
    QFETCH(QByteArray, data);
    QFETCH(QStringList, texts);
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    driver.expectMessage(texts);
    PlainDialog dialog(world);
    Json::Value value;
    QVERIFY(Json::Reader().parse(data.toStdString(), value));
    world.service.failNext("print", JsonRpcException("the service's words", value));

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2), flow({"the service's words"}));
}

void tst_MakeOrExport::stopsWhenTheLinkBreaksInTheCall()
{
    TestLog log;
    log.allowErrors("");
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    driver.expectMessage(kFailedToStartPrint);
    PlainDialog dialog(world);
    world.service.dropConnectionOn("print");

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QVERIFY(!m_facade.isConnected());
    QTRY_VERIFY(!dialog.machines()->isEnabled());
}

void tst_MakeOrExport::tellsOfWhatIsNoException()
{
    TestLog log;
    log.expectError("Something was thrown that is no exception");
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    driver.expectMessage(kFailedToStartPrint);
    PlainDialog dialog(world);
    dialog.finalCheck = []() -> bool {
        throw 7;
    };

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2),
             flow({"Something was thrown that is no exception"}));
}

void tst_MakeOrExport::makesAfterAnErrorWasMended()
{
    TestLog log;
    log.expectError("not now");
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    driver.expectMessage(kGenericTrovekError);
    auto* const dialog = new PlainDialog(world);
    QSignalSpy accepted(dialog, &QDialog::accepted);
    world.service.failNext("print", JsonRpcException("not now"));

    dialog->clickMain();
    QCOMPARE(accepted.count(), 0);
    dialog->clickMain();

    QCOMPARE(accepted.count(), 1);
    QCOMPARE(world.service.requests("print").size(), std::size_t(2));
}

void tst_MakeOrExport::ignoresASecondClickWhileItRuns()
{
    TestLog log;
    log.expectError("not now");
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    PlainDialog dialog(world);
    world.service.failNext("print", JsonRpcException("not now"));
    driver.expect([&](QDialog* box) {
        // No modal box keeps this one away.
        dialog.button("mainButton")->click();
        dialog.makeOrExport(world.inputFile);
        pressButton(box, QStringLiteral("&OK"));
    });

    dialog.clickMain();

    QCOMPARE(world.service.requests("print").size(), std::size_t(1));
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2), flow({"not now"}));
}

void tst_MakeOrExport::survivesItsEndInAMessage()
{
    TestLog log;
    log.allowErrors("");
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    for (const char* cause : {"file", "service", "link"}) {
        QPointer<PlainDialog> dialog = new PlainDialog(world);
        if (cause == QByteArray("file"))
            QVERIFY(QFile::remove(world.inputFile));
        else if (cause == QByteArray("service"))
            world.service.failNext("print", JsonRpcException("not now"));
        else
            world.loseConnection();
        driver.expect([dialog](QDialog*) { delete dialog.data(); });

        dialog->clickMain();

        QVERIFY(dialog.isNull());
        QCOMPARE(MakeWorld::logOf(log, kUnit).last(), QStringLiteral("End of make/export"));
        MakeWorld::writeFile(world.inputFile, "G28\n");
    }
}

void tst_MakeOrExport::survivesItsEndInTheFinalCheck()
{
    TestLog log;
    MakeWorld world(m_facade, {kMachine});
    QPointer<PlainDialog> dialog = new PlainDialog(world);
    dialog->finalCheck = [dialog] {
        // On the heap, as the function itself goes with the dialog.
        QPointer<PlainDialog> target = dialog;
        QTimer::singleShot(0, target.data(), [target] { delete target.data(); });
        while (!target.isNull())
            QCoreApplication::processEvents();
        return true;
    };

    dialog->clickMain();

    QVERIFY(dialog.isNull());
    QCOMPARE(world.service.requests("print").size(), std::size_t(0));
    QCOMPARE(MakeWorld::logOf(log, kUnit).last(), QStringLiteral("End of make/export"));
}

void tst_MakeOrExport::looksAgainAfterTheFinalCheck_data()
{
    QTest::addColumn<bool>("linkGoes");

    QTest::newRow("link lost") << true;
    QTest::newRow("machine unplugged") << false;
}

void tst_MakeOrExport::looksAgainAfterTheFinalCheck()
{
    TestLog log;
    log.allowErrors("");
    QFETCH(bool, linkGoes);
    MakeWorld world(m_facade, {kMachine, kDual});
    ModalDriver driver;
    PlainDialog dialog(world);
    dialog.finalCheck = [&] {
        if (linkGoes)
            world.loseConnection();
        else
            world.service.removePrinter("left");
        [&] {
            QTRY_VERIFY(world.printer("left") == nullptr);
        }();
        return true;
    };
    driver.expect([linkGoes](QDialog* box) {
        if (!linkGoes)
            QCOMPARE(messageTexts(box), kFailedToStartPrint);
        pressButton(box, QStringLiteral("&OK"));
    });

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    // Not on the machine that is selected instead.
    QCOMPARE(world.service.requests("print").size(), std::size_t(0));
    QVERIFY(log.contains(linkGoes ? "Trovek not connected" : "The machine is no longer there"));
}

void tst_MakeOrExport::exportsInEachFormat_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<bool>("skip");

    for (const bool skip : {false, true}) {
        const char* const note = skip ? "skipping the code" : "with the code";
        const auto row = [&](const QString& filter, const char* suffix, const char* method) {
            QTest::addRow("%s, %s", suffix, note)
                << filter << QString::fromLatin1(suffix) << QByteArray(method) << skip;
        };
        row(kX3gFilter, "x3g", "print_to_file");
        row(kS3gFilter, "s3g", "print_to_file");
        row(kGCodeFilter, "gcode", "slice");
    }
}

void tst_MakeOrExport::exportsInEachFormat()
{
    TestLog log;
    QFETCH(QString, filter);
    QFETCH(QString, suffix);
    QFETCH(QByteArray, method);
    QFETCH(bool, skip);
    MakeWorld world(m_facade, {kMachine, kArchetype});
    ModalDriver driver;
    QVERIFY(QDir(world.folder.path()).mkdir(QStringLiteral("card")));
    driver.expectSaveDialog(world.path("card/cube"), filter);
    auto* const dialog = new PlainDialog(world);
    dialog->skip = skip;
    QSignalSpy accepted(dialog, &QDialog::accepted);
    dialog->radio("exportRadio")->click();
    QTRY_COMPARE(dialog->selected(), QStringLiteral("archetype 3"));

    dialog->clickMain();

    QCOMPARE(accepted.count(), 1);
    const QString destination = world.path("card/cube.") + suffix;
    const bool isSlice = method == "slice";
    QCOMPARE(world.service.requests("print_to_file").size(), std::size_t(isSlice ? 0 : 1));
    QCOMPARE(world.service.requests("slice").size(), std::size_t(isSlice ? 1 : 0));
    const Json::Value request = world.service.lastRequest(method.toStdString());
    QCOMPARE(request["machine"].asString(), std::string("archetype 3"));
    QCOMPARE(QString::fromStdString(request["input_path"].asString()), world.inputFile);
    QCOMPARE(textsOf(request["materials"]), words({"flexible"}));
    QCOMPARE(request["slicer_config"]["layer_height"].asDouble(), 0.125);
    if (isSlice) {
        // This one asks for the code that the others leave out.
        QCOMPARE(request["add_start_end"].asBool(), !skip);
    } else {
        QCOMPARE(request["skip_start_end"].asBool(), skip);
        QCOMPARE(QString::fromStdString(request["format"].asString()), suffix);
    }

    QCOMPARE(world.settings.value(QStringLiteral("make_dialog/lastExportDir")).toString(),
             world.path("card"));
    QCOMPARE(world.settings.value(QStringLiteral("make_dialog/exportFilterString")).toString(),
             filter);
    QCOMPARE(world.settings.value(QStringLiteral("make_dialog/printer")).toString(),
             QStringLiteral("archetype 3"));
    QCOMPARE(ExportJobMover::instance(m_facade).unfinishedExports(), QStringList{destination});
    QCOMPARE(dialog->calls, words({"finalMakeOrExportCheck", "saveSettings", "slicerConfiguration",
                                   "skipStartEndCode"}));

    world.service.concludeJob(world.service.lastJobID(), JobCanceled);
    QTRY_COMPARE(ExportJobMover::instance(m_facade).unfinishedExports(), QStringList());
}

void tst_MakeOrExport::letsTheServiceWriteTheOutput()
{
    TestLog log;
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    QStringList outputs;
    for (int i = 0; i < 2; ++i) {
        driver.expectSaveDialog(world.path("cube.x3g"));
        if (i == 1)
            driver.expect(
                [](QDialog* question) { pressButton(question, QStringLiteral("&Replace")); });
        auto* const dialog = new PlainDialog(world);
        dialog->clickMain();
        outputs.append(QString::fromStdString(
            world.service.lastRequest("print_to_file")["output_path"].asString()));
    }

    // Each in a folder of its own.
    QVERIFY(outputs.first() != outputs.last());
    for (const QString& output : outputs) {
        const QFileInfo file(output);
        QCOMPARE(file.fileName(), QStringLiteral("cube.x3g"));
        QVERIFY(file.isFile());
        QVERIFY(file.isAbsolute());
        QCOMPARE(file.size(), qint64(0));
        QVERIFY(file.permission(QFileDevice::WriteOther));
        QVERIFY(file.permission(QFileDevice::ReadOwner | QFileDevice::WriteOwner));
        QVERIFY(file.absolutePath() != world.folder.path());
        QVERIFY(file.absoluteDir().dirName().startsWith(QLatin1String("trovek-ui-")));
    }
    for (int id = 1; id <= world.service.lastJobID(); ++id)
        world.service.concludeJob(id, JobCanceled);
    QTRY_COMPARE(ExportJobMover::instance(m_facade).unfinishedExports(), QStringList());
}

void tst_MakeOrExport::bringsTheExportToItsPlace()
{
    TestLog log;
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    driver.expectSaveDialog(world.path("cube.x3g"));
    auto* const dialog = new PlainDialog(world);

    dialog->clickMain();
    const Json::Value request = world.service.lastRequest("print_to_file");
    MakeWorld::writeFile(QString::fromStdString(request["output_path"].asString()), "machine code");
    world.service.concludeJob(world.service.lastJobID(), JobEnded);

    QTRY_COMPARE(MakeWorld::readFile(world.path("cube.x3g")), QByteArray("machine code"));
}

void tst_MakeOrExport::offersThreeFormatsAndAName()
{
    TestLog log;
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    driver.expect([&world](QDialog* window) {
        auto* const dialog = qobject_cast<QFileDialog*>(window);
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Export"));
        QCOMPARE(dialog->nameFilters(), (QStringList{kX3gFilter, kS3gFilter, kGCodeFilter}));
        QCOMPARE(dialog->selectedNameFilter(), kX3gFilter);
        QCOMPARE(dialog->directory().absolutePath(), world.folder.path());
        // Only the last suffix goes.
        auto* const edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        QCOMPARE(edit->text(), QStringLiteral("my.part"));
        dialog->reject();
    });
    PlainDialog dialog(world);

    dialog.clickMain();
}

void tst_MakeOrExport::preselectsTheFormatUsedLast_data()
{
    QTest::addColumn<QString>("saved");
    QTest::addColumn<QString>("selected");

    QTest::newRow("nothing") << QString() << kX3gFilter;
    QTest::newRow("the first") << kX3gFilter << kX3gFilter;
    QTest::newRow("the last") << kGCodeFilter << kGCodeFilter;
    QTest::newRow("no such filter") << QStringLiteral("STL (*.stl)") << kX3gFilter;
    QTest::newRow("in upper case") << kGCodeFilter.toUpper() << kX3gFilter;
}

void tst_MakeOrExport::preselectsTheFormatUsedLast()
{
    TestLog log;
    QFETCH(QString, saved);
    QFETCH(QString, selected);
    MakeWorld world(m_facade, {kArchetype});
    world.settings.setValue(QStringLiteral("make_dialog/exportFilterString"), saved);
    ModalDriver driver;
    driver.expect([&selected](QDialog* window) {
        QCOMPARE(qobject_cast<QFileDialog*>(window)->selectedNameFilter(), selected);
        window->reject();
    });
    PlainDialog dialog(world);

    dialog.clickMain();
}

void tst_MakeOrExport::proposesTheFolderUsedLast()
{
    TestLog log;
    MakeWorld world(m_facade, {kArchetype});
    QVERIFY(QDir(world.folder.path()).mkdir(QStringLiteral("card")));
    world.settings.setValue(QStringLiteral("make_dialog/lastExportDir"), world.path("card"));
    ModalDriver driver;
    driver.expect([&world](QDialog* window) {
        QCOMPARE(qobject_cast<QFileDialog*>(window)->directory().absolutePath(),
                 world.path("card"));
        window->reject();
    });
    PlainDialog dialog(world);

    dialog.clickMain();
}

void tst_MakeOrExport::staysOpenWhenTheExportIsCanceled()
{
    TestLog log;
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    driver.expectSaveDialogToBeCanceled();
    PlainDialog dialog(world);

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QCOMPARE(world.settings.allKeys(), QStringList());
    QCOMPARE(dialog.calls, words({"finalMakeOrExportCheck"}));
    QCOMPARE(world.service.requests("print_to_file").size(), std::size_t(0));
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2), flow({}));
}

void tst_MakeOrExport::refusesASuffixInUpperCase()
{
    TestLog log;
    log.expectError("Export failed: invalid suffix GCODE");
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    driver.expectSaveDialog(world.path("cube.GCODE"), kGCodeFilter);
    driver.expectMessage(kFailedToStartPrint);
    PlainDialog dialog(world);

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QVERIFY(!QFile::exists(world.path("cube.GCODE")));
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2), flow({"Export failed: invalid suffix GCODE"}));
}

void tst_MakeOrExport::showsWhatTheServiceRefusesToExport()
{
    TestLog log;
    log.expectError("in line");
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    driver.expectSaveDialog(world.path("cube.x3g"));
    driver.expectMessage(kPrinterIsBusy);
    PlainDialog dialog(world);
    world.service.failNext(
        "print_to_file",
        JsonRpcException("in line", object("name", Json::Value("PrintQueuedException"))));

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QVERIFY(!QFile::exists(world.path("cube.x3g")));
}

void tst_MakeOrExport::tellsWhenTheDestinationCannotBeWritten()
{
    TestLog log;
    log.expectError("Destination directory does not exist");
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    QVERIFY(QDir(world.folder.path()).mkdir(QStringLiteral("card")));
    driver.expectSaveDialog(world.path("card/cube.x3g"));
    driver.expectMessage(kFailedToStartPrint);
    PlainDialog dialog(world);
    // The card is pulled while the service is asked; the job has started all the same.
    world.service.onRequest("print_to_file", [&world](const Json::Value&) {
        QDir(world.path("card")).removeRecursively();
        return object("id", Json::Value(77));
    });

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QCOMPARE(ExportJobMover::instance(m_facade).unfinishedExports(), QStringList());
}

void tst_MakeOrExport::proposesAShorterNameForTheMachine()
{
    TestLog log;
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    driver.expectSaveDialog(world.path("a23456789012345678901234567.x3g"));
    driver.expectMessage(
        words({"This filename is too long to show on your Orvane",
               "To view this file on your Orvane you must use a file name no longer than 30 "
               "characters. Shorten the name to \"a2345678901234567890123456.x3g\"?"}),
        QStringLiteral("&Save"));
    auto* const dialog = new PlainDialog(world);

    dialog->clickMain();

    QVERIFY(QFile::exists(world.path("a2345678901234567890123456.x3g")));
    world.service.concludeJob(world.service.lastJobID(), JobCanceled);
    QTRY_COMPARE(ExportJobMover::instance(m_facade).unfinishedExports(), QStringList());
}

void tst_MakeOrExport::survivesItsEndInTheSaveDialog()
{
    TestLog log;
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    QPointer<PlainDialog> dialog = new PlainDialog(world);
    driver.expect([dialog](QDialog* window) {
        QVERIFY(qobject_cast<QFileDialog*>(window) != nullptr);
        delete dialog.data();
    });

    dialog->clickMain();

    QVERIFY(dialog.isNull());
    QCOMPARE(world.service.requests("print_to_file").size(), std::size_t(0));
    QCOMPARE(MakeWorld::logOf(log, kUnit).last(), QStringLiteral("End of make/export"));
}

void tst_MakeOrExport::survivesItsEndInTheQuestionForAShorterName()
{
    TestLog log;
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    QPointer<PlainDialog> dialog = new PlainDialog(world);
    driver.expectSaveDialog(world.path("a23456789012345678901234567.x3g"));
    driver.expect([dialog](QDialog*) { delete dialog.data(); });

    dialog->clickMain();

    QVERIFY(dialog.isNull());
    QCOMPARE(world.service.requests("print_to_file").size(), std::size_t(0));
    QCOMPARE(world.settings.allKeys(), QStringList());
    QCOMPARE(MakeWorld::logOf(log, kUnit).last(), QStringLiteral("End of make/export"));
}

void tst_MakeOrExport::keepsNoMessages()
{
    TestLog log;
    log.expectError("first");
    log.expectError("second");
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    QPointer<PlainDialog> dialog = new PlainDialog(world);
    const int before = dialog->findChildren<QDialog*>().size();
    driver.expectMessage(kGenericTrovekError);
    world.service.failNext("print", JsonRpcException("first"));
    dialog->clickMain();
    QCOMPARE(dialog->findChildren<QDialog*>().size(), before);

    // Also not when there is no dialog any more that it could belong to.
    dialog->finalCheck = [dialog]() -> bool {
        delete dialog.data();
        throw std::runtime_error("second");
    };
    driver.expectMessage(kFailedToStartPrint);
    dialog->clickMain();
    QVERIFY(dialog.isNull());
    QCOMPARE(QApplication::topLevelWidgets(), QWidgetList());
}

void tst_MakeOrExport::looksAgainAfterTheSaveDialog_data()
{
    looksAgainAfterTheFinalCheck_data();
}

void tst_MakeOrExport::looksAgainAfterTheSaveDialog()
{
    TestLog log;
    log.allowErrors("");
    QFETCH(bool, linkGoes);
    MakeWorld world(m_facade, {kArchetype, kDualArchetype});
    ModalDriver driver;
    driver.expect([&](QDialog* window) {
        if (linkGoes)
            world.loseConnection();
        else
            world.service.removePrinter("archetype 3");
        QTRY_VERIFY(world.printer("archetype 3") == nullptr);
        window->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))
            ->setText(world.path("cube.x3g"));
        pressButton(window, QStringLiteral("&Save"));
    });
    driver.expect([linkGoes](QDialog* box) {
        if (!linkGoes)
            QCOMPARE(messageTexts(box), kFailedToStartPrint);
        pressButton(box, QStringLiteral("&OK"));
    });
    PlainDialog dialog(world);

    dialog.clickMain();

    QVERIFY(dialog.isVisible());
    QCOMPARE(world.service.requests("print_to_file").size(), std::size_t(0));
    QCOMPARE(world.settings.allKeys(), QStringList());
    QVERIFY(log.contains(linkGoes ? "Trovek not connected" : "The machine is no longer there"));
}

void tst_MakeOrExport::slicesAPreview_data()
{
    QTest::addColumn<bool>("exporting");
    QTest::addColumn<bool>("skip");
    QTest::addColumn<QString>("machine");

    QTest::newRow("to make: the archetype, which nobody waits for")
        << false << false << QStringLiteral("archetype 4");
    QTest::newRow("to export: what is selected") << true << false << QStringLiteral("archetype 4");
    QTest::newRow("without the code") << false << true << QStringLiteral("archetype 4");
}

void tst_MakeOrExport::slicesAPreview()
{
    TestLog log;
    QFETCH(bool, exporting);
    QFETCH(bool, skip);
    QFETCH(QString, machine);
    MakeWorld world(m_facade, {kMachine, kDual, kArchetype, kDualArchetype});
    PlainDialog dialog(world, world.printer(exporting ? "archetype 4" : "dual"));
    dialog.skip = skip;
    QSignalSpy started(&dialog, &MakeDialog::sliceFileStarted);
    const QString output = world.path("preview.gcode");

    const int id = dialog.startPrintPreviewSlice(output);

    QCOMPARE(id, world.service.lastJobID());
    QCOMPARE(started.count(), 1);
    QCOMPARE(started.first().first().toInt(), id);
    const Json::Value request = world.service.lastRequest("slice");
    QCOMPARE(QString::fromStdString(request["machine"].asString()), machine);
    QCOMPARE(QString::fromStdString(request["input_path"].asString()), world.inputFile);
    QCOMPARE(QString::fromStdString(request["output_path"].asString()), output);
    QCOMPARE(textsOf(request["materials"]), words({"dissolvable", "abs"}));
    // As it is, not turned round as for an export.
    QCOMPARE(request["add_start_end"].asBool(), skip);
    QCOMPARE(world.settings.value(QStringLiteral("make_dialog/printer")).toString(),
             exporting ? QStringLiteral("archetype 4") : QStringLiteral("dual"));
}

void tst_MakeOrExport::showsWhatTheServiceRefusesToPreview_data()
{
    QTest::addColumn<QString>("cause");
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("busy") << QStringLiteral("busy") << kPrinterIsBusy;
    QTest::newRow("another error") << QStringLiteral("error") << kGenericTrovekError;
    QTest::newRow("link breaks") << QStringLiteral("link") << kFailedToStartPrint;
    QTest::newRow("no archetype of the type") << QStringLiteral("archetype") << kFailedToStartPrint;
    QTest::newRow("no machine") << QStringLiteral("machine") << kFailedToStartPrint;
}

void tst_MakeOrExport::showsWhatTheServiceRefusesToPreview()
{
    TestLog log;
    log.allowErrors("");
    QFETCH(QString, cause);
    QFETCH(QStringList, texts);
    MakeWorld world(m_facade, {});
    if (cause != QLatin1String("machine")) {
        world.service.addPrinter(kDual);
        world.service.addPrinter(cause == QLatin1String("archetype") ? kArchetype : kDualArchetype);
    }
    QTRY_COMPARE(int(m_facade.printers().size()), cause == QLatin1String("machine") ? 0 : 2);
    if (cause == QLatin1String("busy"))
        world.service.failNext(
            "slice", JsonRpcException("b", object("name", Json::Value("PrintQueuedException"))));
    else if (cause == QLatin1String("error"))
        world.service.failNext("slice", JsonRpcException("e"));
    else if (cause == QLatin1String("link"))
        world.service.dropConnectionOn("slice");
    ModalDriver driver;
    driver.expectMessage(texts);
    PlainDialog dialog(world);
    QSignalSpy started(&dialog, &MakeDialog::sliceFileStarted);

    QCOMPARE(dialog.startPrintPreviewSlice(world.path("preview.gcode")), Job::kInvalidID);

    QCOMPARE(started.count(), 0);
}

void tst_MakeOrExport::survivesItsEndWhenThePreviewStarts()
{
    TestLog log;
    MakeWorld world(m_facade, {kMachine, kArchetype});
    QPointer<PlainDialog> dialog = new PlainDialog(world);
    connect(dialog.data(), &MakeDialog::sliceFileStarted, this, [dialog] { delete dialog.data(); });

    const int id = dialog->startPrintPreviewSlice(world.path("preview.gcode"));

    QCOMPARE(id, world.service.lastJobID());
    QVERIFY(dialog.isNull());
}

QTEST_MAIN(tst_MakeOrExport)
#include "tst_make_or_export.moc"
