#pragma once

#include "pathscope/export.h"
#include "pathscope/toolpaths.h"

#include <QString>
#include <QStringList>

namespace pathscope {

struct SceneSetting;

/** "45 s", "12 min 5 s", "3 h 12 min" or "2 d 4 h"; empty for what is negative or no number. */
PATHSCOPE_EXPORT QString durationText(double seconds);

/** Metres with two decimals, "12.34 m", from millimetres of filament. */
PATHSCOPE_EXPORT QString filamentText(double millimetres);

/** "120.0 x 80.0 x 97.6 mm", as a user measures it; empty without any extruding path. */
PATHSCOPE_EXPORT QString sizeText(const Bounds& bounds);

/** How long it takes: as the slicer wrote, else as the moves come to. */
PATHSCOPE_EXPORT double printSeconds(const Toolpaths& toolpaths);

/**
 * What the file comes to, a line each: layers, size, time, and the filament of each extruder that
 * uses any, with its material where that is known.
 */
PATHSCOPE_EXPORT QStringList totalsLines(const Toolpaths& toolpaths, const SceneSetting& setting);

/** "3 lines of the file were not understood."; empty when everything was. */
PATHSCOPE_EXPORT QString skippedText(const Skipped& skipped);

} // namespace pathscope
