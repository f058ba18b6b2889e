#include "recording_trovek.h"
#include "support/scripted_service.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <rpcwire/json_text.h>
#include <trovek/methods.h>
#include <trovek/wire.h>

#include <QTest>

#include <memory>
#include <set>

using namespace trovek;

namespace {

/** A request that writes down how it was answered, "answer JSON" or "error JSON". */
template <typename Base>
class Recording : public Base
{
public:
    explicit Recording(std::vector<std::string>* answers = nullptr)
        : m_answers(answers)
    {}
    ~Recording() override = default;

    std::function<void()> onAnswer;

protected:
    void handleResponse(const Json::Value& response) override { record("answer ", response); }
    void handleErrorResponse(const Json::Value& error) override { record("error ", error); }

private:
    void record(const char* kind, const Json::Value& value)
    {
        m_answers->push_back(kind + rpcwire::toJsonLine(value));
        if (onAnswer)
            onAnswer();
    }

    std::vector<std::string>* const m_answers;
};

using Upload = Recording<methods::uploadfirmware>;
using Texts = std::vector<std::string>;

const std::string kMethod = "uploadfirmware";
const std::string kNotConnected =
    R"(error {"code":-32000,"message":"Not connected to the service"})";

/** How one set of parameters looks on the wire. */
template <typename Request>
std::string paramsOf(const Request& request)
{
    return rpcwire::toJsonLine(request.parameters());
}

template <typename Request, typename Setter>
std::string paramsSetBy(Setter set)
{
    Recording<Request> request;
    set(request);
    return paramsOf(request);
}

template <typename... Requests>
Texts namesOf()
{
    return {Recording<Requests>().methodName()...};
}

template <typename... Requests>
Texts namesByConstant()
{
    return {Requests::kName...};
}

} // namespace

class tst_AsynchronousMethod : public QObject
{
    Q_OBJECT

private slots:
    void theAnswerComesFromTheEventLoopOnce();
    void aRequestIsIssuedOnce();
    void errorsArriveAsObjects();
    void answersMayComeInAnyOrder();
    void aLostLinkIsAnErrorForEveryRequest();
    void disconnectingIsAnErrorForEveryRequest();
    void withoutALinkTheErrorComesFromTheEventLoop();
    void aRequestMayBeDestroyedBeforeItsAnswer();
    void aRequestMayBeDestroyedByItsAnswer();
    void noAnswerComesAfterTheClient();
    void aHandlerThatThrowsHurtsNobody();
    void aHandlerMayCallTheClient();
    void everyRequestIsNamedAsItsClass();
    void parametersStandUnderTheirNames();
    void filesAndNumbersStandUnderTheirNames();
};

void tst_AsynchronousMethod::theAnswerComesFromTheEventLoopOnce()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Texts answers;
    Upload request(&answers);
    request.setMachine(MachineName("left"));
    request.setPath("/f");
    service.answerNext(kMethod, Json::Value("done"));
    request.issue(client);
    QVERIFY(service.waitForRequest(kMethod));
    client.home(MachineName("left"));
    QVERIFY(answers.empty());
    QTRY_COMPARE(answers, Texts{R"(answer "done")"});
    QCOMPARE(rpcwire::toJsonLine(service.lastRequest(kMethod)),
             std::string(R"({"machine":"left","path":"/f"})"));
    service.dropConnections();
    QTRY_COMPARE(client.story(), std::string("disconnected"));
    QCOMPARE(answers.size(), std::size_t(1));
}

void tst_AsynchronousMethod::aRequestIsIssuedOnce()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Texts answers;
    Upload request(&answers);
    request.issue(client);
    QCOMPARE(thrownText([&] { request.issue(client); }), std::string("Request was already issued"));
    QTRY_COMPARE(answers, Texts{"answer null"});
    QVERIFY_EXCEPTION_THROWN(request.issue(client), std::logic_error);
    QCOMPARE(service.requests(kMethod).size(), std::size_t(1));
}

