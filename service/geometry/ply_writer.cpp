#include "output_buffer.h"
#include "ply_file.h"

namespace trovek::geometry {

namespace {

void beginHeader(OutputBuffer& output, const char* format, std::size_t vertices)
{
    output.text("ply\nformat ").text(format).text(" 1.0\nelement vertex ").number(vertices);
    output.text("\nproperty double x\nproperty double y\nproperty double z\n");
}

void writeCloudHeader(OutputBuffer& output, const char* format, const PointCloud& cloud)
{
    beginHeader(output, format, cloud.positions.size());
    if (!cloud.normals.empty())
        output.text("property double nx\nproperty double ny\nproperty double nz\n");
    if (!cloud.colors.empty())
        output.text("property uchar red\nproperty uchar green\nproperty uchar blue\n");
    output.text("end_header\n");
}

void writeRaw(OutputBuffer& output, const Vector& vector)
{
    output.raw(vector.x).raw(vector.y).raw(vector.z);
}

void writeText(OutputBuffer& output, const Vector& vector)
{
    output.number(vector.x).text(" ").number(vector.y).text(" ").number(vector.z);
}

} // namespace

void writePlyPoints(const PointCloud& cloud, const ByteSink& sink, const Progress& progress)
{
    OutputBuffer output(sink, progress, cloud.positions.size());
    writeCloudHeader(output, "binary_little_endian", cloud);
    for (std::size_t point = 0; point < cloud.positions.size(); ++point) {
        writeRaw(output, cloud.positions[point]);
        if (!cloud.normals.empty())
            writeRaw(output, cloud.normals[point]);
        if (!cloud.colors.empty()) {
            for (const std::uint8_t part : cloud.colors[point])
                output.raw(part);
        }
        output.endItem();
    }
    output.end();
}

void writePlyPointsAsText(const PointCloud& cloud, const ByteSink& sink, const Progress& progress)
{
    OutputBuffer output(sink, progress, cloud.positions.size());
    writeCloudHeader(output, "ascii", cloud);
    for (std::size_t point = 0; point < cloud.positions.size(); ++point) {
        writeText(output, cloud.positions[point]);
        if (!cloud.normals.empty())
            writeText(output.text(" "), cloud.normals[point]);
        if (!cloud.colors.empty()) {
            for (const std::uint8_t part : cloud.colors[point])
                output.text(" ").number(unsigned(part));
        }
        output.text("\n").endItem();
    }
    output.end();
}

void writePlyMesh(const Mesh& mesh, const ByteSink& sink, const Progress& progress)
{
    OutputBuffer output(sink, progress, mesh.vertices.size() + mesh.triangles.size());
    beginHeader(output, "binary_little_endian", mesh.vertices.size());
    output.text("element face ").number(mesh.triangles.size());
    output.text("\nproperty list uchar uint vertex_indices\nend_header\n");
    for (const Vector& vertex : mesh.vertices) {
        writeRaw(output, vertex);
        output.endItem();
    }
    for (const std::array<std::uint32_t, 3>& triangle : mesh.triangles) {
        output.raw(std::uint8_t(3));
        for (const std::uint32_t vertex : triangle)
            output.raw(vertex);
        output.endItem();
    }
    output.end();
}

} // namespace trovek::geometry
