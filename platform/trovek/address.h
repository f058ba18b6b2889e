#pragma once

#include "trovek/export.h"

#include <cstdint>
#include <string>

namespace trovek {

/**
 * Where the background service is reached.
 *
 * Text forms: "local:NAME" and "tcp:HOST:PORT" (an IPv6 host in brackets); a token is never part
 * of the text. A local name without a path separator stands for a socket in the user's runtime
 * folder, see localSocketPath().
 */
class TROVEK_EXPORT Address
{
public:
    enum Kind : int { Local, Tcp };

    static Address local(const std::string& name);
    static Address tcp(const std::string& host, std::uint16_t port, const std::string& token);
    /** @throws std::runtime_error "Invalid service address: " and the text */
    static Address fromText(const std::string& text);

    Kind kind() const { return m_kind; }
    /** The local name; empty for TCP. */
    const std::string& name() const { return m_name; }
    const std::string& host() const { return m_host; }
    std::uint16_t port() const { return m_port; }
    const std::string& token() const { return m_token; }
    std::string toText() const;

    bool operator==(const Address& other) const;

private:
    Address() = default;
    Kind m_kind = Local;
    std::string m_name;
    std::string m_host;
    std::string m_token;
    std::uint16_t m_port = 0;
};

/**
 * The socket's path for a local name: the name itself when it is absolute, else
 * $XDG_RUNTIME_DIR/trovek/NAME, and `stateDir`/NAME where that variable is not set.
 *
 * Client and service both use it, so that they meet.
 */
TROVEK_EXPORT std::string localSocketPath(const std::string& name, const std::string& stateDir);

/** The service's state folder unless it is told another: the user's data folder with "trovek". */
TROVEK_EXPORT std::string defaultStateDir();

} // namespace trovek
