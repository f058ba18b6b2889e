#include "scanner_world.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <service/geometry/mesh_file.h>
#include <service/geometry/rigid_transform.h>

#include <trovek-ui/job_watch.h>
#include <trovek-ui/methods_qt.h>
#include <trovek-ui/methods_qt_internal.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <memory>

using namespace trovek;
using namespace trovek::methods;
using namespace trovek::methods::qt;
using namespace trovek::methods::qt::internal;
using digitizer::MeshID;
using digitizer::PointCloudID;
using geometry::RigidTransform;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kRadius = 22;
/** Of the ball, and of the box below it that tells how it is turned. */
const geometry::Vector kMiddle{0, 0, 45};

/** What is scanned: a ball on a block. */
geometry::Mesh figure()
{
    geometry::Mesh mesh = cube(30);
    for (geometry::Vector& vertex : mesh.vertices)
        vertex = vertex + geometry::Vector{-15, -15, 0};
    const geometry::Mesh head = ball(kRadius, kMiddle);
    const auto offset = static_cast<std::uint32_t>(mesh.vertices.size());
    mesh.vertices.insert(mesh.vertices.end(), head.vertices.begin(), head.vertices.end());
    for (const auto& [a, b, c] : head.triangles)
        mesh.triangles.push_back({a + offset, b + offset, c + offset});
    return mesh;
}

/** A host that scans: every step is one of the library's requests with signals. */
class Host
{
public:
    explicit Host(TrovekQt& facade)
        : m_facade(facade)
    {}

    template <typename Request, typename Set>
    bool finish(Set set)
    {
        FinishedOrFailedMethod<Request> request;
        set(request);
        QSignalSpy finished(&request, &FinishedOrFailedQObject::finished);
        QSignalSpy failed(&request, &FinishedOrFailedQObject::failed);
        request.issue(m_facade);
        return QTest::qWaitFor([&] { return finished.count() + failed.count() > 0; }, 60000) &&
               finished.count() == 1;
    }

    PointCloudID createCloud()
    {
        PointCloudCreate request;
        QSignalSpy created(&request, &PointCloudCreate::pointCloudIdReceived);
        request.issue(m_facade);
        created.wait();
        return created.value(0).value(0).value<PointCloudID>();
    }

    MeshID createMesh()
    {
        MeshCreate request;
        QSignalSpy created(&request, &MeshCreate::meshIdReceived);
        request.issue(m_facade);
        created.wait();
        return created.value(0).value(0).value<MeshID>();
    }

    JobConclusion scan(PointCloudID cloud, int steps)
    {
        CreateJobMethod<methods::scan> request;
        request.setPointCloud(cloud);
        request.setSteps(steps);
        QSignalSpy created(&request, &CreateJobQObject::jobIdReceived);
        request.issue(m_facade);
        if (!created.wait(20000))
            return JobNotConcluded;
        const int job = created[0][0].toInt();
        if (!QTest::qWaitFor(
                [&] { return m_facade.jobFromID(job).conclusion() != JobNotConcluded; }, 60000))
            return JobNotConcluded;
        return m_facade.jobFromID(job).conclusion();
    }

private:
    TrovekQt& m_facade;
};

} // namespace

class tst_ScanRun : public QObject
{
    Q_OBJECT

private slots:
    void scansCleansAlignsReconstructsPlacesAndSaves();
    void theScannersAnswersHaveTheirShapes();
    void everyFailureIsToldOnce();
};

