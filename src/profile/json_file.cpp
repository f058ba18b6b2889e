#include "profile/json_file.h"

#include <json/reader.h>
#include <json/writer.h>

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <memory>
#include <stdexcept>

namespace trovek {

namespace {

/** Many times what a profile has; more is something else. */
constexpr qint64 kLargestFile = 4 * 1024 * 1024;

/** The number of digits that keeps 0.2 as 0.2, and the one that keeps every double. */
constexpr int kShortDigits = 15;
constexpr int kAllDigits = 17;

bool parse(QByteArray bytes, Json::Value* value)
{
    if (bytes.startsWith("\xef\xbb\xbf"))
        bytes.remove(0, 3);
    Json::CharReaderBuilder builder;
    builder["collectComments"] = true;
    builder["failIfExtra"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    try {
        return reader->parse(bytes.constData(), bytes.constData() + bytes.size(), value, nullptr);
    } catch (const std::exception&) {
        return false; // nested deeper than the reader goes
    }
}

QByteArray toBytes(const Json::Value& value, int digits)
{
    Json::StreamWriterBuilder builder;
    builder["commentStyle"] = "All";
    builder["emitUTF8"] = true;
    builder["indentation"] = "    ";
    builder["precision"] = digits;
    return QByteArray::fromStdString(Json::writeString(builder, value)) + '\n';
}

QByteArray toBytes(const Json::Value& value)
{
    const QByteArray bytes = toBytes(value, kShortDigits);
    Json::Value readBack;
    return parse(bytes, &readBack) && readBack == value ? bytes : toBytes(value, kAllDigits);
}

} // namespace

Json::Value readJsonFile(const QString& path, const std::string& openError,
                         const std::string& parseError)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        throw std::runtime_error(openError);
    const QByteArray bytes = file.read(kLargestFile + 1);
    Json::Value value;
    if (file.error() != QFileDevice::NoError || bytes.size() > kLargestFile ||
        !parse(bytes, &value))
        throw std::runtime_error(parseError);
    return value;
}

void writeJsonFile(const QString& path, const Json::Value& value, const std::string& openError,
                   const std::string& writeError)
{
    const QByteArray bytes = toBytes(value);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        throw std::runtime_error(openError);
    if (file.write(bytes) != bytes.size() || !file.commit())
        throw std::runtime_error(writeError);
}

} // namespace trovek
