#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

namespace trovek::service {

/** Lets at most one of many requests through in an interval; the last one is never lost, only late.
 */
class Throttle : public QObject
{
    Q_OBJECT

public:
    explicit Throttle(int intervalMs, QObject* parent = nullptr);

    /** released() comes at once when the interval since the last one has passed, else at its end.
     */
    void request();
    /** Drops what waits and starts the interval anew: what waited has just been told otherwise. */
    void restart();

signals:
    void released();

private:
    void release();

    const int m_intervalMs;
    QElapsedTimer m_sinceRelease;
    QTimer m_timer;
};

} // namespace trovek::service
