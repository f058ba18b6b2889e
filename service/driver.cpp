#include "driver.h"

namespace trovek::service {

MachineDriver::MachineDriver(QObject* parent)
    : QObject(parent)
{}

MachineDriver::~MachineDriver() = default;

} // namespace trovek::service
