#include "trovek-ui/widget_factory.h"

#include "trovek-ui/control_panel.h"
#include "trovek-ui/direct_controls_dialog.h"
#include "trovek-ui/export_job_mover.h"
#include "trovek-ui/firmware_upload_dialog.h"
#include "trovek-ui/make_gcode_dialog.h"
#include "trovek-ui/make_thing_dialog.h"
#include "trovek-ui/messages/printing.h"
#include "trovek-ui/onboard_preferences.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>

#include <QEvent>
#include <QSettings>

#include <algorithm>
#include <exception>

namespace trovek {

static constexpr char kLogUnit[] = "src\\core\\widget_factory";

namespace {

void bringToFront(QWidget* window)
{
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}

/** Compares addresses: what is being destroyed is no window of any class any more. */
template <typename Windows>
void forget(Windows& windows, const QObject* destroyed)
{
    const auto found = std::find_if(windows.begin(), windows.end(), [destroyed](const auto& entry) {
        return static_cast<const QObject*>(entry.second) == destroyed;
    });
    if (found != windows.end())
        windows.erase(found);
}

template <typename Windows>
QDialog* windowOf(const Windows& windows, Printer* printer)
{
    const auto found = windows.find(printer);
    return found == windows.end() ? nullptr : found->second;
}

} // namespace

WidgetFactory::WidgetFactory(TrovekQt& facade, QObject* parent)
    : QObject(parent)
    , m_facade(facade)
{}

WidgetFactory::~WidgetFactory() = default;

void WidgetFactory::setSettings(QSettings* settings)
{
    m_settings = settings;
}

QWidget* WidgetFactory::controlPanel() const
{
    return m_controlPanel;
}

QDialog* WidgetFactory::directControls(Printer* printer) const
{
    return windowOf(m_directControls, printer);
}

QDialog* WidgetFactory::onboardPreferences(Printer* printer) const
{
    return windowOf(m_onboardPreferences, printer);
}

QDialog* WidgetFactory::firmwareUploadDialog(Printer* printer) const
{
    return windowOf(m_firmwareUpload, printer);
}

/** Whether there is a window of that class for the printer, which is in front then. */
template <typename Window>
bool WidgetFactory::showAgain(const Windows& windows, Printer* printer) const
{
    auto* const window = qobject_cast<Window*>(windowOf(windows, printer));
    if (!window)
        return false;
    bringToFront(window);
    return true;
}

void WidgetFactory::open(Windows& windows, Printer* printer, QDialog* dialog)
{
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // A closed window is deleted a moment later, and must not come to the front before.
    connect(dialog, &QDialog::finished, this, [&windows, dialog] { forget(windows, dialog); });
    windows[printer] = dialog;
    dialog->show();
}

bool WidgetFactory::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Close && watched == m_controlPanel)
        m_controlPanel = nullptr;
    return QObject::eventFilter(watched, event);
}

void WidgetFactory::showControlPanel(QWidget* parent)
{
    if (!m_controlPanel) {
        m_controlPanel = new ControlPanel(m_facade, parent);
        m_controlPanel->setAttribute(Qt::WA_DeleteOnClose);
        connect(m_controlPanel, &ControlPanel::requestDirectControls, this,
                &WidgetFactory::showDirectControls);
        connect(m_controlPanel, &ControlPanel::requestOnboardPrefs, this,
                &WidgetFactory::showOnboardPreferences);
        connect(m_controlPanel, &ControlPanel::requestFirmwareUpload, this,
                &WidgetFactory::showFirmwareUploadDialog);
        connect(m_controlPanel, &QObject::destroyed, this, &WidgetFactory::controlPanelDestroyed);
        m_controlPanel->installEventFilter(this);
    }
    bringToFront(m_controlPanel);
}

