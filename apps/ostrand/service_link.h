#pragma once

#include "reconnector.h"
#include "service_source.h"

#include <QObject>
#include <QString>

#include <memory>
#include <vector>

namespace trovek {
class TrovekQt;
}

namespace ostrand {

/**
 * Keeps the facade connected to the background service: after a loss it reconnects by increasing
 * pauses until it works.
 */
class ServiceLink : public QObject
{
    Q_OBJECT

public:
    enum State : int {
        /** Never tried. */
        Idle,
        Connected,
        /** No link; another attempt is planned. */
        Waiting,
    };

    /**
     * @param facade   not owned; must outlive the link
     * @param pausesMs milliseconds between attempts
     */
    ServiceLink(trovek::TrovekQt& facade, std::unique_ptr<ServiceSource> source,
                std::vector<int> pausesMs = Reconnector::standardPausesMs(),
                QObject* parent = nullptr);
    ~ServiceLink() override;

    State state() const { return m_state; }
    /** Why the last attempt failed; empty after a success. */
    const QString& failure() const { return m_failure; }
    /** Where the service is, for the user. */
    QString description() const { return m_source->description(); }
    bool canRestartService() const { return m_source->canRestart(); }
    /** Milliseconds until the next attempt while Waiting. */
    int remainingMs() const { return m_reconnector.remainingMs(); }

public slots:
    /** Tries at once; nothing happens while Connected. Failing plans further attempts. */
    void connectNow();
    /** Ends the service with all of its jobs, starts it again and connects. */
    void restartService();

signals:
    void stateChanged(ostrand::ServiceLink::State state);

private:
    bool attempt();
    void setState(State state);

    trovek::TrovekQt& m_facade;
    const std::unique_ptr<ServiceSource> m_source;
    QString m_failure;
    State m_state = Idle;
    Reconnector m_reconnector;
};

} // namespace ostrand

Q_DECLARE_METATYPE(ostrand::ServiceLink::State)
