#include "control_panel/panel_world.h"
#include "support/modal_driver.h"
#include "support/test_log.h"

#include <trovek-ui/control_panel.h>
#include <trovek-ui/port_list.h>

#include <trovek/wire.h>

#include <QLabel>
#include <QPushButton>

#include <functional>
#include <memory>

Q_DECLARE_METATYPE(std::function<void(trovek::TrovekQt&, trovek::Printer*)>)

using namespace trovek;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

class tst_ControlPanel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void hasItsTitleIconAndButtons();
    void everyMnemonicIsItsOwn();
    void saysThatNothingIsChosen();
    void choosesTheOnlyPortAtOnce();
    void showsTheMachineOnThePort_data();
    void showsTheMachineOnThePort();
    void showsTheStateOfTheMachine_data();
    void showsTheStateOfTheMachine();
    void showsAPortWithoutAPrinter();
    void followsTheMachineOnThePort();
    void showsAndControlsThePortThatIsChosen();
    void isBroughtInLine_data();
    void isBroughtInLine();
    void isEmptyAfterTheChosenPortGoes();
    void isEmptyAfterTheLinkIsLostAndFillsAgain();
    void connectsToThePort();
    void connectsByDoubleClick();
    void connectsNothingTwice();
    void showsThatItWaits();
    void offersNothingWhileTheLinkGoes();
    void showsAndLogsWhyItCannotConnect();
    void survivesThatThePortHasGone();
    void survivesItsEndBelowTheMessage();
    void disconnectsFromThePort();
    void showsAndLogsWhyItCannotDisconnect();
    void asksForTheTools_data();
    void asksForTheTools();
    void asksForNothingWithoutAPrinter();
    void closes();

private:
    QPushButton* button(const char* name) const
    {
        return m_panel->findChild<QPushButton*>(QLatin1String(name));
    }
    QLabel* label(const char* name) const
    {
        return m_panel->findChild<QLabel*>(QLatin1String(name));
    }
    QPixmap shownPicture() const { return label("printerPicture")->pixmap(Qt::ReturnByValue); }
    void openPanel(QWidget* parent = nullptr)
    {
        m_panel = std::make_unique<ControlPanel>(m_world->facade, parent);
        m_panel->show();
    }
    /** Connect, disconnect and the three tools. */
    QList<bool> enabled() const
    {
        QList<bool> states;
        for (const char* name :
             {"connect", "disconnect", "directControls", "onboardPreferences", "uploadFirmware"})
            states.append(button(name)->isEnabled());
        return states;
    }
    void loseTheNullPrinterLine() { m_log->allowErrors("null printer"); }

    std::unique_ptr<TestLog> m_log;
    std::unique_ptr<PanelWorld> m_world;
    std::unique_ptr<ControlPanel> m_panel;
};

static const QList<bool> kNothing{false, false, false, false, false};
static const QList<bool> kConnectOnly{true, false, false, false, false};
static const QList<bool> kConnected{false, true, true, true, true};

void tst_ControlPanel::init()
{
    m_log = std::make_unique<TestLog>();
    m_world = std::make_unique<PanelWorld>();
}

void tst_ControlPanel::cleanup()
{
    m_panel.reset();
    m_world.reset();
    m_log.reset();
}

void tst_ControlPanel::hasItsTitleIconAndButtons()
{
    m_world->connectFacade();
    openPanel();
    QCOMPARE(m_panel->windowTitle(), text("Orvane Control Panel"));
    QVERIFY(m_panel->isWindow());
    for (const int size : {16, 24, 32, 64, 128, 256, 512})
        QVERIFY(m_panel->windowIcon().availableSizes().contains(QSize(size, size)));
    QStringList texts;
    for (const QPushButton* each : m_panel->findChildren<QPushButton*>())
        texts.append(each->text());
    QCOMPARE(texts,
             QStringList({text("Connect"), text("Disconnect"), text("&Direct Controls"),
                          text("&Onboard Preferences"), text("&Upload Firmware"), text("&Close")}));
}

void tst_ControlPanel::everyMnemonicIsItsOwn()
{
    m_world->connectFacade();
    openPanel();
    QSet<QString> used;
    for (const QPushButton* each : m_panel->findChildren<QPushButton*>()) {
        const QString mnemonic = QKeySequence::mnemonic(each->text()).toString();
        QVERIFY2(mnemonic.isEmpty() || !used.contains(mnemonic), qPrintable(mnemonic));
        used.insert(mnemonic);
    }
}

