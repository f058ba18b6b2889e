#include "qtshared/material.h"

#include <QCoreApplication>

namespace Orvane {

QString materialToHumanString(Material material)
{
    switch (material) {
    case ABS:
        return QCoreApplication::translate("Orvane::Material", "Orvane ABS");
    case PLA:
        return QCoreApplication::translate("Orvane::Material", "Orvane PLA");
    case Dissolvable:
        return QCoreApplication::translate("Orvane::Material", "Orvane Dissolvable Filament");
    case Flexible:
        return QCoreApplication::translate("Orvane::Material", "Orvane Flexible Filament");
    case UnknownMaterial:
        break;
    }
    return QCoreApplication::translate("Orvane::Material", "Unknown Material");
}

QString materialToIdentifier(Material material)
{
    switch (material) {
    case ABS:
        return QStringLiteral("abs");
    case PLA:
        return QStringLiteral("pla");
    case Dissolvable:
        return QStringLiteral("dissolvable");
    case Flexible:
        return QStringLiteral("flexible");
    case UnknownMaterial:
        break;
    }
    return QStringLiteral("unknown");
}

} // namespace Orvane
