#include "scanner/scanner_methods.h"

#include "geometry/ray_caster.h"
#include "job_list.h"
#include "scanner/picture.h"
#include "scanner/scan_job.h"
#include "scanner/scanner_control.h"
#include "scanner/shape_arguments.h"
#include "scanner/virtual_scanner.h"

#include <trovek/methods.h>
#include <trovek/wire.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace trovek::service {

namespace {

constexpr int kStepsAtMost = 10000;

JsonRpcException invalidArgument(const std::string& text)
{
    return wire::makeError(wire::error::kInvalidArgument, text);
}

Json::Value version(const ScannerControl& control)
{
    Json::Value list(Json::arrayValue);
    for (const int part : control.scanner().settings().version)
        list.append(part);
    return list;
}

Json::Value saveName(const ScannerControl& control, const Params& params)
{
    const std::string name = params.string("name");
    const auto isControl = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
    };
    if (name.empty() || name.size() > VirtualScanner::kNameAtMost ||
        std::any_of(name.begin(), name.end(), isControl)) {
        throw invalidArgument("Member \"name\" must have from 1 to " +
                              std::to_string(VirtualScanner::kNameAtMost) +
                              " bytes, none of them a control character");
    }
    if (!control.idleScanner().writeName(name)) {
        throw wire::makeError(wire::error::kScannerMemory,
                              "The scanner's memory cannot be written");
    }
    return Json::Value();
}

Json::Value setLasers(const ScannerControl& control, const Params& params)
{
    const LasersOn lasers = {params.boolean("left"), params.boolean("right")};
    control.idleScanner().setLasers(lasers);
    return Json::Value();
}

/** @param milliseconds none for an automatic exposure */
void capture(ScannerControl& control, const Call& call, std::optional<double> milliseconds)
{
    const std::string path = call.params.string("path");
    const ScannerControl::Occupation occupation = control.occupy("it takes a picture");
    VirtualScanner* const scanner = &control.scanner();
    const auto scenery =
        std::make_shared<std::shared_ptr<const geometry::RayCaster>>(scanner->scenery());
    const auto used = std::make_shared<double>(0);
    const ScannedModel model = scanner->model();
    control.runLate(
        call.respond,
        [=, lasers = scanner->lasers()](const geometry::Progress& progress) {
            if (!*scenery)
                *scenery = loadScenery(model, progress);
            const LightMap light =
                lookAtModel(scanner->build(), **scenery, lasers, [&] { return progress(0); });
            *used = milliseconds.value_or(autoExposure(light));
            const ScannerSettings& settings = scanner->settings();
            const std::string png =
                encodePng(expose(light, *used, settings.pictureNoise, settings.seed));
            writeClientFile(
                path, [&png](const geometry::ByteSink& sink) { sink(png.data(), png.size()); });
        },
        [scanner, model, scenery, used, occupation] {
            scanner->setModel(model, *scenery);
            Json::Value answer(Json::objectValue);
            answer["exposure"] = *used;
            return answer;
        });
}

Json::Value scan(ScannerControl& control, ShapeList& shapes, JobList& jobs, const Call& call)
{
    const ShapeUse cloud = cloudArgument(call.params, "point_cloud");
    LineScan plan;
    plan.steps = call.params.integer("steps", 1, kStepsAtMost);
    plan.pointsAtMost = ShapeList::kSizeAtMost;
    const VirtualScanner& scanner = control.idleScanner();
    plan.scanner = scanner.build();
    plan.calibration = control.completeCalibration();
    plan.lasers = scanner.lasers();
    if (!plan.lasers[kLeftLaser] && !plan.lasers[kRightLaser])
        throw wire::makeError(wire::error::kNoLaser, "Both lasers are switched off");
    const ScannerSettings& settings = scanner.settings();
    plan.lineNoise = settings.lineNoise;
    plan.strayLight = settings.strayLight;
    plan.seed = settings.seed;
    shapes.check(cloud, call.client);
    Json::Value answer(Json::objectValue);
    answer["id"] = jobs.add(std::make_unique<ScanJob>(control, control.occupy("it scans"), shapes,
                                                      call.client, cloud, std::move(plan)));
    return answer;
}

Json::Value describe(const ScannerControl& control)
{
    const VirtualScanner& scanner = control.virtualScanner();
    Json::Value answer(Json::objectValue);
    answer["plugged_in"] = scanner.isPluggedIn();
    answer["device_path"] = scanner.settings().devicePath;
    answer["model"] = toJson(scanner.model());
    answer["calibrated"]["camera"] = control.calibration().camera.has_value();
    answer["calibrated"]["lasers"] = control.calibration().lasers.has_value();
    answer["calibrated"]["turntable"] = control.calibration().turntable.has_value();
    return answer;
}

/** As if somebody put something on the table, or turned what stands there. */
void simulateModel(ScannerControl& control, const Call& call)
{
    ScannedModel model;
    try {
        model = scannedModelFromJson(call.params.all());
    } catch (const std::exception& error) {
        throw invalidArgument(error.what());
    }
    const ScannerControl::Occupation occupation = control.occupy("something is put on its table");
    VirtualScanner* const scanner = &control.scanner();
    const auto scenery = std::make_shared<std::shared_ptr<const geometry::RayCaster>>();
    control.runLate(
        call.respond,
        [=](const geometry::Progress& progress) { *scenery = loadScenery(model, progress); },
        [scanner, model, scenery, occupation] {
            scanner->setModel(model, *scenery);
            return Json::Value();
        });
}

} // namespace

void addScannerMethods(MethodTable& table, ScannerControl& control, ShapeList& shapes,
                       JobList& jobs)
{
    using namespace trovek::methods;
    using namespace wire::method;
    ScannerControl* const c = &control;
    table.add(get_digitizer_version::kName, [c](const Call&) { return version(*c); });
    table.add(digitizer_load_name::kName, [c](const Call&) { return c->scanner().name(); });
    table.add(digitizer_save_name::kName,
              [c](const Call& call) { return saveName(*c, call.params); });
    table.add(digitizer_camera_device_path::kName,
              [c](const Call&) { return c->scanner().settings().devicePath; });
    table.add(digitizer_set_enabled_lasers::kName,
              [c](const Call& call) { return setLasers(*c, call.params); });
    table.addLate(captureimage::kName, [c](const Call& call) {
        const double milliseconds = call.params.number("exposure");
        if (!(milliseconds >= kShortestExposureMs && milliseconds <= kLongestExposureMs))
            throw invalidArgument("Member \"exposure\" must be from 0.1 to 500");
        capture(*c, call, milliseconds);
    });
    table.addLate(capture_image_auto_exposure::kName,
                  [c](const Call& call) { capture(*c, call, std::nullopt); });
    table.add(methods::scan::kName, [c, &shapes, &jobs](const Call& call) {
        return service::scan(*c, shapes, jobs, call);
    });

    table.add(kSimulatedScanner, [c](const Call&) { return describe(*c); });
    table.add(kSimulateScannerPlugIn, [c](const Call&) {
        c->virtualScanner().plugIn();
        return Json::Value();
    });
    table.add(kSimulateScannerUnplug, [c](const Call&) {
        c->virtualScanner().unplug();
        return Json::Value();
    });
    table.addLate(kSimulateScannedModel, [c](const Call& call) { simulateModel(*c, call); });
}

} // namespace trovek::service
