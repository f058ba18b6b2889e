#pragma once

#include "vector.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace trovek::geometry {

struct Mesh;

/** Finds what a ray of light meets on a mesh. Any threads may ask at a time. */
class RayCaster
{
public:
    struct Hit
    {
        Vector point;
        /** Of length 1, out of the mesh. */
        Vector normal;
        /** From the ray's origin, millimetres. */
        double distance = 0;
        std::uint32_t triangle = 0;
    };

    /**
     * Keeps what it needs of the mesh. Triangles without an area are never met.
     * @throws EmptyError when no others are there
     */
    explicit RayCaster(const Mesh& mesh);
    RayCaster(const RayCaster&) = delete;
    RayCaster& operator=(const RayCaster&) = delete;
    ~RayCaster();

    /** The nearest point of the mesh on the ray, from either side of the surface.
     * @param direction any length but zero */
    std::optional<Hit> firstHit(const Vector& origin, const Vector& direction) const;

    /** Whether nothing lies between two points. Either may itself lie on the mesh. */
    bool isVisible(const Vector& point, const Vector& from) const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::geometry