void tst_ControlPanel::saysThatNothingIsChosen()
{
    m_world->connectFacade();
    openPanel();
    QCOMPARE(label("printerName")->text(), text("No printer selected"));
    QCOMPARE(label("printerStatus")->text(), QString());
    QCOMPARE(label("printerPort")->text(), QString());
    QVERIFY(shownPicture().isNull());
    QCOMPARE(enabled(), kNothing);
}

void tst_ControlPanel::choosesTheOnlyPortAtOnce()
{
    m_world->connectFacade();
    openPanel();
    m_world->addPort("COM4");
    m_world->addMachine("m", Printer::Fabrino2, "COM4");
    QTRY_COMPARE(label("printerName")->text(), text("The Fabrino 2"));
    QCOMPARE(label("printerPort")->text(), text("COM4"));
    QCOMPARE(label("printerStatus")->text(), text("Status: Idle"));
    QCOMPARE(enabled(), kConnected);
    m_log->allowErrors("null printer"); // between the port and its machine
}

void tst_ControlPanel::showsTheMachineOnThePort_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("picture");
    QTest::newRow("1") << 1 << text("The Fabrino") << text(":/machines/fabrino.png");
    QTest::newRow("2") << 2 << text("The Fabrino (Dual)") << text(":/machines/fabrino.png");
    QTest::newRow("3") << 3 << text("The Fabrino 2") << text(":/machines/fabrino2.png");
    QTest::newRow("4") << 4 << text("The Fabrino 2X") << text(":/machines/fabrino2.png");
    QTest::newRow("5") << 5 << text("Cubio") << text(":/machines/cubio.png");
    QTest::newRow("6") << 6 << text("Cubio (Dual)") << text(":/machines/cubio.png");
    QTest::newRow("unknown") << 9 << text("bot") << QString();
}

void tst_ControlPanel::showsTheMachineOnThePort()
{
    QFETCH(int, type);
    QFETCH(QString, name);
    QFETCH(QString, picture);
    m_world->addPort("COM4");
    m_world->addMachine("m", static_cast<Printer::Type>(type), "COM4");
    m_world->connectFacade();
    openPanel();
    QCOMPARE(label("printerName")->text(), name);
    QCOMPARE(!shownPicture().isNull(), !picture.isEmpty());
    if (!picture.isEmpty())
        QCOMPARE(shownPicture().toImage(), QPixmap(picture).toImage());
}

void tst_ControlPanel::showsTheStateOfTheMachine_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("isConnected");
    QTest::addColumn<QString>("status");
    for (const int state : {0, 1, 2, 3, 4, 5, 42}) {
        QTest::addRow("connected, %d", state)
            << state << true << (state == 2 ? text("Status: Idle") : text("Status: Busy"));
        QTest::addRow("not connected, %d", state) << state << false << text("Not Connected");
    }
}

void tst_ControlPanel::showsTheStateOfTheMachine()
{
    QFETCH(int, state);
    QFETCH(bool, isConnected);
    QFETCH(QString, status);
    m_world->addPort("COM4");
    m_world->addMachine("m", Printer::Fabrino2, "COM4");
    m_world->connectFacade();
    openPanel();
    QSignalSpy changed(&m_world->facade, &TrovekQt::printerChanged);
    m_world->changeState("m", static_cast<Printer::State>(state), isConnected);
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(label("printerStatus")->text(), status);
    QCOMPARE(enabled(), isConnected ? kConnected : kConnectOnly);
}

void tst_ControlPanel::showsAPortWithoutAPrinter()
{
    m_world->addPort("COM4");
    m_world->connectFacade();
    m_log->expectError("null printer");
    openPanel();
    QCOMPARE(m_panel->findChild<PortListView*>()->currentIndex().data().toString(), text("COM4"));
    QCOMPARE(label("printerName")->text(), text("Unknown Printer"));
    QCOMPARE(label("printerStatus")->text(), text("Not Connected"));
    QCOMPARE(label("printerPort")->text(), text("COM4"));
    QVERIFY(shownPicture().isNull());
    QCOMPARE(enabled(), kConnectOnly);
}

