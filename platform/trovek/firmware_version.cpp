#include "trovek/firmware_version.h"

#include <tuple>

namespace trovek {

namespace {

/** False for anything but one to nine decimal digits, which always fit. */
bool readNumber(const std::string& text, int* number)
{
    constexpr std::size_t kMaxDigits = 9;
    if (text.empty() || text.size() > kMaxDigits ||
        text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    *number = std::stoi(text);
    return true;
}

} // namespace

FirmwareVersion::FirmwareVersion(const std::string& version)
    : FirmwareVersion(version, std::string())
{}

FirmwareVersion::FirmwareVersion(const std::string& version, const std::string& description)
    : m_text(version)
    , m_description(description)
{
    const std::size_t point = version.find('.');
    if (point == std::string::npos)
        return;
    int majorNumber = 0;
    int minorNumber = 0;
    if (!readNumber(version.substr(0, point), &majorNumber) ||
        !readNumber(version.substr(point + 1), &minorNumber))
        return;
    m_major = majorNumber;
    m_minor = minorNumber;
    m_valid = true;
}

bool FirmwareVersion::operator<(const FirmwareVersion& other) const
{
    return std::tie(m_valid, m_major, m_minor, m_text) <
           std::tie(other.m_valid, other.m_major, other.m_minor, other.m_text);
}

} // namespace trovek
