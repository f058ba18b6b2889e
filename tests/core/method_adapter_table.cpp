#include "core/method_adapter_table.h"

#include <rpcwire/json_text.h>
#include <trovek-ui/methods_qt.h>
#include <trovek-ui/methods_qt_internal.h>

namespace trovek {

namespace {

using namespace methods::qt;
using methods::qt::internal::CreateJobMethod;
using methods::qt::internal::FinishedOrFailedMethod;

const QString kFailed = QStringLiteral("failed()");

AdapterKind failingPlainly(AdapterKind kind)
{
    kind.failure = "failed()";
    kind.failed = kFailed;
    kind.failedByInternet = kFailed;
    return kind;
}

template <typename Request>
AdapterKind createJob()
{
    const auto bad = [](const char* what, const char* answer) {
        return Exchange{what, answer, kFailed, {{"Missing job ID: ", answer}}};
    };
    AdapterKind kind;
    kind.method = Request::kName;
    kind.make = &Adapter::make<CreateJobMethod<Request>, Request>;
    kind.className = "trovek::methods::qt::internal::CreateJobQObject";
    kind.success = "jobIdReceived(trovek::Job::ID scanJobId)";
    kind.logUnit = "include\\trovek-ui/methods_qt_internal";
    kind.exchanges = {
        {"a job", R"({"id": 12})", QStringLiteral("jobIdReceived(12)")},
        {"a job with more said of it", R"({"id": 3, "name": "x"})",
         QStringLiteral("jobIdReceived(3)")},
        {"a whole number with a point", R"({"id": 4.0})", QStringLiteral("jobIdReceived(4)")},
        {"the largest number", R"({"id": 2147483647})",
         QStringLiteral("jobIdReceived(2147483647)")},
        bad("a number too large", R"({"id": 2147483648})"),
        bad("a fraction", R"({"id": 1.5})"),
        bad("a string for a number", R"({"id": "12"})"),
        bad("null for a number", R"({"id": null})"),
        bad("an object without a number", R"({"ID": 12})"),
        bad("a bare number", "12"),
        bad("a list", R"([{"id": 12}])"),
        bad("null", "null"),
    };
    return failingPlainly(kind);
}

template <typename Request>
AdapterKind finishedOrFailed()
{
    const QString finished = QStringLiteral("finished()");
    AdapterKind kind;
    kind.method = Request::kName;
    kind.make = &Adapter::make<FinishedOrFailedMethod<Request>, Request>;
    kind.className = "trovek::methods::qt::internal::FinishedOrFailedQObject";
    kind.success = "finished()";
    kind.logUnit = "include\\trovek-ui/methods_qt_internal";
    kind.exchanges = {
        {"null", "null", finished},   {"an object", R"({"error": "x"})", finished},
        {"a list", "[1]", finished},  {"a string", R"("failed")", finished},
        {"false", "false", finished},
    };
    return failingPlainly(kind);
}

template <typename A, typename Request>
AdapterKind typed(const char* className, const char* success, std::vector<Exchange> exchanges)
{
    AdapterKind kind;
    kind.method = Request::kName;
    kind.make = &Adapter::make<A, Request>;
    kind.className = QByteArray("trovek::methods::qt::") + className;
    kind.success = success;
    kind.logUnit = "src\\core\\methods_qt";
    kind.exchanges = std::move(exchanges);
    return failingPlainly(kind);
}

Exchange bad(const char* what, const char* answer, const char* complaint)
{
    return {what, answer, kFailed, {{complaint, answer}}};
}

/** The adapters whose answer is one string. */
template <typename A, typename Request>
AdapterKind string(const char* className, const char* success, const char* signal,
                   const char* complaint)
{
    const auto emitted = [signal](const char* text) {
        return QStringLiteral("%1(\"%2\")").arg(QString::fromUtf8(signal), QString::fromUtf8(text));
    };
    return typed<A, Request>(className, success,
                             {
                                 {"a string", R"("/dev/video0")", emitted("/dev/video0")},
                                 {"letters past ASCII", R"("Größe 中")", emitted("Größe 中")},
                                 {"an empty string", R"("")", emitted("")},
                                 bad("a number", "3", complaint),
                                 bad("null", "null", complaint),
                                 bad("a list of one string", R"(["x"])", complaint),
                                 bad("an object", R"({"path": "x"})", complaint),
                             });
}

/** The adapters whose answer is the number of something new. */
template <typename A, typename Request>
AdapterKind number(const char* className, const char* success, const char* signal,
                   const char* complaint)
{
    const auto emitted = [signal](const char* text) {
        return QStringLiteral("%1(%2)").arg(QString::fromUtf8(signal), QString::fromUtf8(text));
    };
    return typed<A, Request>(className, success,
                             {
                                 {"a number", "7", emitted("7")},
                                 {"a whole number with a point", "7.0", emitted("7")},
                                 {"a negative number", "-1", emitted("-1")},
                                 bad("a number too large", "2147483648", complaint),
                                 bad("a fraction", "7.5", complaint),
                                 bad("a string", R"("7")", complaint),
                                 bad("null", "null", complaint),
                                 bad("true", "true", complaint),
                                 bad("a list", "[7]", complaint),
                                 bad("an object", R"({"id": 7})", complaint),
                             });
}

AdapterKind connectToPort()
{
    const char* const complaint = "Missing machine name: ";
    return typed<ConnectToPort, methods::connect_to_port>(
        "ConnectToPort", "connected(trovek::MachineName machineName)",
        {
            {"a name", R"({"name": "left"})", QStringLiteral("connected(\"left\")")},
            {"an empty name", R"({"name": ""})", QStringLiteral("connected(\"\")")},
            bad("a number for a name", R"({"name": 3})", complaint),
            bad("no name", "{}", complaint),
            bad("a bare string", R"("left")", complaint),
            bad("a list", R"(["name"])", complaint),
            bad("null", "null", complaint),
        });
}

AdapterKind getDigitizerVersion()
{
    const char* const complaint = "Invalid version format: ";
    return typed<GetDigitizerVersion, methods::get_digitizer_version>(
        "GetDigitizerVersion", "versionReceived(int major, int minor, int revision)",
        {
            {"three numbers", "[1, 2, 3]", QStringLiteral("versionReceived(1, 2, 3)")},
            bad("two numbers", "[1, 2]", complaint),
            bad("four numbers", "[1, 2, 3, 4]", complaint),
            bad("a string at first", R"(["1", 2, 3])", complaint),
            bad("null in the middle", "[1, null, 3]", complaint),
            bad("a string at last", R"([1, 2, "3"])", complaint),
            bad("a string", R"("1.2.3")", complaint),
            bad("an object", R"({"major": 1})", complaint),
            bad("null", "null", complaint),
        });
}

AdapterKind getMachineVersions()
{
    const auto received = [](const char* versions) {
        return QStringLiteral("versionsReceived({%1})").arg(QString::fromUtf8(versions));
    };
    const QString failed = QStringLiteral("failed(false)");
    const char* const complaint = "Invalid version format";
    const auto noList = [&](const char* what, const char* answer, const char* emitted) {
        return Exchange{
            what, answer, QString::fromUtf8(emitted), {{"Invalid version format\n", answer}}};
    };
    AdapterKind kind = typed<GetMachineVersions, methods::getmachineversions>(
        "GetMachineVersions", "versionsReceived(std::set<FirmwareVersion> versions)",
        {
            {"two in no order", R"([["7.10", "b"], ["7.2", "a"]])", received("7.2 a, 7.10 b")},
            {"one twice", R"([["7.2", "first"], ["7.2", "second"]])", received("7.2 first")},
            {"none", "[]", received("")},
            {"one and a number", R"([["7.2", "x"], 5])", received("7.2 x"), {{complaint, "5"}}},
            {"elements of every wrong shape",
             R"([["7.1"], ["7.2", "x", "y"], ["7.3", 3], [7.4, "x"], {"a": "b"}, "7.5", null])",
             received(""),
             {{complaint, R"(["7.1"])"},
              {complaint, R"(["7.2", "x", "y"])"},
              {complaint, R"(["7.3", 3])"},
              {complaint, R"([7.4, "x"])"},
              {complaint, R"({"a": "b"})"},
              {complaint, R"("7.5")"},
              {complaint, "null"}}},
            noList("an object", "{}", "failed(false)"),
            noList("null", "null", "failed(false)"),
            noList("a string", R"("7.2")", "failed(false)"),
            noList("an object that tells of the network", R"({"a": {"b": "<urlopen error>"}})",
                   "failed(true)"),
        });
    kind.failure = "failed(bool internetFail)";
    kind.failed = failed;
    kind.failedByInternet = QStringLiteral("failed(true)");
    return kind;
}

AdapterKind getUploadableMachines()
{
    const auto received = [](const char* names) {
        return QStringLiteral("namesReceived({%1})").arg(QString::fromUtf8(names));
    };
    const char* const noList = "Response not an array: ";
    const char* const noString = "Expected string, got: ";
    return typed<GetUploadableMachines, methods::getuploadablemachines>(
        "GetUploadableMachines", "namesReceived(std::set<std::string> names)",
        {
            {"two in no order", R"(["b", "a"])", received("a, b")},
            {"one twice", R"(["a", "a"])", received("a")},
            {"none", "[]", received("")},
            {"others between them",
             R"(["a", 5, ["b"], null, "c"])",
             received("a, c"),
             {{noString, "5"}, {noString, R"(["b"])"}, {noString, "null"}}},
            bad("an object", R"({"a": "b"})", noList),
            bad("a string", R"("a")", noList),
            bad("null", "null", noList),
        });
}

template <typename... Requests>
void appendCreateJob(std::vector<AdapterKind>* kinds)
{
    (kinds->push_back(createJob<Requests>()), ...);
}

template <typename... Requests>
void appendFinishedOrFailed(std::vector<AdapterKind>* kinds)
{
    (kinds->push_back(finishedOrFailed<Requests>()), ...);
}

std::vector<AdapterKind> makeKinds()
{
    using namespace methods;
    std::vector<AdapterKind> kinds = {
        connectToPort(),
        string<DigitizerCameraDevicePath, digitizer_camera_device_path>(
            "DigitizerCameraDevicePath", "pathReceived(QString path)", "pathReceived",
            "Digitizer camera path not a string: "),
        string<DigitizerLoadName, digitizer_load_name>("DigitizerLoadName",
                                                       "nameReceived(QString name)", "nameReceived",
                                                       "Digitizer name not a string: "),
        string<DownloadFirmware, downloadfirmware>("DownloadFirmware", "finished(std::string path)",
                                                   "finished", "Download path not a string: "),
        getDigitizerVersion(),
        getMachineVersions(),
        getUploadableMachines(),
        number<MeshCreate, mesh_create>("MeshCreate",
                                        "meshIdReceived(trovek::digitizer::MeshID meshID)",
                                        "meshIdReceived", "Invalid mesh ID: "),
        number<PointCloudCreate, point_cloud_create>(
            "PointCloudCreate",
            "pointCloudIdReceived(trovek::digitizer::PointCloudID pointCloudID)",
            "pointCloudIdReceived", "Invalid point cloud ID: "),
    };
    appendCreateJob<create_calibrate_camera_job, create_calibrate_turntable_job, print,
                    print_to_file, scan, slice>(&kinds);
    appendFinishedOrFailed<
        calibratecamera, calibratelaser, calibrateturntable, capture_image_auto_exposure,
        captureimage, digitizer_invalidate_user_calibration, digitizer_save_name,
        digitizer_set_enabled_lasers, loadcalibration, mesh_copy, mesh_cut_plane, mesh_destroy,
        mesh_load, mesh_place_on_platform, mesh_reconstruct_point_cloud, mesh_save,
        point_cloud_coarse_alignment, point_cloud_crop, point_cloud_destroy,
        point_cloud_fine_alignment, point_cloud_load_from_id, point_cloud_process, point_cloud_save,
        read_user_calibration_from_eeprom, savecalibration, uploadfirmware,
        write_user_calibration_to_eeprom>(&kinds);
    return kinds;
}

} // namespace

std::string Complaint::line() const
{
    Json::Value value;
    std::string error;
    if (!rpcwire::parseJson(json, &value, &error))
        qFatal("Not JSON: %s", json.c_str());
    return text + value.toStyledString();
}

const std::vector<AdapterKind>& adapterKinds()
{
    static const std::vector<AdapterKind> kinds = makeKinds();
    return kinds;
}

} // namespace trovek
