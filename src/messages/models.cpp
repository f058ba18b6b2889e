#include "trovek-ui/messages/models.h"

#include <QObject>

namespace message {

ModelBoundingBoxIsEmpty::ModelBoundingBoxIsEmpty(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Unreadable file"),
             QObject::tr("This file could not be loaded. It may be an unsupported file format."),
             parent)
{}

ModelIsTiny::ModelIsTiny(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("Scale up object?"),
              QObject::tr("This object seems very small. It may have been designed in inches. "
                          "Would you like to scale it to mm?"),
              {{QObject::tr("Keep Size"), KeepSize},
               {QObject::tr("Rescale Object"), RescaleObject, Default}},
              parent)
{}

NothingOnPlate::NothingOnPlate(QWidget* parent)
    : Notice(QMessageBox::Warning, QObject::tr("There's nothing on the plate"),
             QObject::tr("Add an object to the plate and click Make again."), parent)
{}

ObjectsUpdated::ObjectsUpdated(QWidget* parent)
    : Notice(QMessageBox::Warning, QObject::tr("Objects updated"),
             QObject::tr("Your objects have been updated. Please check that they are still "
                         "arranged correctly, then click Make It to print."),
             parent)
{}

PutOnPlatform::PutOnPlatform(QWidget* parent)
    : Message(
          QMessageBox::Question, QObject::tr("Put object on platform?"),
          QObject::tr("This object is off the platform. Do you want to put it on the platform?"),
          {{QObject::tr("Keep Position"), KeepPosition},
           {QObject::tr("Move to Platform"), MoveToPlatform, Default}},
          parent)
{}

PutOnPlatformZ::PutOnPlatformZ(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("Put object on platform?"),
              QObject::tr("This object is off the platform. Do you want to move it vertically to "
                          "the platform?"),
              {{QObject::tr("Keep Position"), KeepPosition},
               {QObject::tr("Move to Platform"), MoveToPlatform, Default}},
              parent)
{}

ResizeModel::ResizeModel(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("Object too large"),
              QObject::tr("This object is too large for the current build volume. Do you want to "
                          "scale it to fit?"),
              {{QObject::tr("Don't Scale"), DontScale},
               {QObject::tr("Scale to Fit"), ScaleToFit, Default}},
              parent)
{}

} // namespace message
