#pragma once

#include "gcode/machine_definition.h"

#include <trovek/port.h>
#include <trovek/printer.h>

#include <QObject>
#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace trovek::service {

class Machine;

/** All machines and archetypes that the service has, and the ports of those that are plugged in. */
class MachineList : public QObject
{
    Q_OBJECT

public:
    /**
     * @param definitions of virtual machines
     * @param stateFolder each machine gets a folder in it
     * @param timeScale   seconds of the machines for each second of the clock
     * @throws std::runtime_error when a machine's folder cannot be made
     */
    MachineList(MachineDefinitions definitions, const QString& stateFolder, double timeScale,
                QObject* parent = nullptr);
    ~MachineList() override;

    /** Attaches what is plugged in from the beginning. */
    void start();

    const std::vector<std::unique_ptr<Machine>>& machines() const { return m_machines; }
    /** Of attached machines. */
    std::vector<Port::Data> ports() const;
    /** Of open machines, then archetypes. */
    std::vector<Printer::Data> printers() const;

    /** A machine by name, plugged in or not. @throws JsonRpcException UnknownMachineError */
    Machine& machine(const std::string& key) const;
    /** A machine that can be worked with now. @throws JsonRpcException UnknownMachineError,
     * ArchetypeError */
    Machine& openMachine(const std::string& key) const;
    /** Also an archetype's. @throws JsonRpcException UnknownMachineError */
    const MachineDefinition& definition(const std::string& key) const;
    /** The machine on an attached port. @throws JsonRpcException UnknownPortError */
    Machine& machineOnPort(const std::string& port) const;

signals:
    void attached(const trovek::service::Machine& machine);
    void detached(const trovek::service::Machine& machine);
    void opened(const trovek::service::Machine& machine);
    void closed(const trovek::service::Machine& machine);
    void changed(const trovek::service::Machine& machine);

private:
    Machine* find(const std::string& key) const;

    const MachineDefinitions m_definitions;
    std::vector<std::unique_ptr<Machine>> m_machines;
};

} // namespace trovek::service
