#include "host.h"

#include "export_watch.h"
#include "log_model.h"
#include "main_window.h"
#include "options.h"
#include "own_service.h"
#include "service_link.h"

#include <trovek-ui/export_job_mover.h>
#include <trovek-ui/file_system.h>
#include <trovek-ui/trovekhandle.h>

#include <trovek/log.h>
#include <trovek/text.h>

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>

#include <exception>
#include <stdexcept>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\host";
// A print of hours ends in seconds when nobody watches it.
constexpr double kTourTimeScale = 600;

bool runsWithoutHands(const Options& options)
{
    return !options.tourDir.isEmpty() || !options.galleryDir.isEmpty();
}

QString dataDir()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
}

std::string readToken(const QString& path)
{
    if (path.isEmpty())
        return std::string();
    QFile file(path);
    constexpr qint64 kLongestToken = 4096;
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("Cannot read the token file: " +
                                 trovek::toStdString(file.errorString()));
    QByteArray token = file.read(kLongestToken);
    while (token.endsWith('\n') || token.endsWith('\r'))
        token.chop(1);
    return token.toStdString();
}

std::unique_ptr<ServiceSource> makeSource(const Options& options, const QString& temporaryDir)
{
    if (!options.serviceAddress.isEmpty()) {
        auto address = trovek::Address::fromText(trovek::toStdString(options.serviceAddress));
        if (address.kind() == trovek::Address::Tcp)
            address =
                trovek::Address::tcp(address.host(), address.port(), readToken(options.tokenFile));
        return std::make_unique<ForeignService>(address);
    }
    OwnService::Settings settings;
    settings.stateDir = options.stateDir;
    settings.machinesFile = options.machinesFile;
    settings.timeScale = options.timeScale;
    if (runsWithoutHands(options)) {
        if (settings.stateDir.isEmpty())
            settings.stateDir = QDir(temporaryDir).filePath(QStringLiteral("state"));
        if (settings.timeScale == 1)
            settings.timeScale = kTourTimeScale;
    }
    return std::make_unique<OwnService>(settings);
}

std::unique_ptr<QSettings> makeSettings(const Options& options, const QString& temporaryDir)
{
    QString file = options.settingsFile;
    if (file.isEmpty() && runsWithoutHands(options))
        file = QDir(temporaryDir).filePath(QStringLiteral("ostrand.ini"));
    return file.isEmpty() ? std::make_unique<QSettings>()
                          : std::make_unique<QSettings>(file, QSettings::IniFormat);
}

} // namespace

Host::Host(const Options& options)
{
    QString temporaryDir;
    if (runsWithoutHands(options)) {
        m_temporary = std::make_unique<QTemporaryDir>();
        if (!m_temporary->isValid())
            throw std::runtime_error(trovek::toStdString(m_temporary->errorString()));
        temporaryDir = m_temporary->path();
    } else {
        startLog();
    }
    makeProfileDir(temporaryDir.isEmpty() ? dataDir() : temporaryDir);
    m_log = std::make_unique<LogModel>();
    m_settings = makeSettings(options, temporaryDir);
    m_handle = std::make_unique<trovek::ui::TrovekHandle>(m_settings.get());
    m_link = std::make_unique<ServiceLink>(facade(), makeSource(options, temporaryDir));
    m_exports = std::make_unique<ExportWatch>(
        facade(), [this] { return trovek::ExportJobMover::instance(facade()).pendingExports(); });
    m_window = std::make_unique<MainWindow>(
        Surroundings{facade(), *m_settings, *m_link, *m_exports, *m_log});
}

Host::~Host()
{
    m_window.reset();
    m_exports.reset();
    // The client goes before the service, which would otherwise be lost under it.
    m_handle->operator->()->disconnectFromDaemon();
    m_link.reset();
    m_handle.reset();
    try {
        // What the exports left on their way; nobody needs it any more.
        trovek::TemporaryDir::cleanManagedDirectories();
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
    m_log.reset();
    if (m_logFile)
        trovek::removeLogSink(m_logFile);
}

trovek::TrovekQt& Host::facade()
{
    return **m_handle;
}

void Host::makeProfileDir(const QString& dataDir)
{
    m_profileDir = QDir(QDir(dataDir).filePath(QStringLiteral("profiles")));
    // Without the folder there are no profiles of the user's, and creating one says why.
    if (!m_profileDir.mkpath(QStringLiteral(".")))
        TROVEK_LOG(0) << "Cannot make the folder for profiles: "
                      << trovek::toStdString(m_profileDir.path()) << std::endl;
}

void Host::startLog()
{
    const QString folder = dataDir() + QStringLiteral("/log");
    try {
        QDir().mkpath(folder);
        m_logFile = trovek::makeRotatingFileLogSink(
            trovek::toStdString(folder + QStringLiteral("/ostrand.log")));
        trovek::addLogSink(m_logFile);
    } catch (const std::exception& e) {
        // A full or read-only disk must not keep anybody from printing.
        TROVEK_LOG(0) << "No log file: " << e.what() << std::endl;
    }
}

} // namespace ostrand
