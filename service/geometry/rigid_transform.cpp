#include "rigid_transform.h"

#include "eigen_vector.h"

#include <Eigen/Geometry>

#include <algorithm>

namespace trovek::geometry {

namespace {

RigidTransform rotationBy(const Eigen::Quaterniond& turn)
{
    return fromEigen(Eigen::Isometry3d(turn));
}

} // namespace

RigidTransform RigidTransform::moving(const Vector& by)
{
    RigidTransform transform;
    transform.translation = by;
    return transform;
}

RigidTransform RigidTransform::turning(const Vector& axis, double radians)
{
    return rotationBy(
        Eigen::Quaterniond(Eigen::AngleAxisd(radians, toEigen(axis).stableNormalized())));
}

RigidTransform RigidTransform::turning(const Vector& from, const Vector& to)
{
    return rotationBy(Eigen::Quaterniond::FromTwoVectors(toEigen(from).stableNormalized(),
                                                         toEigen(to).stableNormalized()));
}

RigidTransform RigidTransform::inverse() const
{
    return fromEigen(toEigen(*this).inverse());
}

double RigidTransform::radians() const
{
    return Eigen::AngleAxisd(toEigen(*this).linear()).angle();
}

RigidTransform operator*(const RigidTransform& left, const RigidTransform& right)
{
    return fromEigen(toEigen(left) * toEigen(right));
}

} // namespace trovek::geometry
