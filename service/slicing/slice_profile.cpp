#include "slicing/slice_profile.h"

#include "gcode/file_access.h"

#include <rpcwire/json_text.h>
#include <trovek/text.h>

#include <QDir>
#include <QFile>

#include <stdexcept>

namespace trovek::service {

namespace {

/** Far more than anyone writes by hand. */
constexpr qint64 kLargestFile = 1 << 20;

std::string readFile(const std::string& folder, const char* name)
{
    const QString path = QDir(toQString(folder)).filePath(QString::fromLatin1(name));
    const std::unique_ptr<QFile> file = openInput(toStdString(path));
    const QByteArray bytes = file->read(kLargestFile + 1);
    if (file->error() != QFileDevice::NoError)
        throw std::runtime_error(std::string(name) + ": " + toStdString(file->errorString()));
    if (bytes.size() > kLargestFile)
        throw std::runtime_error(std::string(name) + ": is larger than 1 MiB");
    return bytes.toStdString();
}

} // namespace

SliceProfile loadSliceProfile(const std::string& folder)
{
    SliceProfile profile;
    Json::Value document;
    std::string error;
    if (!rpcwire::parseJson(readFile(folder, "strandel.json"), &document, &error))
        throw std::runtime_error("strandel.json: is not valid JSON: " + error);
    profile.config = readStrandelConfig(document);
    profile.startCode = readFile(folder, "start.gcode");
    profile.endCode = readFile(folder, "end.gcode");
    return profile;
}

} // namespace trovek::service
