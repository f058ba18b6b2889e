#include "make_dialog/make_request.h"

#include "trovek-ui/trovekqt.h"

#include <trovek/text.h>

#include <stdexcept>

namespace trovek {

void startPrint(TrovekQt& facade, const MakeRequest& request)
{
    facade.print(request.machine, request.inputFile, request.configuration, request.materials,
                 request.skipStartEndCode);
}

int startExportJob(TrovekQt& facade, const MakeRequest& request, const QString& suffix,
                   const QString& output)
{
    const std::string format = toStdString(suffix);
    const std::string outputFile = toStdString(output);
    if (format == "x3g" || format == "s3g")
        return facade.printToFile(request.machine, request.inputFile, outputFile,
                                  request.configuration, request.materials,
                                  request.skipStartEndCode, format);
    // The last flag of slice() asks for the code that the other operations leave out.
    if (format == "gcode")
        return facade.slice(request.machine, request.inputFile, outputFile, request.configuration,
                            request.materials, !request.skipStartEndCode);
    throw std::runtime_error("Export failed: invalid suffix " + format);
}

int startPreviewSlice(TrovekQt& facade, const MakeRequest& request, const QString& output)
{
    // A preview shows what the machine's file holds without asking for more, so this flag stays.
    return facade.slice(request.machine, request.inputFile, toStdString(output),
                        request.configuration, request.materials, request.skipStartEndCode);
}

} // namespace trovek
