#pragma once

#include "byte_sink.h"
#include "geometry_error.h"

#include <optional>
#include <string>
#include <string_view>

namespace trovek::geometry {

struct Mesh;

enum class MeshFormat {
    /** Binary when written; binary and text are read. Single precision, as the format is. */
    Stl,
    /** STL as text. */
    StlText,
    Obj,
    /** Binary when written; text and either byte order are read. */
    Ply,
};

/** Of "stl", "stl_text", "obj", "ply", in upper or lower case. */
std::optional<MeshFormat> meshFormat(std::string_view name);
/** By the last letters of the path: ".stl", ".obj", ".ply". */
std::optional<MeshFormat> meshFormatOfPath(std::string_view path);

/**
 * Reads a mesh from the whole contents of a file. Faces with more corners become triangles; equal
 * corners of an STL file become one vertex.
 * @throws FileFormatError for a user, beginning with what is wrong: cut off, a number that is not
 * finite, a face of a vertex that is not there, no faces, ...
 * @throws Canceled
 */
Mesh readMesh(std::string_view bytes, MeshFormat format, const Progress& progress = {});

/**
 * @throws EmptyError before anything is written
 * @throws Canceled, and what the sink throws
 */
void writeMesh(const Mesh& mesh, MeshFormat format, const ByteSink& sink,
               const Progress& progress = {});

/**
 * @param path absolute, UTF-8; its ending tells the format
 * @throws FileFormatError, Canceled
 * @throws std::runtime_error with the path, when there is no such regular file or it cannot be read
 */
Mesh loadMesh(const std::string& path, const Progress& progress = {});

/**
 * Replaces the file as a whole, or leaves what was there. Which files a client may write is for the
 * caller to say.
 * @param path absolute, UTF-8
 * @throws EmptyError, Canceled
 * @throws std::runtime_error with the path, when it cannot be written
 */
void saveMesh(const Mesh& mesh, const std::string& path, MeshFormat format,
              const Progress& progress = {});

} // namespace trovek::geometry
