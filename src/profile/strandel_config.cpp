#include "profile/strandel_config.h"

#include "profile/json_file.h"

#include <json/writer.h>

namespace trovek {

namespace {

/** The number of digits that keeps 0.2 as 0.2, and the one that keeps every real. */
constexpr int kShortDigits = 15;
constexpr int kAllDigits = 17;

QString pathIn(const QDir& profile)
{
    return profile.absoluteFilePath(QStringLiteral("strandel.json"));
}

QByteArray styled(const Json::Value& config, int digits)
{
    Json::StreamWriterBuilder builder;
    builder["commentStyle"] = "All";
    builder["emitUTF8"] = true;
    builder["indentation"] = "   ";
    builder["precision"] = digits;
    return QByteArray::fromStdString(Json::writeString(builder, config)) + '\n';
}

/** As short as can be, since users read it. */
QByteArray styled(const Json::Value& config)
{
    const QByteArray bytes = styled(config, kShortDigits);
    Json::Value readBack;
    return parseJson(bytes, &readBack) && readBack == config ? bytes : styled(config, kAllDigits);
}

} // namespace

Json::Value readStrandelConfig(const QDir& profile)
{
    return readJsonFile(pathIn(profile), "Failed to open strandel.json",
                        "Failed to parse strandel.json");
}

void writeStrandelConfig(const QDir& profile, const Json::Value& config)
{
    replaceFile(pathIn(profile), styled(config), "Failed to open strandel.json for write",
                "Failed to write strandel.json");
}

} // namespace trovek
