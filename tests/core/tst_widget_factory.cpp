#include "support/modal_driver.h"
#include "support/scripted_service.h"
#include "support/test_log.h"

#include <trovek-ui/control_panel.h>
#include <trovek-ui/direct_controls_dialog.h>
#include <trovek-ui/export_job_mover.h>
#include <trovek-ui/extruder_label.h>
#include <trovek-ui/firmware_upload_dialog.h>
#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/make_gcode_dialog.h>
#include <trovek-ui/make_thing_dialog.h>
#include <trovek-ui/onboard_preferences.h>
#include <trovek-ui/trovekqt.h>
#include <trovek-ui/widget_factory.h>

#include <trovek/wire.h>

#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace trovek;
using ui::FirmwareUploadDialog;
using ui::OnboardPreferences;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

template <typename Window>
QList<Window*> windows()
{
    QList<Window*> found;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* each = qobject_cast<Window*>(window))
            found.append(each);
    }
    return found;
}

/** Counts how often a window is raised above the others. */
class Raises : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        count += event->type() == QEvent::ZOrderChange ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

    int count = 0;
};

void deletePostedNow()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class tst_WidgetFactory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void init();
    void cleanup();

    void declaresItsSlotsInTheirOrder();
    void hasOneControlPanel();
    void opensANewControlPanelAfterTheOldIsClosed();
    void hasOneWindowAPrinter_data();
    void hasOneWindowAPrinter();
    void bringsAMinimizedWindowBack_data();
    void bringsAMinimizedWindowBack();
    void opensANewWindowAfterTheOldIsClosed_data();
    void opensANewWindowAfterTheOldIsClosed();
    void doesNotShowAClosedWindowAgain_data();
    void doesNotShowAClosedWindowAgain();
    void opensTheToolsThatThePanelAsksFor();
    void windowsOutliveTheFactory();
    void outlivesItsWindows();
    void takesNoPrinter();
    void opensNoPreferencesThatCannotBeRead();
    void looksAgainAfterPreferencesWereMade();
    void runsTheMakeDialogs_data();
    void runsTheMakeDialogs();
    void handsOverWhatTheMakeDialogsNeed_data();
    void handsOverWhatTheMakeDialogsNeed();
    void preselectsAMachineByItsKey();
    void preselectsNoMachineThatHasGone();
    void survivesMissingSettings();
    void namesTheUnfinishedExports();

private:
    enum Kind { DirectControls, Preferences, Firmware };

    void open(Kind kind, const char* key = "m1")
    {
        Printer* const printer = m_facade->printerFromKey(MachineName(key));
        switch (kind) {
        case DirectControls:
            m_factory->showDirectControls(printer, nullptr);
            break;
        case Preferences:
            m_factory->showOnboardPreferences(printer, nullptr);
            break;
        case Firmware:
            m_factory->showFirmwareUploadDialog(printer, nullptr);
            break;
        }
    }
    static QList<QDialog*> opened(Kind kind)
    {
        QList<QDialog*> found;
        for (QDialog* window : windows<QDialog>()) {
            const bool isOfKind =
                kind == DirectControls ? qobject_cast<DirectControlsDialog*>(window) != nullptr
                : kind == Preferences  ? qobject_cast<OnboardPreferences*>(window) != nullptr
                                       : qobject_cast<FirmwareUploadDialog*>(window) != nullptr;
            if (isOfKind)
                found.append(window);
        }
        return found;
    }
    static void addKinds()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("direct controls") << int(DirectControls);
        QTest::newRow("onboard preferences") << int(Preferences);
        QTest::newRow("firmware upload") << int(Firmware);
    }

    Raises m_raises;
    std::unique_ptr<TestLog> m_log;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<ScriptedService> m_service;
    std::unique_ptr<TrovekQt> m_facade;
    std::unique_ptr<WidgetFactory> m_factory;
};

