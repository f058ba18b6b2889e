#include "direct_controls/direct_world.h"
#include "src/direct_controls/printer_pixmap.h"
#include "support/modal_driver.h"
#include "support/test_log.h"

#include <trovek-ui/direct_controls_dialog.h>
#include <trovek-ui/extruder_control_widget.h>

#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

#include <memory>

using namespace trovek;

namespace {

QString text(const QDialog& dialog, const char* label)
{
    return child<QLabel>(dialog, label)->text();
}

QStringList buttonTexts(const QDialog& dialog)
{
    QStringList texts;
    for (const QPushButton* button :
         dialog.findChildren<QPushButton*>(QString(), Qt::FindDirectChildrenOnly))
        texts.append(button->text());
    texts.sort();
    return texts;
}

void press(const QDialog& dialog, const char* button)
{
    QTest::mouseClick(child<QPushButton>(dialog, button), Qt::LeftButton);
}

} // namespace

class tst_DirectControlsDialog : public QObject
{
    Q_OBJECT

private slots:
    void showsTheMachine_data();
    void showsTheMachine();
    void opensForAMachineThatIsAway();
    void hasNoPictureOfNoMachine();
    void knowsACbo_data();
    void knowsACbo();
    void saysThatAMachineIsNotConnected();
    void homes();
    void showsWhatItWaitsFor();
    void tellsWhyHomingFailed();
    void hasRoomForALongNotice_data();
    void hasRoomForALongNotice();
    void stopsItsJogBeforeHoming();
    void calibrates();
    void stopsItsJogBeforeItAsks();
    void tellsWhyCalibratingFailed();
    void calibratesOnlyCbos();
    void survivesItsEndWhileItAsks();
    void leavesAMachineWithAnotherJobAlone();
    void followsTheMachineAwayAndBack();
    void stopsTheJogWhenItCloses();
    void closes();
    void doesNothingOnReturn();
};

void tst_DirectControlsDialog::showsTheMachine_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("picture");
    QTest::addColumn<bool>("calibrates");

    const QString fabrino = QStringLiteral(":/machines/fabrino.png");
    const QString fabrino2 = QStringLiteral(":/machines/fabrino2.png");
    const QString cubio = QStringLiteral(":/machines/cubio.png");
    QTest::newRow("Fabrino") << 1 << QStringLiteral("The Fabrino") << fabrino << false;
    QTest::newRow("Fabrino Dual") << 2 << QStringLiteral("The Fabrino (Dual)") << fabrino << false;
    QTest::newRow("Fabrino 2") << 3 << QStringLiteral("The Fabrino 2") << fabrino2 << false;
    QTest::newRow("Fabrino 2X") << 4 << QStringLiteral("The Fabrino 2X") << fabrino2 << false;
    QTest::newRow("Cubio") << 5 << QStringLiteral("Cubio") << cubio << true;
    QTest::newRow("Cubio Dual") << 6 << QStringLiteral("Cubio (Dual)") << cubio << true;
    QTest::newRow("unknown") << 0 << QStringLiteral("bot") << QString() << false;
}

void tst_DirectControlsDialog::showsTheMachine()
{
    QFETCH(int, type);
    QFETCH(QString, picture);
    QFETCH(bool, calibrates);
    TestLog log;
    DirectWorld world(static_cast<Printer::Type>(type));
    const DirectControlsDialog dialog(world.facade, world.name());

    QCOMPARE(dialog.windowTitle(), QStringLiteral("Orvane Direct Controls"));
    QTEST(text(dialog, "printerName"), "name");
    const QPixmap shown = child<QLabel>(dialog, "printerPicture")->pixmap(Qt::ReturnByValue);
    QCOMPARE(shown.isNull(), picture.isEmpty());
    QCOMPARE(shown.toImage(), QPixmap(picture).toImage());
    QStringList buttons = {QStringLiteral("&Close"), QStringLiteral("Home Axes")};
    if (calibrates)
        buttons.append(QStringLiteral("Run Calibration Script"));
    QCOMPARE(buttonTexts(dialog), buttons);
    QVERIFY(dialog.findChild<ExtruderControlWidget*>());
}

