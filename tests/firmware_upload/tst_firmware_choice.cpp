#include "upload_world.h"

#include <QFormLayout>

using namespace trovek;

/** The first page of the firmware upload dialog: which machine, which version. */
class tst_FirmwareChoice : public QObject
{
    Q_OBJECT

private slots:
    void saysWhoseFirmwareItIs();
    void theKeyboardReachesEverything();
    void offersTheVersionsInOrderAndTheNewestFirst();
    void describesTheChosenVersion_data();
    void describesTheChosenVersion();
    void markupIsText();
    void takesTheFirstNameThatIsAlsoThePrinters();
    void saysThatThereIsNoFirmware_data();
    void saysThatThereIsNoFirmware();
    void saysThatThereAreNoVersions();
    void whatIsOfferedMayChange();
    void saysWhatWentWrong_data();
    void saysWhatWentWrong();
    void saysThatThereIsNoInternetOnce_data();
    void saysThatThereIsNoInternetOnce();
    void mayBeDeletedUnderItsMessage();
    void tellsThatItAsks();
    void asksWithoutAServiceOrPort();
    void aDialogWithoutAPrinterSaysSo();
    void aPrinterGoesAndComesBack();
    void offersTheNewestWhenThePrinterComesBack();
    void whatHappensToOthersDoesNotMatter();
    void cancelAndEscapeReject();
};

void tst_FirmwareChoice::saysWhoseFirmwareItIs()
{
    TestLog log;
    UploadWorld world;
    world.open();

    QCOMPARE(world.dialog->windowTitle(), text("Upload Firmware"));
    QCOMPARE(world.page(), 0);
    QCOMPARE(world.label("bot"), text("Left Orvane"));
    QCOMPARE(world.label("currentVersion"), text("7.1"));
    QStringList labels;
    auto* const form = world.find<QFormLayout>("form");
    for (int row = 0; row < form->rowCount(); ++row) {
        const QWidget* const label = form->itemAt(row, QFormLayout::LabelRole)->widget();
        labels.append(qobject_cast<const QLabel*>(label)->text());
    }
    QCOMPARE(labels, QStringList({text("Bot:"), text("Current Version:"),
                                  text("&Available Versions:"), text("Description:")}));
    QCOMPARE(world.button("choiceCancel")->text(), text("&Cancel"));
    QCOMPARE(world.button("next")->text(), text("&Next"));
    QVERIFY(world.button("next")->isDefault());
    QVERIFY(world.canGoOn());
    QCOMPARE(world.error(), QString());
    QVERIFY(!QApplication::overrideCursor());
}

void tst_FirmwareChoice::theKeyboardReachesEverything()
{
    TestLog log;
    UploadWorld world;
    world.open();
    QCOMPARE(world.dialog->focusWidget(), world.versions());
    QTest::keyClick(world.versions(), Qt::Key_Tab);
    QCOMPARE(world.dialog->focusWidget(), world.button("choiceCancel"));
    QTest::keyClick(world.dialog->focusWidget(), Qt::Key_Tab);
    QCOMPARE(world.dialog->focusWidget(), world.button("next"));
    QTest::keyClick(world.dialog, Qt::Key_A, Qt::AltModifier);
    QCOMPARE(world.dialog->focusWidget(), world.versions());
    QTest::keyClick(world.versions(), Qt::Key_Up);
    QCOMPARE(world.label("description"), text("Usual."));
    QTest::keyClick(world.versions(), Qt::Key_Return);
    QCOMPARE(world.page(), 1);
}

void tst_FirmwareChoice::offersTheVersionsInOrderAndTheNewestFirst()
{
    TestLog log;
    UploadWorld world;
    world.make();

    QStringList items;
    for (int i = 0; i < world.versions()->count(); ++i)
        items.append(world.versions()->itemText(i));
    QCOMPARE(items, QStringList({text("7.2"), text("7.5"), text("7.10")}));
    QCOMPARE(world.versions()->currentText(), text("7.10"));
    QVERIFY(world.versions()->isEnabled());
    QCOMPARE(world.label("description"), text("New.\nBetter."));
    world.versions()->setCurrentIndex(0);
    QCOMPARE(world.label("description"), text("Old."));
    QVERIFY(world.canGoOn());
}

