#pragma once

#include <qtshared/material.h>
#include <trovek/slicer_configuration.h>

namespace trovek {

/** A preset's numbers as the fields show them, with what the right or only material asks for. */
struct PresetValues
{
    /** @param material one of the four materials */
    PresetValues(const SlicerConfiguration& preset, Orvane::Material material);

    int infillPercent;
    double layerHeight;
    int shells;
    int extruderCelsius;
    int platformCelsius;
    int printSpeed;
    int travelSpeed;
};

/** The temperature of the left extruder for one of the four materials, in degrees Celsius. */
int leftExtruderCelsius(const SlicerConfiguration& preset, Orvane::Material material);

/** The infill as the field shows it, a whole number. */
int infillPercent(const SlicerConfiguration& configuration);

/** Whether the material comes off a cold build plate. */
bool needsHeatedPlatform(Orvane::Material material);

} // namespace trovek
