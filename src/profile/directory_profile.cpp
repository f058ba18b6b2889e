#include "trovek-ui/profile.h"

#include "profile/json_file.h"
#include "profile/profile_copy.h"
#include "trovek-ui/file_system.h"
#include "trovek-ui/util.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

#include <stdexcept>
#include <string>

namespace trovek {

namespace {

const char* const kStrandelFile = "strandel.json";

/** The slicer would not read them, and copying them would hold up the window. */
void refuseHugeFiles(const QDir& folder)
{
    for (const char* name : {kStrandelFile, "start.gcode", "end.gcode"}) {
        if (QFileInfo(folder, QLatin1String(name)).size() > kLargestProfileFile)
            throw std::runtime_error(std::string(name) + " is larger than 1 MiB");
    }
}

} // namespace

// Whatever filter and order the given one has: profiles are told apart by their place alone.
DirectoryProfile::DirectoryProfile(const QDir& dir)
    : m_dir(dir.absolutePath())
{}

bool DirectoryProfile::isSameAs(const Profile& other) const
{
    const auto* const profile = dynamic_cast<const DirectoryProfile*>(&other);
    return profile != nullptr && profile->m_dir == m_dir;
}

QDir DirectoryProfile::copyToDisk(const QDir& target, const QString& newName,
                                  const std::vector<Printer::Type>& types) const
{
    return copyProfile(target, newName, slicer(), types, [&] {
        refuseHugeFiles(m_dir);
        recursiveCopyRename(target, m_dir, newName);
    });
}

QString DirectoryProfile::slicerConfigPath() const
{
    switch (slicer()) {
    case SlicerConfiguration::Strandel:
        refuseHugeFiles(m_dir);
        return recursiveCopyRename(TemporaryDir::managedDir(), m_dir, name())
            .absoluteFilePath(QLatin1String(kStrandelFile));
    case SlicerConfiguration::UnknownSlicer:
        throw std::runtime_error("Invalid slicer");
    }
    throw std::runtime_error("Unexpected error");
}

void DirectoryProfile::remove()
{
    recursiveDelete(m_dir);
}

void DirectoryProfile::edit()
{
    switch (slicer()) {
    case SlicerConfiguration::Strandel:
        break;
    case SlicerConfiguration::UnknownSlicer:
        throw std::runtime_error("Unknown profile type");
    default:
        throw std::runtime_error("Slicer type is not Strandel");
    }
    const QString path = m_dir.absoluteFilePath(QLatin1String(kStrandelFile));
    // An editor would be started in vain, and nobody would tell the user.
    if (!QFileInfo(path).isFile())
        throw std::runtime_error("strandel.json not found");
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        openInNotepad(path);
}

bool DirectoryProfile::isOnDisk() const
{
    return true;
}

QString DirectoryProfile::name() const
{
    return m_dir.dirName();
}

QString DirectoryProfile::path() const
{
    return m_dir.absolutePath();
}

SlicerConfiguration::Preset DirectoryProfile::preset() const
{
    return SlicerConfiguration::Custom;
}

Json::Value DirectoryProfile::json() const
{
    return readJsonFile(m_dir.absoluteFilePath(QStringLiteral("profile.json")),
                        "profile.json is missing", "profile.json does not contain valid JSON");
}

} // namespace trovek
