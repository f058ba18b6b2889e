#pragma once

#include "service/slicing/sliced_gcode.h"

#include <gcode/machine_definition.h>
#include <make_request.h>
#include <slicing/slice_settings.h>
#include <slicing/strandel_config.h>

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <map>
#include <optional>
#include <string>
#include <vector>

/** A model, and how it is to be sliced. */
struct BareSlice
{
    std::string machineType = "fabrino_2x";
    trovek::service::MakeRequest request;
    std::optional<trovek::service::StrandelConfig> profile;
    QByteArray model;
    /** Of the model's format. */
    QString suffix = QStringLiteral("stl");

    /** @throws std::runtime_error as sliceSettings() */
    trovek::service::SliceSettings settings() const;
};

/** The compiled-in machine of a type such as "fabrino_2x". */
trovek::service::MachineDefinition machineOfType(const std::string& type);

/**
 * Slices with prusa-slicer itself, several at a time and all before the first result is asked for.
 *
 * The service's jobs have no part in it.
 */
class BareSlices
{
public:
    void add(const std::string& name, const BareSlice& slice);
    /** Slices everything. @throws std::runtime_error with the slice's name and the slicer's words
     */
    void run();
    /** @throws std::out_of_range without such a slice */
    const SlicedGCode& operator[](const std::string& name) const { return m_results.at(name); }
    /** The same as it stands in the file. */
    QByteArray text(const std::string& name) const;

private:
    QString outputPath(const std::string& name) const;
    void sliceOne(const std::string& name, const BareSlice& slice);

    QTemporaryDir m_folder;
    std::map<std::string, BareSlice> m_slices;
    std::map<std::string, SlicedGCode> m_results;
};
