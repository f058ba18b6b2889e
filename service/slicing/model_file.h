#pragma once

#include "slicing/model_archive.h"

#include <QString>

#include <functional>
#include <string>

class QFile;

namespace trovek::service {

/** True for the name of a file that has to be sliced: STL, OBJ, 3MF, AMF or a thing. */
bool isModelName(const std::string& path);

/**
 * Copies a model into a folder, as a slicer may read it.
 *
 * Of a 3MF or AMF, which can hold a whole slicer's configuration with programs to run, only shapes,
 * places and each part's tool are taken over: how it is printed is the request's business.
 * @param input  open; read from its beginning
 * @param name   decides by its suffix, what a thing holds by its contents
 * @param tools  whether parts keep them, in a format that has them
 * @param goOn   asked often; false ends it
 * @return the copy's path, with the suffix of its format
 * @throws std::runtime_error for a user: an empty file, another format, a full disk
 * @throws GCodeCanceled
 */
QString copyModel(QFile& input, const std::string& name, const QString& folder, PartTools tools,
                  const std::function<bool()>& goOn);

} // namespace trovek::service
