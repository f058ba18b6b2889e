#pragma once

#include <trovek/printer.h>
#include <trovek/slicer_configuration.h>

#include <QDir>
#include <QString>

#include <functional>
#include <vector>

namespace trovek {

/**
 * Makes a profile's folder and writes its "profile.json" anew; after an error nothing of it is
 * left.
 *
 * @param target     the folder that the new one is made in
 * @param slicer     of the profile that is copied
 * @param copyFolder copies the profile's folder to `newName` in `target`, or throws
 * @return the new folder
 * @throws std::runtime_error, what copyFolder throws among them
 */
QDir copyProfile(const QDir& target, const QString& newName, SlicerConfiguration::Slicer slicer,
                 const std::vector<Printer::Type>& types, const std::function<void()>& copyFolder);

} // namespace trovek
