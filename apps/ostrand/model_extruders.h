#pragma once

#include <trovek/slicer_configuration.h>

#include <QString>

namespace ostrand {

/**
 * Which extruders the parts of a model ask for.
 *
 * STL and OBJ have no way to say, so they are for the right one, as is whatever cannot be read. Of
 * a 3MF file the slicer's own settings count, of an AMF file those or else the materials of its
 * volumes.
 */
trovek::SlicerConfiguration::Extruder extrudersOfModel(const QString& path);

} // namespace ostrand
