#include "profile/profile_json.h"

#include "profile/json_file.h"
#include "trovek-ui/machine_types.h"

#include <rpcwire/json_text.h>
#include <trovek/text.h>

#include <json/writer.h>

#include <stdexcept>
#include <string>

namespace trovek {

namespace {

constexpr char kMachineType[] = "machine_type";
constexpr char kSlicer[] = "slicer";

/** JsonCpp throws when an array or a text is asked for a member. */
bool hasMember(const Json::Value& value, const char* name)
{
    return value.isObject() && value.isMember(name);
}

/** The name as the file has it, also where it has something else than a text. */
std::string nameOf(const Json::Value& element)
{
    return element.isString() ? element.asString() : rpcwire::toJsonLine(element);
}

} // namespace

std::vector<Printer::Type> machineTypesOf(const Json::Value& profileJson)
{
    if (!hasMember(profileJson, kMachineType))
        throw std::runtime_error("profile.json is missing the machine_type field");
    const Json::Value& names = profileJson[kMachineType];
    if (!names.isArray())
        throw std::runtime_error("profile.json machine_type field not an array");

    std::vector<Printer::Type> types;
    for (const Json::Value& element : names) {
        const std::string name = nameOf(element);
        try {
            types.push_back(printerTypeFromIdentifier(toQString(name)));
        } catch (const std::runtime_error&) {
            throw std::runtime_error("machine_type contains invalid name " + name);
        }
    }
    return types;
}

SlicerConfiguration::Slicer slicerOf(const Json::Value& profileJson)
{
    if (!hasMember(profileJson, kSlicer))
        throw std::runtime_error("profile.json is missing the slicer field");
    const Json::Value& slicer = profileJson[kSlicer];
    if (!slicer.isString())
        throw std::runtime_error("profile.json slicer field not a string");
    return slicerFromIdentifier(toQString(slicer.asString()));
}

Json::Value makeProfileJson(SlicerConfiguration::Slicer slicer,
                            const std::vector<Printer::Type>& types)
{
    Json::Value names(Json::arrayValue);
    for (const Printer::Type type : types)
        names.append(toStdString(printerTypeToIdentifier(type)));
    Json::Value profileJson;
    profileJson[kSlicer] = toStdString(slicerToIdentifier(slicer));
    profileJson[kMachineType] = names;
    return profileJson;
}

void writeProfileJson(const QDir& folder, const Json::Value& profileJson)
{
    replaceFile(folder.absoluteFilePath(QStringLiteral("profile.json")),
                QByteArray::fromStdString(Json::StyledWriter().write(profileJson)),
                "Cannot open profile.json for writing", "Cannot write profile.json");
}

} // namespace trovek
