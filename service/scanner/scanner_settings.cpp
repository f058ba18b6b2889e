#include "scanner/scanner_settings.h"

#include <cmath>
#include <limits>
#include <stdexcept>

namespace trovek::service {

using geometry::RigidTransform;
using geometry::Vector;

namespace {

constexpr double kPi = 3.14159265358979323846;

/** The members of one object, each to be asked for once; what nobody asked for is unknown. */
class Members
{
public:
    Members(const Json::Value& object, std::string path)
        : m_object(object)
        , m_path(std::move(path))
    {
        if (!object.isObject())
            throw std::runtime_error(
                "Scanner settings: " +
                (m_path.empty() ? std::string("not an object")
                                : m_path.substr(0, m_path.size() - 1) + " is not an object"));
        for (const std::string& name : object.getMemberNames())
            m_unknown[name] = true;
    }

    void read(const char* name, bool& value)
    {
        if (const Json::Value* member = find(name)) {
            check(member->isBool(), name, "must be true or false");
            value = member->asBool();
        }
    }

    void read(const char* name, std::string& value)
    {
        if (const Json::Value* member = find(name)) {
            check(member->isString(), name, "must be a text");
            value = member->asString();
        }
    }

    void read(const char* name, int& value, int least, int most)
    {
        if (const Json::Value* member = find(name)) {
            check(member->isInt() && member->asInt() >= least && member->asInt() <= most, name,
                  "must be a whole number from " + std::to_string(least) + " to " +
                      std::to_string(most));
            value = member->asInt();
        }
    }

    void read(const char* name, double& value, double least, double most)
    {
        if (const Json::Value* member = find(name)) {
            check(isNumber(*member, least, most), name,
                  "must be a number from " + text(least) + " to " + text(most));
            value = member->asDouble();
        }
    }

    void read(const char* name, Vector& value, double most)
    {
        if (const Json::Value* member = find(name)) {
            const Json::Value& list = *member;
            check(list.isArray() && list.size() == 3 && isNumber(list[0], -most, most) &&
                      isNumber(list[1], -most, most) && isNumber(list[2], -most, most),
                  name, "must be three numbers from " + text(-most) + " to " + text(most));
            value = {list[0].asDouble(), list[1].asDouble(), list[2].asDouble()};
        }
    }

    void read(const char* name, std::array<int, 3>& value)
    {
        if (const Json::Value* member = find(name)) {
            const Json::Value& list = *member;
            const auto isPart = [](const Json::Value& part) {
                return part.isInt() && part.asInt() >= 0;
            };
            check(list.isArray() && list.size() == 3 && isPart(list[0]) && isPart(list[1]) &&
                      isPart(list[2]),
                  name, "must be three whole numbers, none below 0");
            value = {list[0].asInt(), list[1].asInt(), list[2].asInt()};
        }
    }

    /** Null when there is none. */
    const Json::Value* find(const char* name)
    {
        m_unknown.removeMember(name);
        return m_object.isMember(name) ? &m_object[name] : nullptr;
    }

    void check(bool isRight, const std::string& name, const std::string& what) const
    {
        if (!isRight)
            throw std::runtime_error("Scanner settings: " + m_path + name + " " + what);
    }

    void checkAllKnown() const
    {
        for (const std::string& name : m_unknown.getMemberNames())
            check(false, name, "is not a member");
    }

private:
    static bool isNumber(const Json::Value& value, double least, double most)
    {
        return value.isNumeric() && value.asDouble() >= least && value.asDouble() <= most;
    }

    static std::string text(double number)
    {
        std::string digits = std::to_string(number);
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.back() == '.')
            digits.pop_back();
        return digits;
    }

    const Json::Value& m_object;
    const std::string m_path;
    Json::Value m_unknown{Json::objectValue};
};

ScannedModel readModel(const Json::Value& value, const std::string& path)
{
    constexpr double kFarthest = 1000;
    ScannedModel model;
    Members members(value, path);
    members.read("path", model.path);
    members.check(model.path.empty() || model.path.front() == '/', "path", "must be absolute");
    members.read("turn", model.turn, 360);
    members.read("position", model.position, kFarthest);
    members.checkAllKnown();
    return model;
}

} // namespace

RigidTransform ScannedModel::toTable() const
{
    const auto about = [](const Vector& axis, double degrees) {
        return RigidTransform::turning(axis, degrees * kPi / 180);
    };
    return RigidTransform::moving(position) * about(Vector{0, 0, 1}, turn.z) *
           about(Vector{0, 1, 0}, turn.y) * about(Vector{1, 0, 0}, turn.x);
}

ScannerSettings scannerSettingsFromJson(const Json::Value& value)
{
    ScannerSettings settings;
    Members members(value, "");
    members.read("plugged_in", settings.pluggedIn);
    members.read("device_path", settings.devicePath);
    members.check(!settings.devicePath.empty(), "device_path", "must not be empty");
    members.read("version", settings.version);
    members.read("tolerance", settings.tolerance, 0, 3);
    int seed = 1;
    members.read("seed", seed, 0, std::numeric_limits<int>::max());
    settings.seed = static_cast<unsigned>(seed);
    members.read("line_noise", settings.lineNoise, 0, 10);
    members.read("stray_light", settings.strayLight, 0, 0.5);
    if (const Json::Value* const camera = members.find("camera")) {
        Members inner(*camera, "camera.");
        inner.read("width", settings.width, 320, 4096);
        inner.read("height", settings.height, 240, 4096);
        inner.read("field_of_view", settings.fieldOfView, 30, 60);
        inner.read("noise", settings.pictureNoise, 0, 50);
        inner.checkAllKnown();
    }
    if (const Json::Value* const model = members.find("model"))
        settings.model = readModel(*model, "model.");
    members.checkAllKnown();
    return settings;
}

ScannedModel scannedModelFromJson(const Json::Value& value)
{
    return readModel(value, "");
}

Json::Value toJson(const ScannedModel& model)
{
    const auto listOf = [](const Vector& vector) {
        Json::Value list(Json::arrayValue);
        for (const double coordinate : {vector.x, vector.y, vector.z})
            list.append(coordinate);
        return list;
    };
    Json::Value value(Json::objectValue);
    value["path"] = model.path;
    value["turn"] = listOf(model.turn);
    value["position"] = listOf(model.position);
    return value;
}

} // namespace trovek::service
