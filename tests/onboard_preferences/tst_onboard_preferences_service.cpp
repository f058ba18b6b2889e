#include "preferences_world.h"

#include "service/service_world.h"

#include <trovek/job.h>

#include <QLabel>
#include <QListWidget>

#include <atomic>
#include <thread>

using namespace trovek;

namespace {

constexpr int kSlow = 60000;

/** The dialog of a virtual machine of the real service. */
class World
{
public:
    explicit World(double timeScale = ServiceWorld::kFast)
        : service(timeScale)
    {
        start();
    }

    ~World()
    {
        delete dialog;
        facade.disconnectFromDaemon();
        PreferencesWorld::settle();
    }

    void start()
    {
        service.start();
        facade.connectToDaemon(service.address());
        connectMachine();
    }

    void connectMachine()
    {
        QTRY_VERIFY_WITH_TIMEOUT(facade.ports().count(facade.portFromName(service.kPort)), kSlow);
        facade.connectToPort(facade.portFromName(service.kPort));
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), kSlow);
    }

    bool isIdle() const { return printer() && printer()->state() == Printer::Idle; }
    Printer* printer() const { return facade.printerFromKey(key); }
    Json::Value read() { return facade.readEeprom(printer()).getEepromMap(); }

    void open()
    {
        dialog = ui::OnboardPreferences::create(facade, printer(), nullptr);
        QVERIFY(dialog);
        dialog->show();
        QApplication::setActiveWindow(dialog);
        QTRY_VERIFY(dialog->isActiveWindow());
    }

    void click(const char* name) const
    {
        auto* const button = dialog->findChild<QPushButton*>(QLatin1String(name));
        QVERIFY2(button && button->isEnabled(), name);
        QTest::mouseClick(button, Qt::LeftButton);
    }

    EepromGrama& form() const { return *dialog->findChild<EepromGrama*>(); }
    QString notice() const
    {
        return dialog->findChild<QLabel*>(QStringLiteral("noticeText"))->text();
    }

    /** Another value in the first number box. */
    void edit() const
    {
        auto* const box = form().findChild<JsonSpinBox*>();
        const double value = box->value();
        PreferencesWorld::type(*box, QString::number(value == 1 ? 2 : 1));
        QVERIFY(box->value() != value);
    }

    void write()
    {
        driver.expectMessage(texts::kWritten);
        click("writeButton");
        QVERIFY(driver.isDone());
    }

    void resetToFactory()
    {
        driver.expectMessage(texts::kConfirmReset, text("&Reset"));
        driver.expectMessage(texts::kReset);
        click("factoryResetButton");
        QVERIFY(driver.isDone());
    }

    void exchangeFirmware(const char* version)
    {
        facade.simulateFirmware(key.name(), version);
        QTRY_VERIFY_WITH_TIMEOUT(!form().isEnabled(), kSlow);
        connectMachine();
    }

    const MachineName key{ServiceWorld::kMachine};
    ServiceWorld service;
    TrovekQt facade;
    ModalDriver driver;
    QPointer<ui::OnboardPreferences> dialog;
};

} // namespace

/** The dialog with the service that it is made for. */
class tst_OnboardPreferencesService : public QObject
{
    Q_OBJECT

private slots:
    void findsWhatItWrote();
    void resetsToFactoryValues();
    void bringsBackWhatWasBeforeTheReset();
    void survivesTheEndOfTheServiceInAReset();
    void leavesABusyMachineAlone();
    void comesBackWithAnotherFirmware();
    void comesBackWithAFirmwareWithoutAMap();
};

void tst_OnboardPreferencesService::findsWhatItWrote()
{
    TestLog log;
    World world;
    world.open();
    const Json::Value factory = world.form().map();
    world.edit();
    const Json::Value edited = world.form().map();
    QVERIFY(edited != factory);

    world.write();

    QVERIFY(world.read() == edited);
    QVERIFY(!world.form().isModified());
    world.click("cancelButton");
    PreferencesWorld::settle();
    QVERIFY(!world.dialog);
    world.open();
    QVERIFY(world.form().map() == edited);
}

void tst_OnboardPreferencesService::resetsToFactoryValues()
{
    TestLog log;
    World world;
    world.open();
    const Json::Value factory = world.form().map();
    world.edit();
    world.write();
    QVERIFY(world.read() != factory);

    world.resetToFactory();

    QVERIFY(world.form().map() == factory);
    QVERIFY(!world.form().isModified());
    QVERIFY(world.read() == factory);
    QVERIFY(world.notice().isEmpty());
}

void tst_OnboardPreferencesService::bringsBackWhatWasBeforeTheReset()
{
    TestLog log;
    World world;
    world.open();
    world.edit();
    const Json::Value edited = world.form().map();
    world.write();
    world.resetToFactory();

    world.driver.expect([](QDialog* backups) {
        // One of the write, one of the reset; the newest is chosen.
        QCOMPARE(backups->findChild<QListWidget*>()->count(), 2);
        pressButton(backups, text("&Load"));
    });
    world.click("backupsButton");

    QVERIFY(world.driver.isDone());
    QVERIFY(world.form().isModified());
    QVERIFY(world.form().map() == edited);
    world.write();
    QVERIFY(world.read() == edited);
}

