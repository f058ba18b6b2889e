#include "scanner/default_model.h"

#include "geometry/mesh.h"

#include <algorithm>
#include <cmath>

namespace trovek::service {

using geometry::Mesh;
using geometry::Vector;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr std::uint32_t kRound = 120;
constexpr std::uint32_t kRings = 80;
constexpr Vector kMiddle{0, 0, 18};
constexpr double kHeadRadius = 24;

/** A bulge or a dent of the head: where it is, how far it goes, and how wide it is. */
struct Bump
{
    Vector direction;
    double height;
    /** Radians. */
    double width;
};

// The bear looks along -y, as towards the camera; one ear hangs a little.
constexpr Bump kBumps[] = {
    {{0.70, 0.05, 0.75}, 12, 0.26},  {{-0.78, 0.10, 0.66}, 10, 0.28},
    {{0.0, -1.0, -0.12}, 11, 0.36},  {{0.0, -1.0, 0.10}, 3.5, 0.13},
    {{0.38, -0.88, 0.36}, -3, 0.15}, {{-0.38, -0.88, 0.36}, -3, 0.15},
    {{0.55, 0.75, -0.2}, 4, 0.5},
};

/** From the middle to the surface. */
double radiusAt(const Vector& direction)
{
    double radius = kHeadRadius;
    for (const Bump& bump : kBumps) {
        const double angle =
            std::acos(std::clamp(dot(direction, normalized(bump.direction)), -1.0, 1.0));
        radius += bump.height * std::exp(-angle * angle / (2 * bump.width * bump.width));
    }
    // It stands on a flat neck.
    if (direction.z < 0)
        radius = std::min(radius, kMiddle.z / -direction.z);
    return radius;
}

Vector surfaceAt(double polar, double round)
{
    const Vector direction{std::sin(polar) * std::cos(round), std::sin(polar) * std::sin(round),
                           std::cos(polar)};
    const Vector point = kMiddle + radiusAt(direction) * direction;
    return {point.x, point.y, std::max(0.0, point.z)};
}

} // namespace

Mesh defaultModel()
{
    Mesh mesh;
    mesh.vertices.push_back(surfaceAt(0, 0));
    for (std::uint32_t ring = 1; ring < kRings; ++ring) {
        for (std::uint32_t i = 0; i < kRound; ++i)
            mesh.vertices.push_back(surfaceAt(kPi * ring / kRings, 2 * kPi * i / kRound));
    }
    mesh.vertices.push_back(surfaceAt(kPi, 0));

    const auto at = [](std::uint32_t ring, std::uint32_t i) {
        return 1 + (ring - 1) * kRound + i % kRound;
    };
    const auto bottom = static_cast<std::uint32_t>(mesh.vertices.size() - 1);
    for (std::uint32_t i = 0; i < kRound; ++i) {
        mesh.triangles.push_back({0, at(1, i), at(1, i + 1)});
        for (std::uint32_t ring = 1; ring + 1 < kRings; ++ring) {
            mesh.triangles.push_back({at(ring, i), at(ring + 1, i), at(ring + 1, i + 1)});
            mesh.triangles.push_back({at(ring, i), at(ring + 1, i + 1), at(ring, i + 1)});
        }
        mesh.triangles.push_back({bottom, at(kRings - 1, i + 1), at(kRings - 1, i)});
    }
    return mesh;
}

} // namespace trovek::service