void tst_WidgetFactory::init()
{
    m_log = std::make_unique<TestLog>();
    // What the windows themselves say of this small service is for their own tests.
    m_log->allowErrors("");
    m_folder = std::make_unique<QTemporaryDir>();
    m_settings =
        std::make_unique<QSettings>(m_folder->filePath(text("s.ini")), QSettings::IniFormat);
    m_service = std::make_unique<ScriptedService>();
    m_facade = std::make_unique<TrovekQt>();
    Json::Value map(Json::objectValue);
    for (const char* key : {"m1", "m2"}) {
        const std::string port = std::string("COM") + key[1];
        m_service->addPort(ScriptedService::port(port));
        Printer::Data machine = ScriptedService::machine(key, Printer::Fabrino2);
        machine.portName = port;
        m_service->addPrinter(machine);
        m_service->setEeprom(key, map);
    }
    m_service->addPrinter(ScriptedService::archetype(Printer::Fabrino2));
    QSignalSpy added(m_facade.get(), &TrovekQt::printerAdded);
    m_facade->connectToDaemon(m_service->address());
    QTRY_COMPARE(added.count(), 3);
    m_factory = std::make_unique<WidgetFactory>(*m_facade);
}

void tst_WidgetFactory::cleanup()
{
    m_factory.reset();
    for (QDialog* window : windows<QDialog>())
        delete window;
    for (ControlPanel* panel : windows<ControlPanel>())
        delete panel;
    m_facade->disconnectFromDaemon();
    QCoreApplication::processEvents();
    deletePostedNow();
    m_facade.reset();
    m_service.reset();
    m_log.reset();
}

void tst_WidgetFactory::declaresItsSlotsInTheirOrder()
{
    // A host may connect by these texts.
    QStringList signatures;
    const QMetaObject& meta = WidgetFactory::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        signatures.append(QString::fromLatin1(meta.method(i).methodSignature()));
    const QByteArray thing = QMetaObject::normalizedSignature(
        "showMakeThingDialog(const QString&, SlicerConfiguration::Extruder, QSettings* const, "
        "const Printer* const, const QString&, bool, QWidget*)");
    const QByteArray gcode = QMetaObject::normalizedSignature(
        "showMakeGCodeDialog(const QString&, QSettings* const, const Printer* const, "
        "const QString&, bool, QWidget*)");
    QCOMPARE(signatures,
             QStringList({text("showControlPanel(QWidget*)"), text(thing), text(gcode),
                          text("showFirmwareUploadDialog(Printer*,QWidget*)"),
                          text("showOnboardPreferences(Printer*,QWidget*)"),
                          text("showDirectControls(Printer*,QWidget*)"),
                          text("unfinishedExportJobs()"), text("controlPanelDestroyed(QObject*)"),
                          text("onboardPreferencesDestroyed(QObject*)"),
                          text("firmwareUploadDialogDestroyed(QObject*)")}));
}

void tst_WidgetFactory::hasOneControlPanel()
{
    QWidget parent;
    m_factory->showControlPanel(&parent);
    QCOMPARE(windows<ControlPanel>().size(), 1);
    ControlPanel* const panel = windows<ControlPanel>().first();
    QVERIFY(panel->isVisible());
    QCOMPARE(panel->parentWidget(), &parent);
    panel->hide();
    m_factory->showControlPanel(nullptr);
    QCOMPARE(windows<ControlPanel>(), QList<ControlPanel*>{panel});
    QVERIFY(panel->isVisible());
    QTRY_VERIFY(panel->isActiveWindow());
    m_factory->showControlPanel(nullptr);
    delete panel;
    m_factory->showControlPanel(nullptr);
    QCOMPARE(windows<ControlPanel>().size(), 1);
}

void tst_WidgetFactory::opensANewControlPanelAfterTheOldIsClosed()
{
    m_factory->showControlPanel(nullptr);
    const QPointer<ControlPanel> first = windows<ControlPanel>().first();
    first->close();
    deletePostedNow();
    QVERIFY(!first);
    m_factory->showControlPanel(nullptr);
    QCOMPARE(windows<ControlPanel>().size(), 1);
    QVERIFY(windows<ControlPanel>().first()->isVisible());
}

void tst_WidgetFactory::hasOneWindowAPrinter_data()
{
    addKinds();
}

void tst_WidgetFactory::hasOneWindowAPrinter()
{
    QFETCH(int, kind);
    const auto which = static_cast<Kind>(kind);
    open(which);
    QCOMPARE(opened(which).size(), 1);
    QDialog* const first = opened(which).first();
    QVERIFY(first->isVisible());
    open(which, "m2");
    QCOMPARE(opened(which).size(), 2);
    QTRY_VERIFY(!first->isActiveWindow());
    open(which);
    QCOMPARE(opened(which).size(), 2);
    QTRY_VERIFY(first->isActiveWindow());
}

