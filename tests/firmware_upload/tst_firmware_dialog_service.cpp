#include "service/service_world.h"
#include "support/modal_driver.h"
#include "support/test_log.h"

#include <trovek-ui/firmware_upload_dialog.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>

using namespace trovek;

namespace {

constexpr int kSlow = 60'000;

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

/** The dialog of a virtual machine of the real service. */
class World
{
public:
    explicit World(const std::string& catalogue = std::string())
    {
        service.options.firmwareCatalogue = catalogue;
        service.start();
        connect();
    }

    ~World()
    {
        delete dialog;
        facade.disconnectFromDaemon();
        QCoreApplication::processEvents();
    }

    void connect()
    {
        facade.connectToDaemon(service.address());
        facade.clearSimulatedFaults();
        facade.simulatePlugIn(key.name());
        openMachine();
    }

    void openMachine()
    {
        const auto isThere = [this] {
            for (const Port& port : facade.ports()) {
                if (port.name() == ServiceWorld::kPort)
                    return true;
            }
            return false;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isThere(), kSlow);
        facade.connectToPort(facade.portFromName(ServiceWorld::kPort));
        QTRY_VERIFY_WITH_TIMEOUT(printer() && printer()->state() == Printer::Idle, kSlow);
    }

    void exchangeFirmware(const char* version)
    {
        QSignalSpy attached(&facade, &TrovekQt::portAttached);
        facade.simulateFirmware(key.name(), version);
        QTRY_COMPARE_WITH_TIMEOUT(attached.count(), 1, kSlow);
        openMachine();
    }

    void open()
    {
        dialog = new ui::FirmwareUploadDialog(facade, printer());
        dialog->show();
    }

    Printer* printer() const { return facade.printerFromKey(key); }
    template <typename Widget = QLabel>
    Widget* find(const char* name) const
    {
        return dialog->findChild<Widget*>(QLatin1String(name));
    }
    QString label(const char* name) const { return find(name)->text(); }
    bool click(const char* name) const
    {
        auto* const button = find<QPushButton>(name);
        if (!button->isVisible() || !button->isEnabled())
            return false;
        QTest::mouseClick(button, Qt::LeftButton);
        return true;
    }
    /** What the page says of how it has gone; of the first page only what has gone wrong. */
    QString outcome() const
    {
        switch (find<QStackedWidget>("pages")->currentIndex()) {
        case 0:
            return find("error")->isHidden() ? QString() : label("error");
        case 1:
            return label("readyStatus");
        default:
            return label("resultStatus");
        }
    }

    const MachineName key{ServiceWorld::kMachine};
    ServiceWorld service;
    TrovekQt facade;
    QPointer<ui::FirmwareUploadDialog> dialog;
};

const QString kReady =
    text("Ready to upload firmware.\n \nClick the Upload button to start the process.");
const QString kDone = text("Firmware upload successful");

} // namespace

/** The firmware upload dialog with the service that it is made for. */
class tst_FirmwareDialogService : public QObject
{
    Q_OBJECT

private slots:
    void updatesAnOldMachine();
    void aBusyMachineIsUpdatedLater();
    void anUploadThatBreaksOffIsRepeated();
    void aSiteOutOfReachIsNoInternet();
    void aMissingCatalogueIsAnError();
    void everyFaultOfEveryRequest_data();
    void everyFaultOfEveryRequest();
};

void tst_FirmwareDialogService::updatesAnOldMachine()
{
    TestLog log;
    World world;
    world.exchangeFirmware("5.9");
    world.open();
    QCOMPARE(world.label("bot"), text("Virtual Fabrino 2"));
    QCOMPARE(world.label("currentVersion"), text("5.9"));
    QCOMPARE(world.find<QComboBox>("versions")->count(), 3);
    QCOMPARE(world.find<QComboBox>("versions")->currentText(), text("7.6"));
    QVERIFY(world.label("description").contains(text(".\n")));

    QVERIFY(world.click("next"));
    QCOMPARE(world.outcome(), kReady);
    QVERIFY(world.click("upload"));
    QCOMPARE(world.outcome(), kDone);

    // The machine comes back by itself.
    QTRY_COMPARE_WITH_TIMEOUT(world.label("currentVersion"), text("7.6"), kSlow);
    QCOMPARE(world.outcome(), kDone);
    QSignalSpy accepted(world.dialog, &QDialog::accepted);
    QVERIFY(world.click("main"));
    QCOMPARE(accepted.count(), 1);
}

