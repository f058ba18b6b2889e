#pragma once

#include <service/geometry/mesh.h>
#include <service/geometry/point_cloud.h>
#include <trovek/digitizer/ids.h>

#include <QObject>
#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <vector>

namespace trovek {
class JobWatch;
class TrovekQt;
} // namespace trovek

namespace scan_example {

/**
 * From a thing on the turntable to a model file: what a host asks of the service, one step after
 * the other, each by the library's requests with signals.
 *
 * One step runs at a time. Clouds and mesh live in the service; what is shown of them here was
 * saved by it into a file of ours.
 */
class ScanChain : public QObject
{
    Q_OBJECT

public:
    /** Each needs the one before it; doing one again makes those behind it undone. */
    enum Step { Scan, Clean, ScanAgain, Align, Reconstruct, Place, Save };
    Q_ENUM(Step)
    static constexpr int kSteps = Save + 1;

    /** @param facade not owned; must outlive the chain */
    explicit ScanChain(trovek::TrovekQt& facade, QObject* parent = nullptr);
    ~ScanChain() override;

    /** Pictures for one turn of the table. */
    void setPicturesPerTurn(int pictures) { m_pictures = pictures; }
    /** Where the last step saves; its name's ending tells the format, .stl, .obj or .ply. */
    void setFile(const QString& path) { m_file = path; }
    const QString& file() const { return m_file; }

    bool isRunning() const { return m_running; }
    /** How many steps are done. */
    int stepsDone() const { return m_done; }
    bool canStart(Step step) const { return !m_running && int(step) <= m_done; }

    /** What there is so far, for the eye: clouds, or the mesh when it is made. */
    const std::vector<trovek::geometry::PointCloud>& clouds() const { return m_clouds; }
    const trovek::geometry::Mesh& mesh() const { return m_mesh; }

public slots:
    void start(scan_example::ScanChain::Step step);
    /** Ends a scan; other steps end by themselves. */
    void cancel();
    /** The service has gone, and all shapes with it. */
    void forget();

signals:
    /** Running or not, or how much is done. */
    void changed();
    /** 0 to 100; of scans only. */
    void progressed(int percent);
    void stepDone(scan_example::ScanChain::Step step);
    /** @param reason for a user */
    void stepFailed(scan_example::ScanChain::Step step, const QString& reason);

private:
    using Next = std::function<void()>;

    /** Sends a request that is done or fails; `next` comes when it is done. */
    template <typename Request, typename Set>
    void request(Set set, Next next);
    /** Does the same with each cloud that there is. */
    void clean(Next next);
    void createCloud(Next next);
    void createMesh(Next next);
    void destroyAll();
    void scanInto(trovek::digitizer::PointCloudID cloud, Next next);
    void layOnItsBack();
    void align(Next next);
    void reconstruct(Next next);
    void save(Next next);
    void fetchClouds(std::size_t index, Next next);
    void fetchMesh(Next next);
    /** An empty file of ours, which the service may write into. */
    QString emptyFile(const QString& name) const;

    void finish();
    void fail(const QString& reason);
    void guarded(const std::function<void()>& work);

    trovek::TrovekQt& m_facade;
    trovek::JobWatch* const m_watch;
    const QTemporaryDir m_dir;
    int m_pictures = 240;
    QString m_file;

    Step m_step = Scan;
    bool m_running = false;
    /** Counts up whenever the chain starts or forgets: answers of an earlier time are dropped. */
    int m_time = 0;
    int m_done = 0;
    Next m_afterScan;
    std::vector<trovek::digitizer::PointCloudID> m_cloudIds;
    trovek::digitizer::MeshID m_meshId;
    std::vector<trovek::geometry::PointCloud> m_clouds;
    trovek::geometry::Mesh m_mesh;
    /** How the second scan's thing lies, seen from the first. */
    trovek::geometry::RigidTransform m_laid;
};

} // namespace scan_example
