#include "scanner/calibration_methods.h"

#include "gcode/file_access.h"
#include "job_list.h"
#include "scanner/calibration_pictures.h"
#include "scanner/picture_job.h"
#include "scanner/scanner_control.h"
#include "scanner/shape_arguments.h"
#include "scanner/virtual_scanner.h"

#include <rpcwire/json_text.h>
#include <trovek/methods.h>
#include <trovek/wire.h>

#include <memory>

namespace trovek::service {

using geometry::FileFormatError;
using geometry::Progress;

namespace {

class CalibrationMethods
{
public:
    CalibrationMethods(ScannerControl& control, JobList& jobs, QThreadPool& pool)
        : m_control(control)
        , m_jobs(jobs)
        , m_pool(pool)
    {}

    Json::Value takePictures(const Call& call, const char* kind, const char* name,
                             std::vector<BoardPicture> pictures) const
    {
        const std::string folder = call.params.string("path");
        m_control.idleScanner();
        try {
            checkOutputFolder(folder);
        } catch (const std::exception& error) {
            throw wire::makeError(wire::error::kFileAccess, error.what());
        }
        Json::Value answer(Json::objectValue);
        answer["id"] = m_jobs.add(
            std::make_unique<PictureJob>(kind, name, folder, std::move(pictures), m_control,
                                         m_control.occupy("it takes pictures"), m_pool));
        return answer;
    }

    /** What was known of the lasers and the table was seen through another camera. */
    void camera(const Call& call) const
    {
        const CameraModel design = *m_control.scanner().design().truth.camera;
        calibrate(call, [design](Calibration& calibration, const ReadFile& read,
                                 const Progress& progress) {
            calibration = {calibrateCamera(design, read, progress), {}, {}};
        });
    }

    void lasers(const Call& call) const
    {
        needsCamera();
        calibrate(call,
                  [](Calibration& calibration, const ReadFile& read, const Progress& progress) {
                      calibration.lasers = calibrateLasers(*calibration.camera, read, progress);
                  });
    }

    void turntable(const Call& call) const
    {
        needsCamera();
        calibrate(
            call, [](Calibration& calibration, const ReadFile& read, const Progress& progress) {
                calibration.turntable = calibrateTurntable(*calibration.camera, read, progress);
            });
    }

    void save(const Call& call) const
    {
        const std::string path = call.params.string("path");
        m_control.idleScanner();
        const Calibration& calibration = m_control.calibration();
        if (!calibration.camera && !calibration.lasers && !calibration.turntable) {
            throw wire::makeError(wire::error::kNotCalibrated,
                                  "Nothing of the scanner is calibrated");
        }
        const std::string text = rpcwire::toJsonLine(toJson(calibration)) + "\n";
        m_control.runLate(
            call.respond,
            [path, text](const Progress&) {
                writeClientFile(path, [&text](const geometry::ByteSink& sink) {
                    sink(text.data(), text.size());
                });
            },
            [] { return Json::Value(); });
    }

    void load(const Call& call) const
    {
        const std::string path = call.params.string("path");
        const CameraModel design = *m_control.scanner().design().truth.camera;
        changeLater(call, [path, design](Calibration& calibration, const Progress&) {
            calibration = parse(readClientFile(path));
            const auto& camera = calibration.camera;
            if (camera && (camera->width != design.width || camera->height != design.height)) {
                throw FileFormatError("The calibration is of another camera, with " +
                                      std::to_string(camera->width) + " x " +
                                      std::to_string(camera->height) + " pixels");
            }
        });
    }

    Json::Value readMemory() const
    {
        const VirtualScanner& scanner = m_control.idleScanner();
        if (!scanner.userCalibration()) {
            throw wire::makeError(wire::error::kNotCalibrated,
                                  "The scanner's memory holds no calibration");
        }
        m_control.setCalibration(*scanner.userCalibration());
        return Json::Value();
    }

