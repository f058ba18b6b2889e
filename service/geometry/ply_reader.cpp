#include "face_triangles.h"
#include "ply_file.h"
#include "ply_header.h"
#include "progress_part.h"
#include "raw_numbers.h"
#include "reach.h"
#include "text_words.h"

#include <algorithm>
#include <cmath>

namespace trovek::geometry {

namespace {

constexpr std::size_t kItemsPerReport = 16384;
constexpr std::size_t kNone = SIZE_MAX;

const char* const kMore = "The file goes on behind what its header says";

std::string cutOff(const PlyElement& element)
{
    return "The file is cut off: it has fewer than the " + std::to_string(element.count) +
           " items of \"" + element.name + "\" that its header says";
}

/** The numbers of a binary file, one after the other. */
class BinaryNumbers
{
public:
    BinaryNumbers(std::string_view bytes, const PlyHeader& header)
        : m_bytes(bytes)
        , m_position(header.bytes)
        , m_order(header.encoding == PlyEncoding::BigEndian ? ByteOrder::BigEndian
                                                            : ByteOrder::LittleEndian)
    {}

    std::size_t position() const { return m_position; }

    /** Whether there is room for that many; each takes at least the bytes. */
    bool hasRoomFor(std::uint64_t count, std::size_t bytes) const
    {
        return bytes == 0 || count <= (m_bytes.size() - m_position) / bytes;
    }
    static std::size_t fewestBytes(PlyType type) { return bytesOf(type); }

    /** There must be room for it. */
    double next(PlyType type)
    {
        const char* const at = m_bytes.data() + m_position;
        m_position += bytesOf(type);
        switch (type) {
        case PlyType::Int8:
            return readRaw<std::int8_t>(at, m_order);
        case PlyType::UInt8:
            return readRaw<std::uint8_t>(at, m_order);
        case PlyType::Int16:
            return readRaw<std::int16_t>(at, m_order);
        case PlyType::UInt16:
            return readRaw<std::uint16_t>(at, m_order);
        case PlyType::Int32:
            return readRaw<std::int32_t>(at, m_order);
        case PlyType::UInt32:
            return readRaw<std::uint32_t>(at, m_order);
        case PlyType::Float:
            return double(readRaw<float>(at, m_order));
        case PlyType::Double:
            break;
        }
        return readRaw<double>(at, m_order);
    }

    /** Some programs end a binary file with a line end. */
    void requireEnd() const
    {
        if (m_bytes.find_first_not_of("\r\n", m_position) != std::string_view::npos)
            throw FileFormatError(kMore);
    }

private:
    std::string_view m_bytes;
    std::size_t m_position;
    ByteOrder m_order;
};

/** Those of a text file. */
class TextNumbers
{
public:
    TextNumbers(std::string_view bytes, const PlyHeader& header)
        : m_size(bytes.size() - header.bytes)
        , m_begin(header.bytes)
        , m_words(bytes.substr(header.bytes), header.lines + 1)
    {}

    std::size_t position() const { return m_begin + m_words.bytesRead(); }

    bool hasRoomFor(std::uint64_t count, std::size_t bytes) const
    {
        // No blank follows the last one.
        return bytes == 0 || count <= (m_size - m_words.bytesRead() + 1) / bytes;
    }
    static std::size_t fewestBytes(PlyType) { return 2; }

    double next(PlyType type)
    {
        const std::string_view word = m_words.next();
        if (word.empty())
            throw FileFormatError("The file is cut off: numbers are missing at its end");
        const double number = m_words.number(word);
        if (type == PlyType::Float || type == PlyType::Double)
            return number;
        if (number != std::floor(number))
            m_words.fail(quoted(word) + " is no whole number");
        const bool isSigned =
            type == PlyType::Int8 || type == PlyType::Int16 || type == PlyType::Int32;
        const double end = std::exp2(8 * bytesOf(type) - (isSigned ? 1 : 0));
        if (number >= end || number < (isSigned ? -end : 0))
            m_words.fail(quoted(word) + " is more than its type can hold");
        return number;
    }

