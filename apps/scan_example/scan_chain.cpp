#include "scan_chain.h"

#include <trovek-ui/job_watch.h>
#include <trovek-ui/methods_qt.h>
#include <trovek-ui/methods_qt_internal.h>
#include <trovek-ui/trovekqt.h>

#include <service/geometry/mesh_file.h>
#include <service/geometry/point_cloud_file.h>
#include <service/geometry/whole_file.h>
#include <trovek/log.h>
#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

namespace scan_example {

using namespace trovek::methods;
using namespace trovek::methods::qt;
using namespace trovek::methods::qt::internal;
using trovek::digitizer::MeshID;
using trovek::digitizer::PointCloudID;
using trovek::geometry::PointCloud;
using trovek::geometry::RigidTransform;
using Point = trovek::geometry::Vector;

namespace {

constexpr char kLogUnit[] = "apps\\scan_example\\scan_chain";
constexpr double kPi = 3.14159265358979323846;
/** Points closer than this become one, millimetres. */
constexpr double kGridSize = 0.8;

trovek::methods::Vector toVector(const Point& point)
{
    return {point.x, point.y, point.z};
}

/** The outermost points: places that somebody would find again on the other scan. */
std::vector<Point> landmarks(const PointCloud& cloud)
{
    std::vector<Point> found;
    for (const Point& direction : {Point{1, 0, 0}, Point{-1, 0, 0}, Point{0, -1, 0}, Point{0, 1, 0},
                                   Point{0, 0, 1}, Point{1, -1, 1}}) {
        found.push_back(*std::max_element(cloud.positions.begin(), cloud.positions.end(),
                                          [&direction](const Point& a, const Point& b) {
                                              return dot(a, direction) < dot(b, direction);
                                          }));
    }
    return found;
}

/** It is deleted after its answer, or with its owner: a client that has gone answers nothing. */
template <typename Request>
Request* makeRequest(QObject* owner)
{
    auto* const request = new Request;
    request->setParent(owner);
    return request;
}

} // namespace

ScanChain::ScanChain(trovek::TrovekQt& facade, QObject* parent)
    : QObject(parent)
    , m_facade(facade)
    , m_watch(new trovek::JobWatch(facade, "ScanChain", this))
{
    qRegisterMetaType<scan_example::ScanChain::Step>();
    connect(m_watch, &trovek::JobWatch::changed, this,
            [this] { guarded([this] { emit progressed(m_watch->job().progress()); }); });
    connect(m_watch, &trovek::JobWatch::ended, this,
            [this] { guarded(std::exchange(m_afterScan, {})); });
    connect(m_watch, &trovek::JobWatch::canceled, this,
            [this] { fail(tr("The scan was canceled.")); });
    connect(m_watch, &trovek::JobWatch::failed, this, [this](trovek::Job::ID id) {
        QString reason;
        guarded([&] { reason = trovek::toQString(m_facade.jobFromID(id).failure()); });
        fail(reason);
    });
    connect(&facade, &trovek::TrovekQt::disconnected, this, &ScanChain::forget);
}

ScanChain::~ScanChain() = default;

void ScanChain::start(Step step)
{
    if (!canStart(step))
        return;
    m_step = step;
    m_running = true;
    ++m_time;
    m_done = step;
    emit changed();
    guarded([this] {
        const Next done = [this] {
            finish();
        };
        const Next show = [this, done] {
            fetchClouds(0, done);
        };
        switch (m_step) {
        case Scan:
            destroyAll();
            m_facade.simulateScannedModel(Json::Value(Json::objectValue));
            createCloud([this, show] { scanInto(m_cloudIds.back(), show); });
            break;
        case Clean:
            clean(show);
            break;
        case ScanAgain:
            layOnItsBack();
            createCloud(
                [this, show] { scanInto(m_cloudIds.back(), [this, show] { clean(show); }); });
            break;
        case Align:
            align(show);
            break;
        case Reconstruct:
            createMesh([this, done] { reconstruct([this, done] { fetchMesh(done); }); });
            break;
        case Place:
            request<mesh_place_on_platform>([this](auto& placing) { placing.setId(m_meshId); },
                                            [this, done] { fetchMesh(done); });
            break;
        case Save:
            save(done);
            break;
        }
    });
}

void ScanChain::cancel()
{
    m_watch->cancelJob();
}

void ScanChain::forget()
{
    ++m_time;
    m_watch->clearJobID();
    m_cloudIds.clear();
    m_meshId = {};
    m_done = 0;
    if (m_running)
        fail(tr("The service has gone."));
    else
        emit changed();
}

template <typename Request, typename Set>
void ScanChain::request(Set set, Next next)
{
    auto* const asking = makeRequest<FinishedOrFailedMethod<Request>>(this);
    set(*asking);
    connect(asking, &FinishedOrFailedQObject::finished, this, [this, next, time = m_time] {
        if (time == m_time)
            guarded(next);
    });
    connect(asking, &FinishedOrFailedQObject::failed, this, [this, time = m_time] {
        if (time == m_time)
            fail(tr("The service could not do it; its log says why."));
    });
    connect(asking, &FinishedOrFailedQObject::finished, asking, &QObject::deleteLater);
    connect(asking, &FinishedOrFailedQObject::failed, asking, &QObject::deleteLater);
    asking->issue(m_facade);
}

void ScanChain::createCloud(Next next)
{
    auto* const asking = makeRequest<PointCloudCreate>(this);
    connect(asking, &PointCloudCreate::pointCloudIdReceived, this,
            [this, next, time = m_time](PointCloudID id) {
                if (time != m_time)
                    return;
                m_cloudIds.push_back(id);
                guarded(next);
            });
    connect(asking, &PointCloudCreate::failed, this, [this, time = m_time] {
        if (time == m_time)
            fail(tr("The service made no point cloud."));
    });
    connect(asking, &PointCloudCreate::pointCloudIdReceived, asking, &QObject::deleteLater);
    connect(asking, &PointCloudCreate::failed, asking, &QObject::deleteLater);
    asking->issue(m_facade);
}

void ScanChain::createMesh(Next next)
{
    if (m_meshId != MeshID()) {
        next();
        return;
    }
    auto* const asking = makeRequest<MeshCreate>(this);
    connect(asking, &MeshCreate::meshIdReceived, this, [this, next, time = m_time](MeshID id) {
        if (time != m_time)
            return;
        m_meshId = id;
        guarded(next);
    });
    connect(asking, &MeshCreate::failed, this, [this, time = m_time] {
        if (time == m_time)
            fail(tr("The service made no mesh."));
    });
    connect(asking, &MeshCreate::meshIdReceived, asking, &QObject::deleteLater);
    connect(asking, &MeshCreate::failed, asking, &QObject::deleteLater);
    asking->issue(m_facade);
}

void ScanChain::destroyAll()
{
    for (const PointCloudID id : std::exchange(m_cloudIds, {}))
        request<point_cloud_destroy>([id](auto& destroying) { destroying.setId(id); }, [] {});
    m_clouds.clear();
    m_mesh = {};
}

void ScanChain::scanInto(PointCloudID cloud, Next next)
{
    auto* const asking = makeRequest<CreateJobMethod<scan>>(this);
    asking->setPointCloud(cloud);
    asking->setSteps(m_pictures);
    m_afterScan = std::move(next);
    connect(asking, &CreateJobQObject::jobIdReceived, this,
            [this, time = m_time](trovek::Job::ID id) {
                if (time == m_time)
                    m_watch->setJobID(id);
            });
    connect(asking, &CreateJobQObject::failed, this, [this, time = m_time] {
        if (time == m_time)
            fail(tr("The scanner did not start: it is unplugged, in use or not calibrated."));
    });
    connect(asking, &CreateJobQObject::jobIdReceived, asking, &QObject::deleteLater);
    connect(asking, &CreateJobQObject::failed, asking, &QObject::deleteLater);
    asking->issue(m_facade);
}

void ScanChain::clean(Next next)
{
    // The service works on them in the order of the requests, so only the last one is waited for.
    for (std::size_t i = 0; i < m_cloudIds.size(); ++i) {
        request<point_cloud_process>(
            [this, i](auto& cleaning) {
                cleaning.setId(m_cloudIds[i]);
                cleaning.setGridSize(kGridSize);
            },
            i + 1 == m_cloudIds.size() ? next : [] {});
    }
}

/** So that the scanner sees what the thing stood on. */
void ScanChain::layOnItsBack()
{
    if (m_cloudIds.size() > 1) {
        request<point_cloud_destroy>(
            [id = m_cloudIds.back()](auto& destroying) { destroying.setId(id); }, [] {});
        m_cloudIds.pop_back();
        m_clouds.resize(1);
    }
    const double back = boundingBox(m_clouds.front()).maximum.y;
    m_laid =
        RigidTransform::moving({0, 15, back}) * RigidTransform::turning(Point{1, 0, 0}, -kPi / 2);
    Json::Value model(Json::objectValue);
    for (const double degrees : {-90.0, 0.0, 0.0})
        model["turn"].append(degrees);
    for (const double millimetres : {0.0, 15.0, back})
        model["position"].append(millimetres);
    m_facade.simulateScannedModel(model);
}

void ScanChain::align(Next next)
{
    // A user would pick these with the mouse. We know how the thing was laid down, and miss each
    // place by a millimetre or two, as a hand does.
    std::vector<trovek::methods::Vector> picked;
    std::vector<trovek::methods::Vector> targets;
    double off = 1.2;
    for (const Point& place : landmarks(m_clouds.front())) {
        targets.push_back(toVector(place));
        picked.push_back(toVector(m_laid.point(place) + Point{off, -off, off / 2}));
        off = -off;
    }
    request<point_cloud_coarse_alignment>(
        [&](auto& aligning) {
            aligning.setId(m_cloudIds[1]);
            aligning.setTarget(m_cloudIds[0]);
            aligning.setPoints(picked);
            aligning.setTargetPoints(targets);
        },
        [this, next] {
            // It lies where the first one does now, also when somebody aligns them once more.
            m_laid = {};
            request<point_cloud_fine_alignment>(
                [this](auto& aligning) {
                    aligning.setId(m_cloudIds[1]);
                    aligning.setTarget(m_cloudIds[0]);
                },
                next);
        });
}

void ScanChain::reconstruct(Next next)
{
    // Both scans in one cloud, of which the first stays as it is for another try.
    createCloud([this, next] {
        const PointCloudID both = m_cloudIds.back();
        m_cloudIds.pop_back();
        const auto copy = [this, both](std::size_t index, Next then) {
            request<point_cloud_load_from_id>(
                [this, both, index](auto& copying) {
                    copying.setId(both);
                    copying.setSource(m_cloudIds[index]);
                    copying.setAppend(true);
                },
                std::move(then));
        };
        copy(0, [] {});
        copy(1, [this, both, next] {
            request<mesh_reconstruct_point_cloud>(
                [this, both](auto& reconstructing) {
                    reconstructing.setId(m_meshId);
                    reconstructing.setPointCloud(both);
                },
                next);
            request<point_cloud_destroy>([both](auto& destroying) { destroying.setId(both); },
                                         [] {});
        });
    });
}

void ScanChain::save(Next next)
{
    // Into a file of ours first: what the user has there stays when the service fails.
    const QString path = emptyFile(QStringLiteral("model"));
    request<mesh_save>(
        [&](auto& saving) {
            saving.setId(m_meshId);
            saving.setPath(trovek::toStdString(path));
            saving.setFormat(trovek::toStdString(QFileInfo(m_file).suffix().toLower()));
        },
        [this, path, next] {
            const std::string model = trovek::geometry::readWholeFile(trovek::toStdString(path));
            trovek::geometry::replaceFile(
                trovek::toStdString(QFileInfo(m_file).absoluteFilePath()),
                [&model](const auto& sink) { sink(model.data(), model.size()); });
            next();
        });
}

void ScanChain::fetchClouds(std::size_t index, Next next)
{
    if (index == m_cloudIds.size()) {
        next();
        return;
    }
    const QString path = emptyFile(QStringLiteral("cloud.ply"));
    request<point_cloud_save>(
        [&](auto& saving) {
            saving.setId(m_cloudIds[index]);
            saving.setPath(trovek::toStdString(path));
            saving.setFormat("ply");
        },
        [this, index, path, next] {
            m_clouds.resize(m_cloudIds.size());
            m_clouds[index] = trovek::geometry::loadPointCloud(trovek::toStdString(path));
            fetchClouds(index + 1, next);
        });
}

void ScanChain::fetchMesh(Next next)
{
    const QString path = emptyFile(QStringLiteral("mesh.ply"));
    request<mesh_save>(
        [&](auto& saving) {
            saving.setId(m_meshId);
            saving.setPath(trovek::toStdString(path));
            saving.setFormat("ply");
        },
        [this, path, next] {
            m_mesh = trovek::geometry::loadMesh(trovek::toStdString(path));
            next();
        });
}

QString ScanChain::emptyFile(const QString& name) const
{
    QFile file(m_dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("Cannot write to " + trovek::toStdString(file.fileName()));
    return file.fileName();
}

void ScanChain::finish()
{
    m_running = false;
    m_done = m_step + 1;
    emit stepDone(m_step);
    emit changed();
}

void ScanChain::fail(const QString& reason)
{
    if (!m_running)
        return;
    ++m_time;
    m_running = false;
    emit stepFailed(m_step, reason);
    emit changed();
}

/** Slots let nothing out: what goes wrong ends the step. */
void ScanChain::guarded(const std::function<void()>& work)
{
    try {
        work();
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        fail(QString::fromUtf8(error.what()));
    }
}

} // namespace scan_example
