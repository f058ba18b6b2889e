#include "onboard/onboard_methods.h"

#include "machine.h"
#include "machine_list.h"
#include "method_table.h"
#include "onboard/memory_reset.h"
#include "onboard/onboard_memory.h"

#include <trovek/wire.h>

#include <QDir>

#include <algorithm>
#include <vector>

namespace trovek::service {

namespace {

/** A client tells these errors apart by the name in "exception". */
JsonRpcException eepromError(const char* name, const std::string& text)
{
    JsonRpcException error = wire::makeError(name, text);
    Json::Value data = error.data();
    data["exception"]["name"] = name;
    data["exception"]["message"] = text;
    return JsonRpcException(error.message(), data);
}

JsonRpcException valueError(const OnboardValueError& refused)
{
    const JsonRpcException error = eepromError(wire::error::kEepromValue, refused.what());
    Json::Value data = error.data();
    data["entries"] = Json::Value(Json::arrayValue);
    for (const OnboardProblem& problem : refused.problems()) {
        Json::Value entry(Json::objectValue);
        entry["name"] = problem.entry;
        entry["reason"] = problem.reason;
        data["entries"].append(entry);
    }
    return JsonRpcException(error.message(), data);
}

/** Runs what works on a memory; every failure becomes an error in the form of this dialog. */
template <typename Work>
auto onMemory(Work work)
{
    try {
        return work();
    } catch (const JsonRpcException&) {
        throw;
    } catch (const OnboardValueError& error) {
        throw valueError(error);
    } catch (const UnknownBackupError& error) {
        throw eepromError(wire::error::kUnknownEepromBackup, error.what());
    } catch (const std::exception& error) {
        throw eepromError(wire::error::kEepromWrite, error.what());
    }
}

/** A machine that is asked for its memory must have nothing else to do. */
Machine& idleMachine(const MachineList& machines, const Call& call)
{
    Machine& machine = machines.openMachine(call.params.string("machine"));
    if (machine.job() != nullptr) {
        throw eepromError(wire::error::kMachineState,
                          "The machine is busy: " + machine.job()->data().name);
    }
    if (machine.driver().status().state != Printer::Idle)
        throw eepromError(wire::error::kMachineState, "The machine is not ready");
    return machine;
}

} // namespace

class OnboardMethods::Private
{
public:
    OnboardMemory memoryOf(Machine& machine) const;
    Json::Value backups(const Call& call) const;
    void reset(const Call& call);

    explicit Private(MachineList& machineList)
        : machines(machineList)
    {}

    MachineList& machines;
    const OnboardMaps maps;
    std::vector<std::unique_ptr<MemoryReset>> resets;
};

OnboardMemory OnboardMethods::Private::memoryOf(Machine& machine) const
{
    const FirmwareVersion version(machine.driver().firmwareVersion());
    const OnboardMap* const map =
        maps.find({machine.definition().type, version.major(), version.minor()});
    if (map == nullptr) {
        throw eepromError(wire::error::kMissingEepromMap,
                          "There is no map of the onboard memory for firmware " + version.str());
    }
    return OnboardMemory(machine.driver(), maps, *map,
                         QDir(machine.folder()).filePath(QStringLiteral("backups")));
}

Json::Value OnboardMethods::Private::backups(const Call& call) const
{
    Json::Value list(Json::arrayValue);
    Machine& machine = machines.openMachine(call.params.string("machine"));
    for (const EepromBackup& backup : memoryOf(machine).backups())
        list.append(wire::toJson(backup));
    return list;
}

void OnboardMethods::Private::reset(const Call& call)
{
    Machine& machine = idleMachine(machines, call);
    resets.erase(std::remove_if(resets.begin(), resets.end(),
                                [](const auto& reset) { return reset->isConcluded(); }),
                 resets.end());
    auto owned = std::make_unique<MemoryReset>(machine, memoryOf(machine));
    const MemoryReset* const reset = owned.get();
    QObject::connect(reset, &RunningJob::concluded, reset, [reset, respond = call.respond] {
        if (reset->data().conclusion == JobEnded)
            respond.result(Json::Value());
        else
            respond.error(eepromError(wire::error::kEepromWrite, reset->data().failure));
    });
    owned->start();
    resets.push_back(std::move(owned));
}

OnboardMethods::OnboardMethods(MachineList& machines)
    : d(new Private(machines))
{}

OnboardMethods::~OnboardMethods() = default;

void OnboardMethods::addTo(MethodTable& table)
{
    using namespace wire::method;
    Private* const p = d.get();
    table.add(kReadEeprom, [p](const Call& call) {
        return onMemory([&] { return p->memoryOf(idleMachine(p->machines, call)).read(); });
    });
    table.add(kWriteEeprom, [p](const Call& call) {
        const Json::Value& document = call.params.object("map");
        onMemory([&] { p->memoryOf(idleMachine(p->machines, call)).write(document); });
        return Json::Value();
    });
    table.addLate(kResetEepromCompletely,
                  [p](const Call& call) { onMemory([&] { p->reset(call); }); });
    table.add(kListEepromBackups,
              [p](const Call& call) { return onMemory([&] { return p->backups(call); }); });
    table.add(kReadEepromBackup, [p](const Call& call) {
        const std::string name = call.params.string("backup");
        return onMemory([&] {
            Machine& machine = p->machines.openMachine(call.params.string("machine"));
            return p->memoryOf(machine).readBackup(name);
        });
    });
}

} // namespace trovek::service
