#include "trovek-ui/messages/onboard_preferences.h"

#include <QObject>

namespace message {

OnboardPreferencesConfirmReset::OnboardPreferencesConfirmReset(QWidget* parent)
    : Message(
          QMessageBox::Question, QObject::tr("Are you sure you want to factory reset?"),
          QObject::tr(
              "All settings in the onboard preferences will be reverted to factory defaults. This "
              "may take up to a minute, and Ostrand will be unresponsive during this process."),
          {{QObject::tr("&Cancel"), Cancel, Default}, {QObject::tr("&Reset"), Reset}}, parent)
{}

OnboardPreferencesDiscardChanges::OnboardPreferencesDiscardChanges(QWidget* parent)
    : Message(QMessageBox::Question,
              QObject::tr("Save changes to onboard preferences before closing?"),
              QObject::tr("Closing without saving will not write changes to the bot."),
              {{QObject::tr("Close &without Saving"), CloseWithoutSaving},
               {QObject::tr("&Cancel"), Cancel, Default},
               {QObject::tr("&Save"), Save}},
              parent)
{}

OnboardPreferencesFailedReset::OnboardPreferencesFailedReset(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Error resetting onboard preferences"),
             QObject::tr("An error occurred while reading or writing to the EEPROM."), parent)
{}

OnboardPreferencesFailedWrite::OnboardPreferencesFailedWrite(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Failed to save onboard preferences"), QString(),
             parent)
{}

OnboardPreferencesGenericError::OnboardPreferencesGenericError(const QString& firmwareVersion,
                                                               QWidget* parent)
    : Notice(
          QMessageBox::Critical, QObject::tr("Error displaying onboard preferences"),
          QObject::tr("An error occurred displaying onboard preferences for firmware version %1.")
              .arg(firmwareVersion),
          parent)
{
    showAsPlainText();
}

OnboardPreferencesMissingEepromMap::OnboardPreferencesMissingEepromMap(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Error displaying onboard preferences"),
             QObject::tr("No map found for this printer's firmware version."), parent)
{}

OnboardPreferencesPrinterAddedError::OnboardPreferencesPrinterAddedError(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Error reading onboard preferences"),
             QObject::tr("An error occurred while reading the EEPROM."), parent)
{}

OnboardPreferencesPrinterBusy::OnboardPreferencesPrinterBusy(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Error displaying onboard preferences"),
             QObject::tr("Cannot edit onboard preferences while the printer is printing, in jog "
                         "mode, or otherwise busy."),
             parent)
{}

OnboardPreferencesPrinterNotConnected::OnboardPreferencesPrinterNotConnected(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Error displaying onboard preferences"),
             QObject::tr("Printer is not connected."), parent)
{}

OnboardPreferencesSuccessfulReset::OnboardPreferencesSuccessfulReset(QWidget* parent)
    : Notice(QMessageBox::Information, QObject::tr("Successfully reset onboard preferences"),
             QString(), parent)
{}

OnboardPreferencesSuccessfulWrite::OnboardPreferencesSuccessfulWrite(QWidget* parent)
    : Notice(QMessageBox::Information, QObject::tr("Successfully updated onboard preferences"),
             QString(), parent)
{}

} // namespace message
