#include "slicing/child_process.h"

#include <trovek/text.h>

#include <QProcessEnvironment>

#include <stdexcept>

namespace trovek::service {

namespace {

/** What a program needs to be found and to run, and nothing that names the user's desktop or
 * secrets. */
constexpr const char* kKept[] = {"PATH", "LD_LIBRARY_PATH", "SystemRoot"};

QProcessEnvironment environmentFor(const QString& folder)
{
    const QProcessEnvironment own = QProcessEnvironment::systemEnvironment();
    QProcessEnvironment environment;
    for (const char* const name : kKept) {
        const QString key = QString::fromLatin1(name);
        if (own.contains(key))
            environment.insert(key, own.value(key));
    }
    for (const char* const name : {"HOME", "TMPDIR", "TEMP", "TMP"})
        environment.insert(QString::fromLatin1(name), folder);
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    return environment;
}

} // namespace

ChildProcess::ChildProcess(const Command& command)
    : m_group(command.lowPriority)
{
    setProcessChannelMode(QProcess::MergedChannels);
    setStandardInputFile(QProcess::nullDevice());
    setWorkingDirectory(command.folder);
    setProcessEnvironment(environmentFor(command.folder));
    m_group.prepare(*this);
    QProcess::start(command.program, command.arguments, QIODevice::ReadOnly);
    if (!waitForStarted(-1))
        throw std::runtime_error(toStdString(errorString()));
    m_group.adopt(processId());
}

ChildProcess::~ChildProcess()
{
    stop();
}

void ChildProcess::setupChildProcess()
{
    m_group.enter();
}

bool ChildProcess::wait(int ms)
{
    if (bytesAvailable() > 0)
        return true;
    waitForReadyRead(ms);
    return state() != QProcess::NotRunning;
}

QByteArray ChildProcess::read()
{
    return readAll();
}

void ChildProcess::stop()
{
    if (state() != QProcess::NotRunning) {
        m_group.terminate();
        waitForFinished(kGraceMs);
    }
    // Also what a program that has ended left behind.
    m_group.kill();
    if (state() != QProcess::NotRunning)
        waitForFinished(-1);
}

int ChildProcess::signalNumber() const
{
    return QProcess::exitStatus() == QProcess::CrashExit ? exitCode() : 0;
}

int ChildProcess::exitStatus() const
{
    return exitCode();
}

} // namespace trovek::service
