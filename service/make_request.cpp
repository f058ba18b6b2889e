#include "make_request.h"

#include "gcode/file_access.h"
#include "gcode/machine_definition.h"
#include "gcode/start_end_code.h"
#include "slicing/model_file.h"

#include <trovek/text.h>

#include <QFileInfo>

namespace trovek::service {

std::string MakeRequest::name() const
{
    return toStdString(QFileInfo(toQString(inputPath)).completeBaseName());
}

bool MakeRequest::isModel() const
{
    return isModelName(inputPath);
}

std::vector<GCodeSection> sectionsOf(const MachineDefinition& machine, const MakeRequest& request)
{
    std::vector<GCodeSection> sections;
    sections.push_back({request.sectionName, byteSourceOf(request.input)});
    if (!request.addStartEndCode)
        return sections;
    StartEndCode code = request.code
                            ? *request.code
                            : startEndCode(machine, request.materials, request.configuration);
    sections.insert(sections.begin(), {"Start code", byteSourceOf(std::move(code.start))});
    sections.push_back({"End code", byteSourceOf(std::move(code.end))});
    return sections;
}

} // namespace trovek::service
