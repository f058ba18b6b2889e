#include "slicing/strandel_config.h"

#include "gcode/number_text.h"

#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <type_traits>

namespace trovek::service {

namespace {

constexpr char kDocument[] = "strandel.json";
constexpr char kToolKeys[][16] = {"right_extruder", "left_extruder"};

template <typename Value>
struct Name
{
    const char* text;
    Value value;
};

constexpr Name<InfillPattern> kPatterns[] = {
    {"linear", InfillPattern::Linear},
    {"grid", InfillPattern::Grid},
    {"hexagonal", InfillPattern::Hexagonal},
    {"gyroid", InfillPattern::Gyroid},
};
constexpr Name<ExtraPartChoice> kChoices[] = {
    {"off", ExtraPartChoice::Off},
    {"color_matched", ExtraPartChoice::ColorMatched},
    {"right", ExtraPartChoice::Right},
    {"left", ExtraPartChoice::Left},
};

/** Calls visit(key, member, least, most) for every number that is no tool's. */
template <typename Config, typename Visit>
void visitNumbers(Config& config, Visit visit)
{
    visit("layer_height", config.layerHeight, 0.01, 1.0);
    visit("first_layer_height", config.firstLayerHeight, 0.05, 1.0);
    visit("infill", config.infill, 0.0, 1.0);
    visit("shells", config.shells, 0, 100);
    visit("solid_layers", config.solidLayers, 0, 1000);
    visit("print_speed", config.printSpeed, 1.0, 500.0);
    visit("outer_shell_speed", config.outerShellSpeed, 0.5, 500.0);
    visit("first_layer_speed", config.firstLayerSpeed, 0.5, 500.0);
    visit("travel_speed", config.travelSpeed, 1.0, 500.0);
    visit("support_angle", config.supportAngle, 0.0, 90.0);
    visit("platform_temperature", config.platformCelsius, 0, 400);
}

template <typename Tool, typename Visit>
void visitToolNumbers(Tool& tool, Visit visit)
{
    visit("temperature", tool.celsius, 0, 400);
    visit("flow", tool.flow, 0.5, 2.0);
    visit("fan", tool.fan, 0.0, 1.0);
    visit("minimum_layer_seconds", tool.minimumLayerSeconds, 0.0, 300.0);
    visit("retraction", tool.retraction, 0.0, 20.0);
    visit("retraction_speed", tool.retractionSpeed, 1.0, 200.0);
    visit("filament_diameter", tool.filamentDiameter, 0.5, 5.0);
    visit("nozzle_diameter", tool.nozzleDiameter, 0.1, 2.0);
}

[[noreturn]] void fail(const std::string& where, const std::string& text)
{
    throw std::runtime_error(where + ": " + text);
}

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

/** An object of the document, which knows how its keys are called in errors. */
class Section
{
public:
    Section(const Json::Value& value, std::string prefix)
        : m_value(value)
        , m_prefix(std::move(prefix))
    {}

    const Json::Value& at(const char* key) const
    {
        const Json::Value* member = m_value.find(key, key + std::char_traits<char>::length(key));
        if (!member)
            fail(kDocument, nameOf(key) + " is missing");
        return *member;
    }

    Section section(const char* key) const
    {
        const Json::Value& member = at(key);
        if (!member.isObject())
            fail(kDocument, nameOf(key) + " must be an object");
        return Section(member, m_prefix + key + ".");
    }

    template <typename Number>
    void read(const char* key, Number& number, Number least, Number most) const
    {
        const Json::Value& member = at(key);
        const bool isWhole = std::is_integral_v<Number>;
        const double value = member.isNumeric() ? member.asDouble() : NAN;
        if (!(value >= least && value <= most) || (isWhole && value != std::floor(value)))
            failRange(kDocument, nameOf(key), least, most);
        number = static_cast<Number>(value);
    }

    bool boolean(const char* key) const
    {
        const Json::Value& member = at(key);
        if (!member.isBool())
            fail(kDocument, nameOf(key) + " must be true or false");
        return member.asBool();
    }

    std::string text(const char* key) const
    {
        const Json::Value& member = at(key);
        if (!member.isString())
            fail(kDocument, nameOf(key) + " must be a text");
        return member.asString();
    }

    template <typename Value, std::size_t Count>
    Value named(const char* key, const Name<Value> (&names)[Count]) const
    {
        const Json::Value& member = at(key);
        std::string all;
        for (std::size_t i = 0; i < Count; ++i) {
            if (member.isString() && member.asString() == names[i].text)
                return names[i].value;
            all += (i == 0 ? "" : i + 1 == Count ? " or " : ", ") + quoted(names[i].text);
        }
        fail(kDocument, nameOf(key) + " must be " + all);
    }

    template <typename Number>
    [[noreturn]] static void failRange(const std::string& where, const std::string& name,
                                       Number least, Number most)
    {
        const bool isWhole = std::is_integral_v<Number>;
        fail(where, name + " must be a " + (isWhole ? "whole " : "") + "number from " +
                        numberText(least) + " to " + numberText(most));
    }

private:
    std::string nameOf(const char* key) const { return quoted(m_prefix + key); }

    const Json::Value& m_value;
    const std::string m_prefix;
};

int versionOf(const Json::Value& document)
{
    if (!document.isObject())
        fail(kDocument, "must be an object");
    int version = 0;
    Section(document, {}).read("version", version, 1, 1'000'000);
    return version;
}

} // namespace

StrandelVersion checkStrandelVersion(const Json::Value& document)
{
    const int version = versionOf(document);
    if (version > kStrandelVersion)
        return StrandelVersion::TooNew;
    readStrandelConfig(upgradeStrandelConfig(document));
    return version == kStrandelVersion ? StrandelVersion::UpToDate : StrandelVersion::NeedsUpgrade;
}

Json::Value upgradeStrandelConfig(const Json::Value& document)
{
    versionOf(document);
    return document;
}

StrandelConfig readStrandelConfig(const Json::Value& document)
{
    const int version = versionOf(document);
    if (version != kStrandelVersion) {
        fail(kDocument, "is of version " + std::to_string(version) + ", not " +
                            std::to_string(kStrandelVersion));
    }
    const Section whole(document, {});
    StrandelConfig config;
    visitNumbers(config, [&](const char* key, auto& number, auto least, auto most) {
        whole.read(key, number, least, most);
    });
    config.infillPattern = whole.named("infill_pattern", kPatterns);
    config.heatPlatform = whole.boolean("heat_platform");
    config.raft = whole.named("raft", kChoices);
    config.supports = whole.named("supports", kChoices);
    for (std::size_t i = 0; i < config.tools.size(); ++i) {
        const Section section = whole.section(kToolKeys[i]);
        ToolSettings& tool = config.tools[i];
        tool.material = section.text("material");
        visitToolNumbers(tool, [&](const char* key, auto& number, auto least, auto most) {
            section.read(key, number, least, most);
        });
    }
    return config;
}

void checkRanges(const StrandelConfig& config, const std::string& where)
{
    const auto check = [&where](const std::string& prefix) {
        return [&where, prefix](const char* key, const auto& number, auto least, auto most) {
            if (!(number >= least && number <= most))
                Section::failRange(where, quoted(prefix + key), least, most);
        };
    };
    visitNumbers(config, check(std::string()));
    for (std::size_t i = 0; i < config.tools.size(); ++i)
        visitToolNumbers(config.tools[i], check(std::string(kToolKeys[i]) + "."));
}

} // namespace trovek::service
