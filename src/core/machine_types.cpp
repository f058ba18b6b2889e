#include "trovek-ui/machine_types.h"

#include "trovek-ui/util.h"

#include <trovek/text.h>

#include <QObject>

#include <iterator>
#include <stdexcept>
#include <string>

namespace trovek {

namespace {

// Other code may ask for an identifier while the library loads.
const QString kPrinterIdentifiers[] = {
    QStringLiteral("fabrino_single"), QStringLiteral("fabrino_dual"), QStringLiteral("fabrino_2"),
    QStringLiteral("fabrino_2x"),     QStringLiteral("cubio_single"), QStringLiteral("cubio_dual"),
};
const QString kSlicerIdentifiers[] = {QStringLiteral("strandel")};
const QString kPicturePrefix = QStringLiteral(":/printers/printer_");

constexpr const char* kPrinterNames[][2] = {
    {QT_TRANSLATE_NOOP("QObject", "Orvane Fabrino"), QT_TRANSLATE_NOOP("QObject", "The Fabrino")},
    {QT_TRANSLATE_NOOP("QObject", "Orvane Fabrino (Dual)"),
     QT_TRANSLATE_NOOP("QObject", "The Fabrino (Dual)")},
    {QT_TRANSLATE_NOOP("QObject", "Orvane Fabrino 2"),
     QT_TRANSLATE_NOOP("QObject", "The Fabrino 2")},
    {QT_TRANSLATE_NOOP("QObject", "Orvane Fabrino 2X"),
     QT_TRANSLATE_NOOP("QObject", "The Fabrino 2X")},
    {QT_TRANSLATE_NOOP("QObject", "Orvane Cubio"), QT_TRANSLATE_NOOP("QObject", "Cubio")},
    {QT_TRANSLATE_NOOP("QObject", "Orvane Cubio (Dual)"),
     QT_TRANSLATE_NOOP("QObject", "Cubio (Dual)")},
};

constexpr int kTypeCount = static_cast<int>(std::size(kPrinterIdentifiers));
static_assert(std::size(kPrinterNames) == std::size(kPrinterIdentifiers));

// Types count from one, the tables from zero.
bool isKnown(Printer::Type type)
{
    return type >= 1 && type <= kTypeCount;
}

QString pictureBase(Printer::Type type)
{
    switch (type) {
    case Printer::FabrinoSingle:
    case Printer::FabrinoDual:
        return kPicturePrefix + QLatin1String("fabrino");
    case Printer::Fabrino2:
        return kPicturePrefix + QLatin1String("fabrino_2");
    case Printer::Fabrino2X:
        return kPicturePrefix + QLatin1String("fabrino_2x");
    case Printer::CubioSingle:
    case Printer::CubioDual:
        return kPicturePrefix + QLatin1String("cbo");
    case Printer::UnknownType:
        break;
    }
    return kPicturePrefix + QLatin1String("generic");
}

} // namespace

Printer::Type printerTypeFromIdentifier(const QString& identifier)
{
    for (int i = 0; i < kTypeCount; ++i) {
        if (kPrinterIdentifiers[i] == identifier)
            return static_cast<Printer::Type>(i + 1);
    }
    throw std::runtime_error("Invalid machine type identifier:\n" + toStdString(identifier));
}

QString printerTypeToIdentifier(Printer::Type type)
{
    if (!isKnown(type))
        throw std::runtime_error("Invalid machine type");
    return kPrinterIdentifiers[type - 1];
}

QString printerTypeToHumanString(Printer::Type type, PrinterStringContext context)
{
    if (!isKnown(type) || context < PrinterStringWithBrand || context > PrinterStringInSentence)
        return QObject::tr("bot");
    return QObject::tr(kPrinterNames[type - 1][context]);
}

QIcon printerTypeToIcon(Printer::Type type)
{
    return loadButtonIcon(pictureBase(type));
}

QPixmap printerTypeToPixmap(Printer::Type type)
{
    return loadPixmap(pictureBase(type) + QLatin1String("_up.png"));
}

SlicerConfiguration::Slicer slicerFromIdentifier(const QString& identifier)
{
    for (std::size_t i = 0; i < std::size(kSlicerIdentifiers); ++i) {
        if (kSlicerIdentifiers[i] == identifier)
            return static_cast<SlicerConfiguration::Slicer>(i);
    }
    throw std::runtime_error("Invalid slicer identifier\n" + toStdString(identifier));
}

QString slicerToIdentifier(SlicerConfiguration::Slicer slicer)
{
    if (slicer != SlicerConfiguration::Strandel)
        throw std::runtime_error("Invalid slicer");
    return kSlicerIdentifiers[slicer];
}

QString slicerToHumanString(SlicerConfiguration::Slicer slicer)
{
    switch (slicer) {
    case SlicerConfiguration::Strandel:
        return QObject::tr("Orvane Slicer");
    case SlicerConfiguration::UnknownSlicer:
        return QObject::tr("Unknown Slicer");
    }
    return QObject::tr("Invalid Slicer");
}

} // namespace trovek
