#include "make_dialog/plain_dialog.h"

using namespace trovek;

/** The slice for a preview. */
class tst_MakeDialogPreview : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void slicesAPreview_data();
    void slicesAPreview();
    void showsWhatTheServiceRefusesToPreview_data();
    void showsWhatTheServiceRefusesToPreview();
    void survivesItsEndWhenThePreviewStarts();

private:
    TrovekQt m_facade;
};

void tst_MakeDialogPreview::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeDialogPreview::slicesAPreview_data()
{
    QTest::addColumn<bool>("exporting");
    QTest::addColumn<bool>("skip");
    QTest::addColumn<QString>("machine");

    QTest::newRow("to make: the archetype, which nobody waits for")
        << false << false << QStringLiteral("archetype 4");
    QTest::newRow("to export: what is selected") << true << false << QStringLiteral("archetype 4");
    QTest::newRow("without the code") << false << true << QStringLiteral("archetype 4");
}

void tst_MakeDialogPreview::slicesAPreview()
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

void tst_MakeDialogPreview::showsWhatTheServiceRefusesToPreview_data()
{
    QTest::addColumn<QString>("cause");
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("busy") << QStringLiteral("busy") << kPrinterIsBusy;
    QTest::newRow("another error") << QStringLiteral("error") << kGenericTrovekError;
    QTest::newRow("link breaks") << QStringLiteral("link") << kFailedToStartPrint;
    QTest::newRow("no archetype of the type") << QStringLiteral("archetype") << kFailedToStartPrint;
    QTest::newRow("no machine") << QStringLiteral("machine") << kFailedToStartPrint;
}

void tst_MakeDialogPreview::showsWhatTheServiceRefusesToPreview()
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

void tst_MakeDialogPreview::survivesItsEndWhenThePreviewStarts()
{
    TestLog log;
    MakeWorld world(m_facade, {kMachine, kArchetype});
    QPointer<PlainDialog> dialog = new PlainDialog(world);
    connect(dialog.data(), &MakeDialog::sliceFileStarted, this, [dialog] { delete dialog.data(); });

    const int id = dialog->startPrintPreviewSlice(world.path("preview.gcode"));

    QCOMPARE(id, world.service.lastJobID());
    QVERIFY(dialog.isNull());
}

QTEST_MAIN(tst_MakeDialogPreview)
#include "tst_make_dialog_preview.moc"
