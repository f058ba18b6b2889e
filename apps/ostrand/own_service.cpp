#include "own_service.h"

#include <service/embedded_service.h>

#include <trovek/log.h>
#include <trovek/text.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>

#include <exception>
#include <string>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\own_service";

std::string stateDirOf(const OwnService::Settings& settings)
{
    return settings.stateDir.isEmpty()
               ? trovek::defaultStateDir()
               : trovek::toStdString(QDir(settings.stateDir).absolutePath());
}

/** One name for each state folder: whoever finds the folder in use finds its service, too. */
std::string socketNameOf(const std::string& stateDir)
{
    const QByteArray digest =
        QCryptographicHash::hash(QByteArray::fromStdString(stateDir), QCryptographicHash::Sha1);
    return "ostrand-" + digest.toHex().left(12).toStdString();
}

} // namespace

OwnService::OwnService(const Settings& settings)
    : m_settings(settings)
{}

OwnService::~OwnService() = default;

trovek::Address OwnService::address()
{
    if (m_service)
        return m_service->address();
    trovek::service::EmbeddedService::Options options;
    options.stateDir = stateDirOf(m_settings);
    options.socketName = socketNameOf(options.stateDir);
    options.machinesFile = trovek::toStdString(m_settings.machinesFile);
    options.timeScale = m_settings.timeScale;
    try {
        m_service = std::make_unique<trovek::service::EmbeddedService>(options);
        m_isBorrowed = false;
        return m_service->address();
    } catch (const std::exception& e) {
        // Another Ostrand of the same user may have started it: then we work with that one, and
        // start our own when it has gone.
        const std::string path = trovek::localSocketPath(options.socketName, options.stateDir);
        if (!QFileInfo::exists(trovek::toQString(path)))
            throw;
        TROVEK_LOG(1) << "Using the service of another window: " << e.what() << std::endl;
        m_isBorrowed = true;
        return trovek::Address::local(path);
    }
}

QString OwnService::description() const
{
    return m_isBorrowed
               ? QCoreApplication::translate("ostrand::OwnService",
                                             "the background service of another Ostrand")
               : QCoreApplication::translate("ostrand::OwnService", "the background service");
}

void OwnService::restart()
{
    // First the end, then the start: both use the same folder.
    m_service.reset();
    address();
}

} // namespace ostrand