void tst_AsynchronousMethod::errorsArriveAsObjects()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.failNext(kMethod, wire::makeError("SomeError", "<urlopen error>"));
    service.failNext(kMethod, JsonRpcException("No data", Json::Value(), -32601));
    Texts answers;
    Upload first(&answers);
    Upload second(&answers);
    first.issue(client);
    second.issue(client);
    QTRY_COMPARE(answers.size(), std::size_t(2));
    QCOMPARE(answers[0], std::string(R"(error {"code":-32000,"data":{"message":"<urlopen error>",)"
                                     R"("name":"SomeError"},"message":"<urlopen error>"})"));
    QCOMPARE(answers[1], std::string(R"(error {"code":-32601,"message":"No data"})"));
}

void tst_AsynchronousMethod::answersMayComeInAnyOrder()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.hangNext("getuploadablemachines");
    Texts answers;
    Recording<methods::getuploadablemachines> slow(&answers);
    Upload fast(&answers);
    slow.issue(client);
    fast.issue(client);
    QTRY_COMPARE(answers, Texts{"answer null"});
    // Greeting and subscription were numbers 1 and 2.
    service.sendRaw(R"({"jsonrpc": "2.0", "id": 3, "result": "late"})"
                    "\n");
    QTRY_COMPARE(answers, (Texts{"answer null", R"(answer "late")"}));
}

void tst_AsynchronousMethod::aLostLinkIsAnErrorForEveryRequest()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.hangNext(kMethod);
    service.hangNext(kMethod);
    Texts answers;
    Upload first(&answers);
    Upload second(&answers);
    first.issue(client);
    second.issue(client);
    QVERIFY(service.waitForRequest(kMethod, 2));
    service.dropConnections();
    const std::string lost =
        R"(error {"code":-32000,"message":"Connection closed by the other side"})";
    QTRY_COMPARE(answers, (Texts{lost, lost}));
}

void tst_AsynchronousMethod::disconnectingIsAnErrorForEveryRequest()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.hangNext(kMethod);
    Texts answers;
    Upload request(&answers);
    request.issue(client);
    QVERIFY(service.waitForRequest(kMethod));
    client.disconnectFromDaemon();
    client.connectToDaemon(service.address());
    QVERIFY(answers.empty());
    QTRY_COMPARE(answers, Texts{R"(error {"code":-32000,"message":"Disconnected"})"});
}

void tst_AsynchronousMethod::withoutALinkTheErrorComesFromTheEventLoop()
{
    TestLog log;
    RecordingTrovek client;
    Texts answers;
    Upload request(&answers);
    request.issue(client);
    QVERIFY(answers.empty());
    QTRY_COMPARE(answers, Texts{kNotConnected});
}

void tst_AsynchronousMethod::aRequestMayBeDestroyedBeforeItsAnswer()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    Texts answers;
    auto offline = std::make_unique<Upload>(&answers);
    offline->issue(client);
    offline.reset();
    client.connectToDaemon(service.address());
    auto request = std::make_unique<Upload>(&answers);
    request->issue(client);
    request.reset();
    Upload later(&answers);
    later.issue(client);
    QTRY_COMPARE(answers, Texts{"answer null"});
    QCOMPARE(service.requests(kMethod).size(), std::size_t(2));
}

void tst_AsynchronousMethod::aRequestMayBeDestroyedByItsAnswer()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Texts answers;
    auto* const request = new Upload(&answers);
    request->onAnswer = [request] {
        delete request;
    };
    request->issue(client);
    QTRY_COMPARE(answers, Texts{"answer null"});
}

void tst_AsynchronousMethod::noAnswerComesAfterTheClient()
{
    TestLog log;
    ScriptedService service;
    service.hangNext(kMethod);
    Texts answers;
    Upload waiting(&answers);
    Upload offline(&answers);
    {
        RecordingTrovek other;
        offline.issue(other);
        RecordingTrovek client;
        client.connectToDaemon(service.address());
        waiting.issue(client);
        QVERIFY(service.waitForRequest(kMethod));
    }
    QTRY_COMPARE(service.clientCount(), 0);
    QCoreApplication::processEvents();
    QVERIFY(answers.empty());
}

