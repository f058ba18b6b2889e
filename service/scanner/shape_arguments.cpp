#include "scanner/shape_arguments.h"

#include "gcode/file_access.h"
#include "geometry/rigid_transform.h"
#include "write_all.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QFile>

#include <cmath>
#include <stdexcept>

namespace trovek::service {

namespace {

JsonRpcException invalidArgument(const char* name, const std::string& what)
{
    return wire::makeError(wire::error::kInvalidArgument,
                           std::string("Member \"") + name + "\" " + what);
}

geometry::Vector vectorOf(const Json::Value& list, const char* name)
{
    const auto isNumber = [](const Json::Value& value) {
        return value.isNumeric() && std::isfinite(value.asDouble());
    };
    if (!list.isArray() || list.size() != 3 || !isNumber(list[0]) || !isNumber(list[1]) ||
        !isNumber(list[2]))
        throw invalidArgument(name, "must be three numbers, or a list of three each");
    return {list[0].asDouble(), list[1].asDouble(), list[2].asDouble()};
}

JsonRpcException fileError(const std::string& text)
{
    return wire::makeError(wire::error::kFileAccess, text);
}

template <typename Open>
auto openFile(Open open, const std::string& path)
{
    try {
        return open(path);
    } catch (const std::exception& error) {
        throw fileError(error.what());
    }
}

} // namespace

ShapeUse cloudArgument(const Params& params, const char* name)
{
    return {ShapeKind::PointCloud, params.integer(name)};
}

ShapeUse meshArgument(const Params& params, const char* name)
{
    return {ShapeKind::Mesh, params.integer(name)};
}

geometry::Vector vectorArgument(const Params& params, const char* name)
{
    return vectorOf(params.array(name), name);
}

std::vector<geometry::Vector> vectorsArgument(const Params& params, const char* name)
{
    std::vector<geometry::Vector> vectors;
    for (const Json::Value& element : params.array(name))
        vectors.push_back(vectorOf(element, name));
    return vectors;
}

Json::Value toJson(const geometry::Vector& vector)
{
    Json::Value list(Json::arrayValue);
    for (const double coordinate : {vector.x, vector.y, vector.z})
        list.append(coordinate);
    return list;
}

Json::Value toJson(const geometry::RigidTransform& transform)
{
    Json::Value value(Json::objectValue);
    value["rotation"] = Json::Value(Json::arrayValue);
    for (const geometry::Vector& row : transform.rotation)
        value["rotation"].append(toJson(row));
    value["translation"] = toJson(transform.translation);
    return value;
}

std::string readClientFile(const std::string& path)
{
    const std::unique_ptr<QFile> file = openFile(openInput, path);
    const auto tooLarge = [&path] {
        return wire::makeError(wire::error::kLimit, "The file is too large: " + path);
    };
    if (file->size() > kShapeFileAtMost)
        throw tooLarge();
    std::string bytes(static_cast<std::size_t>(file->size()), '\0');
    qint64 got = 0;
    while (got < qint64(bytes.size())) {
        const qint64 count = file->read(&bytes[std::size_t(got)], qint64(bytes.size()) - got);
        if (count < 0)
            throw fileError("Cannot read " + path + ": " + toStdString(file->errorString()));
        if (count == 0)
            break;
        got += count;
    }
    bytes.resize(static_cast<std::size_t>(got));
    return bytes;
}

void writeClientFile(const std::string& path,
                     const std::function<void(const geometry::ByteSink& sink)>& write)
{
    const std::unique_ptr<QFile> file = openFile(openOutput, path);
    try {
        write([&](const char* bytes, std::size_t size) { writeAll(*file, bytes, qint64(size)); });
    } catch (const WriteError& error) {
        file->resize(0);
        throw fileError("Cannot write to " + path + ": " + error.what());
    } catch (...) {
        file->resize(0);
        throw;
    }
}

} // namespace trovek::service