    void requireEnd()
    {
        if (!m_words.next().empty())
            throw FileFormatError(kMore);
    }

private:
    std::size_t m_size;
    std::size_t m_begin;
    TextWords m_words;
};

/** The numbers of a vertex that are read, and where each stands among its properties. */
enum VertexNumber { X, Y, Z, NormalX, NormalY, NormalZ, Red, Green, Blue, VertexNumbers };

constexpr const char* kVertexNames[VertexNumbers] = {"x",  "y",   "z",     "nx",  "ny",
                                                     "nz", "red", "green", "blue"};

template <typename Numbers>
class Reader
{
public:
    Reader(std::string_view bytes, const PlyHeader& header, const Progress& progress)
        : m_bytes(bytes.size())
        , m_numbers(bytes, header)
        , m_progress(progress)
    {}

    void read(const PlyElement& element)
    {
        std::size_t fewestBytes = 0;
        m_hasLists = false;
        for (const PlyProperty& property : element.properties) {
            fewestBytes += Numbers::fewestBytes(property.countType.value_or(property.type));
            m_hasLists = m_hasLists || property.countType;
        }
        // Before anything is made room for.
        if (!m_numbers.hasRoomFor(element.count, fewestBytes))
            throw FileFormatError(cutOff(element));
        if (element.name == "vertex")
            readVertices(element);
        else if (element.name == "face")
            readFaces(element);
        else
            skip(element);
    }

    void requireEnd() { m_numbers.requireEnd(); }

    PointCloud cloud;
    /** Corners of one face after the other, each with their count before them. */
    std::vector<std::uint32_t> faces;

private:
    void readVertices(const PlyElement& element)
    {
        if (!cloud.positions.empty())
            throw FileFormatError("The file has vertices twice");
        std::vector<std::size_t> places;
        for (const PlyProperty& property : element.properties)
            places.push_back(property.countType ? kNone : placeOf(property));
        const auto has = [&places](VertexNumber number) {
            return std::count(places.begin(), places.end(), number) == 1;
        };
        if (!has(X) || !has(Y) || !has(Z))
            throw FileFormatError("The vertices of the file have no x, y and z");
        const bool hasNormals = has(NormalX) && has(NormalY) && has(NormalZ);
        const bool hasColors = has(Red) && has(Green) && has(Blue);
        cloud.positions.reserve(element.count);
        if (hasNormals)
            cloud.normals.reserve(element.count);
        if (hasColors)
            cloud.colors.reserve(element.count);
        double values[VertexNumbers + 1] = {};
        for (std::uint64_t item = 0; item < element.count; ++item) {
            report(item);
            readItem(element, [&](std::size_t property, double value) {
                values[std::min<std::size_t>(places[property], VertexNumbers)] = value;
            });
            const Vector position{values[X], values[Y], values[Z]};
            requirePosition(position, item);
            cloud.positions.push_back(position);
            if (hasNormals)
                cloud.normals.push_back({values[NormalX], values[NormalY], values[NormalZ]});
            if (hasColors)
                cloud.colors.push_back({std::uint8_t(values[Red]), std::uint8_t(values[Green]),
                                        std::uint8_t(values[Blue])});
        }
    }

    static std::size_t placeOf(const PlyProperty& property)
    {
        const auto* const found =
            std::find(std::begin(kVertexNames), std::end(kVertexNames), property.name);
        const auto place = std::size_t(found - std::begin(kVertexNames));
        // Colors of other types have other ranges.
        if (place >= Red && property.type != PlyType::UInt8)
            return kNone;
        return place == VertexNumbers ? kNone : place;
    }

    static void requirePosition(const Vector& position, std::uint64_t item)
    {
        if (!isWithinReach(position))
            throw FileFormatError("Vertex " + std::to_string(item) +
                                  (isFinite(position) ? " lies too far out" : " has no place"));
    }

    void readFaces(const PlyElement& element)
    {
        std::size_t list = kNone;
        for (std::size_t number = 0; number < element.properties.size(); ++number) {
            const PlyProperty& property = element.properties[number];
            if (property.countType &&
                (property.name == "vertex_indices" || property.name == "vertex_index"))
                list = number;
        }
        if (list == kNone)
            throw FileFormatError("The faces of the file have no vertices");
        for (std::uint64_t item = 0; item < element.count; ++item) {
            report(item);
            const std::size_t begin = faces.size();
            faces.push_back(0);
            readItem(element, [&](std::size_t property, double value) {
                if (property != list)
                    return;
                if (!(value >= 0 && value <= double(UINT32_MAX) && value == std::floor(value)))
                    failForVertex(item);
                faces.push_back(std::uint32_t(value));
            });
            faces[begin] = std::uint32_t(faces.size() - begin - 1);
        }
    }

