#include "machine.h"

#include "running_job.h"
#include "throttle.h"

#include <trovek/log.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <cmath>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\machine";

Printer::Data describe(const MachineDefinition& definition)
{
    Printer::Data data;
    data.key = MachineName(definition.key);
    data.displayName = definition.displayName;
    data.portName = definition.portName;
    data.type = definition.type;
    data.machineNames = definition.machineNames;
    data.numberOfExtruders = definition.extruders;
    data.hasHeatedPlatform = definition.hasHeatedPlatform;
    data.canPrintToFile = true;
    for (std::size_t axis = 0; axis < definition.buildVolume.size(); ++axis) {
        data.buildVolume[axis] = static_cast<float>(definition.buildVolume[axis].min);
        data.buildVolume[axis + 3] = static_cast<float>(definition.buildVolume[axis].max);
    }
    return data;
}

Machine::Lease::Lease(Machine& machine, RunningJob& job)
    : m_machine(machine)
{
    m_machine.m_job = &job;
    m_machine.update();
}

Machine::Lease::~Lease()
{
    m_machine.m_job = nullptr;
    m_machine.update();
}

Machine::Machine(const MachineDefinition& definition, const QString& folder,
                 std::unique_ptr<MachineDriver> driver, QObject* parent)
    : QObject(parent)
    , m_definition(definition)
    , m_folder(folder)
    , m_driver(std::move(driver))
    , m_throttle(new Throttle(kChangeIntervalMs))
    , m_portName(definition.portName)
{
    connect(m_driver.get(), &MachineDriver::opened, this, &Machine::update);
    connect(m_driver.get(), &MachineDriver::changed, this, &Machine::update);
    connect(m_throttle.get(), &Throttle::released, this, &Machine::tell);
}

Machine::~Machine() = default;

Printer::Data Machine::printer() const
{
    const MachineDriver::Status status = m_driver->status();
    Printer::Data data = describe(m_definition);
    data.portName = m_portName;
    data.firmwareVersion = FirmwareVersion(m_driver->firmwareVersion());
    data.state = status.state;
    // A plan may end and the next begin within one job.
    if (status.state == Printer::Idle && m_job != nullptr)
        data.state = Printer::Running;
    data.connected = m_open;
    data.canPrint = m_open;
    for (const double celsius : status.toolCelsius)
        data.toolTemperature.toolheads.push_back(static_cast<int>(std::lround(celsius)));
    data.toolTemperature.platform =
        data.hasHeatedPlatform ? static_cast<int>(std::lround(status.platformCelsius)) : 0;
    data.toolheadTargetTemperature = status.toolTargets;
    data.platformTargetTemperature = status.platformTarget;
    return data;
}

Port::Data Machine::port() const
{
    Port::Data data;
    data.name = m_portName;
    data.identity = m_definition.portIdentity;
    data.displayName = m_definition.displayName;
    data.machineName = m_open ? m_definition.key : std::string();
    data.inConnectionWhitelist = m_definition.portInConnectionWhitelist;
    return data;
}

void Machine::plugIn()
{
    if (m_pluggedIn)
        return;
    m_pluggedIn = true;
    TROVEK_LOG(1) << "Port " << m_portName << " attached" << std::endl;
    emit attached();
}

void Machine::unplug()
{
    if (!m_pluggedIn)
        return;
    close(QStringLiteral("The machine was unplugged"));
    m_pluggedIn = false;
    TROVEK_LOG(1) << "Port " << m_portName << " detached" << std::endl;
    emit detached();
}

void Machine::open()
{
    if (m_open || !m_pluggedIn)
        return;
    m_driver->open();
    m_open = true;
    m_told = wire::toJson(printer());
    TROVEK_LOG(1) << "Machine \"" << m_definition.key << "\" opened" << std::endl;
    emit opened();
}

void Machine::close(const QString& reason)
{
    if (!m_open)
        return;
    if (m_job != nullptr)
        m_job->abort(reason);
    m_driver->close();
    m_open = false;
    TROVEK_LOG(1) << "Machine \"" << m_definition.key << "\" closed" << std::endl;
    emit closed();
}

void Machine::update()
{
    if (!m_open)
        return;
    const Json::Value now = wire::toJson(printer());
    if (now == m_told)
        return;
    // Whoever waits for a machine to be free must not wait for the throttle as well.
    if (now["state"] != m_told["state"])
        tell();
    else
        m_throttle->request();
}

void Machine::tell()
{
    const Json::Value now = wire::toJson(printer());
    if (!m_open || now == m_told)
        return;
    m_told = now;
    m_throttle->restart();
    emit changed();
}

} // namespace trovek::service
