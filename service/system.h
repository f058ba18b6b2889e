#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

class QFileDevice;

namespace trovek::service {

/**
 * Makes a folder, and those above it that are missing, for its owner alone, and checks it.
 *
 * A folder that is there already keeps its mode; it must be a real folder of the same user that
 * nobody else can write.
 * @throws std::runtime_error saying what is wrong with it
 */
void makePrivateFolder(const QString& path);

/** Writes a file anew that only its owner can read, at no moment anybody else. @return false on
 * failure */
bool writePrivateFile(const QString& path, const QByteArray& bytes);

/** Returns when what was written and flushed is on the disk. @return false on failure */
bool syncToDisk(const QFileDevice& file);

/** True for a socket file that nobody listens on any more or still listens on; not for other files.
 */
bool isSocketFile(const QString& path);

/**
 * Tells, from the event loop, that the system asks this program to end.
 *
 * One at a time in a process; the earlier handling of those signals comes back when it goes.
 */
class TerminationWatcher : public QObject
{
    Q_OBJECT

public:
    /** @throws std::runtime_error when the system refuses */
    explicit TerminationWatcher(QObject* parent = nullptr);
    ~TerminationWatcher() override;

signals:
    void terminationRequested();

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
