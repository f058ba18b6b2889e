#include "onboard_preferences/preferences_file.h"

#include <rpcwire/json_text.h>
#include <trovek/text.h>

#include <json/writer.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <stdexcept>
#include <string_view>

namespace trovek {

namespace {

/** Many times what the largest printer has; more is something else. */
constexpr qint64 kLargestFile = 16 * 1024 * 1024;

class Texts
{
    Q_DECLARE_TR_FUNCTIONS(trovek::PreferencesFile)
};

[[noreturn]] void fail(const QString& text)
{
    throw std::runtime_error(toStdString(text));
}

QByteArray toStyledJson(const Json::Value& map)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    return QByteArray::fromStdString(Json::writeString(builder, map)) + '\n';
}

} // namespace

void savePreferencesFile(const QString& path, const Json::Value& map)
{
    const QByteArray bytes = toStyledJson(map);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush() ||
        !file.commit()) {
        fail(Texts::tr("%1 cannot be written: %2")
                 .arg(QDir::toNativeSeparators(path), file.errorString()));
    }
}

Json::Value loadPreferencesFile(const QString& path)
{
    const QString name = QDir::toNativeSeparators(path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(Texts::tr("%1 cannot be read: %2").arg(name, file.errorString()));
    QByteArray bytes = file.read(kLargestFile + 1);
    if (file.error() != QFileDevice::NoError)
        fail(Texts::tr("%1 cannot be read: %2").arg(name, file.errorString()));
    if (bytes.size() > kLargestFile)
        fail(Texts::tr("%1 is too large for a file of onboard preferences.").arg(name));
    // Some editors put a byte order mark in front.
    if (bytes.startsWith("\xef\xbb\xbf"))
        bytes.remove(0, 3);

    Json::Value map;
    std::string error;
    if (!rpcwire::parseJson(
            std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())), &map,
            &error)) {
        fail(Texts::tr("%1 is not a file of onboard preferences: %2").arg(name, toQString(error)));
    }
    if (!map.isObject() || !map.isMember("eeprom_map") || !map["eeprom_map"].isObject())
        fail(Texts::tr("%1 is not a file of onboard preferences.").arg(name));
    return map;
}

} // namespace trovek
