#pragma once

#include "trovek/asynchronous_method.h"
#include "trovek/digitizer/ids.h"
#include "trovek/export.h"
#include "trovek/firmware_version.h"
#include "trovek/machine_name.h"
#include "trovek/port.h"
#include "trovek/slicer_configuration.h"

#include <array>
#include <string>
#include <vector>

/**
 * The service's longer operations as requests that are answered later.
 *
 * Each class is named as its method. Derive from one, override handleResponse() and
 * handleErrorResponse(), set the parameters, and issue() it; docs/protocol.md tells what each
 * answers. Paths are UTF-8 and absolute, lengths millimetres.
 */
namespace trovek::methods {

using digitizer::MeshID;
using digitizer::PointCloudID;

/** x, y, z in millimetres, or a direction. */
using Vector = std::array<double, 3>;

// What every request class has: its name, a default constructor, and a destructor for owners only.
#define TROVEK_REQUEST(name)                                                                       \
public:                                                                                            \
    static constexpr char kName[] = #name;                                                         \
    name()                                                                                         \
        : AsynchronousMethod(kName)                                                                \
    {}                                                                                             \
                                                                                                   \
protected:                                                                                         \
    ~name() override = default;                                                                    \
                                                                                                   \
public:

// ---- Machines and jobs

/** Opens the machine on a port. Answers {"name"}. */
class TROVEK_EXPORT connect_to_port : public AsynchronousMethod
{
    TROVEK_REQUEST(connect_to_port)
    /** Name and identity. */
    void setPort(const Port& port);
};

/** Answers {"id"}, as the two after it do. */
class TROVEK_EXPORT print : public AsynchronousMethod
{
    TROVEK_REQUEST(print)
    void setMachine(const MachineName& machine) { setParameter("machine", machine.name()); }
    void setInputPath(const std::string& path) { setParameter("input_path", path); }
    void setSlicerConfig(const SlicerConfiguration& configuration);
    /** Identifiers, the right (or only) extruder's first. */
    void setMaterials(const std::vector<std::string>& materials);
    void setSkipStartEnd(bool skip) { setParameter("skip_start_end", skip); }
};

class TROVEK_EXPORT print_to_file : public AsynchronousMethod
{
    TROVEK_REQUEST(print_to_file)
    void setMachine(const MachineName& machine) { setParameter("machine", machine.name()); }
    void setInputPath(const std::string& path) { setParameter("input_path", path); }
    /** Must exist. */
    void setOutputPath(const std::string& path) { setParameter("output_path", path); }
    void setSlicerConfig(const SlicerConfiguration& configuration);
    /** Identifiers, the right (or only) extruder's first. */
    void setMaterials(const std::vector<std::string>& materials);
    void setSkipStartEnd(bool skip) { setParameter("skip_start_end", skip); }
    /** "x3g" or "s3g". */
    void setFormat(const std::string& format) { setParameter("format", format); }
};

class TROVEK_EXPORT slice : public AsynchronousMethod
{
    TROVEK_REQUEST(slice)
    void setMachine(const MachineName& machine) { setParameter("machine", machine.name()); }
    void setInputPath(const std::string& path) { setParameter("input_path", path); }
    /** Must exist. */
    void setOutputPath(const std::string& path) { setParameter("output_path", path); }
    void setSlicerConfig(const SlicerConfiguration& configuration);
    /** Identifiers, the right (or only) extruder's first. */
    void setMaterials(const std::vector<std::string>& materials);
    /** The opposite of what print and print_to_file ask for. */
    void setAddStartEnd(bool add) { setParameter("add_start_end", add); }
};

// ---- Firmware

/** Answers a list of machine names. */
class TROVEK_EXPORT getuploadablemachines : public AsynchronousMethod
{
    TROVEK_REQUEST(getuploadablemachines)
};

/** Answers a list of pairs of version and description. */
class TROVEK_EXPORT getmachineversions : public AsynchronousMethod
{
    TROVEK_REQUEST(getmachineversions)
    void setMachine(const std::string& name) { setParameter("machine", name); }
    /** A Printer::Type. */
    void setType(int type) { setParameter("type", type); }
};

/** Answers the path of the downloaded file. */
class TROVEK_EXPORT downloadfirmware : public AsynchronousMethod
{
    TROVEK_REQUEST(downloadfirmware)
    void setMachine(const std::string& name) { setParameter("machine", name); }
    /** A Printer::Type. */
    void setType(int type) { setParameter("type", type); }
    void setVersion(const FirmwareVersion& version) { setParameter("version", version.str()); }
};

class TROVEK_EXPORT uploadfirmware : public AsynchronousMethod
{
    TROVEK_REQUEST(uploadfirmware)
    void setMachine(const MachineName& machine) { setParameter("machine", machine.name()); }
    void setPath(const std::string& path) { setParameter("path", path); }
};

// ---- Scanner calibration

/** Takes the pictures that calibratecamera reads. Answers {"id"}. */
class TROVEK_EXPORT create_calibrate_camera_job : public AsynchronousMethod
{
    TROVEK_REQUEST(create_calibrate_camera_job)
    /** The folder that the pictures go to. */
    void setPath(const std::string& folder) { setParameter("path", folder); }
};

/** Takes the pictures that calibratelaser and calibrateturntable read. Answers {"id"}. */
class TROVEK_EXPORT create_calibrate_turntable_job : public AsynchronousMethod
{
    TROVEK_REQUEST(create_calibrate_turntable_job)
    /** The folder that the pictures go to. */
    void setPath(const std::string& folder) { setParameter("path", folder); }
};

class TROVEK_EXPORT calibratecamera : public AsynchronousMethod
{
    TROVEK_REQUEST(calibratecamera)
    /** The folder with the pictures. */
    void setPath(const std::string& folder) { setParameter("path", folder); }
};

class TROVEK_EXPORT calibratelaser : public AsynchronousMethod
{
    TROVEK_REQUEST(calibratelaser)
    /** The folder with the pictures. */
    void setPath(const std::string& folder) { setParameter("path", folder); }
};

class TROVEK_EXPORT calibrateturntable : public AsynchronousMethod
{
    TROVEK_REQUEST(calibrateturntable)
    /** The folder with the pictures. */
    void setPath(const std::string& folder) { setParameter("path", folder); }
};

class TROVEK_EXPORT loadcalibration : public AsynchronousMethod
{
    TROVEK_REQUEST(loadcalibration)
    void setPath(const std::string& file) { setParameter("path", file); }
};

class TROVEK_EXPORT savecalibration : public AsynchronousMethod
{
    TROVEK_REQUEST(savecalibration)
    void setPath(const std::string& file) { setParameter("path", file); }
};

class TROVEK_EXPORT read_user_calibration_from_eeprom : public AsynchronousMethod
{
    TROVEK_REQUEST(read_user_calibration_from_eeprom)
};

class TROVEK_EXPORT write_user_calibration_to_eeprom : public AsynchronousMethod
{
    TROVEK_REQUEST(write_user_calibration_to_eeprom)
};

class TROVEK_EXPORT digitizer_invalidate_user_calibration : public AsynchronousMethod
{
    TROVEK_REQUEST(digitizer_invalidate_user_calibration)
};

// ---- Scanner device

/** Answers [major, minor, revision]. */
class TROVEK_EXPORT get_digitizer_version : public AsynchronousMethod
{
    TROVEK_REQUEST(get_digitizer_version)
};

/** Answers the name that the scanner's user gave it. */
class TROVEK_EXPORT digitizer_load_name : public AsynchronousMethod
{
    TROVEK_REQUEST(digitizer_load_name)
};

class TROVEK_EXPORT digitizer_save_name : public AsynchronousMethod
{
    TROVEK_REQUEST(digitizer_save_name)
    void setName(const std::string& name) { setParameter("name", name); }
};

/** Answers the path of the camera's device. */
class TROVEK_EXPORT digitizer_camera_device_path : public AsynchronousMethod
{
    TROVEK_REQUEST(digitizer_camera_device_path)
};

class TROVEK_EXPORT digitizer_set_enabled_lasers : public AsynchronousMethod
{
    TROVEK_REQUEST(digitizer_set_enabled_lasers)
    void setLeft(bool enabled) { setParameter("left", enabled); }
    void setRight(bool enabled) { setParameter("right", enabled); }
};

/** Writes a PNG file, which must exist. */
class TROVEK_EXPORT captureimage : public AsynchronousMethod
{
    TROVEK_REQUEST(captureimage)
    void setPath(const std::string& file) { setParameter("path", file); }
    /** 0.1 to 500. */
    void setExposure(double milliseconds) { setParameter("exposure", milliseconds); }
};

class TROVEK_EXPORT capture_image_auto_exposure : public AsynchronousMethod
{
    TROVEK_REQUEST(capture_image_auto_exposure)
    void setPath(const std::string& file) { setParameter("path", file); }
};

/** Fills a point cloud. Answers {"id"} of the job. */
class TROVEK_EXPORT scan : public AsynchronousMethod
{
    TROVEK_REQUEST(scan)
    void setPointCloud(PointCloudID id) { setParameter("point_cloud", id.value()); }
    /** Pictures for one turn. */
    void setSteps(int steps) { setParameter("steps", steps); }
};

// ---- Point clouds

/** Answers the new cloud's number. */
class TROVEK_EXPORT point_cloud_create : public AsynchronousMethod
{
    TROVEK_REQUEST(point_cloud_create)
};

class TROVEK_EXPORT point_cloud_destroy : public AsynchronousMethod
{
    TROVEK_REQUEST(point_cloud_destroy)
    void setId(PointCloudID id) { setParameter("id", id.value()); }
};

/** Copies the points of another cloud or of a file; one of the two must be set. */
class TROVEK_EXPORT point_cloud_load_from_id : public AsynchronousMethod
{
    TROVEK_REQUEST(point_cloud_load_from_id)
    void setId(PointCloudID id) { setParameter("id", id.value()); }
    void setSource(PointCloudID id) { setParameter("source", id.value()); }
    void setPath(const std::string& file) { setParameter("path", file); }
    /** Beside the points that are there; otherwise in their place. */
    void setAppend(bool append) { setParameter("append", append); }
};

class TROVEK_EXPORT point_cloud_save : public AsynchronousMethod
{
    TROVEK_REQUEST(point_cloud_save)
    void setId(PointCloudID id) { setParameter("id", id.value()); }
    void setPath(const std::string& file) { setParameter("path", file); }
    /** "ply", "ply_text" or "xyz". */
    void setFormat(const std::string& format) { setParameter("format", format); }
};

/** Drops the points outside a box. */
class TROVEK_EXPORT point_cloud_crop : public AsynchronousMethod
{
    TROVEK_REQUEST(point_cloud_crop)
    void setId(PointCloudID id) { setParameter("id", id.value()); }
    /** The corners of the box, which belongs to what stays. */
    void setMinimum(const Vector& corner);
    void setMaximum(const Vector& corner);
};

/** Removes noise, and thins out. */
class TROVEK_EXPORT point_cloud_process : public AsynchronousMethod
{
    TROVEK_REQUEST(point_cloud_process)
    void setId(PointCloudID id) { setParameter("id", id.value()); }
    /** Points closer than this become one. */
    void setGridSize(double millimetres) { setParameter("grid_size", millimetres); }
};

/** Moves a cloud onto another by pairs of points that a user picked. */
class TROVEK_EXPORT point_cloud_coarse_alignment : public AsynchronousMethod
{
    TROVEK_REQUEST(point_cloud_coarse_alignment)
    void setId(PointCloudID id) { setParameter("id", id.value()); }
    void setTarget(PointCloudID id) { setParameter("target", id.value()); }
    /** As many as the target's; each belongs to the one at the same place there. */
    void setPoints(const std::vector<Vector>& points);
    void setTargetPoints(const std::vector<Vector>& points);
};

/** Moves a cloud onto another that it nearly fits. */
class TROVEK_EXPORT point_cloud_fine_alignment : public AsynchronousMethod
{
    TROVEK_REQUEST(point_cloud_fine_alignment)
    void setId(PointCloudID id) { setParameter("id", id.value()); }
    void setTarget(PointCloudID id) { setParameter("target", id.value()); }
};

// ---- Meshes

/** Answers the new mesh's number. */
class TROVEK_EXPORT mesh_create : public AsynchronousMethod
{
    TROVEK_REQUEST(mesh_create)
};

class TROVEK_EXPORT mesh_copy : public AsynchronousMethod
{
    TROVEK_REQUEST(mesh_copy)
    void setId(MeshID id) { setParameter("id", id.value()); }
    void setSource(MeshID id) { setParameter("source", id.value()); }
};

class TROVEK_EXPORT mesh_destroy : public AsynchronousMethod
{
    TROVEK_REQUEST(mesh_destroy)
    void setId(MeshID id) { setParameter("id", id.value()); }
};

class TROVEK_EXPORT mesh_load : public AsynchronousMethod
{
    TROVEK_REQUEST(mesh_load)
    void setId(MeshID id) { setParameter("id", id.value()); }
    void setPath(const std::string& file) { setParameter("path", file); }
};

class TROVEK_EXPORT mesh_save : public AsynchronousMethod
{
    TROVEK_REQUEST(mesh_save)
    void setId(MeshID id) { setParameter("id", id.value()); }
    void setPath(const std::string& file) { setParameter("path", file); }
    /** "stl", "stl_text", "obj" or "ply". */
    void setFormat(const std::string& format) { setParameter("format", format); }
};

/** Drops what lies on the side that the normal points to, and closes the cut. */
class TROVEK_EXPORT mesh_cut_plane : public AsynchronousMethod
{
    TROVEK_REQUEST(mesh_cut_plane)
    void setId(MeshID id) { setParameter("id", id.value()); }
    void setPoint(const Vector& point);
    void setNormal(const Vector& direction);
};

/** Turns the mesh as it would stand, and moves its lowest point to the platform. */
class TROVEK_EXPORT mesh_place_on_platform : public AsynchronousMethod
{
    TROVEK_REQUEST(mesh_place_on_platform)
    void setId(MeshID id) { setParameter("id", id.value()); }
};

class TROVEK_EXPORT mesh_reconstruct_point_cloud : public AsynchronousMethod
{
    TROVEK_REQUEST(mesh_reconstruct_point_cloud)
    void setId(MeshID id) { setParameter("id", id.value()); }
    void setPointCloud(PointCloudID id) { setParameter("point_cloud", id.value()); }
};

#undef TROVEK_REQUEST

} // namespace trovek::methods
