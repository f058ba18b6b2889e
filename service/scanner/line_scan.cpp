#include "scanner/line_scan.h"

#include "geometry/ray_caster.h"

#include <cmath>
#include <random>
#include <string>

namespace trovek::service {

using geometry::PointCloud;
using geometry::RayCaster;
using geometry::RigidTransform;
using geometry::Vector;

namespace {

constexpr double kPi = 3.14159265358979323846;
/** What the scanner can see: millimetres above the platform and from the axis. */
constexpr double kLowest = -2;
constexpr double kHighest = 160;
constexpr double kFarthest = 100;
/** Light that only grazes a surface is not seen: the least cosine. */
constexpr double kGrazing = 0.1;

/** What is seen in one row of a picture. */
struct Sighting
{
    double brightness = 0;
    PixelPoint place;
};

class Scan
{
public:
    Scan(const LineScan& plan, const RayCaster& model)
        : m_plan(plan)
        , m_model(model)
        , m_camera(*plan.scanner.truth.camera)
        , m_random(plan.seed)
        , m_noise(0, plan.lineNoise > 0 ? plan.lineNoise : 1)
    {}

    void take(Laser laser, double angle)
    {
        for (const Sighting& seen : line(laser, angle)) {
            if (seen.brightness <= 0)
                continue;
            PixelPoint place = seen.place;
            if (m_plan.lineNoise > 0)
                place.x += m_noise(m_random);
            if (m_part(m_random) < m_plan.strayLight)
                place.x = m_part(m_random) * m_camera.width;
            keep(surfacePoint(m_plan.calibration, laser, place, angle));
        }
    }

    PointCloud cloud;

private:
    /** Rays of the sheet of light, as many as the picture has rows; the brightest of each row. */
    std::vector<Sighting> line(Laser laser, double angle) const
    {
        const RigidTransform toCamera = m_plan.scanner.truth.turntable->toCamera(angle);
        const RigidTransform toTable = toCamera.inverse();
        const Vector eye = toTable.translation;
        const Vector source = toTable.point(m_plan.scanner.laserSources[laser]);
        const Vector normal = toTable.direction((*m_plan.scanner.truth.lasers)[laser].normal);

        std::vector<Sighting> rows(std::size_t(m_camera.height));
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const double height =
                kLowest + (kHighest - kLowest) * (double(i) + 0.5) / double(rows.size());
            // Towards the axis, within the sheet.
            const Vector ahead = Vector{0, 0, height} - source;
            const auto hit = m_model.firstHit(source, ahead - dot(ahead, normal) * normal);
            if (!hit)
                continue;
            const double lit = dot(hit->normal, normalized(source - hit->point));
            const double seen = dot(hit->normal, normalized(eye - hit->point));
            if (lit < kGrazing || seen < kGrazing || !m_model.isVisible(hit->point, eye))
                continue;
            const auto place = m_camera.project(toCamera.point(hit->point));
            if (!place || !m_camera.contains(*place))
                continue;
            Sighting& row = rows[static_cast<std::size_t>(place->y)];
            if (lit * seen > row.brightness)
                row = {lit * seen, *place};
        }
        return rows;
    }

    void keep(const std::optional<Vector>& point)
    {
        if (point && point->z >= kLowest && point->z <= kHighest &&
            std::hypot(point->x, point->y) <= kFarthest)
            cloud.positions.push_back(*point);
    }

    const LineScan& m_plan;
    const RayCaster& m_model;
    const CameraModel& m_camera;
    std::mt19937 m_random;
    std::normal_distribution<double> m_noise;
    std::uniform_real_distribution<double> m_part;
};

} // namespace

PointCloud scanLines(const LineScan& scan, const RayCaster& model,
                     const geometry::Progress& progress)
{
    Scan taken(scan, model);
    for (int step = 0; step < scan.steps; ++step) {
        if (progress && !progress(double(step) / scan.steps))
            throw geometry::Canceled();
        for (const Laser laser : {kLeftLaser, kRightLaser}) {
            if (scan.lasers[laser])
                taken.take(laser, 2 * kPi * step / scan.steps);
        }
        if (taken.cloud.positions.size() > scan.pointsAtMost) {
            throw geometry::GeometryError("There are more than " +
                                          std::to_string(scan.pointsAtMost) +
                                          " points: take fewer pictures");
        }
    }
    if (taken.cloud.positions.empty())
        throw geometry::EmptyError("The scanner saw nothing on the turntable");
    return std::move(taken.cloud);
}

} // namespace trovek::service
