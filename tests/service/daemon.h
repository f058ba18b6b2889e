#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace trovek {

/** The real program. The test's target defines TROVEKD_PROGRAM and depends on trovekd. */
class Daemon
{
public:
    /** @param folder for its socket and its state */
    explicit Daemon(const QString& folder)
        : m_folder(folder)
    {
        m_process.setProcessChannelMode(QProcess::SeparateChannels);
    }

    ~Daemon()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.kill();
        m_process.waitForFinished();
    }

    QString socket() const { return m_folder + QStringLiteral("/run/s"); }

    /** @return the line that it prints; empty when it ends instead */
    QByteArray start(const QStringList& more = {})
    {
        launch(QStringList{QStringLiteral("--socket"), socket(), QStringLiteral("--state"),
                           m_folder + QStringLiteral("/state"), QStringLiteral("--time-scale"),
                           QStringLiteral("100")} +
               more);
        return readLine();
    }

    void launch(const QStringList& arguments)
    {
        m_process.start(QStringLiteral(TROVEKD_PROGRAM), arguments);
    }

    /** The line that it prints; empty when it ends instead. */
    QByteArray readLine()
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(10000))
                return QByteArray();
        }
        return m_process.readLine().trimmed();
    }

    /** The exit status; -1 when it crashed or does not end. */
    int waitForEnd()
    {
        const bool ended =
            m_process.state() == QProcess::NotRunning || m_process.waitForFinished(10000);
        if (!ended || m_process.exitStatus() != QProcess::NormalExit)
            return -1;
        return m_process.exitCode();
    }

    QProcess& process() { return m_process; }

private:
    const QString m_folder;
    QProcess m_process;
};

} // namespace trovek
