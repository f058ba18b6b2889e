#pragma once

#include "trovek-ui/export.h"

#include <qtshared/material.h>
#include <trovek/slicer_configuration.h>

#include <QDialog>
#include <QString>

#include <memory>
#include <optional>

class QFormLayout;
class QPushButton;
class QSettings;

namespace trovek {

class MachineComboBox;
class MachineName;
class Printer;
class TrovekQt;
struct MakeRequest;

/** True when there is any machine that can print. */
TROVEK_UI_EXPORT bool testForPhysicalMachines(const TrovekQt& facade);

/**
 * What the dialogs share that make a file: on a machine now, or as a file for its SD card.
 *
 * The user chooses between both and a machine; the subclass adds rows of its own to the form and
 * says with what settings and materials the service makes the file. A make or an export that starts
 * closes the dialog with accept(); whatever stops it shows a message and leaves the dialog open. It
 * deletes itself when it is closed. GUI thread only.
 *
 * Settings: "make_dialog/printer" (the machine used last, selected when none is passed),
 * "make_dialog/lastExportDir" and "make_dialog/exportFilterString".
 */
class TROVEK_UI_EXPORT MakeDialog : public QDialog
{
    Q_OBJECT

public:
    /**
     * @param facade            not owned; must outlive the dialog
     * @param inputFile         absolute path of the file to make
     * @param settings          not owned; must outlive the dialog
     * @param printer           selected at first, with the mode that suits it; may be null
     * @param defaultExportDir  where exports go until the user has chosen another place
     * @param showCboArchetypes whether the single Cubio is offered for exports
     * @throws std::logic_error "null settings"
     */
    MakeDialog(TrovekQt& facade, const QString& inputFile, QSettings* settings,
               const Printer* printer, const QString& defaultExportDir, bool showCboArchetypes,
               QWidget* parent = nullptr);
    ~MakeDialog() override;

    /**
     * Checks everything, then starts the print, or asks for a place and starts the export.
     *
     * Runs the event loop while it shows a message or asks; nothing happens while it runs already.
     */
    void makeOrExport(const QString& inputFile);

    /**
     * Slices for a preview, in make mode for the archetype of the machine, which keeps the machine
     * free.
     * @param outputPath must exist and be writable for the service
     * @return the job's ID; Job::kInvalidID after an error, which has been shown
     */
    int startPrintPreviewSlice(const QString& outputPath);

public slots:
    /** Runs sanitize() once from the event loop, however often this is called before. */
    void requestSanitize();

signals:
    /** The slice of a preview has started. */
    void sliceFileStarted(int jobID);

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

    /** Of a machine with one extruder. */
    virtual Orvane::Material singleMaterial() = 0;
    virtual Orvane::Material leftMaterial() = 0;
    virtual Orvane::Material rightMaterial() = 0;
    virtual SlicerConfiguration slicerConfiguration() = 0;
    /** Whether the machine's own start and end code stays out of the print. */
    virtual bool skipStartEndCode() = 0;
    /** Called when a make, export or preview goes ahead. Subclasses extend it. */
    virtual void saveSettings();
    /** The last check before a make or an export; what fails tells the user itself. */
    virtual bool finalMakeOrExportCheck();
    /**
     * Brings the widgets into a consistent state. Subclasses extend it, and call it at the end of
     * their constructor.
     * @throws std::runtime_error "Dialog must be in either make or export mode"
     */
    virtual void sanitize();
    /** The main button was clicked. */
    virtual void makeOrExportRequested();

    TrovekQt& facade() const;
    QSettings& settings() const;
    QString inputFile() const;
    MachineComboBox& machineComboBox() const;
    QPushButton& mainButton() const;
    /** For the subclass's rows, which go below the base's. */
    QFormLayout& formLayout() const;
    /** The row stays in sight when the form scrolls. */
    void insertAboveButtons(QWidget* row);
    /**
     * Lays the dialog out anew for a row, or something in it, that has changed its size. At once:
     * on its way through the layouts the change would show rows that are squeezed or torn apart.
     */
    void layOutAround(QWidget* row);
    /** For a subclass that has made its widgets in the order in which they are read. */
    void moveButtonsToEndOfTabOrder();

    /**
     * Everything that must hold before a make, an export or a preview; what does not hold is told.
     *
     * May run the event loop, in which the dialog may be destroyed.
     * @return the selected machine's key, or nothing when it ends here
     * @throws std::runtime_error "The machine is no longer there"
     */
    std::optional<MachineName> checkBeforeStart(const QString& inputFile);
    /** Whether there is a link; without one the user is told. */
    bool checkConnection();

private:
    class TROVEK_UI_NO_EXPORT Private;

    void selectInitially(const Printer* printer);
    void connectSignals();

    void checkAndStart(const QString& inputFile);
    void startMake(const MachineName& machine, const QString& inputFile);
    void startExport(const MachineName& machine, const QString& inputFile);
    int startPreview(const QString& outputPath);
    const Printer& previewMachine() const;
    const Printer& machineOf(const MachineName& key) const;
    MakeRequest makeRequest(const Printer& machine, const QString& inputFile);

    const std::unique_ptr<Private> d;
};

} // namespace trovek
