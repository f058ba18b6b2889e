#include "slicing/model_archive.h"

#include "gcode/gcode_estimate.h"
#include "slicing/zip_archive.h"
#include "write_all.h"

#include <QFile>
#include <QSet>
#include <QString>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <stdexcept>

namespace trovek::service {

namespace {

constexpr qint64 kMostSettingsBytes = 64 << 20;
constexpr qint64 kMostShapeBytes = qint64(2) << 30;
constexpr qint64 kMostPaintedBytes = qint64(1) << 29;
constexpr int kFirstBytes = 1024;

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

/** Writes the elements that it is told to, as they come. */
class XmlFilter
{
public:
    XmlFilter(QXmlStreamReader& reader, QXmlStreamWriter& writer)
        : m_reader(reader)
        , m_writer(writer)
    {
        // Names are compared as they stand, as slicers do.
        m_reader.setNamespaceProcessing(false);
        m_writer.writeStartDocument();
    }

    /** @param isKept of the element that begins */
    template <typename IsKept>
    void run(IsKept isKept, const GoOn& goOn)
    {
        int elements = 0;
        while (!m_reader.atEnd()) {
            switch (m_reader.readNext()) {
            case QXmlStreamReader::StartElement:
                if (++elements % kElementsBetweenChecks == 0)
                    check(goOn);
                if (!isKept(m_reader.name(), m_reader.attributes())) {
                    m_reader.skipCurrentElement();
                    break;
                }
                m_writer.writeStartElement(m_reader.name().toString());
                m_writer.writeAttributes(m_reader.attributes());
                break;
            case QXmlStreamReader::EndElement:
                m_writer.writeEndElement();
                break;
            case QXmlStreamReader::Characters:
                if (!m_reader.isWhitespace())
                    m_writer.writeCharacters(m_reader.text().toString());
                break;
            default:
                break;
            }
        }
        if (m_reader.hasError())
            throw std::runtime_error("it is damaged");
        m_writer.writeEndDocument();
    }

private:
    static constexpr int kElementsBetweenChecks = 4096;

    QXmlStreamReader& m_reader;
    QXmlStreamWriter& m_writer;
};

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

QByteArray keptPartSettings(const QByteArray& settings, PartTools tools, const GoOn& goOn)
{
    static const QSet<QString> elements{QStringLiteral("config"), QStringLiteral("object"),
                                        QStringLiteral("volume")};
    QSet<QString> keys{QStringLiteral("name"), QStringLiteral("modifier"),
                       QStringLiteral("volume_type"), QStringLiteral("matrix")};
    if (tools == PartTools::Kept)
        keys.insert(QStringLiteral("extruder"));
    QByteArray kept;
    QXmlStreamReader reader(settings);
    QXmlStreamWriter writer(&kept);
    XmlFilter(reader, writer)
        .run(
            [&keys](const QStringRef& name, const QXmlStreamAttributes& attributes) {
                if (name == QLatin1String("metadata"))
                    return keys.contains(attributes.value(QLatin1String("key")).toString());
                return elements.contains(name.toString());
            },
            goOn);
    return kept;
}

void keepAmf(QIODevice& input, QIODevice& output, PartTools tools, const GoOn& goOn)
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
    QXmlStreamReader reader(&input);
    QXmlStreamWriter writer(&output);
    XmlFilter(reader, writer)
        .run(
            [&](const QStringRef& name, const QXmlStreamAttributes& attributes) {
                isAmf = isAmf || name == QLatin1String("amf");
                if (name == QLatin1String("metadata"))
                    return types.contains(attributes.value(QLatin1String("type")).toString());
                return elements.contains(name.toString());
            },
            goOn);
    if (!isAmf)
        throw std::runtime_error("it is not in the format AMF");
}

bool isZip(QFile& input)
{
    input.seek(0);
    return input.peek(2) == "PK";
}

} // namespace

void copyThreeMf(QFile& input, QFile& output, PartTools tools, const GoOn& goOn)
{
    ZipReader archive(input);
    ZipWriter copy(output);
    qint64 shapeBytes = 0;
    for (const ZipEntry& entry : archive.entries()) {
        const QByteArray name = nameOf(entry);
        if (name == kPartSettings) {
            copy.add(entry.name,
                     keptPartSettings(unpacked(archive, entry, kMostSettingsBytes), tools, goOn));
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

void copyAmf(QFile& input, QFile& output, PartTools tools, const GoOn& goOn)
{
    if (!isZip(input)) {
        keepAmf(input, output, tools, goOn);
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
    QFile whole(output.fileName() + QStringLiteral(".unpacked"));
    if (!whole.open(QIODevice::ReadWrite | QIODevice::Truncate))
        throw WriteError(whole);
    archive.read(*found, [&](const char* bytes, qint64 size) {
        check(goOn);
        writeAll(whole, bytes, size);
    });
    whole.seek(0);
    keepAmf(whole, output, tools, goOn);
    whole.remove();
}

QByteArray formatOfThing(QFile& input)
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
