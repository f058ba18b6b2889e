#pragma once

#include <trovek/machine_name.h>
#include <trovek/slicer_configuration.h>

#include <QString>

#include <string>
#include <vector>

namespace trovek {

class TrovekQt;

/** What the service needs to know for a print, an export and a preview alike. */
struct MakeRequest
{
    MachineName machine;
    std::string inputFile;
    SlicerConfiguration configuration;
    /** One identifier an extruder, the right one's first. */
    std::vector<std::string> materials;
    bool skipStartEndCode;
};

/** Throws what Trovek::print() does. */
void startPrint(TrovekQt& facade, const MakeRequest& request);

/**
 * @param suffix of the file that is wanted; it says what kind of file that is
 * @param output must exist and be writable for the service
 * @return the job's ID
 * @throws std::runtime_error "Export failed: invalid suffix " and the suffix
 * @throws std::exception as Trovek::printToFile() and Trovek::slice() do
 */
int startExportJob(TrovekQt& facade, const MakeRequest& request, const QString& suffix,
                   const QString& output);

/**
 * @param output must exist and be writable for the service
 * @return the job's ID
 * @throws std::exception as Trovek::slice() does
 */
int startPreviewSlice(TrovekQt& facade, const MakeRequest& request, const QString& output);

} // namespace trovek
