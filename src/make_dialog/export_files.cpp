#include "make_dialog/export_files.h"

#include "trovek-ui/file_system.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <stdexcept>

namespace trovek {

namespace {

QString translated(const char* text)
{
    return QCoreApplication::translate("trovek::MakeDialog", text);
}

} // namespace

std::list<FileFilter> exportFilters()
{
    return {
        FileFilter(translated(QT_TRANSLATE_NOOP("trovek::MakeDialog",
                                                "X3G, SD print for firmware 7.0 or later")),
                   QStringLiteral("x3g")),
        FileFilter(translated(QT_TRANSLATE_NOOP("trovek::MakeDialog",
                                                "S3G, SD print for firmware earlier than 7.0")),
                   QStringLiteral("s3g")),
        FileFilter(translated(QT_TRANSLATE_NOOP("trovek::MakeDialog", "GCode, slice only")),
                   QStringLiteral("gcode")),
    };
}

FileFilterList preselectFilter(const std::list<FileFilter>& filters, const QString& savedText)
{
    if (filters.empty())
        throw std::runtime_error("Empty filters");
    const auto saved =
        std::find_if(filters.begin(), filters.end(), [&savedText](const FileFilter& filter) {
            return filter.filterString() == savedText;
        });
    return FileFilterList(filters, saved == filters.end() ? filters.front() : *saved);
}

QString createServiceOutput(const QString& fileName)
{
    QFile file(TemporaryDir::managedDir().absoluteFilePath(fileName));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw std::runtime_error("Failed to create temporary file");
    file.close();
    file.setPermissions(file.permissions() | QFileDevice::WriteOther);
    return file.fileName();
}

void removeServiceOutput(const QString& path)
{
    if (QFile::remove(path))
        QDir().rmdir(QFileInfo(path).path());
}

} // namespace trovek
