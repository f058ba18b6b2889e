#pragma once

#include "rigid_transform.h"
#include "vector.h"

#include <Eigen/Core>
#include <Eigen/Geometry>

namespace trovek::geometry {

inline Eigen::Vector3d toEigen(const Vector& vector)
{
    return {vector.x, vector.y, vector.z};
}

inline Vector fromEigen(const Eigen::Vector3d& vector)
{
    return {vector.x(), vector.y(), vector.z()};
}

inline Eigen::Isometry3d toEigen(const RigidTransform& transform)
{
    Eigen::Isometry3d result = Eigen::Isometry3d::Identity();
    for (int row = 0; row < 3; ++row)
        result.linear().row(row) = toEigen(transform.rotation[std::size_t(row)]);
    result.translation() = toEigen(transform.translation);
    return result;
}

inline RigidTransform fromEigen(const Eigen::Isometry3d& transform)
{
    RigidTransform result;
    for (int row = 0; row < 3; ++row)
        result.rotation[std::size_t(row)] = fromEigen(transform.linear().row(row).transpose());
    result.translation = fromEigen(transform.translation());
    return result;
}

} // namespace trovek::geometry