    Json::Value writeMemory() const
    {
        VirtualScanner& scanner = m_control.idleScanner();
        write(scanner, m_control.completeCalibration());
        return Json::Value();
    }

    Json::Value invalidate() const
    {
        write(m_control.idleScanner(), std::nullopt);
        m_control.setCalibration({});
        return Json::Value();
    }

private:
    using Change = std::function<void(Calibration&, const Progress&)>;
    using Solve = std::function<void(Calibration&, const ReadFile&, const Progress&)>;

    static Calibration parse(const std::string& text)
    {
        Json::Value value;
        std::string error;
        if (!rpcwire::parseJson(text, &value, &error))
            throw FileFormatError("Not a calibration: " + error);
        try {
            return calibrationFromJson(value);
        } catch (const std::exception& wrong) {
            throw FileFormatError(wrong.what());
        }
    }

    void needsCamera() const
    {
        m_control.scanner();
        if (!m_control.calibration().camera) {
            throw wire::makeError(wire::error::kNotCalibrated,
                                  "The camera must be calibrated before");
        }
    }

    static void write(VirtualScanner& scanner, const std::optional<Calibration>& calibration)
    {
        if (!scanner.writeUserCalibration(calibration)) {
            throw wire::makeError(wire::error::kScannerMemory,
                                  "The scanner's memory cannot be written");
        }
    }

    void calibrate(const Call& call, const Solve& solve) const
    {
        const std::string folder = call.params.string("path");
        changeLater(call, [folder, solve](Calibration& calibration, const Progress& progress) {
            const auto read = [&folder](const std::string& name) {
                return readClientFile(folder + "/" + name);
            };
            solve(calibration, read, progress);
        });
    }

    /** Nothing else is done with the scanner meanwhile; without success nothing changes. */
    void changeLater(const Call& call, const Change& change) const
    {
        const ScannerControl::Occupation occupation = m_control.occupy("it is being calibrated");
        const auto calibration = std::make_shared<Calibration>(m_control.calibration());
        m_control.runLate(
            call.respond,
            [calibration, change](const Progress& progress) { change(*calibration, progress); },
            [control = &m_control, calibration, occupation] {
                control->setCalibration(*calibration);
                return Json::Value();
            });
    }

    ScannerControl& m_control;
    JobList& m_jobs;
    QThreadPool& m_pool;
};

} // namespace

void addCalibrationMethods(MethodTable& table, ScannerControl& control, JobList& jobs,
                           QThreadPool& pool)
{
    using namespace trovek::methods;
    const CalibrationMethods methods(control, jobs, pool);
    table.add(create_calibrate_camera_job::kName, [methods](const Call& call) {
        return methods.takePictures(call, create_calibrate_camera_job::kName,
                                    "Pictures for the camera", cameraPictures());
    });
    table.add(create_calibrate_turntable_job::kName, [methods](const Call& call) {
        return methods.takePictures(call, create_calibrate_turntable_job::kName,
                                    "Pictures for the turntable", turntablePictures());
    });
    table.addLate(calibratecamera::kName, [methods](const Call& call) { methods.camera(call); });
    table.addLate(calibratelaser::kName, [methods](const Call& call) { methods.lasers(call); });
    table.addLate(calibrateturntable::kName,
                  [methods](const Call& call) { methods.turntable(call); });
    table.addLate(savecalibration::kName, [methods](const Call& call) { methods.save(call); });
    table.addLate(loadcalibration::kName, [methods](const Call& call) { methods.load(call); });
    table.add(read_user_calibration_from_eeprom::kName,
              [methods](const Call&) { return methods.readMemory(); });
    table.add(write_user_calibration_to_eeprom::kName,
              [methods](const Call&) { return methods.writeMemory(); });
    table.add(digitizer_invalidate_user_calibration::kName,
              [methods](const Call&) { return methods.invalidate(); });
}

} // namespace trovek::service
