#include "upload_world.h"

#include <functional>

using namespace trovek;

/** Download, upload and retry: the second and the third page of the firmware upload dialog. */
class tst_FirmwareSteps : public QObject
{
    Q_OBJECT

private slots:
    void downloadsWhatWasChosen();
    void tellsWhatToDoWithTheMachine_data();
    void tellsWhatToDoWithTheMachine();
    void tellsThatItDownloads();
    void aFailedDownloadSaysWhy_data();
    void aFailedDownloadSaysWhy();
    void longTextsLeaveTheButtonsOnTheScreen();
    void aDownloadThatIsLostSaysWhy();
    void uploadsWhatWasDownloaded();
    void tellsThatItUploads();
    void aFailedUploadSaysWhy_data();
    void aFailedUploadSaysWhy();
    void anUploadThatIsLostSaysWhy();
    void aPrinterThatHasGoneIsSaid();
    void aRetryDownloadsAgain();
    void aRetryWithoutAPrinterSaysSo();
    void aRetryTakesTheSameVersion();
    void aSecondRetryIsOneToo();
    void theSecondClickOfADoubleClickDoesNothing_data();
    void theSecondClickOfADoubleClickDoesNothing();
    void aKeyThatIsHeldActsOnce();
    void everyPageIsLeftByCancelAndEscape();
};

namespace {

const char* const kClickUpload =
    "Ready to upload firmware.\n \nClick the Upload button to start the process.";
const char* const kPressReset =
    "Ready to upload firmware.\n \nPress the reset button on the back of your Orvane immediately "
    "after clicking\nUpload. Note that the correct timing for pressing the reset button may vary "
    "from\ncomputer to computer.";

void fail(UploadWorld& world, const char* method, const JsonRpcException& error, TestLog& log)
{
    log.expectError(error.message());
    world.service.failNext(method, error);
}

/** As far as the second page, with the firmware there. */
void goToUpload(const UploadWorld& world)
{
    world.click("next");
    QCOMPARE(world.page(), 1);
    QVERIFY(world.button("upload")->isEnabled());
}

} // namespace

void tst_FirmwareSteps::downloadsWhatWasChosen()
{
    TestLog log;
    UploadWorld world(Printer::Fabrino2X);
    world.open();
    world.versions()->setCurrentIndex(1);

    goToUpload(world);

    QVERIFY(world.service.lastRequest("downloadfirmware") ==
            parse(R"({"machine": "fabrino", "type": 4, "version": "7.5"})"));
    QCOMPARE(world.label("readyStatus"), text(kClickUpload));
    QCOMPARE(world.button("readyCancel")->text(), text("&Cancel"));
    QCOMPARE(world.button("upload")->text(), text("&Upload"));
    QVERIFY(world.button("upload")->autoDefault());
    QCOMPARE(world.dialog->focusWidget(), world.button("upload"));
    QCOMPARE(world.requests("uploadfirmware"), 0);
    QVERIFY(!QApplication::overrideCursor());
}

void tst_FirmwareSteps::tellsWhatToDoWithTheMachine_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("expected");

    const QString failed = text("Download failed\n\nhasResetButton failed");
    QTest::newRow("unknown") << 0 << failed;
    for (const int type : {1, 2, 5, 6})
        QTest::addRow("type %d", type) << type << text(kPressReset);
    for (const int type : {3, 4})
        QTest::addRow("type %d", type) << type << text(kClickUpload);
}

void tst_FirmwareSteps::tellsWhatToDoWithTheMachine()
{
    QFETCH(int, type);
    QFETCH(QString, expected);
    TestLog log;
    UploadWorld world(static_cast<Printer::Type>(type));
    world.open();
    if (type == 0)
        log.expectError("hasResetButton failed");
    world.click("next");
    QCOMPARE(world.page(), 1);
    QCOMPARE(world.label("readyStatus"), expected);
    QCOMPARE(world.button("upload")->isEnabled(), type != 0);
    QCOMPARE(world.requests("downloadfirmware"), 1);
}

void tst_FirmwareSteps::tellsThatItDownloads()
{
    TestLog log;
    UploadWorld world;
    world.open();
    PaintedTexts painted(world.find("readyStatus"));
    world.service.failNext("downloadfirmware", wire::makeError("Some", "No"));
    log.expectError("No");

    world.click("next");

    QVERIFY(!painted.whileWaiting.isEmpty());
    QCOMPARE(painted.whileWaiting.last(), text("Downloading new firmware..."));
    QVERIFY(!world.button("upload")->isEnabled());
    QVERIFY(!QApplication::overrideCursor());
}