void tst_AsynchronousMethod::aHandlerThatThrowsHurtsNobody()
{
    TestLog log;
    log.expectError("Handler of an answer threw: broken");
    log.expectError("Handler of an answer threw something");
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Texts answers;
    Upload first(&answers);
    first.onAnswer = [] {
        throw std::runtime_error("broken");
    };
    Upload second(&answers);
    second.onAnswer = [] {
        throw 5;
    };
    first.issue(client);
    second.issue(client);
    QTRY_COMPARE(answers, (Texts{"answer null", "answer null"}));
    QVERIFY(client.isConnected());
}

void tst_AsynchronousMethod::aHandlerMayCallTheClient()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Texts answers;
    Upload request(&answers);
    bool called = false;
    request.onAnswer = [&] {
        client.home(MachineName("left"));
        called = true;
    };
    request.issue(client);
    QTRY_VERIFY(called);
}

void tst_AsynchronousMethod::everyRequestIsNamedAsItsClass()
{
    using namespace methods;
    const Texts expected = {"connect_to_port",
                            "print",
                            "print_to_file",
                            "slice",
                            "getuploadablemachines",
                            "getmachineversions",
                            "downloadfirmware",
                            "uploadfirmware",
                            "create_calibrate_camera_job",
                            "create_calibrate_turntable_job",
                            "calibratecamera",
                            "calibratelaser",
                            "calibrateturntable",
                            "loadcalibration",
                            "savecalibration",
                            "read_user_calibration_from_eeprom",
                            "write_user_calibration_to_eeprom",
                            "digitizer_invalidate_user_calibration",
                            "get_digitizer_version",
                            "digitizer_load_name",
                            "digitizer_save_name",
                            "digitizer_camera_device_path",
                            "digitizer_set_enabled_lasers",
                            "captureimage",
                            "capture_image_auto_exposure",
                            "scan",
                            "point_cloud_create",
                            "point_cloud_destroy",
                            "point_cloud_load_from_id",
                            "point_cloud_save",
                            "point_cloud_crop",
                            "point_cloud_process",
                            "point_cloud_coarse_alignment",
                            "point_cloud_fine_alignment",
                            "mesh_create",
                            "mesh_copy",
                            "mesh_destroy",
                            "mesh_load",
                            "mesh_save",
                            "mesh_cut_plane",
                            "mesh_place_on_platform",
                            "mesh_reconstruct_point_cloud"};
    const Texts names =
        namesOf<connect_to_port, print, print_to_file, slice, getuploadablemachines,
                getmachineversions, downloadfirmware, uploadfirmware, create_calibrate_camera_job,
                create_calibrate_turntable_job, calibratecamera, calibratelaser, calibrateturntable,
                loadcalibration, savecalibration, read_user_calibration_from_eeprom,
                write_user_calibration_to_eeprom, digitizer_invalidate_user_calibration,
                get_digitizer_version, digitizer_load_name, digitizer_save_name,
                digitizer_camera_device_path, digitizer_set_enabled_lasers, captureimage,
                capture_image_auto_exposure, scan, point_cloud_create, point_cloud_destroy,
                point_cloud_load_from_id, point_cloud_save, point_cloud_crop, point_cloud_process,
                point_cloud_coarse_alignment, point_cloud_fine_alignment, mesh_create, mesh_copy,
                mesh_destroy, mesh_load, mesh_save, mesh_cut_plane, mesh_place_on_platform,
                mesh_reconstruct_point_cloud>();
    QCOMPARE(names, expected);
    QCOMPARE(std::set<std::string>(names.begin(), names.end()).size(), std::size_t(42));
    // Those that the synchronous operations share are the same methods.
    QCOMPARE((namesByConstant<connect_to_port, print, print_to_file, slice, getuploadablemachines,
                              getmachineversions, downloadfirmware, uploadfirmware>()),
             (Texts{wire::method::kConnectToPort, wire::method::kPrint, wire::method::kPrintToFile,
                    wire::method::kSlice, wire::method::kGetUploadableMachines,
                    wire::method::kGetMachineVersions, wire::method::kDownloadFirmware,
                    wire::method::kUploadFirmware}));
}

