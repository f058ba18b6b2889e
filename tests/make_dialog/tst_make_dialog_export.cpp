#include "make_dialog/plain_dialog.h"

#include <trovek-ui/export_job_mover.h>
#include <trovek-ui/file_system.h>

using namespace trovek;

namespace {

const QString kX3gFilter = QStringLiteral("X3G, SD print for firmware 7.0 or later (*.x3g)");
const QString kS3gFilter = QStringLiteral("S3G, SD print for firmware earlier than 7.0 (*.s3g)");
const QString kGCodeFilter = QStringLiteral("GCode, slice only (*.gcode)");

} // namespace

/** The export: where to, in which format, with what it asks of the service. */
class tst_MakeDialogExport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void cleanup();

    void exportsInEachFormat_data();
    void exportsInEachFormat();
    void letsTheServiceWriteTheOutput();
    void bringsTheExportToItsPlace();
    void bringsAnExportThatEndsBeforeTheAnswer();
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

private:
    // The process's export mover belongs to it.
    TrovekQt m_facade;
};

void tst_MakeDialogExport::cleanup()
{
    TemporaryDir::cleanManagedDirectories();
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeDialogExport::exportsInEachFormat_data()
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

void tst_MakeDialogExport::exportsInEachFormat()
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

void tst_MakeDialogExport::letsTheServiceWriteTheOutput()
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

void tst_MakeDialogExport::bringsTheExportToItsPlace()
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

void tst_MakeDialogExport::bringsAnExportThatEndsBeforeTheAnswer()
{
    TestLog log;
    MakeWorld world(m_facade, {kArchetype});
    ModalDriver driver;
    driver.expectSaveDialog(world.path("cube.x3g"));
    auto* const dialog = new PlainDialog(world);
    world.service.onRequest("print_to_file", [&world](const Json::Value& params) {
        MakeWorld::writeFile(QString::fromStdString(params["output_path"].asString()), "quick");
        Job::Data job;
        job.id = 77;
        world.service.setJob(job);
        world.service.concludeJob(77, JobEnded);
        return object("id", Json::Value(77));
    });

    dialog->clickMain();

    QTRY_COMPARE(MakeWorld::readFile(world.path("cube.x3g")), QByteArray("quick"));
    QCOMPARE(ExportJobMover::instance(m_facade).unfinishedExports(), QStringList());
}

void tst_MakeDialogExport::offersThreeFormatsAndAName()
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

void tst_MakeDialogExport::preselectsTheFormatUsedLast_data()
{
    QTest::addColumn<QString>("saved");
    QTest::addColumn<QString>("selected");

    QTest::newRow("nothing") << QString() << kX3gFilter;
    QTest::newRow("the first") << kX3gFilter << kX3gFilter;
    QTest::newRow("the last") << kGCodeFilter << kGCodeFilter;
    QTest::newRow("no such filter") << QStringLiteral("STL (*.stl)") << kX3gFilter;
    QTest::newRow("in upper case") << kGCodeFilter.toUpper() << kX3gFilter;
}

void tst_MakeDialogExport::preselectsTheFormatUsedLast()
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

void tst_MakeDialogExport::proposesTheFolderUsedLast()
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

void tst_MakeDialogExport::staysOpenWhenTheExportIsCanceled()
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

void tst_MakeDialogExport::refusesASuffixInUpperCase()
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

void tst_MakeDialogExport::showsWhatTheServiceRefusesToExport()
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
    // Nor does the file stay that the service would have written into.
    const Json::Value request = world.service.lastRequest("print_to_file");
    const QFileInfo output(QString::fromStdString(request["output_path"].asString()));
    QCOMPARE(output.fileName(), QStringLiteral("cube.x3g"));
    QVERIFY(!QFileInfo::exists(output.path()));
}

void tst_MakeDialogExport::tellsWhenTheDestinationCannotBeWritten()
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

void tst_MakeDialogExport::proposesAShorterNameForTheMachine()
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

void tst_MakeDialogExport::survivesItsEndInTheSaveDialog()
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

void tst_MakeDialogExport::survivesItsEndInTheQuestionForAShorterName()
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

void tst_MakeDialogExport::keepsNoMessages()
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

void tst_MakeDialogExport::looksAgainAfterTheSaveDialog_data()
{
    QTest::addColumn<bool>("linkGoes");

    QTest::newRow("link lost") << true;
    QTest::newRow("machine unplugged") << false;
}

void tst_MakeDialogExport::looksAgainAfterTheSaveDialog()
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

QTEST_MAIN(tst_MakeDialogExport)
#include "tst_make_dialog_export.moc"