void tst_FirmwareChoice::describesTheChosenVersion_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("expected");

    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("two blanks") << text("a  b") << text("a b");
    QTest::newRow("three blanks") << text("a   b") << text("a  b");
    QTest::newRow("four blanks") << text("a    b") << text("a  b");
    QTest::newRow("five blanks") << text("a     b") << text("a   b");
    QTest::newRow("sentences") << text("One. Two. Three.") << text("One.\nTwo.\nThree.");
    QTest::newRow("sentences far apart") << text("One.  Two.") << text("One.\nTwo.");
    QTest::newRow("further apart") << text("One.   Two.") << text("One.\n Two.");
    QTest::newRow("a number in it")
        << text("Version 7.5 is better.") << text("Version 7.5 is better.");
    QTest::newRow("a blank at its end") << text("One. ") << text("One.\n");
    QTest::newRow("letters of others")
        << text("W\u00e4rmer.  \u4e2d. \u6587") << text("W\u00e4rmer.\n\u4e2d.\n\u6587");
}

void tst_FirmwareChoice::describesTheChosenVersion()
{
    QFETCH(QString, description);
    QFETCH(QString, expected);
    TestLog log;
    UploadWorld world;
    Json::Value pair(Json::arrayValue);
    pair.append("7.2");
    pair.append(description.toStdString());
    Json::Value list(Json::arrayValue);
    list.append(pair);
    world.offer(rpcwire::toJsonLine(list));
    world.make();
    QCOMPARE(world.label("description"), expected);
    QVERIFY(world.find("description")->wordWrap());
}

void tst_FirmwareChoice::markupIsText()
{
    TestLog log;
    UploadWorld world;
    world.make();
    for (const char* const name :
         {"bot", "currentVersion", "description", "error", "readyStatus", "resultStatus"})
        QCOMPARE(world.find(name)->textFormat(), Qt::PlainText);
}

void tst_FirmwareChoice::takesTheFirstNameThatIsAlsoThePrinters()
{
    TestLog log;
    UploadWorld world(Printer::FabrinoDual);
    world.make();
    QCOMPARE(world.service.lastRequest("getmachineversions")["machine"].asString(),
             std::string("fabrino"));
    QCOMPARE(world.service.lastRequest("getmachineversions")["type"].asInt(), 2);
    // What is no name is passed over.
    world.service.answerNext("getuploadablemachines",
                             parse(R"([5, null, ["fabrino"], {"a": 1}, "fabrino_2", "fabrino"])"));
    delete world.dialog;
    world.make();
    QCOMPARE(world.service.lastRequest("getmachineversions")["machine"].asString(),
             std::string("fabrino_2"));
}

void tst_FirmwareChoice::saysThatThereIsNoFirmware_data()
{
    QTest::addColumn<QByteArray>("machines");

    QTest::newRow("none at all") << QByteArray("[]");
    QTest::newRow("none for this machine") << QByteArray(R"(["cubio", "Fabrino", ""])");
    QTest::newRow("none that is a name") << QByteArray("[5, null]");
}

void tst_FirmwareChoice::saysThatThereIsNoFirmware()
{
    QFETCH(QByteArray, machines);
    TestLog log;
    UploadWorld world;
    world.service.answerNext("getuploadablemachines", parse(machines.toStdString()));
    world.make();
    QCOMPARE(world.versions()->count(), 1);
    QCOMPARE(world.versions()->currentText(), text("No Firmware Found"));
    QVERIFY(!world.versions()->isEnabled());
    QVERIFY(!world.canGoOn());
    QCOMPARE(world.label("description"), QString());
    QCOMPARE(world.requests("getmachineversions"), 0);
    QCOMPARE(world.error(), QString());
}

void tst_FirmwareChoice::saysThatThereAreNoVersions()
{
    TestLog log;
    UploadWorld world;
    world.offer("[]");
    world.make();
    QCOMPARE(world.versions()->count(), 1);
    QCOMPARE(world.versions()->currentText(), text("No Versions Found"));
    QVERIFY(!world.canGoOn());
    QCOMPARE(world.label("description"), QString());
}

void tst_FirmwareChoice::whatIsOfferedMayChange()
{
    TestLog log;
    UploadWorld world;
    world.open();
    const auto comeBack = [&] {
        world.unplug();
        world.plugIn();
    };
    world.service.answerNext("getuploadablemachines", parse("[]"));
    comeBack();
    QCOMPARE(world.versions()->currentText(), text("No Firmware Found"));
    QCOMPARE(world.label("description"), QString());
    QVERIFY(!world.canGoOn());
    comeBack();
    QCOMPARE(world.versions()->currentText(), text("7.10"));
    QCOMPARE(world.label("description"), text("New.\nBetter."));
    QVERIFY(world.versions()->isEnabled());
    QVERIFY(world.canGoOn());
    world.service.answerNext("getmachineversions", parse("[]"));
    comeBack();
    QCOMPARE(world.versions()->currentText(), text("No Versions Found"));
    QVERIFY(!world.canGoOn());
    comeBack();
    QCOMPARE(world.versions()->count(), 3);
    QVERIFY(world.canGoOn());
}

