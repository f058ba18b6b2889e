#include "trovek-ui/messages/files.h"

#include <QObject>

namespace message {

ErrorSavingModel::ErrorSavingModel(const QString& fileName, QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Error saving \"%1\"").arg(fileName),
             QObject::tr("Ensure that you have permission to save files in that location."), parent)
{}

FileChooserOverwriteConfirm::FileChooserOverwriteConfirm(const QString& fileName, QWidget* parent)
    : Message(
          QMessageBox::Question, QObject::tr("A file named \"%1\" already exists").arg(fileName),
          QObject::tr("Do you want to replace it?"),
          {{QObject::tr("&Cancel"), Cancel, Default}, {QObject::tr("&Replace"), Replace}}, parent)
{}

FileNotFound::FileNotFound(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("File not found"),
             QObject::tr("The input file no longer exists."), parent)
{}

ImageLoadFailed::ImageLoadFailed(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("The selected image couldn't be opened"),
             QObject::tr("Check that you have permission to open the file."), parent)
{}

SaveBeforeClosing::SaveBeforeClosing(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("Save changes to this file before closing?"),
              QObject::tr("Closing without saving will discard any changes since the last save."),
              {{QObject::tr("Close &without Saving"), CloseWithoutSaving},
               {QObject::tr("&Cancel"), Cancel},
               {QObject::tr("&Save"), Save, Default}},
              parent)
{}

SaveBeforeOpening::SaveBeforeOpening(QWidget* parent)
    : Message(QMessageBox::Question,
              QObject::tr("Save changes to this file before opening another one?"),
              QObject::tr(
                  "Opening a file without saving will discard any changes since the last save."),
              {{QObject::tr("&Discard Changes"), DiscardChanges},
               {QObject::tr("&Cancel"), Cancel},
               {QObject::tr("&Save"), Save, Default}},
              parent)
{}

ThingFileVersionError::ThingFileVersionError(QWidget* parent)
    : Notice(QMessageBox::Warning, QObject::tr("Thing File Version Error"),
             QObject::tr("This thing file is from a newer version of ostrand. Please update your "
                         "Ostran and try again."),
             parent)
{}

} // namespace message