void tst_ControlPanel::followsTheMachineOnThePort()
{
    loseTheNullPrinterLine();
    m_world->addPort("COM4");
    m_world->connectFacade();
    openPanel();
    m_world->addMachine("m", Printer::CubioDual, "COM4");
    QTRY_COMPARE(label("printerName")->text(), text("Cubio (Dual)"));
    QCOMPARE(enabled(), kConnected);
    m_world->service.removePrinter("m");
    QTRY_COMPARE(label("printerName")->text(), text("Unknown Printer"));
    QCOMPARE(enabled(), kConnectOnly);
}

void tst_ControlPanel::showsAndControlsThePortThatIsChosen()
{
    m_world->addPort("COM4");
    m_world->addPort("COM5");
    m_world->addMachine("m4", Printer::Fabrino2, "COM4");
    m_world->addMachine("m5", Printer::CubioSingle, "COM5", Printer::Running);
    m_world->connectFacade();
    openPanel();
    QCOMPARE(label("printerName")->text(), text("The Fabrino 2"));

    QTest::keyClick(m_panel->findChild<PortListView*>(), Qt::Key_Down);

    QCOMPARE(label("printerName")->text(), text("Cubio"));
    QCOMPARE(label("printerPort")->text(), text("COM5"));
    QCOMPARE(label("printerStatus")->text(), text("Status: Busy"));
    QSignalSpy asked(m_panel.get(), &ControlPanel::requestDirectControls);
    QTest::mouseClick(button("directControls"), Qt::LeftButton);
    QCOMPARE(asked.first().at(0).value<Printer*>(),
             m_world->facade.printerFromKey(MachineName("m5")));
    QTest::mouseClick(button("disconnect"), Qt::LeftButton);
    QCOMPARE(m_world->service.lastRequest("disconnect_from_port")["port"].asString(),
             std::string("COM5"));
}

void tst_ControlPanel::isBroughtInLine_data()
{
    using Emit = std::function<void(TrovekQt&, Printer*)>;
    QTest::addColumn<Emit>("happen");
    QTest::newRow("printer added") << Emit([](TrovekQt& f, Printer* p) { emit f.printerAdded(p); });
    QTest::newRow("printer removed")
        << Emit([](TrovekQt& f, Printer* p) { emit f.printerRemoved(p); });
    QTest::newRow("printer changed")
        << Emit([](TrovekQt& f, Printer* p) { emit f.printerChanged(p); });
    QTest::newRow("connected") << Emit([](TrovekQt& f, Printer*) { emit f.connected(); });
    QTest::newRow("disconnected") << Emit([](TrovekQt& f, Printer*) { emit f.disconnected(); });
}

void tst_ControlPanel::isBroughtInLine()
{
    QFETCH(std::function<void(TrovekQt&, Printer*)>, happen);
    m_world->addPort("COM4");
    m_world->addMachine("m", Printer::Fabrino2, "COM4");
    m_world->connectFacade();
    openPanel();
    label("printerName")->setText(text("as it was"));
    happen(m_world->facade, m_world->facade.printerFromKey(MachineName("m")));
    QCOMPARE(label("printerName")->text(), text("The Fabrino 2"));
}

void tst_ControlPanel::isEmptyAfterTheChosenPortGoes()
{
    m_world->addPort("COM4");
    m_world->addPort("COM5");
    m_world->addMachine("m4", Printer::Fabrino2, "COM4");
    m_world->addMachine("m5", Printer::Fabrino2, "COM5");
    m_world->connectFacade();
    openPanel();
    QCOMPARE(label("printerPort")->text(), text("COM4"));
    QSignalSpy detached(&m_world->facade, &TrovekQt::portDetached);
    m_world->service.removePort("COM4");
    QTRY_COMPARE(detached.count(), 1);
    // Not the neighbour: whoever was about to click would heat another machine.
    QCOMPARE(label("printerName")->text(), text("No printer selected"));
    QCOMPARE(label("printerStatus")->text(), QString());
    QCOMPARE(label("printerPort")->text(), QString());
    QVERIFY(shownPicture().isNull());
    QCOMPARE(enabled(), kNothing);
    loseTheNullPrinterLine();
}