void tst_WidgetFactory::bringsAMinimizedWindowBack_data()
{
    addKinds();
}

void tst_WidgetFactory::bringsAMinimizedWindowBack()
{
    QFETCH(int, kind);
    const auto which = static_cast<Kind>(kind);
    const auto minimize = [this](QWidget* window) {
        window->showMinimized();
        window->installEventFilter(&m_raises);
        m_raises.count = 0;
        return window->isMinimized();
    };
    open(which);
    QDialog* const window = opened(which).first();
    QVERIFY(minimize(window));
    open(which);
    QVERIFY(!window->isMinimized());
    QCOMPARE(m_raises.count, 1);

    m_factory->showControlPanel(nullptr);
    ControlPanel* const panel = windows<ControlPanel>().first();
    QVERIFY(minimize(panel));
    m_factory->showControlPanel(nullptr);
    QVERIFY(!panel->isMinimized());
    QCOMPARE(m_raises.count, 1);
}

void tst_WidgetFactory::opensANewWindowAfterTheOldIsClosed_data()
{
    addKinds();
}

void tst_WidgetFactory::opensANewWindowAfterTheOldIsClosed()
{
    QFETCH(int, kind);
    const auto which = static_cast<Kind>(kind);
    open(which);
    const QPointer<QDialog> first = opened(which).first();
    first->close();
    deletePostedNow();
    QVERIFY(!first);
    open(which);
    QCOMPARE(opened(which).size(), 1);
    QVERIFY(opened(which).first()->isVisible());
}

void tst_WidgetFactory::doesNotShowAClosedWindowAgain_data()
{
    addKinds();
}

void tst_WidgetFactory::doesNotShowAClosedWindowAgain()
{
    QFETCH(int, kind);
    const auto which = static_cast<Kind>(kind);
    open(which);
    const QPointer<QDialog> first = opened(which).first();
    first->close();
    // It is still there, and about to go.
    QVERIFY(first);
    open(which);
    deletePostedNow();
    QVERIFY(!first);
    QCOMPARE(opened(which).size(), 1);
    QVERIFY(opened(which).first()->isVisible());

    m_factory->showControlPanel(nullptr);
    const QPointer<ControlPanel> panel = windows<ControlPanel>().first();
    panel->close();
    m_factory->showControlPanel(nullptr);
    deletePostedNow();
    QVERIFY(!panel);
    QVERIFY(windows<ControlPanel>().first()->isVisible());
}

void tst_WidgetFactory::opensTheToolsThatThePanelAsksFor()
{
    QWidget parent;
    m_factory->showControlPanel(&parent);
    ControlPanel* const panel = windows<ControlPanel>().first();
    for (const char* name : {"directControls", "onboardPreferences", "uploadFirmware"})
        QTest::mouseClick(panel->findChild<QPushButton*>(QLatin1String(name)), Qt::LeftButton);
    for (const Kind kind : {DirectControls, Preferences, Firmware}) {
        QCOMPARE(opened(kind).size(), 1);
        // They stay when the panel goes.
        QCOMPARE(opened(kind).first()->parentWidget(), &parent);
    }
    panel->close();
    deletePostedNow();
    QCOMPARE(windows<ControlPanel>().size(), 0);
    for (const Kind kind : {DirectControls, Preferences, Firmware})
        QCOMPARE(opened(kind).size(), 1);
}

void tst_WidgetFactory::windowsOutliveTheFactory()
{
    m_factory->showControlPanel(nullptr);
    for (const Kind kind : {DirectControls, Preferences, Firmware})
        open(kind);
    m_factory.reset();
    QVERIFY(windows<ControlPanel>().first()->isVisible());
    windows<ControlPanel>().first()->close();
    for (const Kind kind : {DirectControls, Preferences, Firmware}) {
        QVERIFY(opened(kind).first()->isVisible());
        opened(kind).first()->close();
    }
    deletePostedNow();
    for (const Kind kind : {DirectControls, Preferences, Firmware})
        QVERIFY(opened(kind).isEmpty());
}

