#pragma once

#include "trovek/address.h"
#include "trovek/eeprom_backup.h"
#include "trovek/eeprom_map.h"
#include "trovek/export.h"
#include "trovek/firmware_version.h"
#include "trovek/job.h"
#include "trovek/machine_name.h"
#include "trovek/port.h"
#include "trovek/printer.h"
#include "trovek/simulated_fault.h"
#include "trovek/slicer_configuration.h"

#include <rpcwire/json_rpc_exception.h>

#include <json/value.h>

#include <functional>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace trovek {

/**
 * The client of the background service.
 *
 * Everything happens on the thread that made the client, which needs an event loop. The
 * operations send one request and wait for its answer without running the event loop; they throw
 * JsonRpcException for an error that the service answers, and another std::exception for a link
 * that is not there, is lost meanwhile, or lets the deadline pass (then the link is closed).
 *
 * The hooks are called from the event loop only, never inside an operation, in the order in which
 * the service reported the events. After connectToDaemon() every port, then every printer that is
 * there is announced by the hooks, each once; on a loss every printer is announced as removed,
 * every port as detached, then emitDisconnected() is called; isConnected() is false from before the
 * first of them.
 *
 * A hook may call anything here, also connectToDaemon() and disconnectFromDaemon(), and may run an
 * event loop of its own, but must not destroy the client. What it throws is logged and dropped. No
 * hook and no handler of an asynchronous request is called once the destructor has begun.
 */
class TROVEK_EXPORT Trovek
{
public:
    enum StrandelConfigVersionCheck : int {
        NeedsUpgrade = 0,
        UpToDate = 1,
        TooNew = 2,
    };

    Trovek();
    /** Not virtual: never delete through this class. */
    ~Trovek();
    Trovek(const Trovek&) = delete;
    Trovek& operator=(const Trovek&) = delete;

    /**
     * Connects within 5 seconds; ports() and printers() are known when it returns. A connection
     * that stands is closed first, also when the new one fails, and its loss is announced before
     * what the new one brings.
     * @throws std::exception when the service is not there, is not the same user's, or speaks
     *         another major protocol version (the text says both)
     */
    virtual void connectToDaemon(const Address& address);

    bool isConnected() const;
    /** Closes the link; the losses are announced as when it breaks. */
    void disconnectFromDaemon();

    /** Those that are there now, in the service's order. Never throws. */
    std::list<Printer*> printers() const;
    /** Never throws. */
    std::set<Port> ports() const;
    /** @throws std::runtime_error "No such port: " and the name */
    Port portFromName(const std::string& name) const;
    /** An empty name when the port is unknown or has no machine. */
    MachineName printerFromPortName(const std::string& name) const;
    /** Null when it is not there now. */
    Printer* printerFromKey(const MachineName& key) const;

    void connectToPort(const Port& port);
    void disconnectFromPort(const std::string& name);

    /** Asks the service. @throws std::exception for an unknown job or no link */
    Job jobFromID(int id);
    /** No error for a job that has concluded. */
    void cancelJob(int id);

    /**
     * Starts a print and gives the job's ID.
     * @param materials       identifiers, the right (or only) extruder's first
     * @param skipStartEndCode leave the machine's start and end code out
     */
    int print(const MachineName& machine, const std::string& inputFile,
              const SlicerConfiguration& configuration, const std::vector<std::string>& materials,
              bool skipStartEndCode);
    /** As print(), into a machine file of `format` "x3g" or "s3g". The output file must exist. */
    int printToFile(const MachineName& machine, const std::string& inputFile,
                    const std::string& outputFile, const SlicerConfiguration& configuration,
                    const std::vector<std::string>& materials, bool skipStartEndCode,
                    const std::string& format);
    /** Into a G-code file, which must exist. Here the flag means the opposite: add the code. */
    int slice(const MachineName& machine, const std::string& inputFile,
              const std::string& outputFile, const SlicerConfiguration& configuration,
              const std::vector<std::string>& materials, bool addStartEndCode);

