#include "pathscope/toolpath_colouring.h"

#include "pathscope/toolpath_palette.h"
#include "pathscope/value_scale.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cmath>

namespace pathscope {

namespace {

using Mode = ToolpathViewModel::ColourMode;

QString translated(const char* text)
{
    return QCoreApplication::translate("pathscope::ToolpathScene", text);
}

/** Of the layers this part is sorted finely; what takes far longer shares the last class. */
constexpr double kUsualLayers = 0.98;
constexpr double kFarLonger = 2;
constexpr double kMinuteSeconds = 60;

void add(Amount& sum, const Amount& amount, double timeScale)
{
    sum.seconds += amount.seconds * timeScale;
    sum.millimetres += amount.millimetres;
    sum.filament += amount.filament;
}

/** How one mode reads a style as a number. */
struct Measure
{
    double (*of)(const MoveStyle&);
    double quantum;
    const char* unit;
};

Measure measureOf(Mode mode)
{
    switch (mode) {
    case ToolpathViewModel::ByHeight:
        return {[](const MoveStyle& style) { return double(style.height); }, 0.01,
                QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "mm")};
    case ToolpathViewModel::ByWidth:
        return {[](const MoveStyle& style) { return double(style.width); }, 0.01,
                QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "mm")};
    case ToolpathViewModel::ByTemperature:
        return {[](const MoveStyle& style) { return double(style.celsius); }, 1,
                QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "\302\260C")};
    default:
        return {[](const MoveStyle& style) { return double(style.speed); }, 1,
                QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "mm/s")};
    }
}

/** Collects what the entries of one mode come to; those without anything are left out. */
class Entries
{
public:
    Entries(std::size_t count, double timeScale)
        : m_entries(count)
        , m_used(count)
        , m_timeScale(timeScale)
    {}

    LegendEntry& operator[](std::size_t index) { return m_entries[index]; }

    void add(std::size_t index, const Amount& amount)
    {
        pathscope::add(m_entries[index].amount, amount, m_timeScale);
        m_used[index] = true;
    }

    std::vector<LegendEntry> taken()
    {
        std::vector<LegendEntry> used;
        for (std::size_t i = 0; i < m_entries.size(); ++i) {
            if (m_used[i])
                used.push_back(std::move(m_entries[i]));
        }
        return used;
    }

private:
    std::vector<LegendEntry> m_entries;
    std::vector<bool> m_used;
    double m_timeScale;
};

/** Fills in the colours and names of a scale's classes. */
void describe(Entries& entries, const ValueScale& scale, const QString& unit)
{
    const int last = scale.count() - 1;
    for (int i = 0; i <= last; ++i) {
        LegendEntry& entry = entries[static_cast<std::size_t>(i)];
        // A single value stands in the middle of the colours, not at their dark end.
        entry.colour = rangeColour(last == 0 ? 0.5 : double(i) / last);
        entry.name = scale.nameOf(i, unit);
    }
}

/** Puts every extruding style into an entry. */
template <typename ClassOf>
void colourStyles(ToolpathColouring& colouring, const Toolpaths& toolpaths, Entries& entries,
                  ClassOf classOf)
{
    colouring.styles.reserve(toolpaths.styles.size());
    for (std::size_t i = 0; i < toolpaths.styles.size(); ++i) {
        if (!extrudes(toolpaths, i)) {
            colouring.styles.push_back(packed(moveColour(MoveKind::Travel)));
            continue;
        }
        const auto index = static_cast<std::size_t>(classOf(toolpaths.styles[i]));
        entries.add(index, toolpaths.styleAmounts[i]);
        colouring.styles.push_back(packed(entries[index].colour));
    }
    colouring.entries = entries.taken();
}

void colourByTool(ToolpathColouring& colouring, const Toolpaths& toolpaths,
                  const SceneSetting& setting)
{
    Entries entries(kToolCount, timeScaleOf(toolpaths));
    const std::vector<QColor> colours = toolColours(setting.colours);
    for (int tool = 0; tool < kToolCount; ++tool) {
        const auto index = static_cast<std::size_t>(tool);
        entries[index].colour = colours[index];
        entries[index].name = toolName(setting, tool);
    }
    colourStyles(colouring, toolpaths, entries,
                 [](const MoveStyle& style) { return std::min<int>(style.tool, kToolCount - 1); });
}

void colourByFeature(ToolpathColouring& colouring, const Toolpaths& toolpaths)
{
    Entries entries(kFeatureCount, timeScaleOf(toolpaths));
    for (int i = 0; i < kFeatureCount; ++i) {
        const auto feature = static_cast<Feature>(i);
        LegendEntry& entry = entries[static_cast<std::size_t>(i)];
        entry.colour = featureColour(feature);
        entry.name = featureName(feature);
    }
    colourStyles(colouring, toolpaths, entries, [](const MoveStyle& style) {
        return std::min(static_cast<int>(style.feature), kFeatureCount - 1);
    });
}

