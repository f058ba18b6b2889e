#pragma once

#include "cgal_kernel.h"
#include "mesh.h"

#include <CGAL/Surface_mesh.h>

#include <cstdint>
#include <vector>

namespace trovek::geometry {

using SurfaceMesh = CGAL::Surface_mesh<Kernel::Point_3>;

inline Mesh fromCgal(const SurfaceMesh& mesh)
{
    Mesh result;
    // What was removed leaves gaps in CGAL's numbers.
    std::vector<std::uint32_t> numbers(mesh.num_vertices());
    for (const SurfaceMesh::Vertex_index vertex : mesh.vertices()) {
        numbers[vertex] = std::uint32_t(result.vertices.size());
        result.vertices.push_back(fromCgal(mesh.point(vertex)));
    }
    result.triangles.reserve(mesh.number_of_faces());
    for (const SurfaceMesh::Face_index face : mesh.faces()) {
        const auto edge = mesh.halfedge(face);
        result.triangles.push_back({numbers[mesh.source(edge)], numbers[mesh.target(edge)],
                                    numbers[mesh.target(mesh.next(edge))]});
    }
    return result;
}

} // namespace trovek::geometry
