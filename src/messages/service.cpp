#include "trovek-ui/messages/service.h"

#include <QObject>

namespace message {

BackgroundServiceUnavailable::BackgroundServiceUnavailable(QWidget* parent)
    : Notice(
          QMessageBox::Critical, QObject::tr("Background Service Unavailable"),
          QObject::tr(
              "The background job management service is not available. Please go to Services -> "
              "Restart Background Service. <br/>For more help please visit <a href=\"%1\">%1</a>")
              .arg(QStringLiteral(TROVEK_SUPPORT_URL)),
          parent)
{}

ConnectToPortFailed::ConnectToPortFailed(const QString& portName, QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Failed to connect to printer"),
             QObject::tr("Couldn't connect to port %1").arg(portName), parent)
{
    showAsPlainText();
}

GenericTrovekError::GenericTrovekError(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("An error occurred in the background service."),
             QString(), parent)
{}

TrovekNotConnected::TrovekNotConnected(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Service Error"),
             QObject::tr("No connection to background service"), parent)
{}

UpdatesAvailable::UpdatesAvailable(const QString& updates, QWidget* parent)
    : Message(QMessageBox::Information, QObject::tr("Updates Available"),
              QObject::tr("%1").arg(updates),
              {{QObject::tr("&Continue"), Continue}, {QObject::tr("&Download"), Download, Default}},
              parent)
{}

WindowsServiceError::WindowsServiceError(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Windows service error"),
             QObject::tr("An error occurred while starting or stopping the background service."),
             parent)
{}

} // namespace message
