#pragma once

#include <geometry/geometry_error.h>
#include <geometry/mesh.h>
#include <geometry/point_cloud.h>

#include <QTest>

#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

/** Meshes and point clouds of which one knows everything. */
namespace shapes {

using namespace trovek::geometry;

constexpr double kPi = 3.14159265358979323846;

/** "EmptyError: ", "FileFormatError: ", "GeometryError: ", "Canceled" or "Other: " and the text;
 * "nothing" when nothing is thrown. */
std::string thrownBy(const std::function<void()>& function);

/** The same points, numbers for numbers. */
bool areSame(const PointCloud& a, const PointCloud& b);
bool areSame(const Mesh& a, const Mesh& b);

Mesh box(const Vector& minimum, const Vector& maximum);
/** Of a side, about the origin. */
Mesh cube(double side);
/** About the origin, of triangles around the z axis. */
Mesh ball(double radius, int rings = 32);
/** About the z axis. */
Mesh torus(double radius, double tube, int parts = 48);
/** Up from z = 0. The first corner sees all others; they go around counter-clockwise. */
Mesh prism(const std::vector<Vector>& corners, double height);
Mesh both(const Mesh& first, const Mesh& second);
Mesh insideOut(Mesh mesh);
/** Each triangle with vertices of its own. */
Mesh takenApart(const Mesh& mesh);

/** The same numbers each time. */
class Dice
{
public:
    explicit Dice(unsigned seed = 1)
        : m_engine(seed)
    {}

    /** Of a bell curve. */
    double noise() { return m_normal(m_engine); }
    Vector noiseVector() { return {noise(), noise(), noise()}; }
    Vector direction() { return normalized(noiseVector()); }
    double between(double low, double high)
    {
        return std::uniform_real_distribution<double>(low, high)(m_engine);
    }

private:
    std::mt19937 m_engine;
    std::normal_distribution<double> m_normal;
};

/** Points of a ball's surface; the noise is along the radius, the root of its mean square. */
PointCloud pointsOfBall(std::size_t count, double radius, double noise, unsigned seed = 1);
/** Points all over a closed mesh; the noise goes anywhere. */
PointCloud pointsOfMesh(const Mesh& mesh, std::size_t count, double noise, unsigned seed = 1);
/** A potato: nothing about it is symmetric. About 90 x 60 x 48 mm, about the origin. */
Vector pointOfPotato(const Vector& direction);

/** Remembers what it is told, and cancels at the number of calls that is asked for. */
class ProgressLog
{
public:
    explicit ProgressLog(int cancelAt = 0)
        : m_cancelAt(cancelAt)
    {}

    Progress progress()
    {
        return [this](double done) {
            told.push_back(done);
            return int(told.size()) != m_cancelAt;
        };
    }
    bool isRising() const;

    std::vector<double> told;

private:
    int m_cancelAt;
};

} // namespace shapes

Q_DECLARE_METATYPE(std::string)

namespace QTest {

/** So that QCOMPARE shows the two texts that differ. */
template <>
inline char* toString(const std::string& text)
{
    return qstrdup(text.c_str());
}

} // namespace QTest

/** Numbers that differ by no more than a tolerance. */
#define COMPARE_NEAR(actual, expected, tolerance)                                                  \
    do {                                                                                           \
        const double actualNumber = (actual);                                                      \
        const double expectedNumber = (expected);                                                  \
        QVERIFY2(std::abs(actualNumber - expectedNumber) <= (tolerance),                           \
                 qPrintable(QStringLiteral("%1 instead of %2")                                     \
                                .arg(actualNumber, 0, 'g', 12)                                     \
                                .arg(expectedNumber, 0, 'g', 12)));                                \
    } while (false)