void tst_FirmwareChoice::saysWhatWentWrong_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("expected");

    for (const char* const method : {"getuploadablemachines", "getmachineversions"}) {
        QTest::addRow("%s: an error", method)
            << QByteArray(method) << QByteArray() << text("Error: Some <b>URLOPEN</b> error");
        QTest::addRow("%s: an odd answer", method)
            << QByteArray(method) << QByteArray("5")
            << text("Error: Odd answer to ") + QLatin1String(method) + text(": not a list");
        QTest::addRow("%s: an object", method)
            << QByteArray(method) << QByteArray(R"({"fabrino_2": 1})")
            << text("Error: Odd answer to ") + QLatin1String(method) + text(": not a list");
        QTest::addRow("%s: nothing", method)
            << QByteArray(method) << QByteArray("null")
            << text("Error: Odd answer to ") + QLatin1String(method) + text(": not a list");
    }
}

void tst_FirmwareChoice::saysWhatWentWrong()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, answer);
    QFETCH(QString, expected);
    TestLog log;
    log.expectError(expected.mid(int(qstrlen("Error: "))));
    UploadWorld world;
    if (answer.isEmpty())
        world.service.failNext(method.toStdString(),
                               JsonRpcException("Some <b>URLOPEN</b> error", Json::Value(5)));
    else
        world.service.answerNext(method.toStdString(), parse(answer.toStdString()));
    world.open();
    QCOMPARE(world.error(), expected);
    QCOMPARE(log.sink().entries().back().file, std::string(kUploadUnit));
    QVERIFY(!world.versions()->isEnabled());
    QVERIFY(!world.canGoOn());
    QCOMPARE(world.label("bot"), text("Left Orvane"));
    QVERIFY(!QApplication::overrideCursor());
    // Coming back is another try.
    world.unplug();
    world.plugIn();
    QCOMPARE(world.error(), QString());
    QVERIFY(world.canGoOn());
    QVERIFY(world.versions()->isEnabled());
}

void tst_FirmwareChoice::saysThatThereIsNoInternetOnce_data()
{
    QTest::addColumn<QByteArray>("method");

    QTest::newRow("machines") << QByteArray("getuploadablemachines");
    QTest::newRow("versions") << QByteArray("getmachineversions");
}

void tst_FirmwareChoice::saysThatThereIsNoInternetOnce()
{
    QFETCH(QByteArray, method);
    TestLog log;
    UploadWorld world;
    const JsonRpcException error("<urlopen error [Errno -2] Name or service not known>");
    world.service.failNext(method.toStdString(), error);
    world.service.failNext(method.toStdString(), error);
    log.expectError("<urlopen error");
    log.expectError("<urlopen error");
    ModalDriver driver;
    driver.expect([&](QDialog* box) {
        QCOMPARE(messageTexts(box), QStringList({text("Firmware upload failed"),
                                                 text("Unable to connect to the download site.")}));
        QCOMPARE(box->parentWidget(), world.dialog);
        QVERIFY(world.dialog->isVisible());
        // While it is open the printer comes back, and there is no connection again.
        world.unplug();
        world.plugIn();
        pressButton(box, text("&OK"));
    });
    world.make();
    world.dialog->show();
    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(world.error(), text("Unable to connect to internet"));
    QVERIFY(!world.versions()->isEnabled());
    QVERIFY(!world.canGoOn());
    // The next failure is told again.
    world.service.failNext(method.toStdString(), error);
    log.expectError("<urlopen error");
    driver.expectMessage(
        {text("Firmware upload failed"), text("Unable to connect to the download site.")});
    world.unplug();
    world.plugIn();
    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(!QApplication::activeModalWidget());
}

void tst_FirmwareChoice::mayBeDeletedUnderItsMessage()
{
    TestLog log;
    UploadWorld world;
    log.expectError("urlopen");
    world.service.failNext("getuploadablemachines", JsonRpcException("urlopen"));
    ModalDriver driver;
    driver.expect([&](QDialog*) { delete world.dialog; });
    world.make();
    world.dialog->show();
    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(!QApplication::activeModalWidget());
}

void tst_FirmwareChoice::tellsThatItAsks()
{
    TestLog log;
    UploadWorld world;
    world.open();
    world.unplug();
    PaintedTexts painted(world.find("bot"));
    world.plugIn();
    QVERIFY(painted.whileWaiting.contains(text("Left Orvane")));
    QVERIFY(!QApplication::overrideCursor());
}

