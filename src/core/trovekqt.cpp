#include "trovek-ui/trovekqt.h"

#include <trovek/digitizer/ids.h>

namespace trovek {

TrovekQt::TrovekQt()
{
    qRegisterMetaType<Job::ID>("trovek::Job::ID");
    qRegisterMetaType<std::string>("std::string");
    qRegisterMetaType<MachineName>("trovek::MachineName");
    qRegisterMetaType<digitizer::MeshID>("trovek::digitizer::MeshID");
    qRegisterMetaType<digitizer::PointCloudID>("trovek::digitizer::PointCloudID");
    // The signals name it without its namespace, and a queued connection by string goes by that.
    qRegisterMetaType<Printer*>("Printer*");
}

TrovekQt::~TrovekQt() = default;

void TrovekQt::connectToDaemon(const Address& address)
{
    Trovek::connectToDaemon(address);
    emit connected();
}

void TrovekQt::emitPrinterAdded(Printer* printer)
{
    emit printerAdded(printer);
}

void TrovekQt::emitPrinterRemoved(Printer* printer)
{
    emit printerRemoved(printer);
}

void TrovekQt::emitPrinterChanged(Printer* printer)
{
    emit printerChanged(printer);
}

void TrovekQt::emitJobAdded(int jobID)
{
    emit jobAdded(jobID);
}

void TrovekQt::emitJobConcluded(int jobID)
{
    emit jobConcluded(jobID);
}

void TrovekQt::emitJobChanged(int jobID)
{
    emit jobChanged(jobID);
}

void TrovekQt::emitPortAttached(const std::string& portName)
{
    emit portAttached(portName);
}

void TrovekQt::emitPortDetached(const std::string& portName)
{
    emit portDetached(portName);
}

void TrovekQt::emitCameraClosed(const std::string& devicePath)
{
    emit cameraClosed(devicePath);
}

void TrovekQt::emitDisconnected()
{
    emit disconnected();
}

} // namespace trovek
