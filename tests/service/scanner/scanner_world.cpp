#include "scanner_world.h"

#include <rpcwire/json_text.h>
#include <service/geometry/mesh_file.h>
#include <service/geometry/point_cloud_file.h>
#include <trovek/asynchronous_method.h>
#include <trovek/text.h>

#include <QDir>
#include <QTest>

#include <cmath>
#include <optional>
#include <stdexcept>

namespace trovek {

using geometry::Mesh;
using geometry::PointCloud;
using geometry::Vector;

namespace {

constexpr double kPi = 3.14159265358979323846;

/** A request of any name, which keeps what it is answered. */
class AnyRequest : public AsynchronousMethod
{
public:
    AnyRequest(const char* method, const Json::Value& params)
        : AsynchronousMethod(method)
    {
        if (!params.isNull()) {
            for (const std::string& name : params.getMemberNames())
                setParameter(name.c_str(), params[name]);
        }
    }
    ~AnyRequest() override = default;

    std::optional<Json::Value> answer;
    std::optional<Json::Value> error;

protected:
    void handleResponse(const Json::Value& response) override { answer = response; }
    void handleErrorResponse(const Json::Value& response) override { error = response; }
};

template <typename Write>
QByteArray written(Write write)
{
    QByteArray bytes;
    write([&bytes](const char* data, std::size_t size) {
        bytes.append(data, static_cast<int>(size));
    });
    return bytes;
}

} // namespace

ScannerWorld::ScannerWorld(const Json::Value& settings)
{
    Json::Value all = settings.isNull() ? Json::Value(Json::objectValue) : settings;
    if (!all.isMember("camera")) {
        all["camera"]["width"] = 640;
        all["camera"]["height"] = 480;
    }
    options.scannerFile = writeFile(QStringLiteral("scanner.json"),
                                    QByteArray::fromStdString(rpcwire::toJsonLine(all)));
}

std::string ScannerWorld::writeMesh(const QString& name, const Mesh& mesh) const
{
    return writeFile(name, written([&mesh](const geometry::ByteSink& sink) {
                         geometry::writeMesh(mesh, geometry::MeshFormat::Ply, sink);
                     }));
}

std::string ScannerWorld::writeCloud(const QString& name, const PointCloud& cloud) const
{
    return writeFile(name, written([&cloud](const geometry::ByteSink& sink) {
                         geometry::writePointCloud(cloud, geometry::PointCloudFormat::Ply, sink);
                     }));
}

std::string ScannerWorld::makeFolder(const QString& name) const
{
    const std::string made = path(name);
    if (!QDir().mkpath(toQString(made)))
        throw std::runtime_error("The test cannot make " + made);
    return made;
}

Json::Value ask(Trovek& client, const char* method, const Json::Value& params)
{
    AnyRequest request(method, params);
    request.issue(client);
    if (!QTest::qWaitFor([&] { return request.answer || request.error; }, 60000))
        throw std::runtime_error(std::string("No answer to ") + method);
    if (request.error)
        throw JsonRpcException((*request.error)["message"].asString(), (*request.error)["data"]);
    return *request.answer;
}

ScannerFixture::ScannerFixture(const Json::Value& settings)
    : world(settings)
{
    world.start();
    client.connectToDaemon(world.address());
}

void ScannerFixture::restart()
{
    client.disconnectFromDaemon();
    world.stop();
    world.start();
    client.connectToDaemon(world.address());
}

int ScannerFixture::upload(const PointCloud& cloud)
{
    const int id = createCloud();
    const std::string path = world.writeCloud(QStringLiteral("upload.ply"), cloud);
    call("point_cloud_load_from_id", object("id", id, "path", path));
    return id;
}

int ScannerFixture::upload(const Mesh& mesh)
{
    const int id = createMesh();
    const std::string path = world.writeMesh(QStringLiteral("upload.ply"), mesh);
    call("mesh_load", object("id", id, "path", path));
    return id;
}

PointCloud ScannerFixture::downloadCloud(int id)
{
    const std::string path = world.emptyFile(QStringLiteral("download.ply"));
    call("point_cloud_save", object("id", id, "path", path, "format", "ply"));
    return geometry::loadPointCloud(path);
}

Mesh ScannerFixture::downloadMesh(int id)
{
    const std::string path = world.emptyFile(QStringLiteral("download.ply"));
    call("mesh_save", object("id", id, "path", path, "format", "ply"));
    return geometry::loadMesh(path);
}

void ScannerFixture::putOnTable(const Mesh& mesh)
{
    const std::string path = world.writeMesh(QStringLiteral("table.ply"), mesh);
    call("simulate_scanned_model", object("path", path));
}

int ScannerFixture::startScan(int cloud, int steps)
{
    return call("scan", object("point_cloud", cloud, "steps", steps))["id"].asInt();
}

Job ScannerFixture::conclude(int job)
{
    if (!QTest::qWaitFor([&] { return client.jobFromID(job).conclusion() != JobNotConcluded; },
                         90000))
        qWarning("The job did not conclude");
    return client.jobFromID(job);
}

Json::Value list(const Vector& vector)
{
    Json::Value value(Json::arrayValue);
    for (const double coordinate : {vector.x, vector.y, vector.z})
        value.append(coordinate);
    return value;
}

Json::Value parsed(const QByteArray& json)
{
    Json::Value value;
    std::string error;
    if (!rpcwire::parseJson(json.toStdString(), &value, &error))
        throw std::runtime_error("The test's JSON is none: " + error);
    return value;
}

Mesh ball(double radius, const Vector& middle)
{
    constexpr std::uint32_t kRings = 40;
    constexpr std::uint32_t kRound = 80;
    Mesh mesh;
    const auto add = [&](double polar, double round) {
        mesh.vertices.push_back(middle + radius * Vector{std::sin(polar) * std::cos(round),
                                                         std::sin(polar) * std::sin(round),
                                                         std::cos(polar)});
    };
    add(0, 0);
    for (std::uint32_t ring = 1; ring < kRings; ++ring) {
        for (std::uint32_t i = 0; i < kRound; ++i)
            add(kPi * ring / kRings, 2 * kPi * i / kRound);
    }
    add(kPi, 0);
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

Mesh cube(double size)
{
    Mesh mesh;
    for (const double z : {0.0, size}) {
        for (const double y : {0.0, size}) {
            for (const double x : {0.0, size})
                mesh.vertices.push_back({x, y, z});
        }
    }
    mesh.triangles = {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}, {0, 1, 5}, {0, 5, 4},
                      {2, 6, 7}, {2, 7, 3}, {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};
    return mesh;
}

PointCloud ballPoints(double radius, const Vector& middle, int count)
{
    PointCloud cloud;
    // Evenly, along a spiral.
    for (int i = 0; i < count; ++i) {
        const double z = 1 - 2 * (i + 0.5) / count;
        const double across = std::sqrt(1 - z * z);
        const double round = kPi * (3 - std::sqrt(5.0)) * i;
        cloud.positions.push_back(
            middle + radius * Vector{across * std::cos(round), across * std::sin(round), z});
    }
    return cloud;
}

} // namespace trovek