void tst_DirectControlsDialog::opensForAMachineThatIsAway()
{
    TestLog log;
    log.expectError("null printer");
    DirectWorld world(Printer::CubioSingle);
    world.unplug();

    const DirectControlsDialog dialog(world.facade, world.name());

    QCOMPARE(text(dialog, "printerName"), QStringLiteral("Unknown Printer"));
    QCOMPARE(text(dialog, "printerStatus"), QStringLiteral("Not Connected"));
    QVERIFY(!child(dialog, "home")->isEnabled());
    QVERIFY(!dialog.findChild<QPushButton*>(QStringLiteral("calibrate")));
    world.plugIn();
    QVERIFY(text(dialog, "printerName") != QStringLiteral("Unknown Printer"));
    QVERIFY(child(dialog, "home")->isEnabled());
}

void tst_DirectControlsDialog::hasNoPictureOfNoMachine()
{
    TestLog log;
    log.expectError("null printer");

    QVERIFY(pixmapFromPrinter(nullptr).isNull());
    QCOMPARE(log.sink().entries().at(0).file,
             std::string("src\\direct_controls\\direct_controls_dialog"));
}

void tst_DirectControlsDialog::knowsACbo_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("isCboType");

    for (int type = 0; type <= 6; ++type)
        QTest::addRow("type %d", type) << type << (type == 5 || type == 6);
}

void tst_DirectControlsDialog::knowsACbo()
{
    QFETCH(int, type);
    TestLog log;
    DirectWorld world(static_cast<Printer::Type>(type));

    QTEST(isCbo(world.facade, world.name()), "isCboType");
    QVERIFY(!isCbo(world.facade, MachineName("another")));
    world.unplug();
    QVERIFY(!isCbo(world.facade, world.name()));
}

void tst_DirectControlsDialog::saysThatAMachineIsNotConnected()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    const DirectControlsDialog dialog(world.facade, world.name());

    world.change([](Printer::Data& machine) { machine.connected = false; });

    QCOMPARE(text(dialog, "printerStatus"), QStringLiteral("Not Connected"));
}

void tst_DirectControlsDialog::homes()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    const DirectControlsDialog dialog(world.facade, world.name());

    press(dialog, "home");

    QCOMPARE(world.takeRequests(), QStringList(QStringLiteral("home")));
    QVERIFY(text(dialog, "notice").isEmpty());
}

void tst_DirectControlsDialog::showsWhatItWaitsFor()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    const DirectControlsDialog dialog(world.facade, world.name());
    QString shown;
    bool hasWaitCursor = false;
    world.service.onRequest("home", [&](const Json::Value&) {
        shown = text(dialog, "notice");
        hasWaitCursor = QApplication::overrideCursor() != nullptr;
        return Json::Value();
    });

    press(dialog, "home");

    QCOMPARE(shown, QStringLiteral("Home Script"));
    QVERIFY(hasWaitCursor);
    QVERIFY(!QApplication::overrideCursor());
}

void tst_DirectControlsDialog::tellsWhyHomingFailed()
{
    TestLog log;
    log.expectError("Something is in the way");
    DirectWorld world(Printer::Fabrino2);
    const DirectControlsDialog dialog(world.facade, world.name());
    world.service.failNext("home", JsonRpcException("Something is in the way"));

    press(dialog, "home");

    QCOMPARE(text(dialog, "notice"), QStringLiteral("Home Script: Something is in the way"));
    QCOMPARE(child<QLabel>(dialog, "notice")->textFormat(), Qt::PlainText);
    QCOMPARE(log.sink().entries().back().file,
             std::string("src\\direct_controls\\direct_controls_dialog"));
    QVERIFY(child(dialog, "home")->isEnabled());
    press(dialog, "home");
    QVERIFY(text(dialog, "notice").isEmpty());
}

void tst_DirectControlsDialog::hasRoomForALongNotice_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("button");

    QTest::newRow("of a script") << QByteArray("home") << QByteArray("home");
    QTest::newRow("of the extruders") << QByteArray("jog") << QByteArray("load");
}

