#pragma once

#include "driver.h"

#include "gcode/machine_definition.h"

#include <trovek/port.h>
#include <trovek/printer.h>

#include <json/value.h>

#include <QObject>
#include <QString>

#include <memory>
#include <string>

namespace trovek::service {

class RunningJob;
class Throttle;

/** What clients are told of a machine or archetype that cannot be asked: everything but its state.
 */
Printer::Data describe(const MachineDefinition& definition);

/**
 * One machine with the port that it hangs on.
 *
 * Its port comes and goes with plugging; it is a printer for clients while the port is open. One
 * job at a time holds it.
 */
class Machine : public QObject
{
    Q_OBJECT

public:
    /** Between two changed() that tell of temperatures only. */
    static constexpr int kChangeIntervalMs = 250;

    /** Holds the machine for a job until it is destroyed. */
    class Lease
    {
    public:
        Lease(Machine& machine, RunningJob& job);
        ~Lease();
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;

    private:
        Machine& m_machine;
    };

    /** @param folder where the service keeps what belongs to it; must exist */
    Machine(const MachineDefinition& definition, const QString& folder,
            std::unique_ptr<MachineDriver> driver, QObject* parent = nullptr);
    ~Machine() override;

    const MachineDefinition& definition() const { return m_definition; }
    const QString& folder() const { return m_folder; }
    MachineDriver& driver() { return *m_driver; }

    /** The definition's, unless it was moved. */
    const std::string& portName() const { return m_portName; }
    bool isPluggedIn() const { return m_pluggedIn; }
    bool isOpen() const { return m_open; }
    /** Null when it is free. */
    RunningJob* job() const { return m_job; }

    Printer::Data printer() const;
    Port::Data port() const;

    /** Needs a machine that is not plugged in, and a name that no other machine's port has. */
    void moveToPort(const std::string& name) { m_portName = name; }
    /** These do nothing when it is so already. */
    void plugIn();
    /** A running job fails. */
    void unplug();
    /** Needs a plugged-in machine. */
    void open();
    /** A running job fails with `reason`. */
    void close(const QString& reason);

    /** Waits for nothing; call it when something was changed from outside. */
    void update();
    /** Emits changed() for what is held back, if there is anything. */
    void tell();

signals:
    void attached();
    void detached();
    /** Its printer is there from now on. */
    void opened();
    /** Its printer is there no more. */
    void closed();
    /** Something of printer() is different from what was last told. */
    void changed();

private:
    const MachineDefinition& m_definition;
    const QString m_folder;
    const std::unique_ptr<MachineDriver> m_driver;
    const std::unique_ptr<Throttle> m_throttle;
    RunningJob* m_job = nullptr;
    std::string m_portName;
    bool m_pluggedIn = false;
    bool m_open = false;
    Json::Value m_told;
};

} // namespace trovek::service
