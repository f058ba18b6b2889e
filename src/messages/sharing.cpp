#include "trovek-ui/messages/sharing.h"

#include <QObject>

namespace message {

SharevaneDescriptionRequired::SharevaneDescriptionRequired(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Missing description"),
             QObject::tr("A Thing's description cannot be blank."), parent)
{}

SharevaneNameRequired::SharevaneNameRequired(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Missing name"),
             QObject::tr("A Thing's name cannot be blank."), parent)
{}

SharevaneNameTooLong::SharevaneNameTooLong(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Name too long"),
             QObject::tr("A Thing's name cannot be more than 50 characters long."), parent)
{}

SharevaneSignInFailed::SharevaneSignInFailed(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Sharevane sign-in failed"),
             QObject::tr("Verify that your username and password are correct."), parent)
{}

SharevaneUploadFailed::SharevaneUploadFailed(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Sharevane upload failed"),
             QObject::tr("Check that you are connected to the internet."), parent)
{}

} // namespace message
