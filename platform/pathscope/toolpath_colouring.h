#pragma once

#include "pathscope/toolpath_scene.h"
#include "pathscope/toolpath_view_model.h"

namespace pathscope {

/** Toolpaths in the colours of one mode, and what these mean. */
struct ToolpathColouring
{
    /** As ToolpathScene::styleColours() and layerColours(). */
    std::vector<std::uint32_t> styles;
    std::vector<std::uint32_t> layers;
    /** Of what extrudes, without shares; stable for a file. */
    std::vector<LegendEntry> entries;
    /** Of what does not extrude. */
    Amount travels;
};

/** Takes time by the number of styles and layers, not of moves. */
ToolpathColouring colouringOf(const Toolpaths& toolpaths, const SceneSetting& setting,
                              ToolpathViewModel::ColourMode mode);

/** By this the times by feed rates come to what the slicer estimated; 1 where it wrote nothing. */
double timeScaleOf(const Toolpaths& toolpaths);

/** "Extruder 1: Orvane PLA", or "Extruder 1" where the material is not known. */
QString toolName(const SceneSetting& setting, int tool);

/** Translated, for example "Outer wall". */
QString featureName(Feature feature);

/** Where extruding is all that a style does, or part of it. */
bool extrudes(const Toolpaths& toolpaths, std::size_t style);

} // namespace pathscope
