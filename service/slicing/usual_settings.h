#pragma once

#include <string>

namespace trovek::service {

struct ToolSettings;

/** What a tool does with a material, but for its temperature; what is not known prints as PLA does.
 */
ToolSettings materialSettings(const std::string& material);

/** No thinner than what sticks everywhere on a platform that is not quite even. */
double firstLayerHeightFor(double layerHeight);
/** Of solid layers at the bottom and the top: thick enough to close over the infill. */
int solidLayersFor(double layerHeight);
/** Slow enough to look well. */
double outerShellSpeedFor(double printSpeed);
/** Slow enough to stick. */
double firstLayerSpeedFor(double printSpeed);

} // namespace trovek::service
