#pragma once

#include "trovek-ui/export.h"

#include <QDialog>

#include <memory>

namespace trovek {

class Printer;
class TrovekQt;

namespace ui {

/**
 * Gives a printer other firmware: the user chooses a version, the service downloads it and writes
 * it to the printer.
 *
 * It waits for the service without an event loop, for minutes when firmware is written; what is
 * waited for stands on the page meanwhile. What goes wrong is told on the page and can be tried
 * again. While the printer is away nothing can be chosen. GUI thread only.
 */
class TROVEK_UI_EXPORT FirmwareUploadDialog : public QDialog
{
    Q_OBJECT

public:
    /**
     * Asks the service what there is for the printer.
     * @param facade  not owned; must outlive the dialog
     * @param printer one of the facade's; without one the dialog says that there is none
     */
    FirmwareUploadDialog(TrovekQt& facade, Printer* printer, QWidget* parent = nullptr);
    ~FirmwareUploadDialog() override;

private slots:
    void versionChanged(int index);
    void nextClicked();
    void downloadFirmware();
    void uploadFirmware();
    void printerAdded(Printer* printer);
    void printerRemoved(Printer* printer);

private:
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace ui
} // namespace trovek