void tst_ControlPanel::isEmptyAfterTheLinkIsLostAndFillsAgain()
{
    loseTheNullPrinterLine();
    m_world->addPort("COM4");
    m_world->addMachine("m", Printer::Fabrino2, "COM4");
    m_world->connectFacade();
    openPanel();
    m_world->service.stop();
    QTRY_COMPARE(label("printerName")->text(), text("No printer selected"));
    QCOMPARE(enabled(), kNothing);
    m_world->service.start();
    m_world->facade.connectToDaemon(m_world->service.address());
    QTRY_COMPARE(enabled(), kConnected);
    QCOMPARE(label("printerName")->text(), text("The Fabrino 2"));
}

void tst_ControlPanel::connectsToThePort()
{
    loseTheNullPrinterLine();
    m_world->addPort("COM4");
    m_world->connectFacade();
    openPanel();
    QTest::mouseClick(button("connect"), Qt::LeftButton);
    QCOMPARE(m_world->service.lastRequest("connect_to_port")["port"].asString(),
             std::string("COM4"));
    QVERIFY(!QApplication::overrideCursor());
}

void tst_ControlPanel::connectsByDoubleClick()
{
    loseTheNullPrinterLine();
    m_world->addPort("COM4");
    m_world->connectFacade();
    openPanel();
    auto* const view = m_panel->findChild<PortListView*>();
    const QPoint item = view->visualRect(view->currentIndex()).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, item);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, item);
    QCOMPARE(int(m_world->service.requests("connect_to_port").size()), 1);
}

void tst_ControlPanel::connectsNothingTwice()
{
    m_world->addPort("COM4");
    m_world->addMachine("m", Printer::Fabrino2, "COM4");
    m_world->connectFacade();
    openPanel();
    auto* const view = m_panel->findChild<PortListView*>();
    QTest::keyClick(view, Qt::Key_Return);
    QVERIFY(m_world->service.requests("connect_to_port").empty());
}

void tst_ControlPanel::showsThatItWaits()
{
    loseTheNullPrinterLine();
    m_world->addPort("COM4");
    m_world->connectFacade();
    openPanel();
    int waited = 0;
    for (const char* method : {"connect_to_port", "disconnect_from_port"}) {
        m_world->service.onRequest(method, [&waited](const Json::Value&) {
            waited += QApplication::overrideCursor() ? 1 : 0;
            return Json::Value();
        });
    }
    m_panel->connectToPort();
    m_panel->disconnectFromPort();
    QCOMPARE(waited, 2);
    QVERIFY(!QApplication::overrideCursor());
}

void tst_ControlPanel::offersNothingWhileTheLinkGoes()
{
    loseTheNullPrinterLine();
    m_world->addPort("COM4");
    m_world->addMachine("m", Printer::Fabrino2, "COM4");
    m_world->connectFacade();
    openPanel();
    QList<bool> states;
    connect(&m_world->facade, &TrovekQt::printerRemoved, m_panel.get(),
            [this, &states] { states = enabled(); });
    m_world->service.stop();
    QTRY_COMPARE(states, kNothing);
}

void tst_ControlPanel::showsAndLogsWhyItCannotConnect()
{
    loseTheNullPrinterLine();
    m_world->addPort("COM<4>");
    m_world->connectFacade();
    openPanel();
    m_world->service.failNext("connect_to_port",
                              wire::makeError("PortError", "The port is held by another program"));
    m_log->expectError("Connecting to port COM<4>: The port is held by another program");
    QCOMPARE(label("printerPort")->textFormat(), Qt::PlainText);
    ModalDriver driver;
    driver.expectMessage(
        {text("Failed to connect to printer"), text("Couldn't connect to port COM<4>")});
    QTest::mouseClick(button("connect"), Qt::LeftButton);
    QVERIFY(driver.isDone());
    QCOMPARE(enabled(), kConnectOnly);
    QVERIFY(!QApplication::overrideCursor());
    for (const LogEntry& entry : m_log->sink().entries()) {
        if (entry.message.rfind("Connecting", 0) == 0)
            QCOMPARE(entry.file, std::string("src\\control_panel\\control_panel"));
    }
}

