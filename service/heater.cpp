#include "heater.h"

#include <algorithm>
#include <cmath>

namespace trovek::service {

namespace {

constexpr double kWarmToleranceCelsius = 1.0;
constexpr double kRestToleranceCelsius = 0.4;
constexpr double kRoundingSeconds = 0.001;

} // namespace

Heater::Heater(const HeaterDefinition& definition)
    : m_definition(definition)
{}

void Heater::setCelsius(double celsius)
{
    const double highest = std::max(HeaterDefinition::kRoomCelsius, m_definition.fullPowerCelsius);
    m_celsius = std::clamp(celsius, 0.0, highest);
}

void Heater::advance(double seconds)
{
    // A machine without this heater has a definition of zeros.
    if (m_definition.maxCelsius == 0)
        return;
    m_celsius = m_definition.celsiusAfter(m_celsius, m_target, seconds);
    if (m_target == 0 &&
        std::abs(m_celsius - HeaterDefinition::kRoomCelsius) < kRestToleranceCelsius)
        m_celsius = HeaterDefinition::kRoomCelsius;
}

bool Heater::isWarm() const
{
    return m_target == 0 || m_celsius >= m_target - kWarmToleranceCelsius;
}

double Heater::secondsUntilWarm() const
{
    if (isWarm())
        return 0;
    // A little more, since the curve's value after exactly that time may be rounded to just below.
    return kRoundingSeconds +
           m_definition.secondsToHeat(m_celsius, m_target - kWarmToleranceCelsius);
}

bool Heater::isAtRest() const
{
    return m_definition.maxCelsius == 0 ||
           (m_target == 0 && m_celsius == HeaterDefinition::kRoomCelsius);
}

} // namespace trovek::service
