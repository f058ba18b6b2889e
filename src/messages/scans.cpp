#include "trovek-ui/messages/scans.h"

#include <QObject>

namespace message {

AllowCancelScan::AllowCancelScan(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("Cancel in-progress scan?"),
              QObject::tr("Do you want to cancel the in-progress scan?"),
              {{QObject::tr("&Cancel Scan"), CancelScan},
               {QObject::tr("&Keep Scanning"), KeepScanning, Default}},
              parent)
{}

AllowDiscardScan::AllowDiscardScan(QWidget* parent)
    : Message(
          QMessageBox::Question, QObject::tr("Discard scan?"),
          QObject::tr("Your current scan is not yet saved, and will be lost."),
          {{QObject::tr("&Cancel"), Cancel, Default}, {QObject::tr("&Discard Scan"), DiscardScan}},
          parent)
{}

AllowRevertScan::AllowRevertScan(QWidget* parent)
    : Message(
          QMessageBox::Question, QObject::tr("Discard scan?"),
          QObject::tr("Are you sure you want to discard this scan? Discarding will revert the "
                      "MultiScan to the last scan added."),
          {{QObject::tr("&Cancel"), Cancel}, {QObject::tr("&Revert Scan"), RevertScan, Default}},
          parent)
{}

DiscardScanFromComputer::DiscardScanFromComputer(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("Are you sure you want to discard this scan?"),
              QObject::tr("This will remove it from your computer."),
              {{QObject::tr("&Discard"), Discard}, {QObject::tr("&Cancel"), Cancel, Default}},
              parent)
{}

DiscardScanFromComputerAndSharevane::DiscardScanFromComputerAndSharevane(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("Are you sure you want to discard this scan?"),
              QObject::tr("This will remove it from your computer and from Sharevane."),
              {{QObject::tr("&Discard"), Discard}, {QObject::tr("&Cancel"), Cancel, Default}},
              parent)
{}

ExecOstrandFailed::ExecOstrandFailed(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Ostrand failed to start"),
             QObject::tr("Unable to load scan in Ostrand."), parent)
{}

KillScanToClose::KillScanToClose(QWidget* parent)
    : Message(
          QMessageBox::Question, QObject::tr("Quit before scan completes?"),
          QObject::tr("Quitting while a scan is in progress will cancel the scan."),
          {{QObject::tr("&Quit"), Quit}, {QObject::tr("&Keep Scanning"), KeepScanning, Default}},
          parent)
{}

QuitDigitizerBeforeSaving::QuitDigitizerBeforeSaving(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("Are you sure you want to quit?"),
              QObject::tr("Your current scan is not yet saved, and will be lost."),
              {{QObject::tr("&Quit"), Quit}, {QObject::tr("&Cancel"), Cancel, Default}}, parent)
{}

} // namespace message
