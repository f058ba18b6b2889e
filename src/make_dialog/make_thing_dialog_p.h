#pragma once

#include "trovek-ui/make_thing_dialog.h"

#include "make_dialog/make_thing_form.h"
#include "make_dialog/preview_slice.h"

#include <trovek/machine_name.h>
#include <trovek/printer.h>

namespace trovek {

/** What the sources of the dialog share. */
class MakeThingDialog::Private
{
public:
    Private(TrovekQt& facade, SlicerConfiguration::Extruder fileExtruder)
        : extruder(fileExtruder)
        , slice(facade)
    {}

    /** A material for each of the boxes; unknown for none. */
    struct Materials
    {
        Orvane::Material left = Orvane::UnknownMaterial;
        Orvane::Material right = Orvane::UnknownMaterial;
        Orvane::Material single = Orvane::UnknownMaterial;
    };

    /** Which extruders the file is made for. */
    const SlicerConfiguration::Extruder extruder;
    MakeThingForm form;

    /** Of the last machine that was selected. */
    Printer::Type machineType = Printer::UnknownType;
    bool dual = false;
    /** What the user chose, now or the last time; a machine that cannot use it has its own. */
    Materials wished;
    /** As the numbers know them; of the right or only extruder, and of the left. */
    Orvane::Material rightMaterial = Orvane::UnknownMaterial;
    Orvane::Material leftMaterial = Orvane::UnknownMaterial;
    /** True for the presets. */
    bool profileIsReadable = true;
    /** The program changes the boxes, not the user. */
    bool filling = false;

    PreviewSlice slice;
    MachineName previewedMachine;
};

} // namespace trovek
