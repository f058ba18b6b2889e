#include "trovek/address.h"

#include "trovek/text.h"

#include <QDir>
#include <QStandardPaths>

#include <stdexcept>
#include <tuple>

namespace trovek {

namespace {

bool takePrefix(std::string* text, const std::string& prefix)
{
    if (text->compare(0, prefix.size(), prefix) != 0)
        return false;
    text->erase(0, prefix.size());
    return true;
}

/** 0 for a text that is no port number. */
std::uint16_t portFromText(const std::string& text)
{
    constexpr std::size_t kMaxDigits = 5;
    if (text.empty() || text.size() > kMaxDigits ||
        text.find_first_not_of("0123456789") != std::string::npos)
        return 0;
    const int port = std::stoi(text);
    return port <= 65535 ? static_cast<std::uint16_t>(port) : std::uint16_t(0);
}

} // namespace

Address Address::local(const std::string& name)
{
    Address address;
    address.m_kind = Local;
    address.m_name = name;
    return address;
}

Address Address::tcp(const std::string& host, std::uint16_t port, const std::string& token)
{
    Address address;
    address.m_kind = Tcp;
    address.m_host = host;
    address.m_port = port;
    address.m_token = token;
    return address;
}

Address Address::fromText(const std::string& text)
{
    const std::runtime_error invalid("Invalid service address: " + text);
    std::string rest = text;
    if (takePrefix(&rest, "local:")) {
        if (rest.empty())
            throw invalid;
        return local(rest);
    }
    if (!takePrefix(&rest, "tcp:"))
        throw invalid;

    const std::size_t colon = rest.rfind(':');
    if (colon == std::string::npos)
        throw invalid;
    std::string host = rest.substr(0, colon);
    const std::uint16_t port = portFromText(rest.substr(colon + 1));
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (bracketed)
        host = host.substr(1, host.size() - 2);
    const bool ambiguous = !bracketed && host.find_first_of(":[]") != std::string::npos;
    if (host.empty() || ambiguous || port == 0)
        throw invalid;
    return tcp(host, port, std::string());
}

std::string Address::toText() const
{
    if (m_kind == Local)
        return "local:" + m_name;
    const bool isIpv6 = m_host.find(':') != std::string::npos;
    return "tcp:" + (isIpv6 ? '[' + m_host + ']' : m_host) + ':' + std::to_string(m_port);
}

bool Address::operator==(const Address& other) const
{
    return std::tie(m_kind, m_name, m_host, m_port, m_token) ==
           std::tie(other.m_kind, other.m_name, other.m_host, other.m_port, other.m_token);
}

std::string localSocketPath(const std::string& name, const std::string& stateDir)
{
    if (QDir::isAbsolutePath(toQString(name)))
        return name;
    const QString runtimeDir = qEnvironmentVariable("XDG_RUNTIME_DIR");
    // A relative folder there would mean another one in each program; the variable's own rules
    // say that it is then to be ignored.
    if (QDir::isAbsolutePath(runtimeDir))
        return toStdString(runtimeDir) + "/trovek/" + name;
    return stateDir + '/' + name;
}

std::string defaultStateDir()
{
    return toStdString(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                       QLatin1String("/trovek"));
}

} // namespace trovek