void tst_FirmwareSteps::aFailedDownloadSaysWhy_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char* data, const char* expected) {
        QTest::newRow(data) << QByteArray(data)
                            << text("Download failed:\n") + QString::fromUtf8(expected);
    };
    row(R"({"error": "The file is damaged"})", "\"The file is damaged\"\n");
    row(R"({"error": {"code": 5}})", "{\n\t\"code\" : 5\n}\n");
    row(R"({"error": ["a", 1]})", "[ \"a\", 1 ]\n");
    row(R"({"name": "Some"})", "null\n");
    row("null", "null\n");
    row("5", "null\n");
    row("\"error\"", "null\n");
    row(R"(["error"])", "null\n");
}

void tst_FirmwareSteps::aFailedDownloadSaysWhy()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, expected);
    TestLog log;
    UploadWorld world;
    world.open();
    fail(world, "downloadfirmware", JsonRpcException("Not today", parse(data.toStdString())), log);

    world.click("next");

    QCOMPARE(world.page(), 1);
    const Json::Value member = parse(data.toStdString());
    const Json::Value shown = member.isObject() ? member["error"] : Json::Value();
    QCOMPARE(world.label("readyStatus"),
             text("Download failed:\n") + QString::fromStdString(shown.toStyledString()));
    QCOMPARE(world.label("readyStatus").simplified(), expected.simplified());
    QVERIFY(!world.button("upload")->isEnabled());
    QCOMPARE(world.dialog->focusWidget(), world.button("readyCancel"));
    QTest::keyClick(world.dialog, Qt::Key_Return);
    QCOMPARE(world.requests("uploadfirmware"), 0);
}

void tst_FirmwareSteps::longTextsLeaveTheButtonsOnTheScreen()
{
    TestLog log;
    UploadWorld world;
    const int kSmallScreen = 600;
    std::string lines = "A story";
    Json::Value data;
    for (int i = 0; i < 200; ++i) {
        lines += "\nthat goes on";
        data["error"][i] = "and on";
    }
    fail(world, "getmachineversions", JsonRpcException(lines), log);
    world.open();
    QVERIFY(world.error().startsWith(text("Error: A story\n")));
    QCoreApplication::processEvents();
    QVERIFY(world.dialog->minimumSizeHint().height() < kSmallScreen);

    delete world.dialog;
    world.open();
    fail(world, "downloadfirmware", JsonRpcException("Not today", data), log);
    world.click("next");
    QVERIFY(world.label("readyStatus").size() > 1000);
    QCoreApplication::processEvents();
    QVERIFY(world.dialog->minimumSizeHint().height() < kSmallScreen);
}

void tst_FirmwareSteps::aDownloadThatIsLostSaysWhy()
{
    TestLog log;
    UploadWorld world;
    world.open();
    world.service.answerNext("downloadfirmware", 5);
    log.expectError("Odd answer to downloadfirmware: not a path");
    world.click("next");
    QCOMPARE(world.label("readyStatus"),
             text("Download failed\n\nOdd answer to downloadfirmware: not a path"));
    QVERIFY(!world.button("upload")->isEnabled());

    delete world.dialog;
    world.open();
    world.service.dropConnectionOn("downloadfirmware");
    log.expectError("Connection closed by the other side");
    world.click("next");
    QCOMPARE(world.label("readyStatus"),
             text("Download failed\n\nConnection closed by the other side"));
    // The window is there when the printers are announced as gone.
    QSignalSpy disconnected(&world.facade, &TrovekQt::disconnected);
    QTRY_COMPARE(disconnected.count(), 1);
    QCOMPARE(world.page(), 1);
    QCOMPARE(world.label("bot"), text("No Printer"));
}

