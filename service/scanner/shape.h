#pragma once

#include <cstddef>
#include <memory>

namespace trovek::geometry {
struct Mesh;
struct PointCloud;
} // namespace trovek::geometry

namespace trovek::service {

enum class ShapeKind { PointCloud, Mesh };

/** A point cloud or a mesh, which many may share because nobody changes it. */
class Shape
{
public:
    /** Empty. */
    explicit Shape(ShapeKind kind);
    explicit Shape(geometry::PointCloud cloud);
    explicit Shape(geometry::Mesh mesh);

    ShapeKind kind() const { return m_cloud ? ShapeKind::PointCloud : ShapeKind::Mesh; }
    /** Points or triangles. */
    std::size_t size() const;
    /** @throws std::logic_error when it is of the other kind */
    const geometry::PointCloud& cloud() const;
    const geometry::Mesh& mesh() const;

private:
    std::shared_ptr<const geometry::PointCloud> m_cloud;
    std::shared_ptr<const geometry::Mesh> m_mesh;
};

struct ShapeUse
{
    ShapeKind kind;
    int id;
};

} // namespace trovek::service
