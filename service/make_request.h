#pragma once

#include "gcode/gcode_program.h"

#include <trovek/slicer_configuration.h>

#include <QFile>
#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace trovek::service {

struct MachineDefinition;

/** What a client wants made, whatever it is made into. */
struct MakeRequest
{
    /** Absolute, UTF-8. */
    std::string inputPath;
    /** Open, a regular file; read by one at a time. */
    std::shared_ptr<QFile> input;
    SlicerConfiguration configuration;
    /** Identifiers: right or only tool first, then left. */
    std::vector<std::string> materials;
    bool addStartEndCode = false;

    /** What a user calls the job: the file's name without folder and suffix. */
    std::string name() const;
    /** A model that has to be sliced first. */
    bool isModel() const;
};

/** What a job with a model as input fails with. */
QString modelRefusal();

/** The input, with start and end code around it when the request says so; always from the
 * beginning. */
std::vector<GCodeSection> sectionsOf(const MachineDefinition& machine, const MakeRequest& request);

} // namespace trovek::service
