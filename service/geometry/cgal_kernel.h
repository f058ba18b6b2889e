#pragma once

#include "geometry_error.h"
#include "vector.h"

#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Random.h>

#include <exception>
#include <new>

namespace trovek::geometry {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;

inline Kernel::Point_3 toPoint(const Vector& vector)
{
    return {vector.x, vector.y, vector.z};
}

inline Kernel::Vector_3 toDirection(const Vector& vector)
{
    return {vector.x, vector.y, vector.z};
}

inline Vector fromCgal(const Kernel::Point_3& point)
{
    return {point.x(), point.y(), point.z()};
}

inline Vector fromCgal(const Kernel::Vector_3& direction)
{
    return {direction.x(), direction.y(), direction.z()};
}

/**
 * Runs what asks CGAL, with the same random numbers each time.
 * @param failure what a user is told when CGAL gives up
 */
template <typename Work>
auto askCgal(const char* failure, Work work)
{
    CGAL::get_default_random() = CGAL::Random(0);
    try {
        return work();
    } catch (const GeometryError&) {
        throw;
    } catch (const Canceled&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw GeometryError("There is not enough memory");
    } catch (const std::exception&) {
        throw GeometryError(failure);
    }
}

} // namespace trovek::geometry
