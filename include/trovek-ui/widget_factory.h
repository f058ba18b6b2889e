#pragma once

#include "trovek-ui/export.h"

#include <trovek/printer.h>
#include <trovek/slicer_configuration.h>

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <map>

class QDialog;
class QSettings;
class QWidget;

namespace trovek {

class ControlPanel;
class TrovekQt;

/**
 * Opens the library's windows for a host: one control panel, and of each tool one window a printer.
 * Asking for a window that is open brings it to the front.
 *
 * The windows belong to their parents and delete themselves when they are closed; they outlive the
 * factory, and it outlives them. GUI thread only.
 */
class TROVEK_UI_EXPORT WidgetFactory : public QObject
{
    Q_OBJECT

public:
    /** @param facade not owned; must outlive the factory and the windows */
    explicit WidgetFactory(TrovekQt& facade, QObject* parent = nullptr);
    ~WidgetFactory() override;

    /** Where windows keep their place; not owned, may be null and may go before the factory. */
    void setSettings(QSettings* settings);

    /** What is open now, or null; here and below. */
    QWidget* controlPanel() const;
    QDialog* directControls(Printer* printer) const;
    QDialog* onboardPreferences(Printer* printer) const;
    QDialog* firmwareUploadDialog(Printer* printer) const;

public slots:
    void showControlPanel(QWidget* parent);
    /**
     * Waits, in an event loop, until the dialog is closed.
     * @param defaultMachine selected at first; may be null, or one that has gone meanwhile
     */
    void showMakeThingDialog(const QString& fileToPrint,
                             SlicerConfiguration::Extruder extrudersUsedInInputFile,
                             QSettings* const settings, const Printer* const defaultMachine,
                             const QString& initialDefaultExportPath, bool allowCboExport,
                             QWidget* parent);
    /** As showMakeThingDialog(). */
    void showMakeGCodeDialog(const QString& fileToPrint, QSettings* const settings,
                             const Printer* const defaultMachine,
                             const QString& initialDefaultExportPath, bool allowCboExport,
                             QWidget* parent);
    /** Without a printer the dialog says that there is none. */
    void showFirmwareUploadDialog(Printer* printer, QWidget* parent);
    /** Tells the user, in an event loop, why there is no window where there is none. */
    void showOnboardPreferences(Printer* printer, QWidget* parent);
    /** Nothing happens without a printer. */
    void showDirectControls(Printer* printer, QWidget* parent);
    /** The files that are not written yet: a host asks before it quits. */
    QList<QString> unfinishedExportJobs();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void controlPanelDestroyed(QObject* window);
    void onboardPreferencesDestroyed(QObject* window);
    void firmwareUploadDialogDestroyed(QObject* window);

private:
    using Windows = std::map<Printer*, QDialog*>;

    template <typename Window>
    bool showAgain(const Windows& windows, Printer* printer) const;
    void open(Windows& windows, Printer* printer, QDialog* dialog);
    void runMakeDialog(QDialog* dialog);
    const Printer* presentPrinter(const Printer* printer) const;

    TrovekQt& m_facade;
    QPointer<QSettings> m_settings;
    Windows m_directControls;
    Windows m_onboardPreferences;
    Windows m_firmwareUpload;
    ControlPanel* m_controlPanel = nullptr;
};

} // namespace trovek