void tst_FirmwareChoice::asksWithoutAServiceOrPort()
{
    TestLog log;
    UploadWorld world;
    world.service.stop();
    log.expectError("Connection closed by the other side");
    world.make();
    QVERIFY2(world.error().startsWith(text("Error: ")), qPrintable(world.error()));
    QVERIFY(!world.canGoOn());
    delete world.dialog;
    world.service.start();
    world.facade.connectToDaemon(world.service.address());
    // A printer of which the port is not known.
    QTRY_COMPARE(world.facade.ports().size(), std::size_t(1));
    world.service.removePort("usb1");
    QTRY_COMPARE(world.facade.ports().size(), std::size_t(0));
    log.expectError("No such port: usb1");
    world.make();
    QCOMPARE(world.error(), text("Error: No such port: usb1"));
}

void tst_FirmwareChoice::aDialogWithoutAPrinterSaysSo()
{
    TestLog log;
    UploadWorld world;
    world.dialog = new ui::FirmwareUploadDialog(world.facade, nullptr);
    world.dialog->show();
    QCOMPARE(world.label("bot"), text("No Printer"));
    QCOMPARE(world.label("currentVersion"), QString());
    QCOMPARE(world.error(), QString());
    QVERIFY(!world.versions()->isEnabled());
    QVERIFY(!world.canGoOn());
    QCOMPARE(world.requests("getuploadablemachines"), 0);
    // It belongs to no printer, so none that comes is its own.
    world.unplug();
    world.plugIn();
    QCOMPARE(world.label("bot"), text("No Printer"));
    QTest::keyClick(world.dialog, Qt::Key_Return);
    QCOMPARE(world.page(), 0);
}

void tst_FirmwareChoice::aPrinterGoesAndComesBack()
{
    TestLog log;
    UploadWorld world;
    world.open();

    world.unplug();
    QCOMPARE(world.label("bot"), text("No Printer"));
    QCOMPARE(world.label("currentVersion"), QString());
    QVERIFY(!world.versions()->isEnabled());
    QVERIFY(!world.canGoOn());
    QCOMPARE(world.page(), 0);
    world.plugIn();
    QCOMPARE(world.label("bot"), text("Left Orvane"));
    QCOMPARE(world.label("currentVersion"), text("7.1"));
    QVERIFY(world.versions()->isEnabled());
    QVERIFY(world.canGoOn());
    QCOMPARE(world.requests("getuploadablemachines"), 2);
    QCOMPARE(world.requests("getmachineversions"), 2);
    // Temperatures come by the second, and are no reason to ask again.
    Printer::Data warm = world.service.printer("left");
    warm.toolTemperature.toolheads = {77};
    QSignalSpy changed(&world.facade, &TrovekQt::printerChanged);
    world.service.changePrinter(warm);
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(world.requests("getuploadablemachines"), 2);
}

void tst_FirmwareChoice::offersTheNewestWhenThePrinterComesBack()
{
    TestLog log;
    UploadWorld world;
    world.open();
    world.versions()->setCurrentIndex(1);
    QCOMPARE(world.versions()->currentText(), text("7.5"));
    world.unplug();
    world.offer(R"([["7.2", "Old."], ["7.5", "Usual."], ["7.11", "Newest."]])");
    world.plugIn();
    QCOMPARE(world.versions()->currentText(), text("7.11"));
    QCOMPARE(world.label("description"), text("Newest."));
}

void tst_FirmwareChoice::whatHappensToOthersDoesNotMatter()
{
    TestLog log;
    UploadWorld world;
    world.open();
    QSignalSpy removed(&world.facade, &TrovekQt::printerRemoved);
    world.service.addPrinter(ScriptedService::machine("right", Printer::CubioDual));
    world.service.removePrinter("right");
    QTRY_COMPARE(removed.count(), 1);
    QCOMPARE(world.label("bot"), text("Left Orvane"));
    QVERIFY(world.canGoOn());
    QCOMPARE(world.requests("getuploadablemachines"), 1);
}

void tst_FirmwareChoice::cancelAndEscapeReject()
{
    TestLog log;
    UploadWorld world;
    world.open();
    QSignalSpy finished(world.dialog, &QDialog::finished);
    world.click("choiceCancel");
    QVERIFY(!world.dialog->isVisible());
    world.dialog->show();
    QTest::keyClick(world.dialog, Qt::Key_Escape);
    QVERIFY(!world.dialog->isVisible());
    QCOMPARE(finished, (QList<QVariantList>{{QDialog::Rejected}, {QDialog::Rejected}}));
}

QTEST_MAIN(tst_FirmwareChoice)
#include "tst_firmware_choice.moc"