    void skip(const PlyElement& element)
    {
        if (element.properties.empty())
            return;
        for (std::uint64_t item = 0; item < element.count; ++item) {
            report(item);
            readItem(element, [](std::size_t, double) {});
        }
    }

    /** @param take is given the property's number and the value; that of a list for each item */
    template <typename Take>
    void readItem(const PlyElement& element, Take take)
    {
        if (!m_hasLists) {
            for (std::size_t number = 0; number < element.properties.size(); ++number)
                take(number, m_numbers.next(element.properties[number].type));
            return;
        }
        for (std::size_t number = 0; number < element.properties.size(); ++number) {
            const PlyProperty& property = element.properties[number];
            if (!property.countType) {
                require(element, 1, property.type);
                take(number, m_numbers.next(property.type));
                continue;
            }
            require(element, 1, *property.countType);
            const double count = m_numbers.next(*property.countType);
            if (count < 0)
                throw FileFormatError("A list in the file has less than no items");
            require(element, std::uint64_t(count), property.type);
            for (std::uint64_t left = std::uint64_t(count); left > 0; --left)
                take(number, m_numbers.next(property.type));
        }
    }

    // A list before it may have taken the bytes that were counted for the item.
    void require(const PlyElement& element, std::uint64_t count, PlyType type) const
    {
        if (m_hasLists && !m_numbers.hasRoomFor(count, Numbers::fewestBytes(type)))
            throw FileFormatError(cutOff(element));
    }

    [[noreturn]] static void failForVertex(std::uint64_t item)
    {
        throw FileFormatError("Face " + std::to_string(item) +
                              " has a corner at a vertex that is not there");
    }

    void report(std::uint64_t item) const
    {
        if (item % kItemsPerReport == 0)
            m_progress.report(double(m_numbers.position()) / double(m_bytes));
    }

    std::size_t m_bytes;
    Numbers m_numbers;
    ProgressPart m_progress;
    bool m_hasLists = false;
};

struct Contents
{
    PointCloud cloud;
    std::vector<std::uint32_t> faces;
};

template <typename Numbers>
Contents readBody(std::string_view bytes, const PlyHeader& header, const Progress& progress)
{
    Reader<Numbers> reader(bytes, header, progress);
    for (const PlyElement& element : header.elements)
        reader.read(element);
    reader.requireEnd();
    if (reader.cloud.positions.empty())
        throw FileFormatError("The file has no points");
    return {std::move(reader.cloud), std::move(reader.faces)};
}

Contents read(std::string_view bytes, const Progress& progress)
{
    const PlyHeader header = readPlyHeader(bytes);
    return header.encoding == PlyEncoding::Text ? readBody<TextNumbers>(bytes, header, progress)
                                                : readBody<BinaryNumbers>(bytes, header, progress);
}

} // namespace

PointCloud readPlyPoints(std::string_view bytes, const Progress& progress)
{
    return read(bytes, progress).cloud;
}

Mesh readPlyMesh(std::string_view bytes, const Progress& progress)
{
    Contents contents = read(bytes, progress);
    Mesh mesh;
    mesh.vertices = std::move(contents.cloud.positions);
    const std::vector<std::uint32_t>& faces = contents.faces;
    std::uint64_t number = 0;
    for (std::size_t face = 0; face < faces.size(); face += faces[face] + 1) {
        const auto begin = faces.begin() + std::ptrdiff_t(face) + 1;
        const auto end = begin + faces[face];
        if (std::any_of(begin, end,
                        [&mesh](std::uint32_t vertex) { return vertex >= mesh.vertices.size(); }))
            throw FileFormatError("Face " + std::to_string(number) +
                                  " has a corner at a vertex that is not there");
        appendFace(mesh, {begin, end});
        ++number;
    }
    if (mesh.triangles.empty())
        throw FileFormatError("The file has no faces");
    return mesh;
}

} // namespace trovek::geometry
