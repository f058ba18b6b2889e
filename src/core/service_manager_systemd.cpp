#include "core/service_manager_systemd.h"

#include <trovek/text.h>

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace trovek::service {
namespace {

SystemError systemError(int code)
{
    return {static_cast<unsigned long>(code), std::strerror(code)};
}

QString verb(Action action)
{
    switch (action) {
    case Action::Start:
        return QStringLiteral("start");
    case Action::Stop:
        return QStringLiteral("stop");
    case Action::Restart:
        break;
    }
    return QStringLiteral("restart");
}

} // namespace

QString systemdUnit()
{
    return QStringLiteral("trovekd@%1.service").arg(getuid());
}

SystemdServiceManager::SystemdServiceManager(const QString& program, const QString& runtimeDir,
                                             int answerWaitMs, int commandWaitMs)
    : m_program(program)
    , m_runtimeDir(runtimeDir)
    , m_answerWaitMs(answerWaitMs)
    , m_commandWaitMs(commandWaitMs)
{}

/** What systemd says of a property of the unit; an error when it does not say anything. */
struct SystemdServiceManager::Answer
{
    QString value;
    std::optional<SystemError> error;
};

std::optional<SystemError> SystemdServiceManager::connect()
{
    // The command may be installed where another program runs the system.
    if (!QFileInfo(m_runtimeDir).isDir())
        return systemError(EHOSTDOWN);
    if (QStandardPaths::findExecutable(m_program).isEmpty())
        return systemError(ENOENT);
    return std::nullopt;
}

std::optional<SystemError> SystemdServiceManager::openService()
{
    const Answer answer = ask(QStringLiteral("LoadState"));
    if (answer.error)
        return answer.error;
    if (answer.value == QLatin1String("loaded"))
        return std::nullopt;
    SystemError error = systemError(ENOENT);
    error.text = "Unit " + toStdString(systemdUnit()) + ": " + toStdString(answer.value);
    return error;
}

std::optional<SystemError> SystemdServiceManager::queryStatus()
{
    return ask(QStringLiteral("ActiveState")).error;
}

SystemdServiceManager::Answer SystemdServiceManager::ask(const QString& property) const
{
    QProcess process;
    process.start(m_program,
                  {QStringLiteral("show"), QStringLiteral("--property=") + property,
                   QStringLiteral("--value"), systemdUnit()},
                  QIODevice::ReadOnly);
    if (!process.waitForFinished(m_answerWaitMs)) {
        if (process.error() == QProcess::FailedToStart)
            return {QString(), SystemError{ENOEXEC, toStdString(process.errorString())}};
        process.kill();
        process.waitForFinished();
        return {QString(), systemError(ETIMEDOUT)};
    }
    if (process.exitStatus() == QProcess::CrashExit)
        return {QString(), systemError(EINTR)};
    if (process.exitCode() != 0) {
        const QString text = QString::fromUtf8(process.readAllStandardError()).trimmed();
        return {QString(),
                SystemError{static_cast<unsigned long>(process.exitCode()), toStdString(text)}};
    }
    return {QString::fromUtf8(process.readAllStandardOutput()).trimmed(), std::nullopt};
}

void SystemdServiceManager::run(Action action)
{
    auto* process = new QProcess;
    process->start(m_program, {verb(action), systemdUnit()}, QIODevice::ReadOnly);
    if (process->waitForFinished(m_commandWaitMs) || process->state() == QProcess::NotRunning) {
        delete process;
        return;
    }
    // The user may still be typing the password: the command goes on.
    QObject::connect(process, &QProcess::stateChanged, process, &QObject::deleteLater);
}

std::unique_ptr<ServiceManager> systemServiceManager()
{
    return std::make_unique<SystemdServiceManager>();
}

} // namespace trovek::service
