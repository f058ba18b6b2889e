#include "profile/profile_copy.h"

#include "profile/profile_json.h"
#include "trovek-ui/file_system.h"

#include <trovek/log.h>

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <exception>

static constexpr char kLogUnit[] = "src\\profile\\profile";

namespace trovek {

namespace {

/** Removes the new folder unless it is kept. A folder that was there before is not touched. */
class NewFolder
{
public:
    explicit NewFolder(const QString& path)
        : m_path(path)
        , m_isOurs(!QFileInfo::exists(path) && !QFileInfo(path).isSymLink())
    {}
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;

    ~NewFolder()
    {
        if (!m_isOurs)
            return;
        try {
            recursiveDelete(QDir(m_path));
        } catch (const std::exception& error) {
            TROVEK_LOG(0) << error.what() << std::endl;
        }
    }

    void keep() { m_isOurs = false; }

private:
    const QString m_path;
    bool m_isOurs;
};

/** Copies of write-protected files are protected too, and the user means to change them. */
void makeWritable(const QDir& folder)
{
    QDirIterator files(folder.absolutePath(), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        const QFile::Permissions permissions = files.fileInfo().permissions();
        QFile::setPermissions(files.filePath(), permissions | QFile::WriteOwner | QFile::WriteUser);
    }
}

} // namespace

QDir copyProfile(const QDir& target, const QString& newName, SlicerConfiguration::Slicer slicer,
                 const std::vector<Printer::Type>& types, const std::function<void()>& copyFolder)
{
    const Json::Value profileJson = makeProfileJson(slicer, types);
    const QDir folder(target.absoluteFilePath(newName));
    NewFolder newFolder(folder.absolutePath());
    copyFolder();
    makeWritable(folder);
    writeProfileJson(folder, profileJson);
    newFolder.keep();
    return folder;
}

} // namespace trovek
