#pragma once

#include <trovek/address.h>

#include <json/value.h>

#include <QByteArray>
#include <QIODevice>

#include <memory>
#include <vector>

namespace trovek {

/** A client that writes whatever bytes a test wants, and reads lines. */
class RawClient
{
public:
    /** Waits until it is connected. */
    explicit RawClient(const Address& address);

    void write(const QByteArray& bytes);
    /** A request with that number. */
    void call(int id, const char* method, const Json::Value& params = Json::Value());
    void greet();

    /** The next line, parsed; null when none comes within five seconds or the connection ends. */
    Json::Value readLine();
    /** True when the other side ends the connection within five seconds; lines before that are
     * lost. */
    bool waitForEnd();
    bool isConnected() const;

private:
    std::unique_ptr<QIODevice> m_socket;
};

/** The parameters of a greeting. */
Json::Value greeting(int major = 1, int minor = 0);

} // namespace trovek
