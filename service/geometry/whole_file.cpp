#include "whole_file.h"

#include "gcode/file_access.h"
#include "text_words.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <stdexcept>

namespace trovek::geometry {

namespace {

[[noreturn]] void failToWrite(const std::string& path, const std::string& reason)
{
    throw std::runtime_error("Cannot write to " + path + ": " + reason);
}

} // namespace

std::string readWholeFile(const std::string& path)
{
    const std::unique_ptr<QFile> file = service::openInput(path);
    std::string bytes;
    // What grows while it is read is read up to the size that it had.
    const qint64 size = file->size();
    if (size > qint64(kMostFileBytes))
        throw std::runtime_error("Cannot read " + path + ": it is larger than 1 GiB");
    bytes.resize(std::size_t(size));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const qint64 count = file->read(bytes.data() + filled, qint64(bytes.size() - filled));
        if (count < 0)
            throw std::runtime_error("Cannot read " + path + ": " +
                                     file->errorString().toStdString());
        if (count == 0)
            break;
        filled += std::size_t(count);
    }
    bytes.resize(filled);
    return bytes;
}

std::string endingOf(std::string_view path)
{
    const std::size_t name = path.find_last_of("/\\");
    const std::size_t dot = path.rfind('.');
    if (dot == std::string_view::npos || (name != std::string_view::npos && dot < name))
        return {};
    return lowerCase(path.substr(dot + 1));
}

void replaceFile(const std::string& path, const std::function<void(const ByteSink& sink)>& write)
{
    const QString name = QString::fromUtf8(path.data(), int(path.size()));
    if (path.find('\0') != std::string::npos || !QFileInfo(name).isAbsolute())
        failToWrite("\"" + name.toStdString() + "\"", "its path is not absolute");
    QSaveFile file(name);
    // A commit would overlook that what a buffer still holds cannot be written.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        failToWrite(path, file.errorString().toStdString());
    write([&](const char* bytes, std::size_t size) {
        // On a full disk a part is written first; why no more is only said when the rest fails.
        while (size > 0) {
            const qint64 count = file.write(bytes, qint64(size));
            if (count <= 0)
                failToWrite(path, file.errorString().toStdString());
            bytes += count;
            size -= std::size_t(count);
        }
    });
    if (!file.commit())
        failToWrite(path, file.errorString().toStdString());
}

} // namespace trovek::geometry
