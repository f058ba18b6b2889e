#pragma once

#include "gcode/machine_definition.h"

namespace trovek::service {

/** One heater of a virtual machine: its temperature now, and the target that it is led to. */
class Heater
{
public:
    explicit Heater(const HeaterDefinition& definition);

    double celsius() const { return m_celsius; }
    int target() const { return m_target; }
    /** Values that the heater cannot have are taken to the nearest that it can. */
    void setCelsius(double celsius);
    /** Degrees Celsius; 0 is off. */
    void setTarget(int celsius) { m_target = celsius; }

    void advance(double seconds);
    /** Within a degree of the target or above it, or off. */
    bool isWarm() const;
    /** Until isWarm(); 0 when it is. */
    double secondsUntilWarm() const;
    /** Off and as warm as the room. */
    bool isAtRest() const;

private:
    HeaterDefinition m_definition;
    double m_celsius = HeaterDefinition::kRoomCelsius;
    int m_target = 0;
};

} // namespace trovek::service
