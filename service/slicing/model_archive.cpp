#include "slicing/model_archive.h"

#include "gcode/gcode_estimate.h"
#include "slicing/xml_filter.h"
#include "slicing/zip_archive.h"

#include <QBuffer>
#include <QSet>
#include <QString>

#include <algorithm>
#include <stdexcept>

namespace trovek::service {

namespace {

constexpr qint64 kMostSettingsBytes = 64 << 20;
constexpr qint64 kMostShapeBytes = qint64(2) << 30;
constexpr qint64 kMostPaintedBytes = qint64(1) << 29;
constexpr int kFirstBytes = 1024;
constexpr int kPieceBytes = 1 << 16;

constexpr char kShapes[] = "3d/";
constexpr char kShapeSuffix[] = ".model";
/** A triangle's attribute, and one of the same length that means nothing. */
constexpr char kPaint[] = "mmu_segmentation";
constexpr char kNoPaint[] = "not_segmentation";
constexpr char kAmfSuffix[] = ".amf";
constexpr char kPartSettings[] = "metadata/slic3r_pe_model.config";
constexpr const char* kPackage[] = {"[content_types].xml", "_rels/.rels"};

using GoOn = std::function<bool()>;

void check(const GoOn& goOn)
{
    if (!goOn())
        throw GCodeCanceled();
}

/** As slicers compare them. */
QByteArray nameOf(const ZipEntry& entry)
{
    return QByteArray::fromStdString(entry.name).toLower().replace('\\', '/');
}

bool isShape(const QByteArray& name)
{
    return name.startsWith(kShapes) && name.endsWith(kShapeSuffix);
}

QByteArray unpacked(ZipReader& archive, const ZipEntry& entry, qint64 most)
{
    if (entry.size > most)
        throw std::runtime_error("it is too large");
    QByteArray bytes;
    archive.read(entry, [&](const char* piece, qint64 size) {
        bytes.append(piece, static_cast<int>(size));
    });
    return bytes;
}

/** Whether tools are painted on the shape. */
bool isPainted(ZipReader& archive, const ZipEntry& entry, const GoOn& goOn)
{
    bool isFound = false;
    // A name may be cut in two by the pieces.
    QByteArray text;
    archive.read(entry, [&](const char* bytes, qint64 size) {
        check(goOn);
        text = text.right(static_cast<int>(sizeof kPaint)) +
               QByteArray::fromRawData(bytes, static_cast<int>(size));
        isFound = isFound || text.contains(kPaint);
    });
    return isFound;
}

QByteArray keptPartSettings(const QByteArray& settings, PartTools tools)
{
    static const QSet<QString> elements{QStringLiteral("config"), QStringLiteral("object"),
                                        QStringLiteral("volume")};
    QSet<QString> keys{QStringLiteral("name"), QStringLiteral("modifier"),
                       QStringLiteral("volume_type"), QStringLiteral("matrix")};
    if (tools == PartTools::Kept)
        keys.insert(QStringLiteral("extruder"));
    QBuffer kept;
    kept.open(QIODevice::WriteOnly);
    XmlFilter filter(kept, [&keys](const QStringRef& name, const QXmlStreamAttributes& attributes) {
        if (name == QLatin1String("metadata"))
            return keys.contains(attributes.value(QLatin1String("key")).toString());
        return elements.contains(name.toString());
    });
    filter.take(settings.constData(), settings.size());
    filter.finish();
    return kept.data();
}

/** @param read hands an AMF over, piece by piece */
void keepAmf(const std::function<void(const ByteTaker& take)>& read, QIODevice& output,
             PartTools tools)
{
    QSet<QString> types{
        QStringLiteral("name"),
        QStringLiteral("slic3rpe_amf_version"),
        QStringLiteral("slic3r.modifier"),
        QStringLiteral("slic3r.volume_type"),
        QStringLiteral("slic3r.matrix"),
    };
    if (tools == PartTools::Kept)
        types.insert(QStringLiteral("slic3r.extruder"));
    static const QSet<QString> elements = [] {
        QSet<QString> names;
        for (
            const char* const name :
            {"amf",     "object",   "mesh",          "vertices", "vertex", "coordinates", "x",
             "y",       "z",        "volume",        "triangle", "v1",     "v2",          "v3",
             "scale",   "instance", "constellation", "deltax",   "deltay", "deltaz",      "rx",
             "ry",      "rz",       "scalex",        "scaley",   "scalez", "mirrorx",     "mirrory",
             "mirrorz", "printable"})
            names.insert(QString::fromLatin1(name));
        return names;
    }();
    bool isAmf = false;
    XmlFilter filter(output, [&](const QStringRef& name, const QXmlStreamAttributes& attributes) {
        isAmf = isAmf || name == QLatin1String("amf");
        if (name == QLatin1String("metadata"))
            return types.contains(attributes.value(QLatin1String("type")).toString());
        return elements.contains(name.toString());
    });
    read([&filter](const char* bytes, qint64 size) { filter.take(bytes, size); });
    filter.finish();
    if (!isAmf)
        throw std::runtime_error("it is not in the format AMF");
}

void readAll(QIODevice& input, const ByteTaker& take, const GoOn& goOn)
{
    for (;;) {
        check(goOn);
        const QByteArray piece = input.read(kPieceBytes);
        if (piece.isEmpty())
            return;
        take(piece.constData(), piece.size());
    }
}

bool isZip(QIODevice& input)
{
    input.seek(0);
    return input.peek(2) == "PK";
}

} // namespace

void copyThreeMf(QIODevice& input, QIODevice& output, PartTools tools, const GoOn& goOn)
{
    ZipReader archive(input);
    ZipWriter copy(output);
    qint64 shapeBytes = 0;
    for (const ZipEntry& entry : archive.entries()) {
        const QByteArray name = nameOf(entry);
        if (name == kPartSettings) {
            copy.add(entry.name,
                     keptPartSettings(unpacked(archive, entry, kMostSettingsBytes), tools));
            continue;
        }
        const bool isPackage =
            std::any_of(std::begin(kPackage), std::end(kPackage),
                        [&](const char* const package) { return name == package; });
        if (!isShape(name) && !isPackage)
            continue;
        if (isShape(name))
            shapeBytes += entry.size;
        if (shapeBytes > kMostShapeBytes)
            throw std::runtime_error("it is too large");
        if (tools == PartTools::Dropped && isShape(name) && isPainted(archive, entry, goOn)) {
            QByteArray shape = unpacked(archive, entry, kMostPaintedBytes);
            copy.add(entry.name, shape.replace(kPaint, kNoPaint));
            continue;
        }
        copy.begin(entry);
        archive.readPacked(entry, [&](const char* bytes, qint64 size) {
            check(goOn);
            copy.write(bytes, size);
        });
    }
    if (shapeBytes == 0)
        throw std::runtime_error("it is not in the format 3MF");
    copy.finish();
}

void copyAmf(QIODevice& input, QIODevice& output, PartTools tools, const GoOn& goOn)
{
    if (!isZip(input)) {
        keepAmf([&](const ByteTaker& take) { readAll(input, take, goOn); }, output, tools);
        return;
    }
    ZipReader archive(input);
    const auto& entries = archive.entries();
    const auto found = std::find_if(entries.begin(), entries.end(), [](const ZipEntry& entry) {
        return nameOf(entry).endsWith(kAmfSuffix);
    });
    if (found == entries.end())
        throw std::runtime_error("it is not in the format AMF");
    if (found->size > kMostShapeBytes)
        throw std::runtime_error("it is too large");
    const auto unpack = [&](const ByteTaker& take) {
        archive.read(*found, [&](const char* bytes, qint64 size) {
            check(goOn);
            take(bytes, size);
        });
    };
    keepAmf(unpack, output, tools);
}

QByteArray formatOfThing(QIODevice& input)
{
    if (!isZip(input))
        return input.peek(kFirstBytes).contains("<amf") ? "amf" : QByteArray();
    const ZipReader archive(input);
    for (const ZipEntry& entry : archive.entries()) {
        const QByteArray name = nameOf(entry);
        if (isShape(name))
            return "3mf";
        if (name.endsWith(kAmfSuffix))
            return "amf";
    }
    return QByteArray();
}

} // namespace trovek::service
