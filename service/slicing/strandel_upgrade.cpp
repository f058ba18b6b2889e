#include "slicing/strandel_config.h"
#include "slicing/strandel_section.h"
#include "slicing/usual_settings.h"

#include <string>
#include <utility>

namespace trovek::service {

namespace {

/** A document on its way to the next version: keys of the old one are taken out, new ones put in.
 */
class Step
{
public:
    explicit Step(Json::Value& document)
        : m_document(document)
    {}

    double takeNumber(const char* key, double least, double most)
    {
        const double value = section().number(key, least, most);
        m_document.removeMember(key);
        return value;
    }

    int takeWholeNumber(const char* key, int least, int most)
    {
        const int value = section().wholeNumber(key, least, most);
        m_document.removeMember(key);
        return value;
    }

    bool takeBoolean(const char* key)
    {
        const bool value = section().boolean(key);
        m_document.removeMember(key);
        return value;
    }

    std::string takeText(const char* key)
    {
        const std::string value = section().text(key);
        m_document.removeMember(key);
        return value;
    }

    /** A list of two, the right or only tool's first; isGood(value) says what may stand in it. */
    template <typename IsGood>
    Json::Value takePair(const char* key, const char* problem, IsGood isGood)
    {
        const Json::Value pair = section().at(key);
        if (!pair.isArray() || pair.size() != 2 || !isGood(pair[0]) || !isGood(pair[1]))
            section().fail(key, problem);
        m_document.removeMember(key);
        return pair;
    }

    /** What is not known is kept, so it must not be in the way of what is. */
    void put(const char* key, Json::Value value)
    {
        if (m_document.isMember(key))
            section().fail(key, "does not belong into this version");
        m_document[key] = std::move(value);
    }

    void setVersion(int version) { m_document["version"] = version; }

private:
    StrandelSection section() const { return StrandelSection(m_document); }

    Json::Value& m_document;
};

/** Version 1 counted speeds in millimetres a minute and infill in percent. */
void upgradeToVersion2(Json::Value& document)
{
    constexpr double kSecondsAMinute = 60;
    Step step(document);
    const double layerHeight = step.takeNumber("layerHeight", 0.01, 1);
    step.put("layer_height", layerHeight);
    step.put("first_layer_height", firstLayerHeightFor(layerHeight));
    step.put("infill", step.takeNumber("infillPercent", 0, 100) / 100);
    step.put("shells", step.takeWholeNumber("numberOfShells", 0, 100));
    step.put("solid_layers", solidLayersFor(layerHeight));
    const double printSpeed = step.takeNumber("printSpeed", 60, 30000) / kSecondsAMinute;
    step.put("print_speed", printSpeed);
    step.put("first_layer_speed", firstLayerSpeedFor(printSpeed));
    step.put("travel_speed", step.takeNumber("travelSpeed", 60, 30000) / kSecondsAMinute);

    const Json::Value materials =
        step.takePair("material", "must be a list of two texts",
                      [](const Json::Value& value) { return value.isString(); });
    step.put("right_material", materials[0]);
    step.put("left_material", materials[1]);
    const Json::Value temperatures = step.takePair(
        "temperature", "must be a list of two whole numbers from 0 to 400",
        [](const Json::Value& value) { return value.isUInt() && value.asUInt() <= 400; });
    step.put("right_temperature", temperatures[0]);
    step.put("left_temperature", temperatures[1]);
    const int platform = step.takeWholeNumber("platformTemperature", 0, 400);
    step.put("heat_platform", platform > 0);
    step.put("platform_temperature", platform);
    step.put("raft", step.takeBoolean("doRaft"));
    step.put("raft_extruder", step.takeWholeNumber("raftTool", 0, 1));
    step.put("supports", step.takeBoolean("doSupport"));
    step.put("support_extruder", step.takeWholeNumber("supportTool", 0, 1));
    step.setVersion(2);
}

const char* extraPartName(bool isOn, int tool)
{
    return !isOn ? "off" : tool == 0 ? "right" : "left";
}

/** Version 2 had one fan and one retraction for both extruders, and none of its own before. */
void upgradeToVersion3(Json::Value& document)
{
    Step step(document);
    const StrandelSection whole(document);
    step.put("outer_shell_speed", outerShellSpeedFor(whole.number("print_speed", 1, 500)));
    step.put("infill_pattern", "linear");
    step.put("support_angle", 45);

    const char* const sides[] = {"right", "left"};
    for (const std::string side : sides) {
        const ToolSettings usual = materialSettings(step.takeText((side + "_material").c_str()));
        Json::Value tool(Json::objectValue);
        tool["material"] = usual.material;
        tool["temperature"] = step.takeWholeNumber((side + "_temperature").c_str(), 0, 400);
        tool["flow"] = usual.flow;
        tool["fan"] = usual.fan;
        tool["minimum_layer_seconds"] = usual.minimumLayerSeconds;
        tool["retraction"] = usual.retraction;
        tool["retraction_speed"] = usual.retractionSpeed;
        tool["filament_diameter"] = usual.filamentDiameter;
        tool["nozzle_diameter"] = usual.nozzleDiameter;
        step.put((side + "_extruder").c_str(), tool);
    }
    const bool hasRaft = step.takeBoolean("raft");
    step.put("raft", extraPartName(hasRaft, step.takeWholeNumber("raft_extruder", 0, 1)));
    const bool hasSupports = step.takeBoolean("supports");
    step.put("supports",
             extraPartName(hasSupports, step.takeWholeNumber("support_extruder", 0, 1)));
    step.setVersion(3);
}

} // namespace

Json::Value upgradeStrandelConfig(const Json::Value& document)
{
    const StrandelSection whole(document);
    const int version = whole.wholeNumber("version", 1, 1'000'000);
    if (version > kStrandelVersion) {
        whole.fail("version", "is " + std::to_string(version) + "; this service knows none above " +
                                  std::to_string(kStrandelVersion));
    }
    Json::Value upgraded = document;
    if (version < 2)
        upgradeToVersion2(upgraded);
    if (version < 3)
        upgradeToVersion3(upgraded);
    return upgraded;
}

} // namespace trovek::service