void tst_FirmwareDialogService::aBusyMachineIsUpdatedLater()
{
    TestLog log;
    World world;
    world.open();
    QVERIFY(world.click("next"));
    const int job = world.facade.jog(world.key, Printer::ZAxis, 1, 1'000'000'000);
    log.expectError("The machine is busy: Jogging");
    QVERIFY(world.click("upload"));
    QCOMPARE(world.outcome(), text("Upload failed:\nCannot upload firmware while printing"));
    world.facade.cancelJob(job);
    QVERIFY(world.click("main"));
    QVERIFY(world.click("upload"));
    QCOMPARE(world.outcome(), kDone);
}

void tst_FirmwareDialogService::anUploadThatBreaksOffIsRepeated()
{
    TestLog log;
    World world;
    world.open();
    QVERIFY(world.click("next"));
    for (int i = 0; i < 2; ++i) {
        world.facade.simulateUploadFailure(world.key.name(), 40);
        log.expectError("The machine took no more of the firmware after 40 percent");
        QVERIFY(world.click("upload"));
        QCOMPARE(world.outcome(), text("Upload failed:\nUnknown error from trovek"));
        QVERIFY(world.click("main"));
        QCOMPARE(world.outcome(), kReady);
    }
    QVERIFY(world.click("upload"));
    QCOMPARE(world.outcome(), kDone);
}

void tst_FirmwareDialogService::aSiteOutOfReachIsNoInternet()
{
    TestLog log;
    World world("http://127.0.0.1:1/firmware");
    log.expectError("urlopen");
    ModalDriver driver;
    driver.expectMessage(
        {text("Firmware upload failed"), text("Unable to connect to the download site.")});
    world.open();
    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(world.outcome(), text("Unable to connect to internet"));
    QVERIFY(!world.click("next"));
}

void tst_FirmwareDialogService::aMissingCatalogueIsAnError()
{
    TestLog log;
    World world("/nowhere/firmware");
    log.expectError("There is no file /nowhere/firmware/catalogue.json");
    world.open();
    QCOMPARE(world.outcome(), text("Error: There is no file /nowhere/firmware/catalogue.json"));
    QVERIFY(!world.click("next"));
}

void tst_FirmwareDialogService::everyFaultOfEveryRequest_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char* method, const char* fault, const QString& expected) {
        QTest::addRow("%s: %s", method, fault) << text(method) << text(fault) << expected;
    };
    for (const char* const method : {"getuploadablemachines", "getmachineversions"}) {
        row(method, "late", QString());
        row(method, "never", text("Error: No answer to \"") + text(method) + text("\" within "));
        row(method, "error", text("Error: It is odd"));
        row(method, "answer", text("Error: Odd answer to ") + text(method) + text(": not a list"));
        row(method, "drop before", text("Error: Connection closed by the other side"));
        // Behind the first answer there is another question.
        row(method, "drop after",
            qstrcmp(method, "getuploadablemachines") == 0 ? text("Error: ") : QString());
        row(method, "unplug", QString());
    }
    const char* const download = "downloadfirmware";
    row(download, "late", kReady);
    row(download, "never", text("Download failed\n\nNo answer to \"downloadfirmware\" within "));
    row(download, "error", text("Download failed:\n\"It is odd\"\n"));
    row(download, "answer", text("Download failed\n\nOdd answer to downloadfirmware: not a path"));
    row(download, "drop before", text("Download failed\n\nConnection closed by the other side"));
    row(download, "drop after", kReady);
    row(download, "unplug", kReady);
    const char* const upload = "uploadfirmware";
    row(upload, "late", kDone);
    row(upload, "never", text("Upload failed:\nUnknown error"));
    row(upload, "error", text("Upload failed:\nUnknown error from trovek"));
    row(upload, "answer", kDone);
    row(upload, "drop before", text("Upload failed:\nUnknown error"));
    row(upload, "drop after", kDone);
    row(upload, "unplug", text("Upload failed:\nUnknown error from trovek"));
}

void tst_FirmwareDialogService::everyFaultOfEveryRequest()
{
    QFETCH(QString, method);
    QFETCH(QString, fault);
    QFETCH(QString, expected);
    TestLog log;
    log.allowErrors("");
    World world;
    const std::string name = toStdString(method);
    JsonRpcException odd = wire::makeError("SomeError", "It is odd");
    Json::Value data = odd.data();
    data["error"] = "It is odd";
    const std::map<QString, SimulatedFault> faults = {
        {text("late"), SimulatedFault::late(name, 20)},
        {text("never"), SimulatedFault::never(name)},
        {text("error"), SimulatedFault::error(name, JsonRpcException(odd.message(), data))},
        {text("answer"), SimulatedFault::answer(name, Json::Value(true))},
        {text("drop before"), SimulatedFault::dropBefore(name)},
        {text("drop after"), SimulatedFault::dropAfter(name)},
        {text("unplug"), SimulatedFault::unplug(name, world.key.name())},
    };
    const bool isFirstPage = method.startsWith(text("get"));
    // Twice: the second failure finds what the first one left.
    for (int round = 0; round < 2; ++round) {
        delete world.dialog;
        world.connect();
        world.facade.simulateFault(faults.at(fault));
        const auto waitShortlyFor = [&](const char* request) {
            if (fault == text("never") && method.startsWith(text(request)))
                world.facade.setDeadlineScale(0.002);
        };
        waitShortlyFor("get");
        world.open();
        waitShortlyFor("downloadfirmware");
        if (!isFirstPage)
            QVERIFY(world.click("next"));
        waitShortlyFor("uploadfirmware");
        if (method == text("uploadfirmware"))
            QVERIFY(world.click("upload"));

        QVERIFY2(world.outcome().startsWith(expected), qPrintable(world.outcome()));
        QCOMPARE(world.outcome().isEmpty(), expected.isEmpty());
        QVERIFY(!QApplication::overrideCursor());
        QVERIFY(world.dialog->isVisible());
        world.facade.setDeadlineScale(1);
        // What has happened is told now, and changes nothing of what the user reads.
        QCoreApplication::processEvents();
        if (!isFirstPage)
            QVERIFY(world.outcome().startsWith(expected));
        // It is the same dialog that goes on when all is well again.
        world.connect();
        QTRY_COMPARE_WITH_TIMEOUT(world.label("bot"), text("Virtual Fabrino 2"), kSlow);
        if (isFirstPage) {
            QTRY_VERIFY_WITH_TIMEOUT(world.find<QPushButton>("next")->isEnabled(), kSlow);
            QVERIFY(world.click("next"));
        } else if (method == text("uploadfirmware") && expected != kDone) {
            QVERIFY(world.click("main"));
        } else if (world.outcome() != kReady && world.outcome() != kDone) {
            QVERIFY(world.click("readyCancel"));
            continue;
        }
        if (world.outcome() == kReady)
            QVERIFY(world.click("upload"));
        QCOMPARE(world.outcome(), kDone);
    }
}

QTEST_MAIN(tst_FirmwareDialogService)
#include "tst_firmware_dialog_service.moc"
