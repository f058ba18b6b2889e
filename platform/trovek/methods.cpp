#include "trovek/methods.h"

#include "trovek/wire.h"

namespace trovek::methods {

namespace {

Json::Value toJson(const Vector& vector)
{
    Json::Value value(Json::arrayValue);
    for (const double coordinate : vector)
        value.append(coordinate);
    return value;
}

Json::Value toJson(const std::vector<Vector>& vectors)
{
    Json::Value value(Json::arrayValue);
    for (const Vector& vector : vectors)
        value.append(toJson(vector));
    return value;
}

} // namespace

void connect_to_port::setPort(const Port& port)
{
    setParameter("port", port.name());
    setParameter("identity", port.identity());
}

void print::setSlicerConfig(const SlicerConfiguration& configuration)
{
    setParameter("slicer_config", wire::toJson(configuration));
}

void print::setMaterials(const std::vector<std::string>& materials)
{
    setParameter("materials", wire::toJson(materials));
}

void print_to_file::setSlicerConfig(const SlicerConfiguration& configuration)
{
    setParameter("slicer_config", wire::toJson(configuration));
}

void print_to_file::setMaterials(const std::vector<std::string>& materials)
{
    setParameter("materials", wire::toJson(materials));
}

void slice::setSlicerConfig(const SlicerConfiguration& configuration)
{
    setParameter("slicer_config", wire::toJson(configuration));
}

void slice::setMaterials(const std::vector<std::string>& materials)
{
    setParameter("materials", wire::toJson(materials));
}

void point_cloud_crop::setMinimum(const Vector& corner)
{
    setParameter("minimum", toJson(corner));
}

void point_cloud_crop::setMaximum(const Vector& corner)
{
    setParameter("maximum", toJson(corner));
}

void point_cloud_coarse_alignment::setPoints(const std::vector<Vector>& points)
{
    setParameter("points", toJson(points));
}

void point_cloud_coarse_alignment::setTargetPoints(const std::vector<Vector>& points)
{
    setParameter("target_points", toJson(points));
}

void mesh_cut_plane::setPoint(const Vector& point)
{
    setParameter("point", toJson(point));
}

void mesh_cut_plane::setNormal(const Vector& direction)
{
    setParameter("normal", toJson(direction));
}

} // namespace trovek::methods
