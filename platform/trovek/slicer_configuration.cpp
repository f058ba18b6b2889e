#include "trovek/slicer_configuration.h"

#include <memory>

namespace trovek {

SlicerConfiguration* SlicerConfiguration::defaultConfiguration(Preset preset)
{
    auto configuration = std::make_unique<SlicerConfiguration>();
    switch (preset) {
    case Low:
        configuration->setLayerHeight(0.3);
        configuration->setInfill(0.05);
        configuration->setPrintSpeed(90);
        break;
    case High:
        configuration->setLayerHeight(0.1);
        configuration->setInfill(0.15);
        configuration->setShells(3);
        configuration->setPrintSpeed(60);
        break;
    case Standard:
    case Custom:
        break;
    }
    return configuration.release();
}

} // namespace trovek
