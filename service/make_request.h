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
struct StartEndCode;

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
    /** What stands around it instead of the code of every print; set with addStartEndCode. */
    std::shared_ptr<const StartEndCode> code;
    /** For errors, before "line 3"; empty for a file that the user knows. */
    std::string sectionName;

    /** What a user calls the job: the file's name without folder and suffix. */
    std::string name() const;
    /** A model that has to be sliced first. */
    bool isModel() const;
};

/** The input, with start and end code around it when the request says so; always from the
 * beginning. */
std::vector<GCodeSection> sectionsOf(const MachineDefinition& machine, const MakeRequest& request);

} // namespace trovek::service
