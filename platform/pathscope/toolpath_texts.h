#pragma once

#include "pathscope/export.h"
#include "pathscope/toolpaths.h"

#include <QString>
#include <QStringList>

namespace pathscope {

struct Totals;

/** "45 s", "12 min 5 s", "3 h 12 min" or "2 d 4 h"; empty for what is negative or no number. */
PATHSCOPE_EXPORT QString durationText(double seconds);

/** Metres with two decimals, "12.34 m", from millimetres of filament. */
PATHSCOPE_EXPORT QString filamentText(double millimetres);

/**
 * What a file comes to, a line each: layers, size, time, and the filament of each extruder that
 * uses any. What is not known has no line.
 */
PATHSCOPE_EXPORT QStringList totalsLines(const Totals& totals);

/** "3 lines of the file were not understood."; empty when everything was. */
PATHSCOPE_EXPORT QString skippedText(const Skipped& skipped);

} // namespace pathscope
