#pragma once

#include <QSet>
#include <QString>

class QFileSystemWatcher;

namespace trovek {

/**
 * Watches the folder with the user's profiles, and what is in theirs.
 *
 * The system forgets a watched folder that is removed and a file that is replaced, so watchFolder()
 * and watchProfile() are to be called again after every change. The nearest folder above that
 * exists is watched too, since the one with the profiles may come and go.
 *
 * Watches are scarce and network drives report nothing: whoever shows the profiles has to look
 * again by itself from time to time.
 */
class ProfileWatch
{
public:
    /**
     * @param watcher not owned; must outlive the object
     * @param folder  the absolute path of the folder with the profiles; need not exist
     */
    ProfileWatch(QFileSystemWatcher& watcher, const QString& folder);

    void watchFolder();
    /** Nothing happens when too many are watched already. */
    void watchProfile(const QString& profileFolder);
    void forgetProfile(const QString& profileFolder);

private:
    void watch(const QString& path);

    QFileSystemWatcher& m_watcher;
    const QString m_folder;
    QString m_folderAbove;
    QSet<QString> m_profiles;
    /** The system has no watches left. */
    bool m_isExhausted = false;
};

} // namespace trovek
