#include "point_cloud.h"

#include "geometry_error.h"

namespace trovek::geometry {

namespace {

template <typename Item>
std::vector<Item> joinedIfBoth(const std::vector<Item>& first, const std::vector<Item>& second)
{
    if (first.empty() || second.empty())
        return {};
    std::vector<Item> result = first;
    result.insert(result.end(), second.begin(), second.end());
    return result;
}

} // namespace

PointCloud transformed(const PointCloud& cloud, const RigidTransform& transform)
{
    PointCloud result = cloud;
    for (Vector& position : result.positions)
        position = transform.point(position);
    for (Vector& normal : result.normals)
        normal = transform.direction(normal);
    return result;
}

PointCloud joined(const PointCloud& first, const PointCloud& second)
{
    if (first.positions.empty())
        return second;
    if (second.positions.empty())
        return first;
    return {joinedIfBoth(first.positions, second.positions),
            joinedIfBoth(first.normals, second.normals), joinedIfBoth(first.colors, second.colors)};
}

Box boundingBox(const PointCloud& cloud)
{
    if (cloud.positions.empty())
        throw EmptyError("The point cloud is empty");
    return boundingBoxOf(cloud.positions);
}

} // namespace trovek::geometry