void colourByMeasure(ToolpathColouring& colouring, const Toolpaths& toolpaths, Mode mode)
{
    const Measure measure = measureOf(mode);
    std::vector<double> values;
    for (std::size_t i = 0; i < toolpaths.styles.size(); ++i) {
        if (extrudes(toolpaths, i) && measure.of(toolpaths.styles[i]) > 0)
            values.push_back(measure.of(toolpaths.styles[i]));
    }
    const ValueScale scale(values, measure.quantum);
    const auto unknown = static_cast<std::size_t>(scale.count());
    Entries entries(unknown + 1, timeScaleOf(toolpaths));
    describe(entries, scale, translated(measure.unit));
    entries[unknown].colour = unknownColour();
    entries[unknown].name = translated("Not told");
    colourStyles(colouring, toolpaths, entries, [&](const MoveStyle& style) {
        const double value = measure.of(style);
        return value > 0 ? scale.classOf(value) : static_cast<int>(unknown);
    });
}

void colourByLayerTime(ToolpathColouring& colouring, const Toolpaths& toolpaths)
{
    const double timeScale = timeScaleOf(toolpaths);
    std::vector<double> seconds;
    seconds.reserve(toolpaths.layers.size());
    for (const Layer& layer : toolpaths.layers)
        seconds.push_back(layer.amount.seconds * timeScale);
    if (seconds.empty())
        return;

    // The first layer is slow on purpose; without a bound it alone would make all others look
    // alike.
    std::vector<double> sorted = seconds;
    const auto usual =
        sorted.begin() + std::lround(kUsualLayers * static_cast<double>(sorted.size() - 1));
    std::nth_element(sorted.begin(), usual, sorted.end());
    const double longest = *std::max_element(usual, sorted.end());
    const double bound = longest > *usual * kFarLonger ? *usual : -1;

    const bool inMinutes = *usual > 5 * kMinuteSeconds;
    const double unit = inMinutes ? kMinuteSeconds : 1;
    for (double& second : seconds)
        second /= unit;
    const ValueScale scale(seconds, 1, bound < 0 ? bound : bound / unit);
    Entries entries(static_cast<std::size_t>(scale.count()), timeScale);
    describe(entries, scale, inMinutes ? translated("min") : translated("s"));

    colouring.layers.reserve(seconds.size());
    for (std::size_t i = 0; i < seconds.size(); ++i) {
        const auto index = static_cast<std::size_t>(scale.classOf(seconds[i]));
        entries.add(index, toolpaths.layers[i].amount);
        colouring.layers.push_back(packed(entries[index].colour));
    }
    colouring.entries = entries.taken();
}

} // namespace

ToolpathColouring colouringOf(const Toolpaths& toolpaths, const SceneSetting& setting, Mode mode)
{
    ToolpathColouring colouring;
    switch (mode) {
    case ToolpathViewModel::ByExtruder:
        colourByTool(colouring, toolpaths, setting);
        break;
    case ToolpathViewModel::ByFeature:
        colourByFeature(colouring, toolpaths);
        break;
    case ToolpathViewModel::ByLayerTime:
        colourByLayerTime(colouring, toolpaths);
        break;
    case ToolpathViewModel::ByHeight:
    case ToolpathViewModel::ByWidth:
    case ToolpathViewModel::BySpeed:
    case ToolpathViewModel::ByTemperature:
        colourByMeasure(colouring, toolpaths, mode);
        break;
    }
    // A layer's time holds its travels already.
    if (mode != ToolpathViewModel::ByLayerTime) {
        for (std::size_t i = 0; i < toolpaths.styles.size(); ++i) {
            if (!extrudes(toolpaths, i))
                add(colouring.travels, toolpaths.styleAmounts[i], timeScaleOf(toolpaths));
        }
    }
    return colouring;
}

double timeScaleOf(const Toolpaths& toolpaths)
{
    const double scale = toolpaths.estimates.seconds / toolpaths.total.seconds;
    return std::isfinite(scale) && scale > 0 ? scale : 1;
}

QString toolName(const SceneSetting& setting, int tool)
{
    const auto index = static_cast<std::size_t>(tool);
    if (index >= setting.materials.size() || setting.materials[index] < 0 ||
        setting.materials[index] >= Orvane::kMaterialCount)
        return translated("Extruder %1").arg(tool + 1);
    return translated("Extruder %1: %2")
        .arg(QString::number(tool + 1), Orvane::materialToHumanString(setting.materials[index]));
}

QString featureName(Feature feature)
{
    constexpr std::array<const char*, kFeatureCount> names = {
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Other"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Outer wall"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Inner wall"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Overhang"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Sparse infill"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Solid infill"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Top surface"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Ironing"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Bridge"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Gap fill"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Skirt"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Brim"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Raft"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Support"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Support interface"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Prime tower"),
        QT_TRANSLATE_NOOP("pathscope::ToolpathScene", "Custom"),
    };
    const auto index = static_cast<std::size_t>(feature);
    return translated(names[index < names.size() ? index : 0]);
}

bool extrudes(const Toolpaths& toolpaths, std::size_t style)
{
    return toolpaths.styles[style].width > 0 || toolpaths.styleAmounts[style].filament > 0;
}

} // namespace pathscope
