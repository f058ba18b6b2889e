#pragma once

#include "service_source.h"

#include <memory>

namespace trovek::service {
class EmbeddedService;
}

namespace ostrand {

/**
 * A service of our own, in a thread of this program; it ends with the object.
 *
 * While another program has one with the same state, that one is used instead.
 */
class OwnService : public ServiceSource
{
public:
    struct Settings
    {
        /** Empty stands for the user's data folder. */
        QString stateDir;
        /** Empty stands for the built-in machines. */
        QString machinesFile;
        double timeScale = 1;
    };

    explicit OwnService(const Settings& settings);
    ~OwnService() override;

    trovek::Address address() override;
    QString description() const override;
    bool canRestart() const override { return !m_isBorrowed; }
    void restart() override;

private:
    const Settings m_settings;
    std::unique_ptr<trovek::service::EmbeddedService> m_service;
    bool m_isBorrowed = false;
};

} // namespace ostrand
