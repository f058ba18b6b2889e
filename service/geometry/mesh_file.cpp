#include "mesh_file.h"

#include "mesh.h"
#include "obj_file.h"
#include "ply_file.h"
#include "progress_part.h"
#include "stl_file.h"
#include "text_words.h"
#include "whole_file.h"

namespace trovek::geometry {

std::optional<MeshFormat> meshFormat(std::string_view name)
{
    const std::string lower = lowerCase(name);
    if (lower == "stl")
        return MeshFormat::Stl;
    if (lower == "stl_text")
        return MeshFormat::StlText;
    if (lower == "obj")
        return MeshFormat::Obj;
    if (lower == "ply")
        return MeshFormat::Ply;
    return std::nullopt;
}

std::optional<MeshFormat> meshFormatOfPath(std::string_view path)
{
    const std::string ending = endingOf(path);
    return ending == "stl_text" ? std::nullopt : meshFormat(ending);
}

Mesh readMesh(std::string_view bytes, MeshFormat format, const Progress& progress)
{
    const ProgressPart whole(progress);
    whole.report(0);
    if (bytes.empty())
        throw FileFormatError("The file is empty");
    const auto read = [&] {
        switch (format) {
        case MeshFormat::Stl:
        case MeshFormat::StlText:
            return readStl(bytes, progress);
        case MeshFormat::Obj:
            return readObj(bytes, progress);
        case MeshFormat::Ply:
            break;
        }
        return readPlyMesh(bytes, progress);
    };
    Mesh mesh = read();
    whole.report(1);
    return mesh;
}

void writeMesh(const Mesh& mesh, MeshFormat format, const ByteSink& sink, const Progress& progress)
{
    if (mesh.triangles.empty())
        throw EmptyError("The mesh is empty");
    switch (format) {
    case MeshFormat::Stl:
        return writeStl(mesh, sink, progress);
    case MeshFormat::StlText:
        return writeStlAsText(mesh, sink, progress);
    case MeshFormat::Obj:
        return writeObj(mesh, sink, progress);
    case MeshFormat::Ply:
        return writePlyMesh(mesh, sink, progress);
    }
}

Mesh loadMesh(const std::string& path, const Progress& progress)
{
    const std::optional<MeshFormat> format = meshFormatOfPath(path);
    if (!format)
        throw FileFormatError(path + ": A mesh is read from .stl, .obj and .ply files");
    return readFile(path,
                    [&](std::string_view bytes) { return readMesh(bytes, *format, progress); });
}

void saveMesh(const Mesh& mesh, const std::string& path, MeshFormat format,
              const Progress& progress)
{
    if (mesh.triangles.empty())
        throw EmptyError("The mesh is empty");
    replaceFile(path, [&](const ByteSink& sink) { writeMesh(mesh, format, sink, progress); });
}

} // namespace trovek::geometry