void tst_WidgetFactory::outlivesItsWindows()
{
    for (const Kind kind : {Firmware, Preferences, DirectControls}) {
        open(kind);
        open(kind, "m2");
        // Not closed: gone with a parent, say.
        delete opened(kind).first();
        delete opened(kind).first();
        open(kind, "m2");
        open(kind);
        QCOMPARE(opened(kind).size(), 2);
    }
}

void tst_WidgetFactory::takesNoPrinter()
{
    m_factory->showDirectControls(nullptr, nullptr);
    QVERIFY(m_log->contains("No printer for direct controls", 0));
    QCOMPARE(m_log->sink().entries().back().file, std::string("src\\core\\widget_factory"));
    QVERIFY(opened(DirectControls).isEmpty());
    m_factory->showFirmwareUploadDialog(nullptr, nullptr);
    QCOMPARE(opened(Firmware).size(), 1);
    QVERIFY(messageTexts(opened(Firmware).first()).contains(text("No Printer")));
    m_factory->showFirmwareUploadDialog(nullptr, nullptr);
    QCOMPARE(opened(Firmware).size(), 1);
}

void tst_WidgetFactory::opensNoPreferencesThatCannotBeRead()
{
    m_service->failNext("read_eeprom", wire::makeError("MissingEepromMapError", "no map"));
    ModalDriver driver;
    driver.expect([](QDialog* box) { box->reject(); });
    open(Preferences);
    QVERIFY(opened(Preferences).isEmpty());
    open(Preferences);
    QCOMPARE(opened(Preferences).size(), 1);
}

void tst_WidgetFactory::looksAgainAfterPreferencesWereMade()
{
    // The message about the first attempt runs an event loop, in which the window is asked for
    // again.
    m_service->failNext("read_eeprom", wire::makeError("MissingEepromMapError", "no map"));
    ModalDriver driver;
    driver.expect([this](QDialog* box) {
        open(Preferences);
        box->reject();
    });
    open(Preferences);
    QCOMPARE(opened(Preferences).size(), 1);
    open(Preferences);
    QCOMPARE(opened(Preferences).size(), 1);
}

void tst_WidgetFactory::runsTheMakeDialogs_data()
{
    QTest::addColumn<bool>("isModel");
    QTest::newRow("model") << true;
    QTest::newRow("G-code") << false;
}

void tst_WidgetFactory::runsTheMakeDialogs()
{
    QFETCH(bool, isModel);
    QWidget parent;
    parent.show();
    bool wasShown = false;
    ModalDriver driver;
    driver.expect([&](QDialog* dialog) {
        wasShown = true;
        QCOMPARE(qobject_cast<MakeThingDialog*>(dialog) != nullptr, isModel);
        QCOMPARE(qobject_cast<MakeGCodeDialog*>(dialog) != nullptr, !isModel);
        QCOMPARE(dialog->windowModality(), Qt::WindowModal);
        QCOMPARE(dialog->parentWidget(), &parent);
        dialog->reject();
    });
    const QString file = m_folder->filePath(text("part"));
    if (isModel) {
        m_factory->showMakeThingDialog(file, SlicerConfiguration::Right, m_settings.get(), nullptr,
                                       m_folder->path(), true, &parent);
    } else {
        m_factory->showMakeGCodeDialog(file, m_settings.get(), nullptr, m_folder->path(), true,
                                       &parent);
    }
    QVERIFY(wasShown);
    deletePostedNow();
    QVERIFY(parent.findChildren<MakeDialog*>().isEmpty());
}

void tst_WidgetFactory::handsOverWhatTheMakeDialogsNeed_data()
{
    QTest::addColumn<bool>("isModel");
    QTest::addColumn<bool>("allowsCbo");
    QTest::newRow("model") << true << false;
    QTest::newRow("model, exports for the old Cubio") << true << true;
    QTest::newRow("G-code") << false << false;
    QTest::newRow("G-code, exports for the old Cubio") << false << true;
}