void tst_FirmwareSteps::uploadsWhatWasDownloaded()
{
    TestLog log;
    UploadWorld world;
    world.service.answerNext("downloadfirmware", "/caf\u00e9/f.hex");
    world.open();
    QSignalSpy finished(world.dialog, &QDialog::finished);
    goToUpload(world);

    world.click("upload");

    QVERIFY(world.service.lastRequest("uploadfirmware") ==
            parse("{\"machine\": \"left\", \"path\": \"/caf\u00e9/f.hex\"}"));
    QCOMPARE(world.page(), 2);
    QCOMPARE(world.label("resultStatus"), text("Firmware upload successful"));
    QCOMPARE(world.button("main")->text(), text("&OK"));
    QVERIFY(world.button("main")->isEnabled());
    QVERIFY(!world.button("resultCancel")->isVisible());
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(finished.isEmpty());
    // The machine leaves and comes back with it.
    world.unplug();
    world.plugIn();
    QCOMPARE(world.page(), 2);
    QCOMPARE(world.label("resultStatus"), text("Firmware upload successful"));
    world.click("main");
    QCOMPARE(finished, (QList<QVariantList>{{QDialog::Accepted}}));
    QCOMPARE(world.requests("downloadfirmware"), 1);
    QCOMPARE(world.requests("uploadfirmware"), 1);
}

void tst_FirmwareSteps::tellsThatItUploads()
{
    TestLog log;
    UploadWorld world;
    world.open();
    goToUpload(world);
    // A failure leaves another page behind than there was before.
    fail(world, "uploadfirmware", wire::makeError("Some", "Not today"), log);
    world.click("upload");
    world.click("main");
    PaintedTexts painted(world.find("resultStatus"));
    bool cancelWasHidden = false;
    QString mainText;
    bool mainWasEnabled = true;
    // Looked at when the page is painted, which is right before the wait.
    class Look : public QObject
    {
    public:
        std::function<void()> look;
        bool eventFilter(QObject*, QEvent* event) override
        {
            if (event->type() == QEvent::Paint && QApplication::overrideCursor())
                look();
            return false;
        }
    };
    Look look;
    look.look = [&] {
        cancelWasHidden = world.button("resultCancel")->isHidden();
        mainText = world.button("main")->text();
        mainWasEnabled = world.button("main")->isEnabled();
    };
    world.find("resultStatus")->installEventFilter(&look);

    world.click("upload");

    QVERIFY(!painted.whileWaiting.isEmpty());
    QCOMPARE(painted.whileWaiting.last(),
             text("Uploading new firmware...\nThis may take a couple minutes to complete."));
    QVERIFY(cancelWasHidden);
    QCOMPARE(mainText, text("&OK"));
    QVERIFY(!mainWasEnabled);
}

void tst_FirmwareSteps::aFailedUploadSaysWhy_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("expected");

    const QString printing = text("Upload failed:\nCannot upload firmware while printing");
    const QString unknown = text("Upload failed:\nUnknown error from trovek");
    const auto row = [](const char* data, const QString& expected) {
        QTest::newRow(data) << QByteArray(data) << expected;
    };
    row(R"({"name": "PrinterThreadNotIdleError"})", printing);
    row(R"({"name": "PrinterThreadNotIdleError", "message": 5})", printing);
    row(R"({"name": "printerthreadnotidleerror"})", unknown);
    row(R"({"name": ["PrinterThreadNotIdleError"]})", unknown);
    row(R"({"error": "PrinterThreadNotIdleError"})", unknown);
    row(R"(["name", "PrinterThreadNotIdleError"])", unknown);
    row("\"PrinterThreadNotIdleError\"", unknown);
    row("null", unknown);
    row("5", unknown);
    row("{}", unknown);
}

void tst_FirmwareSteps::aFailedUploadSaysWhy()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, expected);
    TestLog log;
    UploadWorld world;
    world.open();
    goToUpload(world);
    fail(world, "uploadfirmware", JsonRpcException("Not today", parse(data.toStdString())), log);

    world.click("upload");

    QCOMPARE(world.page(), 2);
    QCOMPARE(world.label("resultStatus"), expected);
    QCOMPARE(world.button("main")->text(), text("&Retry"));
    QVERIFY(world.button("main")->isEnabled());
    QVERIFY(world.button("resultCancel")->isVisible());
    QVERIFY(world.button("resultCancel")->isEnabled());
    QVERIFY(!QApplication::overrideCursor());
}