void tst_ScanRun::scansCleansAlignsReconstructsPlacesAndSaves()
{
    TestLog log;
    ScannerWorld world;
    world.start();
    TrovekQt facade;
    facade.connectToDaemon(world.address());
    Host host(facade);
    const std::string model = world.writeMesh(QStringLiteral("figure.ply"), figure());

    // Once as it stands, once turned and moved a little: what is hidden here is seen there.
    facade.simulateScannedModel(object("path", model));
    const PointCloudID first = host.createCloud();
    QVERIFY(first != PointCloudID());
    QCOMPARE(host.scan(first, 150), JobEnded);
    Json::Value turned = object("path", model);
    turned["turn"] = list({0, 0, 130});
    turned["position"] = list({5, -4, 0});
    facade.simulateScannedModel(turned);
    const PointCloudID second = host.createCloud();
    QCOMPARE(host.scan(second, 150), JobEnded);

    for (const PointCloudID cloud : {first, second}) {
        QVERIFY(host.finish<point_cloud_process>([&](auto& request) {
            request.setId(cloud);
            request.setGridSize(0.8);
        }));
        QVERIFY(host.finish<point_cloud_crop>([&](auto& request) {
            request.setId(cloud);
            request.setMinimum({-60, -60, 0.3});
            request.setMaximum({60, 60, 100});
        }));
    }

    // As a user picks them: the same places on both, not quite.
    const RigidTransform there =
        RigidTransform::moving({5, -4, 0}) *
        RigidTransform::turning(geometry::Vector{0, 0, 1}, 130 * kPi / 180);
    const std::vector<geometry::Vector> places = {
        {15, 15, 10}, {-15, 15, 20}, {15, -15, 5}, {0, -22, 45}, {0, 0, 67}};
    std::vector<methods::Vector> picked;
    std::vector<methods::Vector> targets;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const geometry::Vector place = there.point(places[i]);
        const double off = i % 2 == 0 ? 0.7 : -0.7;
        picked.push_back({place.x + off, place.y, place.z - off});
        targets.push_back({places[i].x, places[i].y + off, places[i].z});
    }
    QVERIFY(host.finish<point_cloud_coarse_alignment>([&](auto& request) {
        request.setId(second);
        request.setTarget(first);
        request.setPoints(picked);
        request.setTargetPoints(targets);
    }));
    QVERIFY(host.finish<point_cloud_fine_alignment>([&](auto& request) {
        request.setId(second);
        request.setTarget(first);
    }));
    QVERIFY(host.finish<point_cloud_load_from_id>([&](auto& request) {
        request.setId(first);
        request.setSource(second);
        request.setAppend(true);
    }));
    QVERIFY(host.finish<point_cloud_destroy>([&](auto& request) { request.setId(second); }));

    const MeshID mesh = host.createMesh();
    QVERIFY(mesh != MeshID());
    QVERIFY(host.finish<mesh_reconstruct_point_cloud>([&](auto& request) {
        request.setId(mesh);
        request.setPointCloud(first);
    }));
    const MeshID copy = host.createMesh();
    QVERIFY(host.finish<mesh_copy>([&](auto& request) {
        request.setId(copy);
        request.setSource(mesh);
    }));
    const std::string standing = world.emptyFile(QStringLiteral("standing.stl"));
    QVERIFY(host.finish<mesh_save>([&](auto& request) {
        request.setId(copy);
        request.setPath(standing);
        request.setFormat("stl");
    }));
    QVERIFY(host.finish<mesh_cut_plane>([&](auto& request) {
        request.setId(copy);
        request.setPoint({0, 0, 45});
        request.setNormal({0, 0, -1});
    }));
    QVERIFY(host.finish<mesh_place_on_platform>([&](auto& request) { request.setId(copy); }));
    const std::string placed = world.emptyFile(QStringLiteral("placed.stl"));
    QVERIFY(host.finish<mesh_save>([&](auto& request) {
        request.setId(copy);
        request.setPath(placed);
        request.setFormat("stl");
    }));

    // The ball came out as large as it is, and where it is.
    const geometry::Mesh whole = geometry::loadMesh(standing);
    QVERIFY(isClosed(whole));
    double sum = 0;
    int count = 0;
    for (const geometry::Vector& vertex : whole.vertices) {
        if (vertex.z < 40)
            continue;
        const double off = length(vertex - kMiddle) - kRadius;
        QVERIFY2(std::abs(off) < 0.8, qPrintable(QString::number(off)));
        sum += off;
        ++count;
    }
    QVERIFY(count > 100);
    QVERIFY2(std::abs(sum / count) < 0.1, qPrintable(QString::number(sum / count)));

    // Cut in the middle it is half a ball, lying on its flat side.
    const geometry::Mesh half = geometry::loadMesh(placed);
    QVERIFY(isClosed(half));
    const double ideal = 2.0 / 3 * kPi * kRadius * kRadius * kRadius;
    QVERIFY2(std::abs(volume(half) / ideal - 1) < 0.03, qPrintable(QString::number(volume(half))));
    const geometry::Box box = boundingBox(half);
    QVERIFY(std::abs(box.minimum.z) < 1e-6);
    QVERIFY(std::abs(box.maximum.z - kRadius) < 0.7);
}

void tst_ScanRun::theScannersAnswersHaveTheirShapes()
{
    TestLog log;
    ScannerWorld world;
    world.start();
    TrovekQt facade;
    facade.connectToDaemon(world.address());
    Host host(facade);

    GetDigitizerVersion version;
    QSignalSpy versions(&version, &GetDigitizerVersion::versionReceived);
    version.issue(facade);
    QVERIFY(versions.wait());
    QCOMPARE(versions[0], (QList<QVariant>{1, 2, 0}));

    QVERIFY(host.finish<digitizer_save_name>([](auto& request) { request.setName("Grün"); }));
    DigitizerLoadName name;
    QSignalSpy names(&name, &DigitizerLoadName::nameReceived);
    name.issue(facade);
    QVERIFY(names.wait());
    QCOMPARE(names[0][0].toString(), QStringLiteral("Grün"));

    DigitizerCameraDevicePath path;
    QSignalSpy paths(&path, &DigitizerCameraDevicePath::pathReceived);
    path.issue(facade);
    QVERIFY(paths.wait());
    QSignalSpy closed(&facade, &TrovekQt::cameraClosed);
    facade.simulateScannerUnplug();
    QTRY_COMPARE(closed.count(), 1);
    QCOMPARE(closed[0][0].value<std::string>(), toStdString(paths[0][0].toString()));
}

void tst_ScanRun::everyFailureIsToldOnce()
{
    TestLog log;
    Json::Value settings(Json::objectValue);
    settings["plugged_in"] = false;
    ScannerWorld world(settings);
    world.start();
    TrovekQt facade;
    facade.connectToDaemon(world.address());

    CreateJobMethod<methods::scan> scan;
    QSignalSpy failed(&scan, &CreateJobQObject::failed);
    scan.issue(facade);
    GetDigitizerVersion version;
    QSignalSpy versionFailed(&version, &GetDigitizerVersion::failed);
    version.issue(facade);
    FinishedOrFailedMethod<mesh_destroy> destroy;
    QSignalSpy destroyFailed(&destroy, &FinishedOrFailedQObject::failed);
    destroy.setId(MeshID(5));
    destroy.issue(facade);
    QTRY_COMPARE(failed.count() + versionFailed.count() + destroyFailed.count(), 3);

    // An answer that is still to come when the link is lost.
    FinishedOrFailedMethod<point_cloud_process> late;
    QSignalSpy lateFailed(&late, &FinishedOrFailedQObject::failed);
    late.issue(facade);
    world.stop();
    QTRY_COMPARE(lateFailed.count(), 1);
    QCOMPARE(failed.count(), 1);
}

QTEST_GUILESS_MAIN(tst_ScanRun)
#include "tst_scan_run.moc"
