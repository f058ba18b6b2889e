#pragma once

#include "trovek/export.h"

#include <vector>

namespace trovek {

/** Current temperatures of a machine in whole degrees Celsius. */
struct TROVEK_EXPORT ToolTemperature
{
    /** One a toolhead, in the order of Printer::Toolhead: 0 right or only, 1 left. */
    std::vector<int> toolheads;
    /** 0 when there is no heated platform. */
    int platform = 0;

    /** @throws std::out_of_range for a toolhead that the machine does not have */
    int at(int toolhead) const { return toolheads.at(static_cast<std::size_t>(toolhead)); }
};

} // namespace trovek
