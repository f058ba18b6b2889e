#pragma once

#include <functional>
#include <stdexcept>

namespace trovek::geometry {

/** What an operation cannot do, in words for a user. What it was given is as before. */
class GeometryError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/** A cloud without points, or a mesh without triangles. */
class EmptyError : public GeometryError
{
    using GeometryError::GeometryError;
};

/** The bytes are not what their format says. */
class FileFormatError : public GeometryError
{
    using GeometryError::GeometryError;
};

/** A Progress said so. */
class Canceled : public std::runtime_error
{
public:
    Canceled()
        : std::runtime_error("Canceled")
    {}
};

/**
 * Told now and then what part of an operation is done, from 0 to 1 and never less than before; on
 * the thread that called the operation. Answers false to cancel, which throws Canceled. May be
 * empty.
 */
using Progress = std::function<bool(double done)>;

} // namespace trovek::geometry
