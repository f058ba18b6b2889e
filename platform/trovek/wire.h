#pragma once

#include "trovek/eeprom_backup.h"
#include "trovek/export.h"
#include "trovek/job.h"
#include "trovek/port.h"
#include "trovek/printer.h"
#include "trovek/simulated_fault.h"
#include "trovek/slicer_configuration.h"

#include <json/value.h>

#include <rpcwire/json_rpc_exception.h>

/**
 * The words that both ends of the wire use, and the conversions; docs/protocol.md describes them.
 *
 * Names of methods equal the names of the request classes where there is one.
 */
namespace trovek::wire {

constexpr int kProtocolMajor = 1;
constexpr int kProtocolMinor = 0;

namespace method {
/** {version: {major, minor}, client, token?} -> {version: {major, minor}, service}; must be first.
 */
constexpr char kHello[] = "hello";
/** {} -> {ports: [port], printers: [printer]}; from then on notifications are sent. */
constexpr char kSubscribe[] = "subscribe";
/** {port, identity} -> {name} of the machine. */
constexpr char kConnectToPort[] = "connect_to_port";
/** {port} */
constexpr char kDisconnectFromPort[] = "disconnect_from_port";
/** {id} -> job */
constexpr char kGetJob[] = "get_job";
/** {} -> [job], those not concluded and the last concluded ones. */
constexpr char kGetJobs[] = "get_jobs";
/** {id} */
constexpr char kCancelJob[] = "cancel_job";
/** {machine, input_path, slicer_config, materials, skip_start_end} -> {id} */
constexpr char kPrint[] = "print";
/** As print, and {output_path, format} -> {id} */
constexpr char kPrintToFile[] = "print_to_file";
/** {machine, input_path, output_path, slicer_config, materials, add_start_end} -> {id} */
constexpr char kSlice[] = "slice";
/** {machine, axis, distance, limit_ms} -> {id} */
constexpr char kJog[] = "jog";
/** {machine} */
constexpr char kHome[] = "home";
/** {machine, toolhead, target} */
constexpr char kSetToolheadTemperature[] = "set_toolhead_temperature";
/** {machine}; answered when it is done. */
constexpr char kCboCalibration[] = "cbo_calibration";
/** {machine} -> map document */
constexpr char kReadEeprom[] = "read_eeprom";
/** {machine, map} */
constexpr char kWriteEeprom[] = "write_eeprom";
/** {machine}; answered when it is done. */
constexpr char kResetEepromCompletely[] = "reset_eeprom_completely";
/** {machine} -> [{name, time}], newest first */
constexpr char kListEepromBackups[] = "list_eeprom_backups";
/** {machine, backup} -> map document */
constexpr char kReadEepromBackup[] = "read_eeprom_backup";
/** {} -> [name] */
constexpr char kGetUploadableMachines[] = "getuploadablemachines";
/** {machine, type} -> [[version, description]] */
constexpr char kGetMachineVersions[] = "getmachineversions";
/** {machine, type, version} -> path */
constexpr char kDownloadFirmware[] = "downloadfirmware";
/** {machine, path} */
constexpr char kUploadFirmware[] = "uploadfirmware";
/** {config} -> 0, 1 or 2 */
constexpr char kStrandelConfigVersionCheck[] = "strandel_config_version_check";
/** {config} -> config */
constexpr char kUpgradeStrandelConfig[] = "upgrade_strandel_config";
/** {} -> [{name, display_name, type, type_name, port, plugged_in, firmware_version,
 * firmware_versions}] */
constexpr char kSimulatedMachines[] = "simulated_machines";
/** {name} */
constexpr char kSimulatePlugIn[] = "simulate_plug_in";
/** {name} */
constexpr char kSimulateUnplug[] = "simulate_unplug";
/** {name, version} */
constexpr char kSimulateFirmware[] = "simulate_firmware";
/** {} -> {plugged_in, device_path, model, calibrated} */
constexpr char kSimulatedScanner[] = "simulated_scanner";
/** {} */
constexpr char kSimulateScannerPlugIn[] = "simulate_scanner_plug_in";
/** {} */
constexpr char kSimulateScannerUnplug[] = "simulate_scanner_unplug";
/** {path?, turn?, position?} */
constexpr char kSimulateScannedModel[] = "simulate_scanned_model";
/** {name, port} */
constexpr char kSimulatePort[] = "simulate_port";
/** {name, percent} */
constexpr char kSimulateUploadFailure[] = "simulate_upload_failure";
/** {fault} */
constexpr char kSimulateFault[] = "simulate_fault";
/** {} -> [fault], those that are still to come */
constexpr char kSimulatedFaults[] = "simulated_faults";
/** {} */
constexpr char kSimulateNoFaults[] = "simulate_no_faults";
} // namespace method

namespace notification {
/** printer */
constexpr char kPrinterAdded[] = "printer_added";
/** {name} */
constexpr char kPrinterRemoved[] = "printer_removed";
/** printer */
constexpr char kPrinterChanged[] = "printer_changed";
/** {id} */
constexpr char kJobAdded[] = "job_added";
/** {id} */
constexpr char kJobChanged[] = "job_changed";
/** {id} */
constexpr char kJobConcluded[] = "job_concluded";
/** port */
constexpr char kPortAttached[] = "port_attached";
/**
 * port; its machine was opened or closed. Sent before the machine is added, and after it is
 * removed.
 */
constexpr char kPortChanged[] = "port_changed";
/** {name, identity} */
constexpr char kPortDetached[] = "port_detached";
/** {device_path} */
constexpr char kCameraClosed[] = "camera_closed";
} // namespace notification

/** Values of "name" in an error's data. */
namespace error {
constexpr char kPrintQueued[] = "PrintQueuedException";
constexpr char kMachineState[] = "MachineStateException";
constexpr char kMissingEepromMap[] = "MissingEepromMapError";
constexpr char kEepromValue[] = "EepromValueError";
constexpr char kEepromWrite[] = "EepromWriteError";
constexpr char kUnknownEepromBackup[] = "UnknownEepromBackupError";
constexpr char kPrinterThreadNotIdle[] = "PrinterThreadNotIdleError";
constexpr char kUnknownMachine[] = "UnknownMachineError";
constexpr char kUnknownPort[] = "UnknownPortError";
constexpr char kPortOpenFailed[] = "PortOpenError";
constexpr char kUnknownJob[] = "UnknownJobError";
constexpr char kInvalidArgument[] = "InvalidArgumentError";
constexpr char kFileAccess[] = "FileAccessError";
constexpr char kTemperatureLimit[] = "TemperatureLimitError";
constexpr char kColdExtrusion[] = "ColdExtrusionError";
constexpr char kArchetype[] = "ArchetypeError";
constexpr char kNotOffered[] = "NotOfferedError";
constexpr char kProtocolVersion[] = "ProtocolVersionError";
constexpr char kAccessDenied[] = "AccessDeniedError";
constexpr char kTooManyRequests[] = "TooManyRequests";
constexpr char kFirmwareUnavailable[] = "FirmwareUnavailableError";
constexpr char kFirmwareCatalogue[] = "FirmwareCatalogueError";
constexpr char kFirmwareImage[] = "FirmwareImageError";
constexpr char kFirmwareCache[] = "FirmwareCacheError";
constexpr char kFirmwareType[] = "FirmwareTypeError";
constexpr char kFirmwareUpload[] = "FirmwareUploadError";
constexpr char kUnknownPointCloud[] = "UnknownPointCloudError";
constexpr char kUnknownMesh[] = "UnknownMeshError";
constexpr char kEmptyShape[] = "EmptyShapeError";
constexpr char kFileFormat[] = "FileFormatError";
constexpr char kGeometry[] = "GeometryError";
constexpr char kCanceled[] = "CanceledError";
constexpr char kLimit[] = "LimitError";
constexpr char kScannerUnavailable[] = "ScannerUnavailableError";
constexpr char kScannerBusy[] = "ScannerBusyError";
constexpr char kScannerMemory[] = "ScannerMemoryError";
constexpr char kNotCalibrated[] = "NotCalibratedError";
constexpr char kCalibration[] = "CalibrationError";
constexpr char kNoLaser[] = "NoLaserError";
} // namespace error

/** An error with data {"name", "message"}. */
TROVEK_EXPORT JsonRpcException makeError(const std::string& name, const std::string& message);

/**
 * Conversions. The reading ones check every member's type: a missing optional member takes its
 * default, a member of a wrong kind or a missing identity throws std::runtime_error naming it.
 */
TROVEK_EXPORT Json::Value toJson(const Printer::Data& printer);
TROVEK_EXPORT Printer::Data printerFromJson(const Json::Value& value);
TROVEK_EXPORT Json::Value toJson(const Port::Data& port);
TROVEK_EXPORT Port::Data portFromJson(const Json::Value& value);
TROVEK_EXPORT Json::Value toJson(const Job::Data& job);
TROVEK_EXPORT Job::Data jobFromJson(const Json::Value& value);
TROVEK_EXPORT Json::Value toJson(const EepromBackup& backup);
TROVEK_EXPORT EepromBackup eepromBackupFromJson(const Json::Value& value);
TROVEK_EXPORT Json::Value toJson(const SlicerConfiguration& configuration);
TROVEK_EXPORT SlicerConfiguration slicerConfigurationFromJson(const Json::Value& value);
TROVEK_EXPORT Json::Value toJson(const SimulatedFault& fault);
TROVEK_EXPORT SimulatedFault simulatedFaultFromJson(const Json::Value& value);
TROVEK_EXPORT Json::Value toJson(const std::vector<std::string>& texts);

/** Typed reading of one member of an object; the throwing text names the member. */
TROVEK_EXPORT std::string stringMember(const Json::Value& object, const char* name);
TROVEK_EXPORT int intMember(const Json::Value& object, const char* name);
TROVEK_EXPORT bool boolMember(const Json::Value& object, const char* name);
TROVEK_EXPORT std::vector<std::string> stringListMember(const Json::Value& object,
                                                        const char* name);

} // namespace trovek::wire
