#include "driver.h"

namespace trovek::service {

MachineDriver::MachineDriver(QObject* parent)
    : QObject(parent)
{}

MachineDriver::~MachineDriver() = default;

bool MachineDriver::simulateUploadFailure(std::optional<int>)
{
    return false;
}

} // namespace trovek::service
