#include "trovek-ui/file_system.h"

#include "util/plain_name.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>

#include <stdexcept>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "src/util/file_system";

[[noreturn]] void fail(const QString& text)
{
    throw std::runtime_error(toStdString(text));
}

[[noreturn]] void failCopy(const QString& source, const QString& destination)
{
    fail(QStringLiteral("Copy failed: couldn't copy %1 to %2").arg(source, destination));
}

QFileInfoList entriesToCopy(const QDir& dir)
{
    return dir.entryInfoList(QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot);
}

bool isInside(const QString& path, const QString& folder)
{
    const QString prefix = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    return path == folder || path.startsWith(prefix);
}

/**
 * Throws when the copy would never end: a folder in the tree is one of those that it is in, or the
 * copy would grow inside of it. All paths that are compared are canonical.
 */
void refuseEndlessCopy(const QDir& source, const QString& destination,
                       const QString& destinationFolder, QStringList outerFolders)
{
    const QString folder = source.canonicalPath();
    if (folder.isEmpty())
        return;
    if (outerFolders.contains(folder) || isInside(destinationFolder, folder))
        failCopy(source.absolutePath(), destination);
    outerFolders += folder;
    const QFileInfoList entries = entriesToCopy(source);
    for (const QFileInfo& entry : entries) {
        if (entry.isDir())
            refuseEndlessCopy(QDir(entry.absoluteFilePath()),
                              destination + QLatin1Char('/') + entry.fileName(), destinationFolder,
                              outerFolders);
    }
}

void logCopy(const QDir& dstDir, const QDir& srcDir, const QString& dstName)
{
    TROVEK_LOG(2) << "dstDir=" << toStdString(dstDir.absolutePath())
                  << ", srcDir=" << toStdString(srcDir.absolutePath())
                  << ", dstName=" << toStdString(dstName) << std::endl;
}

QDir copyTree(QDir dstDir, const QDir& srcDir, const QString& dstName)
{
    if (!dstDir.exists())
        fail(QStringLiteral("Copy failed: %1 doesn't exist").arg(dstDir.absolutePath()));
    const QString destination = dstDir.absoluteFilePath(dstName);
    if (!isPlainName(dstName) || !dstDir.mkdir(dstName))
        fail(QStringLiteral("Copy failed: couldn't create directory %1").arg(destination));
    if (!dstDir.cd(dstName))
        fail(QStringLiteral("Copy failed: couldn't cd to %1").arg(destination));

    const QFileInfoList entries = entriesToCopy(srcDir);
    for (const QFileInfo& entry : entries) {
        const QString source = entry.absoluteFilePath();
        if (entry.isDir()) {
            logCopy(dstDir, QDir(source), entry.fileName());
            copyTree(dstDir, QDir(source), entry.fileName());
            continue;
        }
        const QString copy = dstDir.absoluteFilePath(entry.fileName());
        // A link may lead to a pipe or a device, whose end never comes.
        if (!entry.isFile() || !QFile::copy(source, copy))
            failCopy(source, copy);
    }
    return dstDir;
}

void deleteFile(const QFileInfo& file)
{
    const QString path = file.absoluteFilePath();
    TROVEK_LOG(2) << "QFile(\"" << toStdString(path) << "\").remove()" << std::endl;
    if (QFile::remove(path))
        return;
    // A link to a folder is a folder of its own kind on Windows; elsewhere this fails again.
    if (!file.isSymLink() || !QDir().rmdir(path))
        fail(QStringLiteral("Unable to delete file %1").arg(path));
}

} // namespace

QDir recursiveCopyRename(QDir dstDir, QDir srcDir, const QString& dstName)
{
    logCopy(dstDir, srcDir, dstName);
    if (dstDir.exists() && isPlainName(dstName))
        refuseEndlessCopy(srcDir, dstDir.absoluteFilePath(dstName), dstDir.canonicalPath(), {});
    return copyTree(dstDir, srcDir, dstName);
}

void recursiveDelete(QDir dir)
{
    TROVEK_LOG(1) << "recursiveDelete(\"" << toStdString(dir.absolutePath()) << "\")" << std::endl;
    const QFileInfo self(dir.absolutePath());
    if (self.isSymLink()) {
        deleteFile(self);
        return;
    }
    if (!dir.exists())
        return;

    // System entries are links that point nowhere, pipes and sockets: in the way of the rmdir()
    // too.
    const QFileInfoList entries = dir.entryInfoList(QDir::Dirs | QDir::Files | QDir::Hidden |
                                                    QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        if (entry.isDir() && !entry.isSymLink())
            recursiveDelete(QDir(entry.absoluteFilePath()));
        else
            deleteFile(entry);
    }
    if (!dir.rmdir(dir.absolutePath()))
        fail(QStringLiteral("Unable to delete directory %1").arg(dir.absolutePath()));
}

} // namespace trovek