void tst_ControlPanel::survivesThatThePortHasGone()
{
    loseTheNullPrinterLine();
    m_world->addPort("COM4");
    m_world->connectFacade();
    openPanel();
    m_world->service.dropConnectionOn("connect_to_port");
    m_log->expectError("Connecting to port COM4: ");
    ModalDriver driver;
    driver.expectMessage(
        {text("Failed to connect to printer"), text("Couldn't connect to port COM4")});
    QTest::mouseClick(button("connect"), Qt::LeftButton);
    QTRY_COMPARE(enabled(), kNothing);
    m_panel->connectToPort();
    m_panel->disconnectFromPort();
}

void tst_ControlPanel::survivesItsEndBelowTheMessage()
{
    loseTheNullPrinterLine();
    m_world->addPort("COM4");
    m_world->connectFacade();
    openPanel();
    m_world->service.failNext("connect_to_port", wire::makeError("PortError", "gone"));
    m_log->expectError("gone");
    ModalDriver driver;
    driver.expect([this](QDialog*) { m_panel.reset(); });
    QTest::mouseClick(button("connect"), Qt::LeftButton);
    QVERIFY(!m_panel);
}

void tst_ControlPanel::disconnectsFromThePort()
{
    m_world->addPort("COM4");
    m_world->addMachine("m", Printer::Fabrino2, "COM4");
    m_world->connectFacade();
    openPanel();
    QTest::mouseClick(button("disconnect"), Qt::LeftButton);
    QCOMPARE(m_world->service.lastRequest("disconnect_from_port")["port"].asString(),
             std::string("COM4"));
}

void tst_ControlPanel::showsAndLogsWhyItCannotDisconnect()
{
    m_world->addPort("COM4");
    m_world->addMachine("m", Printer::Fabrino2, "COM4");
    m_world->connectFacade();
    openPanel();
    m_world->service.failNext("disconnect_from_port",
                              wire::makeError("MachineStateError", "It is printing"));
    m_log->expectError("Disconnecting from port COM4: It is printing");
    ModalDriver driver;
    driver.expectMessage({text("An error occurred in the background service.")});
    QTest::mouseClick(button("disconnect"), Qt::LeftButton);
    QCOMPARE(enabled(), kConnected);
}

void tst_ControlPanel::asksForTheTools_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<int>("tool");
    QTest::newRow("direct controls") << QByteArray("directControls") << 0;
    QTest::newRow("onboard preferences") << QByteArray("onboardPreferences") << 1;
    QTest::newRow("firmware upload") << QByteArray("uploadFirmware") << 2;
}

void tst_ControlPanel::asksForTheTools()
{
    QFETCH(QByteArray, button);
    QFETCH(int, tool);
    m_world->addPort("COM4");
    m_world->addMachine("m", Printer::Fabrino2, "COM4");
    m_world->connectFacade();
    QWidget parent;
    openPanel(&parent);
    QSignalSpy spies[] = {QSignalSpy(m_panel.get(), &ControlPanel::requestDirectControls),
                          QSignalSpy(m_panel.get(), &ControlPanel::requestOnboardPrefs),
                          QSignalSpy(m_panel.get(), &ControlPanel::requestFirmwareUpload)};
    QTest::mouseClick(this->button(button.constData()), Qt::LeftButton);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(spies[i].count(), i == tool ? 1 : 0);
    QCOMPARE(spies[tool].first().at(0).value<Printer*>(),
             m_world->facade.printerFromKey(MachineName("m")));
    QCOMPARE(spies[tool].first().at(1).value<QWidget*>(), &parent);
    m_panel.reset();
}

void tst_ControlPanel::asksForNothingWithoutAPrinter()
{
    loseTheNullPrinterLine();
    m_world->addPort("COM4");
    m_world->connectFacade();
    openPanel();
    QSignalSpy asked(m_panel.get(), &ControlPanel::requestDirectControls);
    m_panel->showDirectControls();
    m_panel->showOnboardPreferences();
    m_panel->showFirmwareUpload();
    QVERIFY(asked.isEmpty());
}

void tst_ControlPanel::closes()
{
    m_world->connectFacade();
    openPanel();
    QTest::mouseClick(button("close"), Qt::LeftButton);
    QVERIFY(!m_panel->isVisible());
    m_panel->show();
    QTest::keyClick(m_panel.get(), Qt::Key_Escape);
    QVERIFY(!m_panel->isVisible());
}

QTEST_MAIN(tst_ControlPanel)
#include "tst_control_panel.moc"