    /**
     * Moves one axis again and again until the limit or cancelJob().
     * @param distance millimetres a step; the sign is the direction
     * @param limitMs  milliseconds
     * @return the job's ID
     */
    int jog(MachineName machine, Printer::Axis axis, int distance, int limitMs);
    /** Returns when the homing is accepted. */
    void home(const MachineName& machine);
    void setToolheadTemperature(const MachineName& machine, Printer::Toolhead toolhead,
                                int targetCelsius);
    /** Returns when the calibration is done. */
    void cboCalibration(const MachineName& machine);

    EepromMap readEeprom(Printer* const printer);
    /** All of it or nothing: one value that the machine does not take, and nothing is written. */
    void writeEeprom(Printer* const printer, EepromMap map);
    /** Returns when it is done, which may take a minute. */
    void resetEepromCompletely(const MachineName& machine);
    /** Of the memory as this firmware has it, made before each write and reset; newest first. */
    std::vector<EepromBackup> eepromBackups(Printer* const printer);
    /** What a backup holds. The machine stays as it is. */
    EepromMap readEepromBackup(Printer* const printer, const std::string& name);

    /** An array of machine names, as the service gave it: its shape is not checked. */
    Json::Value getUploadableMachines();
    /** @param machine one of getUploadableMachines(); @param printerType a Printer::Type */
    std::set<FirmwareVersion> getMachineVersions(const std::string& machine, int printerType);
    /** The path of the downloaded file. */
    std::string downloadFirmware(const std::string& machine, int printerType,
                                 const FirmwareVersion& version);
    void uploadFirmware(const MachineName& machine, const std::string& firmwareFile);

    StrandelConfigVersionCheck strandelConfigVersionCheck(const Json::Value& config);
    Json::Value upgradeStrandelConfig(const Json::Value& config);

    /** Virtual machines: what is there to be plugged in, and doing so. Not every service has it. */
    Json::Value simulatedMachines();
    void simulatePlugIn(const std::string& machine);
    void simulateUnplug(const std::string& machine);
    /** As if it had been given that firmware elsewhere; a machine that is plugged in is unplugged
     * for it and plugged in again. */
    void simulateFirmware(const std::string& machine, const std::string& version);
    /** Moves its cable to another port, of a name that no other machine's has; until the service is
     * started again. */
    void simulatePort(const std::string& machine, const std::string& portName);
    /** Lets the next firmware upload to it fail when so many percent are written, 0 to 100. */
    void simulateUploadFailure(const std::string& machine, int percent);

    /** The virtual scanner: docs/protocol.md says what is told of it. */
    Json::Value simulatedScanner();
    void simulateScannerPlugIn();
    void simulateScannerUnplug();
    /** Puts something on its table: {path, turn, position}, each of which may be missing. */
    void simulateScannedModel(const Json::Value& model);

    /** Lets requests to the service fail, those of all its clients. */
    void simulateFault(const SimulatedFault& fault);
    /** Those that are still to come; uploads that are to fail are not among them. */
    std::vector<SimulatedFault> simulatedFaults();
    /** From now on nothing fails on request; uploads neither. */
    void clearSimulatedFaults();

    /** Calls that waited for an answer since construction; dialogs are measured by it. */
    quint64 callCount() const;
    /** The protocol version of the service, "MAJOR.MINOR"; empty when not connected. */
    std::string serviceVersion() const;

    /** Multiplies every deadline; for tests (below 1) and slow machines (above). */
    void setDeadlineScale(double scale);

protected:
    virtual void emitPrinterAdded(Printer* printer);
    virtual void emitPrinterRemoved(Printer* printer);
    virtual void emitPrinterChanged(Printer* printer);
    virtual void emitJobAdded(int jobID);
    virtual void emitJobConcluded(int jobID);
    virtual void emitJobChanged(int jobID);
    virtual void emitPortAttached(const std::string& portName);
    virtual void emitPortDetached(const std::string& portName);
    virtual void emitCameraClosed(const std::string& devicePath);
    virtual void emitDisconnected();

private:
    friend class AsynchronousMethod;
    class TROVEK_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
