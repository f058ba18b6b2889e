#include "machine_list.h"

#include "machine.h"
#include "system.h"
#include "virtual_machine.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QUrl>

#include <algorithm>

namespace trovek::service {

namespace {

/** A key may hold any character; a folder's name may not. */
QString folderName(const std::string& key)
{
    const QByteArray encoded = QUrl::toPercentEncoding(toQString(key), QByteArray(), ".~");
    return QString::fromLatin1(encoded);
}

} // namespace

MachineList::MachineList(MachineDefinitions definitions, const QString& stateFolder,
                         double timeScale, QObject* parent)
    : QObject(parent)
    , m_definitions(std::move(definitions))
{
    for (const MachineDefinition& definition : m_definitions.machines) {
        const QString folder =
            stateFolder + QStringLiteral("/machines/") + folderName(definition.key);
        makePrivateFolder(folder);
        m_machines.push_back(std::make_unique<Machine>(
            definition, folder, std::make_unique<VirtualMachine>(definition, folder, timeScale)));
        Machine* machine = m_machines.back().get();
        connect(machine, &Machine::attached, this, [this, machine] { emit attached(*machine); });
        connect(machine, &Machine::detached, this, [this, machine] { emit detached(*machine); });
        connect(machine, &Machine::opened, this, [this, machine] { emit opened(*machine); });
        connect(machine, &Machine::closed, this, [this, machine] { emit closed(*machine); });
        connect(machine, &Machine::changed, this, [this, machine] { emit changed(*machine); });
    }
}

MachineList::~MachineList() = default;

void MachineList::start()
{
    for (const auto& machine : m_machines) {
        if (machine->definition().pluggedIn)
            machine->plugIn();
    }
}

std::vector<Port::Data> MachineList::ports() const
{
    std::vector<Port::Data> ports;
    for (const auto& machine : m_machines) {
        if (machine->isPluggedIn())
            ports.push_back(machine->port());
    }
    return ports;
}

std::vector<Printer::Data> MachineList::printers() const
{
    std::vector<Printer::Data> printers;
    for (const auto& machine : m_machines) {
        if (machine->isOpen())
            printers.push_back(machine->printer());
    }
    for (const MachineDefinition& archetype : m_definitions.archetypes)
        printers.push_back(describe(archetype));
    return printers;
}

Machine* MachineList::find(const std::string& key) const
{
    const auto found = std::find_if(m_machines.begin(), m_machines.end(),
                                    [&key](const auto& m) { return m->definition().key == key; });
    return found == m_machines.end() ? nullptr : found->get();
}

Machine& MachineList::machine(const std::string& key) const
{
    if (Machine* machine = find(key))
        return *machine;
    throw wire::makeError(wire::error::kUnknownMachine, "No such machine: " + key);
}

Machine& MachineList::openMachine(const std::string& key) const
{
    const MachineDefinition& known = definition(key);
    if (known.isArchetype) {
        throw wire::makeError(wire::error::kArchetype,
                              "\"" + known.displayName + "\" is a machine type, not a machine");
    }
    Machine& found = machine(key);
    if (!found.isOpen())
        throw wire::makeError(wire::error::kUnknownMachine, "The machine is not connected: " + key);
    return found;
}

const MachineDefinition& MachineList::definition(const std::string& key) const
{
    for (const MachineDefinition& archetype : m_definitions.archetypes) {
        if (archetype.key == key)
            return archetype;
    }
    return machine(key).definition();
}

Machine& MachineList::machineOnPort(const std::string& port) const
{
    for (const auto& machine : m_machines) {
        if (machine->isPluggedIn() && machine->portName() == port)
            return *machine;
    }
    throw wire::makeError(wire::error::kUnknownPort, "No such port: " + port);
}

} // namespace trovek::service
