#include "slicing/slice_profile.h"

#include "gcode/file_access.h"

#include <rpcwire/json_text.h>
#include <trovek/text.h>

#include <QDir>
#include <QFile>

#include <memory>
#include <stdexcept>
#include <string_view>

namespace trovek::service {

namespace {

constexpr char kSettingsFile[] = "strandel.json";
/** Far more than anyone writes by hand. */
constexpr qint64 kLargestFile = 1 << 20;
/** Some editors leave it in front of a text. */
constexpr char kByteOrderMark[] = "\xef\xbb\xbf";

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

std::string withoutMark(const std::string& text)
{
    const std::string_view mark = kByteOrderMark;
    return text.compare(0, mark.size(), mark) == 0 ? text.substr(mark.size()) : text;
}

/** JSON has none, but editors and users put them there; what they leave is blank. */
std::string withoutComments(std::string text)
{
    char inside = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view next = std::string_view(text).substr(i, 2);
        if (inside == '"') {
            if (text[i] == '\\')
                ++i;
            else if (text[i] == '"')
                inside = 0;
        } else if (inside == '/' ? text[i] == '\n' || text[i] == '\r'
                                 : inside == '*' && next == "*/") {
            if (inside == '*')
                text.replace(i++, 2, "  ");
            inside = 0;
        } else if (inside != 0) {
            // Errors tell of lines.
            if (text[i] != '\n')
                text[i] = ' ';
        } else if (next == "//" || next == "/*") {
            inside = next[1];
            text.replace(i++, 2, "  ");
        } else if (text[i] == '"') {
            inside = '"';
        }
    }
    return text;
}

} // namespace

SliceProfile loadSliceProfile(const std::string& folder)
{
    if (!QDir::isAbsolutePath(toQString(folder)))
        throw std::runtime_error("The profile's folder is not an absolute path");
    SliceProfile profile;
    profile.config = parseStrandelConfig(readFile(folder, kSettingsFile));
    profile.startCode = withoutMark(readFile(folder, "start.gcode"));
    profile.endCode = withoutMark(readFile(folder, "end.gcode"));
    return profile;
}

StrandelConfig parseStrandelConfig(const std::string& text)
{
    Json::Value document;
    std::string error;
    if (!rpcwire::parseJson(withoutComments(withoutMark(text)), &document, &error))
        throw std::runtime_error(std::string(kSettingsFile) + ": is not valid JSON: " + error);
    return readStrandelConfig(document);
}

} // namespace trovek::service
