#include "make_dialog/plain_dialog.h"

#include <trovek-ui/export_job_mover.h>

using namespace trovek;

/** What the main button does up to the choice of a mode, and the make. */
class tst_MakeOrExport : public QObject
{
    Q_OBJECT

private slots:
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
    void survivesTheEndOfItsParent();
    void survivesItsEndInTheFinalCheck();
    void looksAgainAfterTheFinalCheck_data();
    void looksAgainAfterTheFinalCheck();

private:
    // The process's export mover belongs to it.
    TrovekQt m_facade;
};

void tst_MakeOrExport::cleanup()
{
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
    for (const LogEntry& entry : log.sink().entries())
        QVERIFY(entry.file != kUnit || entry.severity == 1);
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

void tst_MakeOrExport::survivesTheEndOfItsParent()
{
    TestLog log;
    log.expectError("not now");
    MakeWorld world(m_facade, {kMachine});
    ModalDriver driver;
    auto* const window = new QWidget;
    QPointer<PlainDialog> dialog = new PlainDialog(world);
    dialog->setParent(window, dialog->windowFlags());
    world.service.failNext("print", JsonRpcException("not now"));
    driver.expect([window](QDialog*) { delete window; });

    dialog->clickMain();

    QVERIFY(dialog.isNull());
    QCOMPARE(MakeWorld::logOf(log, kUnit).last(), QStringLiteral("End of make/export"));
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
    QTest::addColumn<bool>("isOnlyMachine");

    QTest::newRow("link lost") << true << false;
    QTest::newRow("machine unplugged") << false << false;
    QTest::newRow("only machine unplugged") << false << true;
}

void tst_MakeOrExport::looksAgainAfterTheFinalCheck()
{
    TestLog log;
    log.allowErrors("");
    QFETCH(bool, linkGoes);
    QFETCH(bool, isOnlyMachine);
    MakeWorld world(m_facade, {kMachine, isOnlyMachine ? kArchetype : kDual});
    ModalDriver driver;
    PlainDialog dialog(world);
    dialog.finalCheck = [&] {
        if (linkGoes)
            world.loseConnection();
        else
            world.service.removePrinter("left");
        [&] {
            QTRY_VERIFY(world.printer("left") == nullptr);
            QTRY_COMPARE(dialog.radio("exportRadio")->isChecked(), linkGoes || isOnlyMachine);
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

QTEST_MAIN(tst_MakeOrExport)
#include "tst_make_or_export.moc"
