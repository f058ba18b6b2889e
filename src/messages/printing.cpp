#include "trovek-ui/messages/printing.h"

#include <QObject>

namespace message {

CBOCalibrationDone::CBOCalibrationDone(QWidget* parent)
    : Notice(QMessageBox::Information, QObject::tr("Cubio Calibration"),
             QObject::tr("Cubio Calibration completed!"), parent)
{}

CBOCalibrationStart::CBOCalibrationStart(QWidget* parent)
    : Notice(
          QMessageBox::Information, QObject::tr("Cubio Calibration"),
          QObject::tr(
              "Move the build platform until the nozzle lies in the center, then turn the threaded "
              "rod until the nozzle just touches the surface without pressing into it."),
          parent)
{}

DualExtrudeWithSingleExtruderPrinter::DualExtrudeWithSingleExtruderPrinter(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("This Thing is a dual-extrusion Thing"),
              QObject::tr("This Thing will not print correctly on a single-extruder Orvane. "
                          "Convert to print with a single extruder?"),
              {{QObject::tr("&Cancel"), Cancel},
               {QObject::tr("&Don't Convert"), DontConvert},
               {QObject::tr("C&onvert"), Convert, Default}},
              parent)
{}

DualExtrusionHelp::DualExtrusionHelp(QWidget* parent, QSettings* settings)
    : Message(QMessageBox::Information, QObject::tr("Dual Extrusion"),
              QObject::tr("This is a dual extrusion Thing. Click 'Learn More' to learn how to use "
                          "dual extrusion."),
              {{QObject::tr("&Learn More"), LearnMore}, {QObject::tr("&OK"), OK, Default}}, parent,
              settings, QStringLiteral("dualExtrusionHelpSkip"))
{}

ExportJobMoverFailed::ExportJobMoverFailed(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Export failed"),
             QObject::tr("An error prevented the file from being saved."), parent)
{}

FailedToStartPrint::FailedToStartPrint(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Print Failed"),
             QObject::tr("An unexpected error occurred while starting print."), parent)
{}

FilenameTooLongForPrinter::FilenameTooLongForPrinter(const QString& shortenedFileName,
                                                     QWidget* parent)
    : Message(QMessageBox::Question,
              QObject::tr("This filename is too long to show on your Orvane"),
              QObject::tr("To view this file on your Orvane you must use a file name no longer "
                          "than 30 characters. Shorten the name to \"%1\"?")
                  .arg(shortenedFileName),
              {{QObject::tr("&Cancel"), Cancel, Default}, {QObject::tr("&Save"), Save}}, parent)
{
    showAsPlainText();
}

LeftExtrudeWithSingleExtruderPrinter::LeftExtrudeWithSingleExtruderPrinter(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("This Thing is set to use the left extruder"),
              QObject::tr("This Thing is set to use the left extruder of a dual extruder Orvane. "
                          "It will not print correctly on a single extruder Orvane. Convert to "
                          "print with a single extruder?"),
              {{QObject::tr("&Cancel"), Cancel},
               {QObject::tr("&Don't Convert"), DontConvert},
               {QObject::tr("C&onvert"), Convert, Default}},
              parent)
{}

MaterialPCLAlert::MaterialPCLAlert(QWidget* parent, QSettings* settings)
    : Notice(QMessageBox::Information, QObject::tr("Orvane Flexible Filament"),
             QObject::tr(
                 "Remember: Flexible Filament should be unloaded at 120C and loaded at 120C when "
                 "there is no PLA to be purged. Flexible Filament will only adhere to bare acrylic "
                 "build plates. See our product page <a href=\"%1\">here</a> for more info. ")
                 .arg(QStringLiteral(TROVEK_FLEXIBLE_FILAMENT_URL)),
             parent, settings, QStringLiteral("skipPCLAlert"))
{}

PrinterIsBusy::PrinterIsBusy(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Printer is busy"),
             QObject::tr("Wait until your current activity finishes before starting a new job on "
                         "this Orvane."),
             parent)
{}

UnfinishedExportJobs::UnfinishedExportJobs(QWidget* parent)
    : Message(QMessageBox::Warning, QObject::tr("Unfinished Exports"),
              QObject::tr("There are unfinished exports in progress. Closing Ostrand will prevent "
                          "these files from being placed in the correct directory."),
              {{QObject::tr("&Cancel"), Cancel, Default},
               {QObject::tr("Close &Ostrand"), CloseOstrand}},
              parent)
{}

} // namespace message
