#include "shapes.h"

#include <algorithm>
#include <numeric>

namespace shapes {

std::string thrownBy(const std::function<void()>& function)
{
    const auto told = [](const char* kind, const std::exception& error) {
        return std::string(kind) + ": " + error.what();
    };
    try {
        function();
    } catch (const EmptyError& error) {
        return told("EmptyError", error);
    } catch (const FileFormatError& error) {
        return told("FileFormatError", error);
    } catch (const GeometryError& error) {
        return told("GeometryError", error);
    } catch (const Canceled&) {
        return "Canceled";
    } catch (const std::exception& error) {
        return told("Other", error);
    }
    return "nothing";
}

bool areSame(const PointCloud& a, const PointCloud& b)
{
    return a.positions == b.positions && a.normals == b.normals && a.colors == b.colors;
}

bool areSame(const Mesh& a, const Mesh& b)
{
    return a.vertices == b.vertices && a.triangles == b.triangles;
}

Mesh box(const Vector& minimum, const Vector& maximum)
{
    Mesh mesh;
    for (const double z : {minimum.z, maximum.z}) {
        for (const double y : {minimum.y, maximum.y}) {
            for (const double x : {minimum.x, maximum.x})
                mesh.vertices.push_back({x, y, z});
        }
    }
    mesh.triangles = {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}, {0, 1, 5}, {0, 5, 4},
                      {2, 6, 7}, {2, 7, 3}, {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};
    return mesh;
}

Mesh cube(double side)
{
    const double half = side / 2;
    return box({-half, -half, -half}, {half, half, half});
}

Mesh ball(double radius, int rings)
{
    Mesh mesh;
    const int parts = 2 * rings;
    mesh.vertices.push_back({0, 0, radius});
    for (int ring = 1; ring < rings; ++ring) {
        const double polar = kPi * ring / rings;
        for (int part = 0; part < parts; ++part) {
            const double around = 2 * kPi * part / parts;
            mesh.vertices.push_back({radius * std::sin(polar) * std::cos(around),
                                     radius * std::sin(polar) * std::sin(around),
                                     radius * std::cos(polar)});
        }
    }
    mesh.vertices.push_back({0, 0, -radius});
    const auto at = [parts](int ring, int part) {
        return std::uint32_t(1 + (ring - 1) * parts + part % parts);
    };
    const auto last = std::uint32_t(mesh.vertices.size() - 1);
    for (int part = 0; part < parts; ++part) {
        mesh.triangles.push_back({0, at(1, part), at(1, part + 1)});
        for (int ring = 1; ring < rings - 1; ++ring) {
            mesh.triangles.push_back({at(ring, part), at(ring + 1, part), at(ring + 1, part + 1)});
            mesh.triangles.push_back({at(ring, part), at(ring + 1, part + 1), at(ring, part + 1)});
        }
        mesh.triangles.push_back({last, at(rings - 1, part + 1), at(rings - 1, part)});
    }
    return mesh;
}

Mesh torus(double radius, double tube, int parts)
{
    Mesh mesh;
    for (int around = 0; around < parts; ++around) {
        const double turn = 2 * kPi * around / parts;
        for (int part = 0; part < parts; ++part) {
            const double roll = 2 * kPi * part / parts;
            const double away = radius + tube * std::cos(roll);
            mesh.vertices.push_back(
                {away * std::cos(turn), away * std::sin(turn), tube * std::sin(roll)});
        }
    }
    const auto at = [parts](int around, int part) {
        return std::uint32_t(around % parts * parts + part % parts);
    };
    for (int around = 0; around < parts; ++around) {
        for (int part = 0; part < parts; ++part) {
            mesh.triangles.push_back(
                {at(around, part), at(around + 1, part), at(around + 1, part + 1)});
            mesh.triangles.push_back(
                {at(around, part), at(around + 1, part + 1), at(around, part + 1)});
        }
    }
    return mesh;
}

Mesh prism(const std::vector<Vector>& corners, double height)
{
    Mesh mesh;
    const auto count = std::uint32_t(corners.size());
    for (const double z : {0.0, height}) {
        for (const Vector& corner : corners)
            mesh.vertices.push_back({corner.x, corner.y, z});
    }
    for (std::uint32_t corner = 0; corner < count; ++corner) {
        const std::uint32_t next = (corner + 1) % count;
        mesh.triangles.push_back({corner, next, next + count});
        mesh.triangles.push_back({corner, next + count, corner + count});
    }
    for (std::uint32_t corner = 2; corner < count; ++corner) {
        mesh.triangles.push_back({0, corner, corner - 1});
        mesh.triangles.push_back({count, count + corner - 1, count + corner});
    }
    return mesh;
}

Mesh both(const Mesh& first, const Mesh& second)
{
    Mesh mesh = first;
    const auto offset = std::uint32_t(first.vertices.size());
    mesh.vertices.insert(mesh.vertices.end(), second.vertices.begin(), second.vertices.end());
    for (const auto& [a, b, c] : second.triangles)
        mesh.triangles.push_back({a + offset, b + offset, c + offset});
    return mesh;
}

Mesh insideOut(Mesh mesh)
{
    for (auto& triangle : mesh.triangles)
        std::swap(triangle[1], triangle[2]);
    return mesh;
}

Mesh takenApart(const Mesh& mesh)
{
    Mesh result;
    for (const auto& triangle : mesh.triangles) {
        const auto first = std::uint32_t(result.vertices.size());
        for (const std::uint32_t vertex : triangle)
            result.vertices.push_back(mesh.vertices[vertex]);
        result.triangles.push_back({first, first + 1, first + 2});
    }
    return result;
}

PointCloud pointsOfBall(std::size_t count, double radius, double noise, unsigned seed)
{
    Dice dice(seed);
    PointCloud cloud;
    for (std::size_t point = 0; point < count; ++point)
        cloud.positions.push_back((radius + noise * dice.noise()) * dice.direction());
    return cloud;
}

PointCloud pointsOfMesh(const Mesh& mesh, std::size_t count, double noise, unsigned seed)
{
    std::vector<double> sums;
    double sum = 0;
    for (const auto& triangle : mesh.triangles) {
        sum += area(Mesh{mesh.vertices, {triangle}});
        sums.push_back(sum);
    }
    Dice dice(seed);
    PointCloud cloud;
    for (std::size_t point = 0; point < count; ++point) {
        const auto place = std::upper_bound(sums.begin(), sums.end(), dice.between(0, sum));
        const auto& [a, b, c] = mesh.triangles[std::size_t(place - sums.begin())];
        const double root = std::sqrt(dice.between(0, 1));
        const double part = dice.between(0, 1);
        cloud.positions.push_back((1 - root) * mesh.vertices[a] +
                                  root * (1 - part) * mesh.vertices[b] +
                                  root * part * mesh.vertices[c] + noise * dice.noiseVector());
    }
    return cloud;
}

Vector pointOfPotato(const Vector& direction)
{
    const double radius =
        25 + 3 * std::sin(3 * direction.x) + 2 * std::sin(5 * direction.y + 1) + direction.z;
    return {1.6 * radius * direction.x, 1.1 * radius * direction.y, 0.9 * radius * direction.z};
}

bool ProgressLog::isRising() const
{
    return !told.empty() && std::is_sorted(told.begin(), told.end()) && told.front() >= 0 &&
           told.back() == 1;
}

} // namespace shapes
