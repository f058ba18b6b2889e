#include "profile/json_file.h"

#include <json/reader.h>

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <memory>
#include <stdexcept>

namespace trovek {

bool parseJson(const QByteArray& bytes, Json::Value* value)
{
    Json::CharReaderBuilder builder;
    builder["allowTrailingCommas"] = false;
    builder["collectComments"] = true;
    builder["failIfExtra"] = true;
    builder["skipBom"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    try {
        return reader->parse(bytes.constData(), bytes.constData() + bytes.size(), value, nullptr);
    } catch (const std::exception&) {
        return false; // nested deeper than the reader goes
    }
}

Json::Value readJsonFile(const QString& path, const std::string& openError,
                         const std::string& parseError)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        throw std::runtime_error(openError);
    const QByteArray bytes = file.read(kLargestProfileFile + 1);
    Json::Value value;
    if (file.error() != QFileDevice::NoError || bytes.size() > kLargestProfileFile ||
        !parseJson(bytes, &value))
        throw std::runtime_error(parseError);
    return value;
}

void replaceFile(const QString& path, const QByteArray& bytes, const std::string& openError,
                 const std::string& writeError)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        throw std::runtime_error(openError);
    // A commit by itself would overlook that what is still buffered cannot be written.
    if (file.write(bytes) != bytes.size() || !file.flush() || !file.commit())
        throw std::runtime_error(writeError);
}

} // namespace trovek
