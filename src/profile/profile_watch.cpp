#include "profile/profile_watch.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QFileInfo>
#include <QFileSystemWatcher>

static constexpr char kLogUnit[] = "src\\profile\\profile_watch";

namespace trovek {

namespace {

/** All programs of a user share some thousands of watches, and a profile takes two. */
constexpr int kMostWatchedProfiles = 250;

QString fileIn(const QString& profileFolder)
{
    return profileFolder + QLatin1String("/profile.json");
}

QString nearestFolderAbove(const QString& folder)
{
    QString above = QFileInfo(folder).path();
    while (!QFileInfo(above).isDir() && QFileInfo(above).path() != above)
        above = QFileInfo(above).path();
    return above;
}

} // namespace

ProfileWatch::ProfileWatch(QFileSystemWatcher& watcher, const QString& folder)
    : m_watcher(watcher)
    , m_folder(folder)
{}

void ProfileWatch::watchFolder()
{
    const QString above = nearestFolderAbove(m_folder);
    if (above != m_folderAbove && !m_folderAbove.isEmpty())
        m_watcher.removePath(m_folderAbove);
    m_folderAbove = above;
    watch(above);
    watch(m_folder);
}

void ProfileWatch::watchProfile(const QString& profileFolder)
{
    if (m_isExhausted ||
        (m_profiles.size() >= kMostWatchedProfiles && !m_profiles.contains(profileFolder)))
        return;
    m_profiles.insert(profileFolder);
    watch(profileFolder);
    watch(fileIn(profileFolder));
}

void ProfileWatch::forgetProfile(const QString& profileFolder)
{
    if (m_profiles.remove(profileFolder))
        m_watcher.removePaths({profileFolder, fileIn(profileFolder)});
}

// Another folder or file of the same name may be there by now, so the old watch goes first.
void ProfileWatch::watch(const QString& path)
{
    m_watcher.removePath(path);
    if (!QFileInfo::exists(path) || m_watcher.addPath(path) || !QFileInfo::exists(path))
        return;
    if (!m_isExhausted)
        TROVEK_LOG(1) << "Cannot watch " << toStdString(path) << std::endl;
    m_isExhausted = true;
}

} // namespace trovek
