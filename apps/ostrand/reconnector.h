#pragma once

#include <QObject>
#include <QTimer>

#include <functional>
#include <vector>

namespace ostrand {

/**
 * Tries again and again until it works, with pauses that grow.
 *
 * The first attempt comes after the first pause, each further one after the next; the last pause
 * repeats. A start after a success begins with the first pause again.
 */
class Reconnector : public QObject
{
    Q_OBJECT

public:
    /** Tries once and tells whether it worked. Must not throw; may call back into the object. */
    using Attempt = std::function<bool()>;

    /** 1, 2, 4, 8, 16, then 30 seconds. */
    static std::vector<int> standardPausesMs();

    /** @param pausesMs milliseconds; at least one */
    explicit Reconnector(Attempt attempt, std::vector<int> pausesMs = standardPausesMs(),
                         QObject* parent = nullptr);

    /** True from start() until success or stop(). */
    bool isActive() const { return m_active; }
    /** Attempts since start(). */
    int attempts() const { return m_attempts; }
    /** Milliseconds until the next attempt; 0 when none is planned. */
    int remainingMs() const;

public slots:
    /** Nothing happens when it is active already. */
    void start();
    /** Tries at once, active or not; after a failure the pauses go on where they were. */
    void tryNow();
    void stop();

signals:
    /** A pause of that many milliseconds begins. */
    void waiting(int pauseMs);
    void succeeded();

private:
    void attempt();
    void pause();

    const Attempt m_attempt;
    const std::vector<int> m_pausesMs;
    QTimer m_timer;
    int m_attempts = 0;
    bool m_active = false;
    bool m_attempting = false;
};

} // namespace ostrand
