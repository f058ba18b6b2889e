#include "throttle.h"

namespace trovek::service {

Throttle::Throttle(int intervalMs, QObject* parent)
    : QObject(parent)
    , m_intervalMs(intervalMs)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &Throttle::release);
}

void Throttle::request()
{
    if (m_timer.isActive())
        return;
    const qint64 wait =
        m_sinceRelease.isValid() ? m_intervalMs - m_sinceRelease.elapsed() : qint64(0);
    if (wait > 0)
        m_timer.start(static_cast<int>(wait));
    else
        release();
}

void Throttle::restart()
{
    m_timer.stop();
    m_sinceRelease.start();
}

void Throttle::release()
{
    m_sinceRelease.start();
    emit released();
}

} // namespace trovek::service
