#include "scanner/shape.h"

#include "geometry/mesh.h"
#include "geometry/point_cloud.h"

#include <stdexcept>

namespace trovek::service {

Shape::Shape(ShapeKind kind)
{
    if (kind == ShapeKind::PointCloud)
        m_cloud = std::make_shared<geometry::PointCloud>();
    else
        m_mesh = std::make_shared<geometry::Mesh>();
}

Shape::Shape(geometry::PointCloud cloud)
    : m_cloud(std::make_shared<geometry::PointCloud>(std::move(cloud)))
{}

Shape::Shape(geometry::Mesh mesh)
    : m_mesh(std::make_shared<geometry::Mesh>(std::move(mesh)))
{}

std::size_t Shape::size() const
{
    return m_cloud ? m_cloud->positions.size() : m_mesh->triangles.size();
}

const geometry::PointCloud& Shape::cloud() const
{
    if (!m_cloud)
        throw std::logic_error("The shape is no point cloud");
    return *m_cloud;
}

const geometry::Mesh& Shape::mesh() const
{
    if (!m_mesh)
        throw std::logic_error("The shape is no mesh");
    return *m_mesh;
}

} // namespace trovek::service
