#pragma once

#include "geometry_error.h"
#include "rigid_transform.h"

namespace trovek::geometry {

struct Mesh;

/**
 * How to turn a mesh so that it stands on the platform, z = 0: on the largest side of its convex
 * hull that has the centre of mass above it. Among sides of one size it is the one that is turned
 * the least. The mesh turns about its centre of mass, and moves along z only.
 * @throws EmptyError, Canceled
 * @throws GeometryError when the mesh is flat
 */
RigidTransform placementOnPlatform(const Mesh& mesh, const Progress& progress = {});

/** The mesh there; its lowest vertex has exactly z = 0. */
Mesh placedOnPlatform(const Mesh& mesh, const Progress& progress = {});

} // namespace trovek::geometry
