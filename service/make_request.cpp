#include "make_request.h"

#include "gcode/file_access.h"
#include "gcode/machine_definition.h"
#include "gcode/start_end_code.h"

#include <trovek/text.h>

#include <QFileInfo>
#include <QStringList>

namespace trovek::service {

std::string MakeRequest::name() const
{
    return toStdString(QFileInfo(toQString(inputPath)).completeBaseName());
}

bool MakeRequest::isModel() const
{
    static const QStringList suffixes{
        QStringLiteral("stl"), QStringLiteral("obj"),   QStringLiteral("3mf"),
        QStringLiteral("amf"), QStringLiteral("thing"),
    };
    return suffixes.contains(QFileInfo(toQString(inputPath)).suffix().toLower());
}

QString modelRefusal()
{
    return QStringLiteral("Slicing models is not available in this version of the service");
}

std::vector<GCodeSection> sectionsOf(const MachineDefinition& machine, const MakeRequest& request)
{
    std::vector<GCodeSection> sections;
    sections.push_back({std::string(), byteSourceOf(request.input)});
    if (!request.addStartEndCode)
        return sections;
    StartEndCode code = startEndCode(machine, request.materials, request.configuration);
    sections.insert(sections.begin(), {"Start code", byteSourceOf(std::move(code.start))});
    sections.push_back({"End code", byteSourceOf(std::move(code.end))});
    return sections;
}

} // namespace trovek::service
