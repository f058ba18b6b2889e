#pragma once

#include "trovek/export.h"
#include "trovek/firmware_version.h"
#include "trovek/machine_name.h"
#include "trovek/tool_temperature.h"

#include <QMetaType>

#include <string>
#include <vector>

namespace trovek {

/**
 * One machine, or an archetype: a machine type that can be exported for but not printed on.
 *
 * Owned by Trovek and alive as long as it; the same object stands for the same key for ever. When
 * the machine goes away isConnected() and canPrint() turn false and everything else keeps its last
 * value.
 */
class TROVEK_EXPORT Printer
{
public:
    enum Type : int {
        UnknownType = 0,
        FabrinoSingle = 1,
        FabrinoDual = 2,
        Fabrino2 = 3,
        Fabrino2X = 4,
        CubioSingle = 5,
        CubioDual = 6,
    };

    enum State : int {
        UnknownState = 0,
        Connecting = 1,
        Idle = 2,
        Running = 3,
        Paused = 4,
        ErrorState = 5,
    };

    enum Axis : int {
        /** The first (right or only) extruder's motor. */
        RightExtruderAxis = 0,
        LeftExtruderAxis = 1,
        XAxis = 2,
        YAxis = 3,
        ZAxis = 4,
    };

    enum Toolhead : int {
        RightToolhead = 0,
        LeftToolhead = 1,
    };

    /** Everything that the service says of a machine. */
    struct Data
    {
        MachineName key;
        std::string displayName;
        std::string portName;
        Type type = UnknownType;
        State state = UnknownState;
        std::vector<std::string> machineNames;
        int numberOfExtruders = 1;
        bool hasHeatedPlatform = false;
        bool connected = false;
        bool canPrint = false;
        bool canPrintToFile = false;
        FirmwareVersion firmwareVersion;
        ToolTemperature toolTemperature;
        std::vector<int> toolheadTargetTemperature;
        int platformTargetTemperature = 0;
        /** Millimetres: x, y, z minimum, then x, y, z maximum. */
        float buildVolume[6] = {0, 0, 0, 0, 0, 0};
    };

    explicit Printer(Data data);
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    State state() const { return m_data.state; }
    Type type() const { return m_data.type; }
    const MachineName& key() const { return m_data.key; }
    const std::string& displayName() const { return m_data.displayName; }
    std::string portName() const { return m_data.portName; }
    /** Names under which firmware is offered for it. */
    const std::vector<std::string>& machineNames() const { return m_data.machineNames; }
    int numberOfExtruders() const { return m_data.numberOfExtruders; }
    bool hasHeatedPlatform() const { return m_data.hasHeatedPlatform; }
    bool isConnected() const { return m_data.connected; }
    /** False for an archetype, and for a machine that has gone. */
    bool canPrint() const { return m_data.canPrint; }
    bool canPrintToFile() const { return m_data.canPrintToFile; }
    const FirmwareVersion& firmwareVersion() const { return m_data.firmwareVersion; }
    const ToolTemperature& toolTemperature() const { return m_data.toolTemperature; }
    /** Whole degrees Celsius, one a toolhead; 0 is off. */
    const std::vector<int>& toolheadTargetTemperature() const
    {
        return m_data.toolheadTargetTemperature;
    }
    int platformTargetTemperature() const { return m_data.platformTargetTemperature; }
    /** Millimetres. */
    float buildVolumeXmin() const { return m_data.buildVolume[0]; }
    float buildVolumeYmin() const { return m_data.buildVolume[1]; }
    float buildVolumeZmin() const { return m_data.buildVolume[2]; }
    float buildVolumeXmax() const { return m_data.buildVolume[3]; }
    float buildVolumeYmax() const { return m_data.buildVolume[4]; }
    float buildVolumeZmax() const { return m_data.buildVolume[5]; }

private:
    friend class Trovek;
    Data m_data;
};

} // namespace trovek

Q_DECLARE_METATYPE(trovek::Printer*)
Q_DECLARE_METATYPE(trovek::Printer::Type)
Q_DECLARE_METATYPE(trovek::Printer::State)
