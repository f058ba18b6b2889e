#pragma once

#include "trovek/export.h"

#include <QMetaType>

#include <cstdint>
#include <string>

namespace trovek {

/** The settings that go with a print or slice job. A plain value. */
class TROVEK_EXPORT SlicerConfiguration
{
public:
    enum Slicer : int { Strandel = 0, UnknownSlicer = 1 };
    enum Extruder : int { Left = 0, Right = 1, Both = 2 };
    enum Preset : int { Low = 0, Standard = 1, High = 2, Custom = 3 };

    /** The preset's defaults; the caller owns it. An unknown preset gives Standard's. */
    static SlicerConfiguration* defaultConfiguration(Preset preset);

    Slicer slicer() const { return m_slicer; }
    Extruder extruder() const { return m_extruder; }
    /** UTF-8 path of a profile folder; empty when the fields below count. */
    const std::string& profilePath() const { return m_profilePath; }
    /** Millimetres. */
    double layerHeight() const { return m_layerHeight; }
    /** Fraction, 0 to 1. */
    double infill() const { return m_infill; }
    std::uint32_t shells() const { return m_shells; }
    /** Millimetres a second. */
    std::uint32_t printSpeed() const { return m_printSpeed; }
    /** Millimetres a second. */
    std::uint32_t travelSpeed() const { return m_travelSpeed; }
    /** Degrees Celsius, of the right or only extruder. */
    std::uint32_t extruderTemperature() const { return m_extruderTemperature; }
    /** Degrees Celsius. */
    std::uint32_t leftExtruderTemperature() const { return m_leftExtruderTemperature; }
    /** Degrees Celsius. */
    std::uint32_t platformTemperature() const { return m_platformTemperature; }
    bool heatPlatform() const { return m_heatPlatform; }
    bool raft() const { return m_raft; }
    bool supports() const { return m_supports; }
    /** Raft and support extruders count as tools do: 0 right, 1 left. */
    std::uint32_t defaultRaftExtruder() const { return m_defaultRaftExtruder; }
    std::uint32_t defaultSupportExtruder() const { return m_defaultSupportExtruder; }
    bool doAutoRaft() const { return m_doAutoRaft; }
    bool doAutoSupport() const { return m_doAutoSupport; }

    void setSlicer(Slicer slicer) { m_slicer = slicer; }
    void setExtruder(Extruder extruder) { m_extruder = extruder; }
    void setProfilePath(const std::string& path) { m_profilePath = path; }
    void setLayerHeight(double millimetres) { m_layerHeight = millimetres; }
    void setInfill(double fraction) { m_infill = fraction; }
    void setShells(std::uint32_t shells) { m_shells = shells; }
    void setPrintSpeed(std::uint32_t mmPerSecond) { m_printSpeed = mmPerSecond; }
    void setTravelSpeed(std::uint32_t mmPerSecond) { m_travelSpeed = mmPerSecond; }
    void setExtruderTemperature(std::uint32_t celsius) { m_extruderTemperature = celsius; }
    void setLeftExtruderTemperature(std::uint32_t celsius) { m_leftExtruderTemperature = celsius; }
    void setPlatformTemperature(std::uint32_t celsius) { m_platformTemperature = celsius; }
    void setHeatPlatform(bool heat) { m_heatPlatform = heat; }
    void setRaft(bool raft) { m_raft = raft; }
    void setSupports(bool supports) { m_supports = supports; }
    void setDefaultRaftExtruder(std::uint32_t tool) { m_defaultRaftExtruder = tool; }
    void setDefaultSupportExtruder(std::uint32_t tool) { m_defaultSupportExtruder = tool; }
    void setDoAutoRaft(bool automatic) { m_doAutoRaft = automatic; }
    void setDoAutoSupport(bool automatic) { m_doAutoSupport = automatic; }

private:
    Slicer m_slicer = Strandel;
    Extruder m_extruder = Right;
    std::string m_profilePath;
    double m_layerHeight = 0.2;
    double m_infill = 0.1;
    std::uint32_t m_shells = 2;
    std::uint32_t m_printSpeed = 80;
    std::uint32_t m_travelSpeed = 150;
    std::uint32_t m_extruderTemperature = 230;
    std::uint32_t m_leftExtruderTemperature = 230;
    std::uint32_t m_platformTemperature = 110;
    std::uint32_t m_defaultRaftExtruder = 0;
    std::uint32_t m_defaultSupportExtruder = 0;
    bool m_heatPlatform = true;
    bool m_raft = false;
    bool m_supports = false;
    bool m_doAutoRaft = false;
    bool m_doAutoSupport = false;
};

} // namespace trovek

Q_DECLARE_METATYPE(trovek::SlicerConfiguration::Slicer)
Q_DECLARE_METATYPE(trovek::SlicerConfiguration::Preset)
