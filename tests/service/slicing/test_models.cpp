#include "test_models.h"

#include <service/slicing/zip_archive.h>

#include <QBuffer>
#include <QByteArrayList>
#include <QtEndian>

#include <zlib.h>

#include <array>
#include <cstring>

namespace trovek {

namespace {

using Corner = std::array<double, 3>;

constexpr std::array<std::array<int, 3>, 12> kTriangles = {{{0, 2, 3},
                                                            {0, 3, 1},
                                                            {4, 5, 7},
                                                            {4, 7, 6},
                                                            {0, 1, 5},
                                                            {0, 5, 4},
                                                            {2, 6, 7},
                                                            {2, 7, 3},
                                                            {0, 4, 6},
                                                            {0, 6, 2},
                                                            {1, 3, 7},
                                                            {1, 7, 5}}};

std::array<Corner, 8> cornersOf(const Block& block)
{
    std::array<Corner, 8> corners;
    for (unsigned i = 0; i < 8; ++i)
        corners[i] = {(i & 1) ? block.x : 0, (i & 2) ? block.y : 0, (i & 4) ? block.z : 0};
    return corners;
}

QByteArray text(double number)
{
    return QByteArray::number(number, 'g', 12);
}

template <typename Number>
void append(QByteArray& bytes, Number number)
{
    char raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    bytes.append(raw, sizeof raw);
}

} // namespace

QByteArray Block::binaryStl() const
{
    QByteArray bytes(80, ' ');
    append(bytes, static_cast<quint32>(kTriangles.size()));
    const auto corners = cornersOf(*this);
    for (const auto& triangle : kTriangles) {
        bytes.append(QByteArray(12, '\0'));
        for (const int corner : triangle) {
            for (const double place : corners[static_cast<std::size_t>(corner)])
                append(bytes, static_cast<float>(place));
        }
        bytes.append(QByteArray(2, '\0'));
    }
    return bytes;
}

QByteArray Block::asciiStl() const
{
    QByteArray bytes = "solid block\n";
    const auto corners = cornersOf(*this);
    for (const auto& triangle : kTriangles) {
        bytes += " facet normal 0 0 0\n  outer loop\n";
        for (const int index : triangle) {
            const Corner& corner = corners[static_cast<std::size_t>(index)];
            bytes += "   vertex " + text(corner[0]) + " " + text(corner[1]) + " " +
                     text(corner[2]) + "\n";
        }
        bytes += "  endloop\n endfacet\n";
    }
    return bytes + "endsolid block\n";
}

QByteArray Block::obj() const
{
    QByteArray bytes;
    for (const Corner& corner : cornersOf(*this))
        bytes += "v " + text(corner[0]) + " " + text(corner[1]) + " " + text(corner[2]) + "\n";
    for (const auto& triangle : kTriangles) {
        bytes += "f";
        for (const int corner : triangle)
            bytes += " " + QByteArray::number(corner + 1);
        bytes += "\n";
    }
    return bytes;
}

QByteArray Block::amf(const QByteArray& metadata) const
{
    QByteArray bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<amf unit=\"millimeter\">\n"
                       "<object id=\"0\">" +
                       metadata + "<mesh><vertices>\n";
    for (const Corner& corner : cornersOf(*this)) {
        bytes += "<vertex><coordinates><x>" + text(corner[0]) + "</x><y>" + text(corner[1]) +
                 "</y><z>" + text(corner[2]) + "</z></coordinates></vertex>\n";
    }
    bytes += "</vertices><volume>\n";
    for (const auto& triangle : kTriangles) {
        bytes += "<triangle><v1>" + QByteArray::number(triangle[0]) + "</v1><v2>" +
                 QByteArray::number(triangle[1]) + "</v2><v3>" + QByteArray::number(triangle[2]) +
                 "</v3></triangle>\n";
    }
    return bytes + "</volume></mesh></object>\n</amf>\n";
}

QByteArray Block::modelXml() const
{
    QByteArray bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<model unit=\"millimeter\" "
                       "xmlns=\"http://schemas.microsoft.com/3dmanufacturing/core/2015/02\">\n"
                       "<resources><object id=\"1\" type=\"model\"><mesh><vertices>\n";
    for (const Corner& corner : cornersOf(*this)) {
        bytes += "<vertex x=\"" + text(corner[0]) + "\" y=\"" + text(corner[1]) + "\" z=\"" +
                 text(corner[2]) + "\"/>\n";
    }
    bytes += "</vertices><triangles>\n";
    for (const auto& triangle : kTriangles) {
        bytes += "<triangle v1=\"" + QByteArray::number(triangle[0]) + "\" v2=\"" +
                 QByteArray::number(triangle[1]) + "\" v3=\"" + QByteArray::number(triangle[2]) +
                 "\"/>\n";
    }
    return bytes + "</triangles></mesh></object></resources>\n"
                   "<build><item objectid=\"1\"/></build></model>\n";
}

QByteArray Block::threeMf(const std::vector<std::pair<QByteArray, QByteArray>>& more) const
{
    std::vector<std::pair<QByteArray, QByteArray>> files = {
        {"[Content_Types].xml",
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
         "<Default Extension=\"model\" "
         "ContentType=\"application/vnd.ms-package.3dmanufacturing-3dmodel+xml\"/></Types>"},
        {"_rels/.rels", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Relationships "
                        "xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
                        "<Relationship Target=\"/3D/3dmodel.model\" Id=\"rel-1\" "
                        "Type=\"http://schemas.microsoft.com/3dmanufacturing/2013/01/3dmodel\"/>"
                        "</Relationships>"},
        {"3D/3dmodel.model", modelXml()},
    };
    files.insert(files.end(), more.begin(), more.end());
    return zipOf(files);
}

QByteArray zipOf(const std::vector<std::pair<QByteArray, QByteArray>>& files)
{
    QByteArray archive;
    QByteArray directory;
    for (const auto& [name, bytes] : files) {
        QByteArray facts;
        append(facts, static_cast<quint16>(20));
        append(facts, static_cast<quint16>(0));
        append(facts, static_cast<quint16>(0));
        append(facts, static_cast<quint32>(0x21 << 16));
        append(facts,
               static_cast<quint32>(::crc32(0, reinterpret_cast<const Bytef*>(bytes.constData()),
                                            static_cast<uInt>(bytes.size()))));
        append(facts, static_cast<quint32>(bytes.size()));
        append(facts, static_cast<quint32>(bytes.size()));
        append(facts, static_cast<quint16>(name.size()));
        append(facts, static_cast<quint16>(0));

        const auto offset = static_cast<quint32>(archive.size());
        archive += QByteArray("PK\3\4", 4) + facts + name + bytes;
        directory += QByteArray("PK\1\2\24\0", 6) + facts;
        directory += QByteArray(10, '\0');
        append(directory, offset);
        directory += name;
    }
    const auto start = static_cast<quint32>(archive.size());
    archive += directory + QByteArray("PK\5\6\0\0\0\0", 8);
    append(archive, static_cast<quint16>(files.size()));
    append(archive, static_cast<quint16>(files.size()));
    append(archive, static_cast<quint32>(directory.size()));
    append(archive, start);
    append(archive, static_cast<quint16>(0));
    return archive;
}

QByteArray withNumber(QByteArray archive, int offset, quint32 number, int bytes)
{
    const quint32 little = qToLittleEndian(number);
    for (int at = 0; (at = archive.indexOf("PK\1\2", at)) >= 0; at += 4)
        archive.replace(at + offset, bytes, reinterpret_cast<const char*>(&little), bytes);
    return archive;
}

std::vector<std::pair<QByteArray, QByteArray>> filesOf(QByteArray archive)
{
    QBuffer buffer(&archive);
    buffer.open(QIODevice::ReadOnly);
    service::ZipReader reader(buffer);
    std::vector<std::pair<QByteArray, QByteArray>> files;
    for (const service::ZipEntry& entry : reader.entries()) {
        QByteArray bytes;
        reader.read(entry, [&](const char* piece, qint64 size) {
            bytes.append(piece, static_cast<int>(size));
        });
        files.emplace_back(QByteArray::fromStdString(entry.name), bytes);
    }
    return files;
}

} // namespace trovek