void tst_OnboardPreferencesService::survivesTheEndOfTheServiceInAReset()
{
    TestLog log;
    log.allowErrors("");
    // The reset needs many seconds.
    World world(0.5);
    world.open();
    world.edit();
    const Json::Value edited = world.form().map();
    world.write();
    const QDir backups(world.service.stateDir() +
                       QStringLiteral("/machines/virtual_fabrino_2/backups"));
    QCOMPARE(backups.entryList(QDir::Files).size(), 1);

    // The dialog waits for the service without an event loop.
    std::atomic<bool> isOver{false};
    std::thread stopper([&] {
        while (!isOver && backups.entryList({QStringLiteral("*.bin")}, QDir::Files).size() < 2)
            std::this_thread::yield();
        world.service.stop();
    });
    world.driver.expectMessage(texts::kConfirmReset, text("&Reset"));
    world.driver.expectMessage(texts::kFailedReset);
    world.click("factoryResetButton");
    isOver = true;
    stopper.join();
    QVERIFY(world.driver.isDone());
    QTRY_VERIFY(!world.form().isEnabled());
    QTRY_COMPARE(world.notice(), text("The printer is not connected. Connect it again to go on."));

    world.start();
    QTRY_VERIFY_WITH_TIMEOUT(world.form().isEnabled(), kSlow);
    QVERIFY(world.form().map() == edited);
    QVERIFY(!world.form().isModified());
    QVERIFY(world.notice().isEmpty());
}

void tst_OnboardPreferencesService::leavesABusyMachineAlone()
{
    TestLog log;
    World world;
    world.open();
    world.edit();
    const Json::Value edited = world.form().map();
    const int jog = world.facade.jog(world.key, Printer::ZAxis, 1, 100000);

    log.expectError("The machine is busy: ");
    world.driver.expectMessage(texts::kConfirmReset, text("&Reset"));
    world.driver.expectMessage(texts::kFailedReset);
    world.click("factoryResetButton");
    QVERIFY(world.notice().startsWith(text("The printer answered: The machine is busy: ")));
    log.expectError("The machine is busy: ");
    world.driver.expectMessage(texts::kFailedWrite);
    world.click("writeButton");
    QVERIFY(world.driver.isDone());
    QVERIFY(world.form().map() == edited);
    log.expectError("The machine is busy: ");
    world.driver.expectMessage(texts::kBusy);
    QVERIFY(!ui::OnboardPreferences::create(world.facade, world.printer(), nullptr));
    QVERIFY(world.driver.isDone());

    world.facade.cancelJob(jog);
    QTRY_VERIFY_WITH_TIMEOUT(world.isIdle(), kSlow);
    world.write();
    QVERIFY(world.read() == edited);
}

void tst_OnboardPreferencesService::comesBackWithAnotherFirmware()
{
    TestLog log;
    log.allowErrors("ismatch");
    World world;
    world.open();
    const Json::Value factory = world.form().map();

    world.driver.expectMessage(texts::kAddedError);
    world.exchangeFirmware("7.6");
    QTRY_VERIFY_WITH_TIMEOUT(world.driver.isDone(), kSlow);
    QVERIFY(log.contains("ismatch", Log::Error));
    QVERIFY(!world.form().isEnabled());
    QCOMPARE(world.notice(),
             text("The printer has come back with other preferences (firmware 7.6). This window "
                  "cannot edit them: close it and open it again."));

    world.exchangeFirmware("7.5");
    QTRY_VERIFY_WITH_TIMEOUT(world.form().isEnabled(), kSlow);
    QVERIFY(world.form().map() == factory);
    QVERIFY(!world.form().isModified());
    QVERIFY(world.notice().isEmpty());
}

void tst_OnboardPreferencesService::comesBackWithAFirmwareWithoutAMap()
{
    TestLog log;
    World world;
    world.open();

    log.expectError("There is no map of the onboard memory for firmware 7.4");
    world.driver.expectMessage(texts::kAddedError);
    world.exchangeFirmware("7.4");
    QTRY_VERIFY_WITH_TIMEOUT(world.driver.isDone(), kSlow);
    QVERIFY(!world.form().isEnabled());
    QCOMPARE(world.notice(), text("The printer's preferences could not be read."));
    log.expectError("There is no map of the onboard memory for firmware 7.4");
    world.driver.expectMessage(texts::kMissingMap);
    QVERIFY(!ui::OnboardPreferences::create(world.facade, world.printer(), nullptr));
    QVERIFY(world.driver.isDone());
}

QTEST_MAIN(tst_OnboardPreferencesService)
#include "tst_onboard_preferences_service.moc"
