#pragma once

#include "qtshared/export.h"

#include <QMetaType>
#include <QString>

namespace Orvane {

/** What an extruder prints with. The numbers are stored in settings and sent to the service. */
enum Material : int {
    ABS = 0,
    PLA = 1,
    Dissolvable = 2,
    Flexible = 3,
    /** One past the last material: none, or one that this version does not know. */
    UnknownMaterial = 4,
};

/** How many materials there are; the valid values are 0 to kMaterialCount - 1. */
constexpr int kMaterialCount = 4;

/** The name that a user reads, translated, for example "Orvane PLA"; "Unknown Material" otherwise.
 */
QTSHARED_EXPORT QString materialToHumanString(Material material);

/** The name that profiles and the service use, for example "pla"; "unknown" otherwise. */
QTSHARED_EXPORT QString materialToIdentifier(Material material);

} // namespace Orvane

Q_DECLARE_METATYPE(Orvane::Material)