void tst_DirectControlsDialog::hasRoomForALongNotice()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, button);
    TestLog log;
    log.expectError("very long");
    DirectWorld world(Printer::Fabrino2);
    DirectControlsDialog dialog(world.facade, world.name());
    dialog.show();
    std::string reason;
    for (int i = 0; i < 30; ++i)
        reason += "very long ";
    world.service.failNext(method.toStdString(), JsonRpcException(reason));

    press(dialog, button);
    QCoreApplication::sendPostedEvents();

    for (const QLabel* label : dialog.findChildren<QLabel*>()) {
        if (!label->isVisible())
            continue;
        const int needed = label->wordWrap() ? label->heightForWidth(label->width())
                                             : label->minimumSizeHint().height();
        QVERIFY2(label->height() >= needed, qPrintable(label->objectName()));
    }
}

void tst_DirectControlsDialog::stopsItsJogBeforeHoming()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    const DirectControlsDialog dialog(world.facade, world.name());
    press(dialog, "load");
    world.setState(Printer::Running);
    const int id = world.service.lastJobID();
    world.takeRequests();

    press(dialog, "home");

    QCOMPARE(world.takeRequests(),
             QStringList({QStringLiteral("cancel %1").arg(id), QStringLiteral("home")}));
}

void tst_DirectControlsDialog::calibrates()
{
    TestLog log;
    DirectWorld world(Printer::CubioDual, 2);
    const DirectControlsDialog dialog(world.facade, world.name());
    ModalDriver driver;
    QStringList titles;
    QStringList before;
    driver.expect([&](QDialog* box) {
        titles.append(messageTexts(box).first());
        before = world.takeRequests();
        pressButton(box, QStringLiteral("&OK"));
    });
    QStringList between;
    driver.expect([&](QDialog* box) {
        QVERIFY(messageTexts(box).contains(QStringLiteral("Cubio Calibration completed!")));
        between = world.takeRequests();
        pressButton(box, QStringLiteral("&OK"));
    });

    press(dialog, "calibrate");

    QCOMPARE(titles, QStringList(QStringLiteral("Cubio Calibration")));
    QCOMPARE(before, QStringList());
    QCOMPARE(between, QStringList(QStringLiteral("cbo_calibration")));
}

void tst_DirectControlsDialog::stopsItsJogBeforeItAsks()
{
    TestLog log;
    DirectWorld world(Printer::CubioSingle);
    const DirectControlsDialog dialog(world.facade, world.name());
    press(dialog, "load");
    const int id = world.service.lastJobID();
    world.takeRequests();
    ModalDriver driver;
    QStringList before;
    driver.expect([&](QDialog* box) {
        before = world.takeRequests();
        box->reject();
    });
    driver.expect([](QDialog* box) { box->reject(); });

    press(dialog, "calibrate");

    QCOMPARE(before, QStringList(QStringLiteral("cancel %1").arg(id)));
    QCOMPARE(world.takeRequests(), QStringList(QStringLiteral("cbo_calibration")));
}

void tst_DirectControlsDialog::tellsWhyCalibratingFailed()
{
    TestLog log;
    log.expectError("The calibration was canceled");
    DirectWorld world(Printer::CubioSingle);
    const DirectControlsDialog dialog(world.facade, world.name());
    world.service.failNext("cbo_calibration", JsonRpcException("The calibration was canceled"));
    ModalDriver driver;
    driver.expect([](QDialog* box) { pressButton(box, QStringLiteral("&OK")); });

    press(dialog, "calibrate");

    QVERIFY(driver.isDone());
    QCOMPARE(text(dialog, "notice"),
             QStringLiteral("Cubio Calibration: The calibration was canceled"));
}

void tst_DirectControlsDialog::calibratesOnlyCbos()
{
    TestLog log;
    log.expectError("Calibration only for CBOs");
    DirectWorld world(Printer::Fabrino2);
    DirectControlsDialog dialog(world.facade, world.name());

    QVERIFY(QMetaObject::invokeMethod(&dialog, "slotCalibrateCBO"));

    QCOMPARE(world.takeRequests(), QStringList());
    QCOMPARE(log.sink().entries().back().message, std::string("Calibration only for CBOs"));
}

