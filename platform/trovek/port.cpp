#include "trovek/port.h"

#include <tuple>
#include <utility>

namespace trovek {

Port::Port(Data data)
    : m_data(std::move(data))
{}

const std::string& Port::displayName() const
{
    return m_data.displayName.empty() ? m_data.name : m_data.displayName;
}

bool Port::operator<(const Port& other) const
{
    return std::tie(m_data.name, m_data.identity) <
           std::tie(other.m_data.name, other.m_data.identity);
}

bool Port::operator==(const Port& other) const
{
    return m_data.name == other.m_data.name && m_data.identity == other.m_data.identity;
}

bool portInConnectionWhitelist(const Port& port)
{
    return port.inConnectionWhitelist();
}

std::string to_string(const Port& port)
{
    std::string text =
        "Port " + port.name() + ": " + port.displayName() + ", identity " + port.identity();
    text += port.machineName().empty() ? ", closed" : ", machine " + port.machineName();
    if (port.inConnectionWhitelist())
        text += ", opened by itself";
    return text;
}

} // namespace trovek