void tst_WidgetFactory::handsOverWhatTheMakeDialogsNeed()
{
    QFETCH(bool, isModel);
    QFETCH(bool, allowsCbo);
    QSignalSpy added(m_facade.get(), &TrovekQt::printerAdded);
    const Printer::Data archetype = ScriptedService::archetype(Printer::CubioSingle);
    m_service->addPrinter(archetype);
    QTRY_COMPARE(added.count(), 1);
    const Printer* const cbo = m_facade->printerFromKey(archetype.key);
    const QString file = m_folder->filePath(text("part.gcode"));
    QVERIFY(QFile(file).open(QIODevice::WriteOnly));
    const auto extruder = allowsCbo ? SlicerConfiguration::Right : SlicerConfiguration::Left;
    QString exportDir;
    ModalDriver driver;
    driver.expect([&](QDialog* dialog) {
        const Printer* const machine = dialog->findChild<MachineComboBox*>()->machine();
        QCOMPARE(machine == cbo, allowsCbo);
        if (isModel) {
            QCOMPARE(dialog->findChild<ExtruderLabel*>()->findChild<QLabel*>(text("value"))->text(),
                     allowsCbo ? QString() : text("Left"));
        }
        if (allowsCbo)
            QTimer::singleShot(0, dialog->findChild<QPushButton*>(text("mainButton")),
                               &QPushButton::click);
        else
            dialog->reject();
    });
    if (allowsCbo) {
        driver.expect<QFileDialog>([&](QFileDialog* save) {
            exportDir = save->directory().path();
            save->reject();
            // Without a window manager nobody gives the focus back to the dialog below.
            QTimer::singleShot(0, windows<MakeDialog>().first(), &QDialog::reject);
        });
    }
    if (isModel) {
        m_factory->showMakeThingDialog(file, extruder, m_settings.get(), cbo, m_folder->path(),
                                       allowsCbo, nullptr);
    } else {
        m_factory->showMakeGCodeDialog(file, m_settings.get(), cbo, m_folder->path(), allowsCbo,
                                       nullptr);
    }
    QVERIFY(driver.isDone());
    QCOMPARE(exportDir, allowsCbo ? m_folder->path() : QString());
}

void tst_WidgetFactory::preselectsAMachineByItsKey()
{
    const Printer* const machine = m_facade->printerFromKey(MachineName("m2"));
    ModalDriver driver;
    driver.expect([machine](QDialog* dialog) {
        QCOMPARE(dialog->findChild<MachineComboBox*>()->machine()->key(), machine->key());
        dialog->reject();
    });
    m_factory->showMakeGCodeDialog(m_folder->filePath(text("a.gcode")), m_settings.get(), machine,
                                   m_folder->path(), true, nullptr);
}

void tst_WidgetFactory::preselectsNoMachineThatHasGone()
{
    const Printer* const machine = m_facade->printerFromKey(MachineName("m2"));
    QSignalSpy removed(m_facade.get(), &TrovekQt::printerRemoved);
    m_service->removePrinter("m2");
    QTRY_COMPARE(removed.count(), 1);
    ModalDriver driver;
    driver.expect([](QDialog* dialog) {
        QCOMPARE(dialog->findChild<MachineComboBox*>()->machine()->key(), MachineName("m1"));
        dialog->reject();
    });
    m_factory->showMakeGCodeDialog(m_folder->filePath(text("a.gcode")), m_settings.get(), machine,
                                   m_folder->path(), true, nullptr);
}

void tst_WidgetFactory::survivesMissingSettings()
{
    ModalDriver driver;
    for (int i = 0; i < 2; ++i)
        driver.expect([](QDialog* box) { box->reject(); });
    m_factory->showMakeGCodeDialog(text("a.gcode"), nullptr, nullptr, QString(), true, nullptr);
    m_factory->showMakeThingDialog(text("a.stl"), SlicerConfiguration::Right, nullptr, nullptr,
                                   QString(), true, nullptr);
    QVERIFY(m_log->contains("null settings", 0));
}

void tst_WidgetFactory::namesTheUnfinishedExports()
{
    QVERIFY(m_factory->unfinishedExportJobs().isEmpty());
    const QString destination = m_folder->filePath(text("part.x3g"));
    Job::Data job;
    job.id = 77;
    m_service->setJob(job);
    ExportJobMover::instance(*m_facade).addExport(77, destination, m_folder->filePath(text("src")));
    QCOMPARE(m_factory->unfinishedExportJobs(), QList<QString>{destination});
    m_service->concludeJob(77, JobCanceled);
    QTRY_VERIFY(m_factory->unfinishedExportJobs().isEmpty());
}

QTEST_MAIN(tst_WidgetFactory)
#include "tst_widget_factory.moc"
