#pragma once

#include "core/service_manager.h"

#include <QString>

namespace trovek::service {

/** The unit that runs the service for the user, an instance of "trovekd@.service". */
QString systemdUnit();

/** systemd, by its command; it asks the user through polkit where rights are missing. */
class SystemdServiceManager : public ServiceManager
{
public:
    /**
     * @param program       systemctl, by name or path
     * @param runtimeDir    exists where systemd runs the system
     * @param answerWaitMs  systemd answers at once; only one that hangs takes longer
     * @param commandWaitMs an action that takes longer goes on by itself
     */
    explicit SystemdServiceManager(
        const QString& program = QStringLiteral("systemctl"),
        const QString& runtimeDir = QStringLiteral("/run/systemd/system"), int answerWaitMs = 5000,
        int commandWaitMs = kCommandWaitMs);

    std::optional<SystemError> connect() override;
    std::optional<SystemError> openService() override;
    std::optional<SystemError> queryStatus() override;
    void run(Action action) override;

private:
    struct Answer;
    Answer ask(const QString& property) const;

    const QString m_program;
    const QString m_runtimeDir;
    const int m_answerWaitMs;
    const int m_commandWaitMs;
};

} // namespace trovek::service
