#pragma once

#include <QObject>
#include <QStringList>

#include <functional>
#include <map>
#include <set>

namespace trovek {
class TrovekQt;
}

namespace ostrand {

/**
 * Keeps an eye on exports across a loss of the service link.
 *
 * After a reconnection every export that is still waiting is looked up: one that the service no
 * longer knows is lost, one that ended meanwhile is announced again, since nobody heard it.
 */
class ExportWatch : public QObject
{
    Q_OBJECT

public:
    /** Gives the exports that wait for their job's end: job ID and destination path. */
    using Pending = std::function<std::map<int, QString>()>;

    /** @param facade not owned; must outlive the watch */
    ExportWatch(trovek::TrovekQt& facade, Pending pending, QObject* parent = nullptr);

    /** Destinations of the exports that may still be finished; the lost ones are not among them. */
    QStringList unfinished() const;

signals:
    /** The link broke while these exports were under way; destination paths, never empty. */
    void interrupted(const QStringList& destinations);
    /** After a reconnection: these will never be finished. Destination paths, never empty. */
    void lost(const QStringList& destinations);
    /** After a reconnection: what was under way goes on or has ended well. */
    void settled();

private:
    enum class Fate {
        Running,
        Concluded,
        Failed,
        Gone,
    };

    void settle();
    Fate fateOf(int job);

    trovek::TrovekQt& m_facade;
    const Pending m_pending;
    std::set<int> m_lost;
};

} // namespace ostrand