void tst_FirmwareSteps::anUploadThatIsLostSaysWhy()
{
    TestLog log;
    UploadWorld world;
    world.open();
    goToUpload(world);
    world.service.hangNext("uploadfirmware");
    world.facade.setDeadlineScale(0.0001);
    log.expectError("Unknown error: No answer to \"uploadfirmware\" within 30 ms");
    world.click("upload");
    QCOMPARE(world.label("resultStatus"), text("Upload failed:\nUnknown error"));
    QCOMPARE(world.button("main")->text(), text("&Retry"));
    // The link is gone; when it is back, so is the printer.
    QSignalSpy disconnected(&world.facade, &TrovekQt::disconnected);
    QTRY_COMPARE(disconnected.count(), 1);
    QCOMPARE(world.page(), 2);
    world.facade.setDeadlineScale(1);
    world.connectFacade();
    world.click("main");
    QCOMPARE(world.page(), 1);
    QVERIFY(world.button("upload")->isEnabled());
    world.click("upload");
    QCOMPARE(world.label("resultStatus"), text("Firmware upload successful"));
}

void tst_FirmwareSteps::aPrinterThatHasGoneIsSaid()
{
    TestLog log;
    UploadWorld world;
    world.open();
    goToUpload(world);
    world.unplug();
    QCOMPARE(world.page(), 1);
    QVERIFY(world.button("upload")->isEnabled());
    log.expectError("Printer disconnected");

    world.click("upload");

    QCOMPARE(world.label("resultStatus"), text("Upload failed:\nPrinter disconnected"));
    QCOMPARE(world.button("main")->text(), text("&Retry"));
    QCOMPARE(world.requests("uploadfirmware"), 0);
    // It comes back, and everything goes on where it was.
    world.plugIn();
    QCOMPARE(world.page(), 2);
    world.click("main");
    world.click("upload");
    QCOMPARE(world.label("resultStatus"), text("Firmware upload successful"));
}

void tst_FirmwareSteps::aRetryDownloadsAgain()
{
    TestLog log;
    UploadWorld world;
    world.open();
    goToUpload(world);
    fail(world, "uploadfirmware", wire::makeError("PrinterThreadNotIdleError", "It prints"), log);
    world.click("upload");
    PaintedTexts painted(world.find("readyStatus"));
    world.service.answerNext("downloadfirmware", "/again.hex");

    world.click("main");

    QCOMPARE(world.page(), 1);
    QVERIFY(painted.whileWaiting.contains(text("Downloading new firmware...")));
    QCOMPARE(world.label("readyStatus"), text(kClickUpload));
    QCOMPARE(world.requests("downloadfirmware"), 2);
    QCOMPARE(world.requests("uploadfirmware"), 1);
    world.click("upload");
    QCOMPARE(world.service.lastRequest("uploadfirmware")["path"].asString(),
             std::string("/again.hex"));
    QCOMPARE(world.label("resultStatus"), text("Firmware upload successful"));
    QCOMPARE(world.button("main")->text(), text("&OK"));
    QVERIFY(!world.button("resultCancel")->isVisible());
    // It closes now and does nothing else.
    world.click("main");
    QVERIFY(!world.dialog->isVisible());
    QCOMPARE(world.requests("downloadfirmware"), 2);
}

void tst_FirmwareSteps::aRetryWithoutAPrinterSaysSo()
{
    TestLog log;
    UploadWorld world;
    world.open();
    goToUpload(world);
    world.unplug();
    log.expectError("Printer disconnected");
    world.click("upload");
    log.expectError("hasResetButton failed");
    world.click("main");
    QCOMPARE(world.page(), 1);
    QCOMPARE(world.label("readyStatus"), text("Download failed\n\nhasResetButton failed"));
    QVERIFY(!world.button("upload")->isEnabled());
    world.click("readyCancel");
    QVERIFY(!world.dialog->isVisible());
}

void tst_FirmwareSteps::aRetryTakesTheSameVersion()
{
    TestLog log;
    UploadWorld world;
    world.open();
    world.versions()->setCurrentIndex(0);
    goToUpload(world);
    world.unplug();
    log.expectError("Printer disconnected");
    world.click("upload");
    // Whatever is offered meanwhile, the user has made a choice.
    world.offer(R"([["9.9", "Another one."]])");
    world.plugIn();
    world.click("main");
    QCOMPARE(world.service.lastRequest("downloadfirmware")["version"].asString(),
             std::string("7.2"));
    QVERIFY(world.button("upload")->isEnabled());
}

