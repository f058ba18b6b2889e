#pragma once

#include "geometry/byte_sink.h"
#include "geometry/vector.h"
#include "scanner/shape_list.h"

#include <json/value.h>

#include <string>
#include <vector>

namespace trovek::geometry {
struct RigidTransform;
}

namespace trovek::service {

/** Bytes of a file that a client may have read. */
constexpr qint64 kShapeFileAtMost = qint64(1) << 30;

/**
 * Reading the parameters of methods for shapes; each of them throws JsonRpcException
 * InvalidArgumentError.
 */
ShapeUse cloudArgument(const Params& params, const char* name = "id");
ShapeUse meshArgument(const Params& params, const char* name = "id");
geometry::Vector vectorArgument(const Params& params, const char* name);
std::vector<geometry::Vector> vectorsArgument(const Params& params, const char* name);

Json::Value toJson(const geometry::Vector& vector);
/** {rotation: three rows, translation} */
Json::Value toJson(const geometry::RigidTransform& transform);

/**
 * The contents of a file that a client named.
 * @throws JsonRpcException FileAccessError, LimitError
 */
std::string readClientFile(const std::string& path);

/**
 * Fills a file that a client made for it; `write` gets where the bytes go. The file is empty when
 * that fails, and as before when it cannot be opened.
 * @throws JsonRpcException FileAccessError; and what `write` throws
 */
void writeClientFile(const std::string& path,
                     const std::function<void(const geometry::ByteSink& sink)>& write);

} // namespace trovek::service