void tst_AsynchronousMethod::parametersStandUnderTheirNames()
{
    using digitizer::MeshID;
    using digitizer::PointCloudID;
    const SlicerConfiguration settings;
    const std::string config = rpcwire::toJsonLine(wire::toJson(settings));

    Recording<methods::scan> bare;
    QCOMPARE(paramsOf(bare), std::string("{}"));

    Recording<methods::connect_to_port> connect;
    connect.setPort(Port(ScriptedService::port("one")));
    QCOMPARE(paramsOf(connect), std::string(R"({"identity":"23c1:d314:one","port":"one"})"));

    Recording<methods::print> print;
    print.setMachine(MachineName("left"));
    print.setInputPath("/i");
    print.setSlicerConfig(settings);
    print.setMaterials({"pla"});
    print.setSkipStartEnd(true);
    QCOMPARE(paramsOf(print), R"({"input_path":"/i","machine":"left","materials":["pla"],)"
                              R"("skip_start_end":true,"slicer_config":)" +
                                  config + '}');

    Recording<methods::print_to_file> printToFile;
    printToFile.setMachine(MachineName("left"));
    printToFile.setInputPath("/i");
    printToFile.setOutputPath("/o");
    printToFile.setFormat("s3g");
    printToFile.setSlicerConfig(settings);
    printToFile.setMaterials({});
    printToFile.setSkipStartEnd(false);
    QCOMPARE(paramsOf(printToFile),
             R"({"format":"s3g","input_path":"/i","machine":"left","materials":[],)"
             R"("output_path":"/o","skip_start_end":false,"slicer_config":)" +
                 config + '}');

    Recording<methods::slice> slice;
    slice.setMachine(MachineName("left"));
    slice.setInputPath("/i");
    slice.setOutputPath("/o");
    slice.setSlicerConfig(settings);
    slice.setMaterials({"pla", "abs"});
    slice.setAddStartEnd(true);
    QCOMPARE(paramsOf(slice), R"({"add_start_end":true,"input_path":"/i","machine":"left",)"
                              R"("materials":["pla","abs"],"output_path":"/o","slicer_config":)" +
                                  config + '}');

    Recording<methods::downloadfirmware> download;
    download.setMachine("Fabrino");
    download.setType(3);
    download.setVersion(FirmwareVersion("7.2", "text"));
    QCOMPARE(paramsOf(download), std::string(R"({"machine":"Fabrino","type":3,"version":"7.2"})"));

    Recording<methods::digitizer_set_enabled_lasers> lasers;
    lasers.setLeft(true);
    lasers.setRight(false);
    QCOMPARE(paramsOf(lasers), std::string(R"({"left":true,"right":false})"));

    Recording<methods::point_cloud_crop> crop;
    crop.setId(PointCloudID(4));
    crop.setMinimum({0, 0.5, 1});
    crop.setMaximum({10, 20, 30});
    QCOMPARE(paramsOf(crop),
             std::string(R"({"id":4,"maximum":[10.0,20.0,30.0],"minimum":[0.0,0.5,1.0]})"));

    Recording<methods::point_cloud_coarse_alignment> align;
    align.setId(PointCloudID(4));
    align.setTarget(PointCloudID(5));
    align.setPoints({{1, 2, 3}});
    align.setTargetPoints({});
    QCOMPARE(paramsOf(align),
             std::string(R"({"id":4,"points":[[1.0,2.0,3.0]],"target":5,"target_points":[]})"));

    Recording<methods::mesh_cut_plane> cut;
    cut.setId(MeshID(6));
    cut.setPoint({0, 0, 10});
    cut.setNormal({0, 0, -1});
    QCOMPARE(paramsOf(cut),
             std::string(R"({"id":6,"normal":[0.0,0.0,-1.0],"point":[0.0,0.0,10.0]})"));

    Recording<methods::mesh_reconstruct_point_cloud> reconstruct;
    reconstruct.setId(MeshID(6));
    reconstruct.setPointCloud(PointCloudID(4));
    QCOMPARE(paramsOf(reconstruct), std::string(R"({"id":6,"point_cloud":4})"));
}

