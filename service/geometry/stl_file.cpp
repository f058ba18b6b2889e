#include "stl_file.h"

#include "output_buffer.h"
#include "progress_part.h"
#include "raw_numbers.h"
#include "reach.h"
#include "text_words.h"

#include <cmath>
#include <unordered_map>

namespace trovek::geometry {

namespace {

constexpr std::size_t kHeaderBytes = 80;
constexpr std::size_t kTrianglesAt = kHeaderBytes + sizeof(std::uint32_t);
constexpr std::size_t kTriangleBytes = 50;
constexpr std::size_t kItemsPerReport = 16384;

/** Makes one vertex of equal corners: the format has none. */
class Corners
{
public:
    explicit Corners(std::size_t triangles)
    {
        m_mesh.triangles.reserve(triangles);
        m_mesh.vertices.reserve(triangles / 2);
        m_numbers.reserve(triangles / 2);
    }

    /** Triangles of fewer than three vertices are left out. */
    void add(const std::array<Vector, 3>& corners)
    {
        const std::array<std::uint32_t, 3> triangle{number(corners[0]), number(corners[1]),
                                                    number(corners[2])};
        if (triangle[0] != triangle[1] && triangle[1] != triangle[2] && triangle[2] != triangle[0])
            m_mesh.triangles.push_back(triangle);
    }

    Mesh take()
    {
        if (m_mesh.triangles.empty())
            throw FileFormatError("The file has no triangles");
        return std::move(m_mesh);
    }

private:
    struct Hash
    {
        std::size_t operator()(const Vector& vector) const
        {
            const std::hash<double> hash;
            return (hash(vector.x) * 31 + hash(vector.y)) * 31 + hash(vector.z);
        }
    };

    std::uint32_t number(const Vector& corner)
    {
        const auto [entry, isNew] =
            m_numbers.try_emplace(corner, std::uint32_t(m_mesh.vertices.size()));
        if (isNew)
            m_mesh.vertices.push_back(corner);
        return entry->second;
    }

