#include "file_access.h"

#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>

#include <stdexcept>

namespace trovek::service {

namespace {

std::unique_ptr<QFile> openChecked(const std::string& doing, const std::string& path,
                                   QIODevice::OpenMode mode)
{
    const QString name = toQString(path);
    const QFileInfo info(name);
    const auto fail = [&](const std::string& reason) {
        throw std::runtime_error("Cannot " + doing + " " + path + ": " + reason);
    };
    if (!info.isAbsolute() || name.contains(QChar(u'\0')))
        fail("its path is not absolute");
    if (info.isSymLink() && (mode & QIODevice::WriteOnly))
        fail("it is a link");
    if (!info.exists())
        fail("it does not exist");
    if (!info.isFile())
        fail("it is not a regular file");
    auto file = std::make_unique<QFile>(name);
    if (!file->open(mode))
        fail(toStdString(file->errorString()));
    return file;
}

} // namespace

std::unique_ptr<QFile> openInput(const std::string& path)
{
    return openChecked("read", path, QIODevice::ReadOnly);
}

std::unique_ptr<QFile> openOutput(const std::string& path)
{
    return openChecked("write to", path,
                       QIODevice::WriteOnly | QIODevice::Unbuffered | QIODevice::Truncate |
                           QIODevice::ExistingOnly);
}

void checkOutputFolder(const std::string& path)
{
    const QFileInfo info(toQString(path));
    if (!info.isAbsolute() || info.isSymLink() || !info.isDir())
        throw std::runtime_error("Cannot write to " + path + ": its folder is none, or is a link");
}

std::unique_ptr<QFile> openOutputIn(const std::string& folder, const std::string& name)
{
    checkOutputFolder(folder);
    const std::string path = folder + "/" + name;
    // Made first, when it is missing, so that it is opened with the checks of all other files.
    QFile(toQString(path)).open(QIODevice::WriteOnly | QIODevice::NewOnly);
    return openOutput(path);
}

} // namespace trovek::service