void tst_AsynchronousMethod::filesAndNumbersStandUnderTheirNames()
{
    using digitizer::MeshID;
    using digitizer::PointCloudID;

    QCOMPARE(paramsSetBy<methods::create_calibrate_camera_job>(
                 [](auto& request) { request.setPath("/p"); }),
             std::string(R"({"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::create_calibrate_turntable_job>(
                 [](auto& request) { request.setPath("/p"); }),
             std::string(R"({"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::calibratecamera>([](auto& request) { request.setPath("/p"); }),
             std::string(R"({"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::calibratelaser>([](auto& request) { request.setPath("/p"); }),
             std::string(R"({"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::calibrateturntable>([](auto& request) { request.setPath("/p"); }),
             std::string(R"({"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::loadcalibration>([](auto& request) { request.setPath("/p"); }),
             std::string(R"({"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::savecalibration>([](auto& request) { request.setPath("/p"); }),
             std::string(R"({"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::capture_image_auto_exposure>(
                 [](auto& request) { request.setPath("/p"); }),
             std::string(R"({"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::uploadfirmware>([](auto& request) {
                 request.setMachine(MachineName("left"));
                 request.setPath("/p");
             }),
             std::string(R"({"machine":"left","path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::getmachineversions>([](auto& request) {
                 request.setMachine("Fabrino");
                 request.setType(3);
             }),
             std::string(R"({"machine":"Fabrino","type":3})"));
    QCOMPARE(
        paramsSetBy<methods::digitizer_save_name>([](auto& request) { request.setName("Größe"); }),
        std::string(R"({"name":"Größe"})"));
    QCOMPARE(paramsSetBy<methods::captureimage>([](auto& request) {
                 request.setPath("/p");
                 request.setExposure(12.5);
             }),
             std::string(R"({"exposure":12.5,"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::scan>([](auto& request) {
                 request.setPointCloud(PointCloudID(4));
                 request.setSteps(800);
             }),
             std::string(R"({"point_cloud":4,"steps":800})"));
    QCOMPARE(paramsSetBy<methods::point_cloud_destroy>(
                 [](auto& request) { request.setId(PointCloudID(4)); }),
             std::string(R"({"id":4})"));
    QCOMPARE(paramsSetBy<methods::point_cloud_load_from_id>([](auto& request) {
                 request.setId(PointCloudID(4));
                 request.setSource(PointCloudID(5));
             }),
             std::string(R"({"id":4,"source":5})"));
    QCOMPARE(paramsSetBy<methods::point_cloud_load_from_id>([](auto& request) {
                 request.setId(PointCloudID(4));
                 request.setPath("/p.ply");
                 request.setAppend(true);
             }),
             std::string(R"({"append":true,"id":4,"path":"/p.ply"})"));
    QCOMPARE(paramsSetBy<methods::point_cloud_save>([](auto& request) {
                 request.setId(PointCloudID(4));
                 request.setPath("/p");
                 request.setFormat("ply");
             }),
             std::string(R"({"format":"ply","id":4,"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::point_cloud_process>([](auto& request) {
                 request.setId(PointCloudID(4));
                 request.setGridSize(0.5);
             }),
             std::string(R"({"grid_size":0.5,"id":4})"));
    QCOMPARE(paramsSetBy<methods::point_cloud_fine_alignment>([](auto& request) {
                 request.setId(PointCloudID(4));
                 request.setTarget(PointCloudID(5));
             }),
             std::string(R"({"id":4,"target":5})"));
    QCOMPARE(paramsSetBy<methods::mesh_copy>([](auto& request) {
                 request.setId(MeshID(6));
                 request.setSource(MeshID(7));
             }),
             std::string(R"({"id":6,"source":7})"));
    QCOMPARE(paramsSetBy<methods::mesh_destroy>([](auto& request) { request.setId(MeshID(6)); }),
             std::string(R"({"id":6})"));
    QCOMPARE(paramsSetBy<methods::mesh_load>([](auto& request) {
                 request.setId(MeshID(6));
                 request.setPath("/p");
             }),
             std::string(R"({"id":6,"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::mesh_save>([](auto& request) {
                 request.setId(MeshID(6));
                 request.setPath("/p");
                 request.setFormat("stl");
             }),
             std::string(R"({"format":"stl","id":6,"path":"/p"})"));
    QCOMPARE(paramsSetBy<methods::mesh_place_on_platform>(
                 [](auto& request) { request.setId(MeshID(6)); }),
             std::string(R"({"id":6})"));
}

QTEST_GUILESS_MAIN(tst_AsynchronousMethod)
#include "tst_asynchronous_method.moc"