    Mesh m_mesh;
    std::unordered_map<Vector, std::uint32_t, Hash> m_numbers;
};

Vector readVector(const char* bytes)
{
    return {double(readRaw<float>(bytes, ByteOrder::LittleEndian)),
            double(readRaw<float>(bytes + 4, ByteOrder::LittleEndian)),
            double(readRaw<float>(bytes + 8, ByteOrder::LittleEndian))};
}

Mesh readBinary(std::string_view bytes, const ProgressPart& progress)
{
    const std::uint32_t count =
        readRaw<std::uint32_t>(bytes.data() + kHeaderBytes, ByteOrder::LittleEndian);
    const std::size_t room = (bytes.size() - kTrianglesAt) / kTriangleBytes;
    if (room < count)
        throw FileFormatError("The file is cut off: " + std::to_string(room) + " of " +
                              std::to_string(count) + " triangles are there");
    if (bytes.size() != kTrianglesAt + count * kTriangleBytes)
        throw FileFormatError("The file goes on behind its " + std::to_string(count) +
                              " triangles");
    Corners corners(count);
    for (std::uint32_t number = 0; number < count; ++number) {
        if (number % kItemsPerReport == 0)
            progress.report(double(number) / count);
        // Behind the normal, which the corners tell better.
        const char* const triangle = bytes.data() + kTrianglesAt + number * kTriangleBytes + 12;
        const std::array<Vector, 3> read{readVector(triangle), readVector(triangle + 12),
                                         readVector(triangle + 24)};
        for (const Vector& corner : read) {
            if (!isWithinReach(corner))
                throw FileFormatError(
                    "Triangle " + std::to_string(number) +
                    (isFinite(corner) ? " lies too far out" : " has a corner without a place"));
        }
        corners.add(read);
    }
    return corners.take();
}

void require(TextWords& words, std::string_view expected)
{
    const std::string_view word = words.next();
    if (word.empty())
        throw FileFormatError("The file is cut off: \"" + std::string(expected) + "\" is missing");
    if (lowerCase(word) != expected)
        words.fail(quoted(word) + " stands where \"" + std::string(expected) + "\" should");
}

Vector readCoordinates(TextWords& words)
{
    // Single precision, as in binary files: more digits would keep equal corners apart.
    const auto next = [&words] {
        return double(float(words.coordinate(words.next())));
    };
    // One after the other: the order in which arguments are computed is not said.
    Vector vector;
    vector.x = next();
    vector.y = next();
    vector.z = next();
    return vector;
}

/** Behind the word "facet". */
std::array<Vector, 3> readFacet(TextWords& words)
{
    require(words, "normal");
    // Whatever it is: some programs write "nan" for triangles without an area.
    for (int number = 0; number < 3; ++number)
        words.next();
    require(words, "outer");
    require(words, "loop");
    std::array<Vector, 3> corners;
    for (Vector& corner : corners) {
        require(words, "vertex");
        corner = readCoordinates(words);
    }
    require(words, "endloop");
    require(words, "endfacet");
    return corners;
}

Mesh readText(std::string_view bytes, const ProgressPart& progress)
{
    TextWords words(bytes);
    Corners corners(0);
    std::size_t facets = 0;
    // A file may hold several solids; the rest of the line is the name of each.
    for (std::string_view word = words.next(); !word.empty(); word = words.next()) {
        if (lowerCase(word) != "solid")
            words.fail(quoted(word) + " stands where \"solid\" should");
        words.nextLine();
        for (;;) {
            if (facets++ % kItemsPerReport == 0)
                progress.report(double(words.bytesRead()) / double(bytes.size()));
            word = words.next();
            if (lowerCase(word) == "endsolid")
                break;
            if (word.empty())
                throw FileFormatError("The file is cut off: \"endsolid\" is missing");
            if (lowerCase(word) != "facet")
                words.fail(quoted(word) + " stands where \"facet\" should");
            corners.add(readFacet(words));
        }
        words.nextLine();
    }
    return corners.take();
}

/** Headers of binary files may begin with "solid" too. */
bool isText(std::string_view bytes)
{
    const std::size_t begin = bytes.find_first_not_of(" \t\r\n");
    return begin != std::string_view::npos && lowerCase(bytes.substr(begin, 5)) == "solid" &&
           bytes.substr(0, 1024).find('\0') == std::string_view::npos;
}

bool isBinary(std::string_view bytes)
{
    return bytes.size() >= kTrianglesAt &&
           bytes.size() ==
               kTrianglesAt + kTriangleBytes *
                                  std::uint64_t(readRaw<std::uint32_t>(bytes.data() + kHeaderBytes,
                                                                       ByteOrder::LittleEndian));
}

std::array<Vector, 3> cornersOf(const Mesh& mesh, const std::array<std::uint32_t, 3>& triangle)
{
    return {mesh.vertices[triangle[0]], mesh.vertices[triangle[1]], mesh.vertices[triangle[2]]};
}

Vector normalOf(const std::array<Vector, 3>& corners)
{
    const Vector normal = cross(corners[1] - corners[0], corners[2] - corners[0]);
    const double size = length(normal);
    return size > 0 ? 1 / size * normal : Vector();
}

} // namespace

Mesh readStl(std::string_view bytes, const Progress& progress)
{
    const ProgressPart whole(progress);
    if (!isBinary(bytes) && isText(bytes))
        return readText(bytes, whole);
    if (bytes.size() < kTrianglesAt)
        throw FileFormatError("The file is no STL file");
    return readBinary(bytes, whole);
}

void writeStl(const Mesh& mesh, const ByteSink& sink, const Progress& progress)
{
    OutputBuffer output(sink, progress, mesh.triangles.size());
    // Not "solid", which would look like a text file.
    std::string header = "Binary STL, millimetres";
    header.resize(kHeaderBytes, ' ');
    output.text(header).raw(std::uint32_t(mesh.triangles.size()));
    for (const std::array<std::uint32_t, 3>& triangle : mesh.triangles) {
        const std::array<Vector, 3> corners = cornersOf(mesh, triangle);
        for (const Vector& vector : {normalOf(corners), corners[0], corners[1], corners[2]})
            output.raw(float(vector.x)).raw(float(vector.y)).raw(float(vector.z));
        output.raw(std::uint16_t(0)).endItem();
    }
    output.end();
}

void writeStlAsText(const Mesh& mesh, const ByteSink& sink, const Progress& progress)
{
    OutputBuffer output(sink, progress, mesh.triangles.size());
    const auto write = [&output](const char* before, const Vector& vector) {
        output.text(before).number(float(vector.x)).text(" ").number(float(vector.y));
        output.text(" ").number(float(vector.z)).text("\n");
    };
    output.text("solid mesh\n");
    for (const std::array<std::uint32_t, 3>& triangle : mesh.triangles) {
        const std::array<Vector, 3> corners = cornersOf(mesh, triangle);
        write("facet normal ", normalOf(corners));
        output.text("outer loop\n");
        for (const Vector& corner : corners)
            write("vertex ", corner);
        output.text("endloop\nendfacet\n").endItem();
    }
    output.text("endsolid mesh\n").end();
}

} // namespace trovek::geometry
