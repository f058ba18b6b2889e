#include "profile/strandel_config.h"

#include "profile/json_file.h"

namespace trovek {

namespace {

QString pathIn(const QDir& profile)
{
    return profile.absoluteFilePath(QStringLiteral("strandel.json"));
}

} // namespace

Json::Value readStrandelConfig(const QDir& profile)
{
    return readJsonFile(pathIn(profile), "Failed to open strandel.json",
                        "Failed to parse strandel.json");
}

void writeStrandelConfig(const QDir& profile, const Json::Value& config)
{
    writeJsonFile(pathIn(profile), config, "Failed to open strandel.json for write",
                  "Failed to write strandel.json");
}

} // namespace trovek