void WidgetFactory::showDirectControls(Printer* printer, QWidget* parent)
{
    if (!printer) {
        TROVEK_LOG(0) << "No printer for direct controls" << std::endl;
        return;
    }
    if (showAgain<DirectControlsDialog>(m_directControls, printer))
        return;
    auto* dialog = new DirectControlsDialog(m_facade, printer->key(), parent);
    // This one cleans the map of the direct controls too.
    connect(dialog, &QObject::destroyed, this, &WidgetFactory::controlPanelDestroyed);
    open(m_directControls, printer, dialog);
}

void WidgetFactory::showOnboardPreferences(Printer* printer, QWidget* parent)
{
    using ui::OnboardPreferences;
    if (showAgain<OnboardPreferences>(m_onboardPreferences, printer))
        return;
    const QPointer<WidgetFactory> self(this);
    OnboardPreferences* dialog = OnboardPreferences::create(m_facade, printer, parent);
    if (!dialog)
        return;
    if (!self) {
        delete dialog;
        return;
    }
    // While a message was shown somebody may have asked again.
    if (showAgain<OnboardPreferences>(m_onboardPreferences, printer)) {
        delete dialog;
        return;
    }
    dialog->setSettings(m_settings);
    connect(dialog, &QObject::destroyed, this, &WidgetFactory::onboardPreferencesDestroyed);
    open(m_onboardPreferences, printer, dialog);
}

void WidgetFactory::showFirmwareUploadDialog(Printer* printer, QWidget* parent)
{
    using ui::FirmwareUploadDialog;
    if (showAgain<FirmwareUploadDialog>(m_firmwareUpload, printer))
        return;
    const QPointer<WidgetFactory> self(this);
    auto* dialog = new FirmwareUploadDialog(m_facade, printer, parent);
    // Its first question to the service may have shown a message.
    if (!self || showAgain<FirmwareUploadDialog>(m_firmwareUpload, printer)) {
        delete dialog;
        return;
    }
    connect(dialog, &QObject::destroyed, this, &WidgetFactory::firmwareUploadDialogDestroyed);
    open(m_firmwareUpload, printer, dialog);
}

void WidgetFactory::controlPanelDestroyed(QObject* window)
{
    if (window == m_controlPanel)
        m_controlPanel = nullptr;
    forget(m_directControls, window);
}

void WidgetFactory::onboardPreferencesDestroyed(QObject* window)
{
    forget(m_onboardPreferences, window);
}

void WidgetFactory::firmwareUploadDialogDestroyed(QObject* window)
{
    forget(m_firmwareUpload, window);
}

/** The one of that key; null when it is not there now. */
const Printer* WidgetFactory::presentPrinter(const Printer* printer) const
{
    return printer ? m_facade.printerFromKey(printer->key()) : nullptr;
}

void WidgetFactory::runMakeDialog(QDialog* dialog)
{
    dialog->setWindowModality(Qt::WindowModal);
    dialog->exec();
}

void WidgetFactory::showMakeThingDialog(const QString& fileToPrint,
                                        SlicerConfiguration::Extruder extrudersUsedInInputFile,
                                        QSettings* const settings,
                                        const Printer* const defaultMachine,
                                        const QString& initialDefaultExportPath,
                                        bool allowCboExport, QWidget* parent)
{
    try {
        runMakeDialog(new MakeThingDialog(m_facade, fileToPrint, extrudersUsedInInputFile, settings,
                                          presentPrinter(defaultMachine), initialDefaultExportPath,
                                          allowCboExport, parent));
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        message::FailedToStartPrint(parent).exec();
    }
}

void WidgetFactory::showMakeGCodeDialog(const QString& fileToPrint, QSettings* const settings,
                                        const Printer* const defaultMachine,
                                        const QString& initialDefaultExportPath,
                                        bool allowCboExport, QWidget* parent)
{
    try {
        runMakeDialog(new MakeGCodeDialog(m_facade, fileToPrint, settings,
                                          presentPrinter(defaultMachine), initialDefaultExportPath,
                                          allowCboExport, parent));
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        message::FailedToStartPrint(parent).exec();
    }
}

QList<QString> WidgetFactory::unfinishedExportJobs()
{
    return ExportJobMover::instance(m_facade).unfinishedExports();
}

} // namespace trovek
