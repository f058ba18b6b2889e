#include "slicing/usual_settings.h"

#include "slicing/slice_settings.h"

#include <algorithm>
#include <cmath>

namespace trovek::service {

namespace {

constexpr double kThinnestFirstLayer = 0.2;
constexpr double kFirstLayerSpeed = 30;
constexpr double kOuterShellShare = 0.6;
constexpr double kSolidThickness = 0.8;
constexpr int kFewestSolidLayers = 3;
/** For a height that is none. */
constexpr double kThinnestLayer = 0.01;

} // namespace

ToolSettings materialSettings(const std::string& material)
{
    ToolSettings tool;
    tool.material = material;
    if (material == "abs") {
        // ABS that is blown at while it is warm shrinks and cracks.
        tool.fan = 0;
        tool.retraction = 1.2;
    } else if (tool.isDissolvable()) {
        tool.fan = 0;
        tool.minimumLayerSeconds = 12;
        tool.retraction = 1.4;
        tool.retractionSpeed = 25;
    } else if (material == "flexible") {
        // What is pulled back only stretches it, and pulling it fast folds it in the extruder.
        tool.fan = 1;
        tool.minimumLayerSeconds = 20;
        tool.retraction = 0.5;
        tool.retractionSpeed = 10;
    } else {
        tool.fan = 1;
        tool.minimumLayerSeconds = 8;
        tool.retractionSpeed = 35;
    }
    return tool;
}

double firstLayerHeightFor(double layerHeight)
{
    return std::max(layerHeight, kThinnestFirstLayer);
}

int solidLayersFor(double layerHeight)
{
    const double height = layerHeight > kThinnestLayer ? layerHeight : kThinnestLayer;
    // What is too little by rounding alone makes no layer more.
    const double layers = kSolidThickness / height - 1e-6;
    return std::max(kFewestSolidLayers, static_cast<int>(std::ceil(layers)));
}

double outerShellSpeedFor(double printSpeed)
{
    return printSpeed * kOuterShellShare;
}

double firstLayerSpeedFor(double printSpeed)
{
    return std::min(printSpeed, kFirstLayerSpeed);
}

} // namespace trovek::service
