#include "obj_file.h"

#include "face_triangles.h"
#include "output_buffer.h"
#include "progress_part.h"
#include "text_words.h"

namespace trovek::geometry {

namespace {

constexpr std::size_t kLinesPerReport = 16384;

/** Faces as they stand in the file: they may come before their vertices. */
struct Face
{
    std::size_t line;
    std::vector<std::uint32_t> corners;
};

Vector readVertex(TextWords& words)
{
    Vector vertex;
    vertex.x = words.coordinate(words.nextInLine());
    vertex.y = words.coordinate(words.nextInLine());
    vertex.z = words.coordinate(words.nextInLine());
    return vertex;
}

/** From 0. They count from 1, or back from -1, the vertex that came last. */
std::uint32_t readCorner(const TextWords& words, std::string_view word, std::size_t vertices)
{
    // "vertex/texture/normal"
    const std::int64_t number = words.integer(word.substr(0, word.find('/')));
    const std::int64_t vertex = number > 0 ? number - 1 : std::int64_t(vertices) + number;
    if (number == 0 || vertex < 0 || vertex >= std::int64_t(UINT32_MAX))
        words.fail(quoted(word) + " is a vertex that is not there");
    return std::uint32_t(vertex);
}

Face readFace(TextWords& words, std::size_t vertices)
{
    Face face{words.line(), {}};
    for (std::string_view word = words.nextInLine(); !word.empty(); word = words.nextInLine())
        face.corners.push_back(readCorner(words, word, vertices));
    if (face.corners.size() < 3)
        words.fail("a face has fewer than three corners");
    return face;
}

} // namespace

Mesh readObj(std::string_view bytes, const Progress& progress)
{
    const ProgressPart whole(progress);
    TextWords words(bytes);
    Mesh mesh;
    std::vector<Face> faces;
    do {
        if (words.line() % kLinesPerReport == 0)
            whole.report(double(words.bytesRead()) / double(bytes.size()));
        const std::string_view keyword = words.nextInLine();
        if (keyword == "v")
            mesh.vertices.push_back(readVertex(words));
        else if (keyword == "f")
            faces.push_back(readFace(words, mesh.vertices.size()));
    } while (words.nextLine());

    for (Face& face : faces) {
        for (const std::uint32_t vertex : face.corners) {
            if (vertex >= mesh.vertices.size())
                throw FileFormatError("Line " + std::to_string(face.line) + ": vertex " +
                                      std::to_string(std::uint64_t(vertex) + 1) + " is not there");
        }
        appendFace(mesh, std::move(face.corners));
    }
    if (mesh.triangles.empty())
        throw FileFormatError("The file has no faces");
    return mesh;
}

void writeObj(const Mesh& mesh, const ByteSink& sink, const Progress& progress)
{
    OutputBuffer output(sink, progress, mesh.vertices.size() + mesh.triangles.size());
    for (const Vector& vertex : mesh.vertices) {
        output.text("v ").number(vertex.x).text(" ").number(vertex.y);
        output.text(" ").number(vertex.z).text("\n").endItem();
    }
    for (const std::array<std::uint32_t, 3>& triangle : mesh.triangles) {
        output.text("f");
        for (const std::uint32_t vertex : triangle)
            output.text(" ").number(std::uint64_t(vertex) + 1);
        output.text("\n").endItem();
    }
    output.end();
}

} // namespace trovek::geometry