void tst_FirmwareSteps::aSecondRetryIsOneToo()
{
    TestLog log;
    UploadWorld world;
    world.open();
    goToUpload(world);
    for (int i = 0; i < 3; ++i) {
        fail(world, "uploadfirmware", wire::makeError("Some", "Not today"), log);
        world.click("upload");
        QCOMPARE(world.button("main")->text(), text("&Retry"));
        world.click("main");
        // Not twice for the second connection of its button.
        QCOMPARE(world.requests("downloadfirmware"), i + 2);
    }
}

void tst_FirmwareSteps::theSecondClickOfADoubleClickDoesNothing_data()
{
    QTest::addColumn<int>("buttonNumber");

    QTest::newRow("next") << 0;
    QTest::newRow("upload") << 1;
    QTest::newRow("retry") << 2;
}

void tst_FirmwareSteps::theSecondClickOfADoubleClickDoesNothing()
{
    QFETCH(int, buttonNumber);
    TestLog log;
    UploadWorld world;
    world.open();
    QSignalSpy finished(world.dialog, &QDialog::finished);
    if (buttonNumber == 0) {
        doubleClick(world.button("next"), world.button("upload"));
        QCOMPARE(world.page(), 1);
        QCOMPARE(world.requests("downloadfirmware"), 1);
        QCOMPARE(world.requests("uploadfirmware"), 0);
    } else if (buttonNumber == 1) {
        goToUpload(world);
        doubleClick(world.button("upload"), world.button("main"));
        QCOMPARE(world.page(), 2);
        QCOMPARE(world.requests("uploadfirmware"), 1);
    } else {
        goToUpload(world);
        fail(world, "uploadfirmware", wire::makeError("Some", "Not today"), log);
        world.click("upload");
        doubleClick(world.button("main"), world.button("upload"));
        QCOMPARE(world.page(), 1);
        QCOMPARE(world.requests("downloadfirmware"), 2);
        QCOMPARE(world.requests("uploadfirmware"), 1);
    }
    QVERIFY(finished.isEmpty());
    // The next click counts.
    if (buttonNumber != 1) {
        world.click("upload");
        QCOMPARE(world.page(), 2);
    }
}

void tst_FirmwareSteps::aKeyThatIsHeldActsOnce()
{
    TestLog log;
    UploadWorld world;
    world.open();
    world.button("next")->setFocus();
    const auto hold = [&](Qt::Key key) {
        QTest::keyPress(world.dialog->focusWidget(), key);
        for (int i = 0; i < 5; ++i) {
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
            QApplication::sendEvent(world.dialog->focusWidget(), &press);
            QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, QString(), true);
            QApplication::sendEvent(world.dialog->focusWidget(), &release);
        }
        QTest::keyRelease(world.dialog->focusWidget(), key);
    };

    hold(Qt::Key_Return);
    QCOMPARE(world.page(), 1);
    QCOMPARE(world.requests("downloadfirmware"), 1);
    QCOMPARE(world.requests("uploadfirmware"), 0);
    hold(Qt::Key_Return);
    QCOMPARE(world.page(), 2);
    QCOMPARE(world.requests("uploadfirmware"), 1);
    QVERIFY(world.dialog->isVisible());
    QTest::keyClick(world.dialog->focusWidget(), Qt::Key_Return);
    QVERIFY(!world.dialog->isVisible());
}

void tst_FirmwareSteps::everyPageIsLeftByCancelAndEscape()
{
    TestLog log;
    UploadWorld world;
    world.open();
    QSignalSpy finished(world.dialog, &QDialog::finished);
    goToUpload(world);
    world.click("readyCancel");
    QVERIFY(!world.dialog->isVisible());
    world.dialog->show();
    QTest::keyClick(world.dialog, Qt::Key_Escape);
    QVERIFY(!world.dialog->isVisible());
    world.dialog->show();
    fail(world, "uploadfirmware", wire::makeError("Some", "Not today"), log);
    world.click("upload");
    world.click("resultCancel");
    QVERIFY(!world.dialog->isVisible());
    QCOMPARE(finished,
             (QList<QVariantList>{{QDialog::Rejected}, {QDialog::Rejected}, {QDialog::Rejected}}));
}

QTEST_MAIN(tst_FirmwareSteps)
#include "tst_firmware_steps.moc"
