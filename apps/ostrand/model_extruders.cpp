#include "model_extruders.h"

#include <KZip>

#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

#include <algorithm>
#include <memory>
#include <set>

namespace ostrand {
namespace {

using trovek::SlicerConfiguration;

/** A settings file or a small model; more is not looked into before the slicer does. */
constexpr qint64 kMostBytes = 64 * 1024 * 1024;

/** What a file says of its parts; extruders count from 1, the right one. */
struct Parts
{
    std::set<int> extruders;
    std::set<QString> materials;
};

/** The settings that the slicer adds to a 3MF file. */
Parts partsOfSettings(QIODevice& device)
{
    Parts parts;
    QXmlStreamReader xml(&device);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement ||
            xml.name() != QLatin1String("metadata") ||
            xml.attributes().value(QLatin1String("key")) != QLatin1String("extruder"))
            continue;
        const int extruder = xml.attributes().value(QLatin1String("value")).toInt();
        if (extruder > 0)
            parts.extruders.insert(extruder);
    }
    return parts;
}

Parts partsOfAmf(QIODevice& device)
{
    Parts parts;
    QXmlStreamReader xml(&device);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("volume")) {
            parts.materials.insert(xml.attributes().value(QLatin1String("materialid")).toString());
        } else if (xml.name() == QLatin1String("metadata") &&
                   xml.attributes().value(QLatin1String("type")) ==
                       QLatin1String("slic3r.extruder")) {
            const int extruder = xml.readElementText(QXmlStreamReader::SkipChildElements).toInt();
            if (extruder > 0)
                parts.extruders.insert(extruder);
        }
    }
    return parts;
}

/** The first file in the archive with this ending; null when there is none of a sane size. */
std::unique_ptr<QIODevice> openInArchive(const KZip& archive, const QString& ending)
{
    for (const QString& name : archive.directory()->entries()) {
        const KArchiveEntry* entry = archive.directory()->entry(name);
        if (name.endsWith(ending, Qt::CaseInsensitive) && entry->isFile())
            return std::unique_ptr<QIODevice>(
                static_cast<const KArchiveFile*>(entry)->createDevice());
    }
    return nullptr;
}

Parts partsOf3mf(const QString& path)
{
    KZip archive(path);
    if (!archive.open(QIODevice::ReadOnly))
        return {};
    const KArchiveFile* settings =
        archive.directory()->file(QStringLiteral("Metadata/Slic3r_PE_model.config"));
    if (!settings || settings->size() > kMostBytes)
        return {};
    const std::unique_ptr<QIODevice> device(settings->createDevice());
    return device ? partsOfSettings(*device) : Parts();
}

/** As text, or zipped. */
Parts partsOfAmfFile(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || file.size() > kMostBytes || !file.open(QIODevice::ReadOnly))
        return {};
    if (!file.peek(2).startsWith("PK"))
        return partsOfAmf(file);
    KZip archive(path);
    if (!archive.open(QIODevice::ReadOnly))
        return {};
    const std::unique_ptr<QIODevice> device = openInArchive(archive, QStringLiteral(".amf"));
    return device ? partsOfAmf(*device) : Parts();
}

} // namespace

SlicerConfiguration::Extruder extrudersOfModel(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    Parts parts;
    if (suffix == QLatin1String("3mf"))
        parts = partsOf3mf(path);
    else if (suffix == QLatin1String("amf"))
        parts = partsOfAmfFile(path);
    if (parts.extruders.size() > 1 || (parts.extruders.empty() && parts.materials.size() > 1))
        return SlicerConfiguration::Both;
    return parts.extruders == std::set<int>{2} ? SlicerConfiguration::Left
                                               : SlicerConfiguration::Right;
}

} // namespace ostrand
