#pragma once

#include "platform/trovek/recording_trovek.h"
#include "service/service_world.h"
#include "support/test_log.h"

#include <service/geometry/mesh.h>
#include <service/geometry/point_cloud.h>

#include <json/value.h>

#include <QByteArray>

#include <string>
#include <vector>

namespace trovek {

/** A service with a scanner that is quick: its camera has 640 x 480 pixels. */
class ScannerWorld : public ServiceWorld
{
public:
    /** @param settings further members of the scanner's settings */
    explicit ScannerWorld(const Json::Value& settings = Json::Value());

    /** A mesh file beside the state folder. */
    std::string writeMesh(const QString& name, const geometry::Mesh& mesh) const;
    std::string writeCloud(const QString& name, const geometry::PointCloud& cloud) const;
    /** An empty folder for pictures. */
    std::string makeFolder(const QString& name) const;
};

/** The answer to a request, for which the event loop runs. @throws JsonRpcException */
Json::Value ask(Trovek& client, const char* method, const Json::Value& params = Json::Value());

/** An object of members: object("id", 4, "path", path). */
inline Json::Value object()
{
    return Json::Value(Json::objectValue);
}
template <typename Value, typename... Rest>
Json::Value object(const char* name, const Value& value, const Rest&... rest)
{
    Json::Value all = object(rest...);
    all[name] = value;
    return all;
}

Json::Value list(const geometry::Vector& vector);
Json::Value parsed(const QByteArray& json);

/** What most tests begin with: a client of a service with a quick scanner, and its log. */
class ScannerFixture
{
public:
    explicit ScannerFixture(const Json::Value& settings = Json::Value());

    Json::Value call(const char* method, const Json::Value& params = Json::Value())
    {
        return ask(client, method, params);
    }
    /** The name of the error that is answered; empty when none is. */
    std::string errorFrom(const char* method, const Json::Value& params = Json::Value())
    {
        return errorOf([&] { call(method, params); });
    }
    /** Ends the service, and starts it with the same state. */
    void restart();

    int createCloud() { return call("point_cloud_create").asInt(); }
    int createMesh() { return call("mesh_create").asInt(); }
    /** By way of files. */
    int upload(const geometry::PointCloud& cloud);
    int upload(const geometry::Mesh& mesh);
    geometry::PointCloud downloadCloud(int id);
    geometry::Mesh downloadMesh(int id);

    void putOnTable(const geometry::Mesh& mesh);
    int startScan(int cloud, int steps);
    /** Runs a job to its end. */
    Job conclude(int job);
    Job scan(int cloud, int steps = 60) { return conclude(startScan(cloud, steps)); }

    TestLog log;
    ScannerWorld world;
    RecordingTrovek client;
};

/** A ball of triangles that is round to 0.02 of its radius 25. */
geometry::Mesh ball(double radius, const geometry::Vector& middle);
/** From the origin to (size, size, size). */
geometry::Mesh cube(double size);
/** Points of the ball's surface. */
geometry::PointCloud ballPoints(double radius, const geometry::Vector& middle, int count);

} // namespace trovek
