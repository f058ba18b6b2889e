#include "service_source.h"

#include <trovek/text.h>

#include <stdexcept>

namespace ostrand {

ForeignService::ForeignService(const trovek::Address& address)
    : m_address(address)
{}

QString ForeignService::description() const
{
    return trovek::toQString(m_address.toText());
}

void ForeignService::restart()
{
    throw std::runtime_error("The background service belongs to another program");
}

} // namespace ostrand