void tst_DirectControlsDialog::survivesItsEndWhileItAsks()
{
    TestLog log;
    DirectWorld world(Printer::CubioSingle);
    auto* const dialog = new DirectControlsDialog(world.facade, world.name());
    ModalDriver driver;
    driver.expect([&](QDialog*) { delete dialog; });

    press(*dialog, "calibrate");

    QCOMPARE(world.takeRequests(), QStringList());
}

void tst_DirectControlsDialog::leavesAMachineWithAnotherJobAlone()
{
    TestLog log;
    DirectWorld world(Printer::CubioSingle);
    const DirectControlsDialog dialog(world.facade, world.name());
    const auto enabled = [&dialog] {
        QStringList names;
        for (const char* name : {"home", "calibrate", "load", "unload", "stop", "heat", "close"}) {
            if (child(dialog, name)->isEnabled())
                names.append(QString::fromLatin1(name));
        }
        return names.join(QLatin1Char(' '));
    };
    QCOMPARE(enabled(), QStringLiteral("home calibrate load unload stop heat close"));
    QCOMPARE(text(dialog, "printerStatus"), QStringLiteral("Status: Idle"));

    world.setState(Printer::Running);
    QCOMPARE(enabled(), QStringLiteral("stop heat close"));
    QCOMPARE(text(dialog, "printerStatus"), QStringLiteral("Status: Busy"));
    world.setState(Printer::Paused);
    QCOMPARE(enabled(), QStringLiteral("stop heat close"));
    world.setState(Printer::Idle);
    QCOMPARE(enabled(), QStringLiteral("home calibrate load unload stop heat close"));

    press(dialog, "load");
    world.setState(Printer::Running);
    QCOMPARE(enabled(), QStringLiteral("home calibrate load unload stop heat close"));
}

void tst_DirectControlsDialog::followsTheMachineAwayAndBack()
{
    TestLog log;
    DirectWorld world(Printer::CubioSingle);
    const DirectControlsDialog dialog(world.facade, world.name());
    const QString name = text(dialog, "printerName");

    world.unplug();
    QVERIFY(!child(dialog, "home")->isEnabled());
    QVERIFY(!child(dialog, "calibrate")->isEnabled());
    QCOMPARE(text(dialog, "printerStatus"), QStringLiteral("Not Connected"));
    QCOMPARE(text(dialog, "printerName"), name);

    world.plugIn();
    QVERIFY(child(dialog, "home")->isEnabled());
    QCOMPARE(text(dialog, "printerStatus"), QStringLiteral("Status: Idle"));

    world.service.stop();
    QTRY_VERIFY(!world.facade.isConnected());
    QTRY_VERIFY(!child(dialog, "home")->isEnabled());
}

void tst_DirectControlsDialog::stopsTheJogWhenItCloses()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    DirectControlsDialog dialog(world.facade, world.name());
    dialog.show();
    press(dialog, "load");
    const int id = world.service.lastJobID();
    world.takeRequests();

    QTest::keyClick(&dialog, Qt::Key_Escape);

    QVERIFY(!dialog.isVisible());
    QCOMPARE(world.takeRequests(), QStringList(QStringLiteral("cancel %1").arg(id)));
}

void tst_DirectControlsDialog::closes()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    DirectControlsDialog dialog(world.facade, world.name());
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    dialog.show();

    press(dialog, "close");

    QCOMPARE(accepted.count(), 1);
    QVERIFY(!dialog.isVisible());
}

void tst_DirectControlsDialog::doesNothingOnReturn()
{
    TestLog log;
    DirectWorld world(Printer::CubioSingle);
    DirectControlsDialog dialog(world.facade, world.name());
    dialog.show();

    QTest::keyClick(child<QSpinBox>(dialog, "targetTemperature"), Qt::Key_Return);

    QVERIFY(dialog.isVisible());
    QCOMPARE(world.takeRequests(), QStringList());
}

QTEST_MAIN(tst_DirectControlsDialog)
#include "tst_direct_controls_dialog.moc"
