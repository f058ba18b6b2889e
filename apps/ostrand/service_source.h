#pragma once

#include <trovek/address.h>

#include <QString>

#include <memory>

namespace ostrand {

/** Where the background service that the host works with comes from. */
class ServiceSource
{
public:
    virtual ~ServiceSource() = default;

    /**
     * Starts the service where that is this program's business and it does not run.
     * @throws std::exception when there is none to be had
     */
    virtual trovek::Address address() = 0;
    /** For the status bar, for example "local:trovek". */
    virtual QString description() const = 0;
    virtual bool canRestart() const = 0;
    /** Ends the service and all of its jobs and starts it again. @throws std::exception */
    virtual void restart() = 0;
};

/** A service that somebody else runs. */
class ForeignService : public ServiceSource
{
public:
    explicit ForeignService(const trovek::Address& address);

    trovek::Address address() override { return m_address; }
    QString description() const override;
    bool canRestart() const override { return false; }
    void restart() override;

private:
    const trovek::Address m_address;
};

} // namespace ostrand
