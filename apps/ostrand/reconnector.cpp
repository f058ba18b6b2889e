#include "reconnector.h"

#include <QScopedValueRollback>

#include <algorithm>

namespace ostrand {

std::vector<int> Reconnector::standardPausesMs()
{
    return {1000, 2000, 4000, 8000, 16000, 30000};
}

Reconnector::Reconnector(Attempt attempt, std::vector<int> pausesMs, QObject* parent)
    : QObject(parent)
    , m_attempt(std::move(attempt))
    , m_pausesMs(std::move(pausesMs))
{
    Q_ASSERT(!m_pausesMs.empty());
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Reconnector::attempt);
}

int Reconnector::remainingMs() const
{
    return std::max(0, m_timer.remainingTime());
}

void Reconnector::start()
{
    if (m_active)
        return;
    m_active = true;
    m_attempts = 0;
    pause();
}

void Reconnector::tryNow()
{
    if (m_attempting)
        return;
    if (!m_active) {
        m_active = true;
        m_attempts = 0;
    }
    attempt();
}

void Reconnector::stop()
{
    m_active = false;
    m_timer.stop();
}

void Reconnector::attempt()
{
    m_timer.stop();
    ++m_attempts;
    bool worked = false;
    {
        const QScopedValueRollback<bool> attempting(m_attempting, true);
        worked = m_attempt();
    }
    // The attempt may have stopped us, or started us anew because the link broke at once.
    if (!m_active)
        return;
    if (!worked) {
        pause();
        return;
    }
    stop();
    emit succeeded();
}

void Reconnector::pause()
{
    const auto index = std::min(static_cast<std::size_t>(m_attempts), m_pausesMs.size() - 1);
    m_timer.start(m_pausesMs[index]);
    emit waiting(m_pausesMs[index]);
}

} // namespace ostrand
