#include "scanner/scan_job.h"

#include "scanner/virtual_scanner.h"

#include <trovek/methods.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <QPointer>

namespace trovek::service {

namespace {

trovek::Job::Data describeJob()
{
    trovek::Job::Data data;
    data.name = "Scan";
    data.kind = methods::scan::kName;
    return data;
}

} // namespace

ScanJob::ScanJob(ScannerControl& control, ScannerControl::Occupation occupation, ShapeList& shapes,
                 Client& client, ShapeUse cloud, LineScan scan, QObject* parent)
    : RunningJob(describeJob(), parent)
    , m_control(control)
    , m_occupation(std::move(occupation))
    , m_shapes(shapes)
    , m_client(client)
    , m_cloud(cloud)
    , m_scan(std::move(scan))
{}

void ScanJob::start()
{
    setStage(QStringLiteral("Waiting"));
    VirtualScanner& scanner = m_control.virtualScanner();
    connect(&scanner, &VirtualScanner::unplugged, this,
            [this] { abort(QStringLiteral("The scanner was unplugged")); });

    const auto scenery =
        std::make_shared<std::shared_ptr<const geometry::RayCaster>>(scanner.scenery());
    const auto work = [scan = m_scan, model = scanner.model(), scenery](ShapeTask& task) {
        if (!*scenery)
            *scenery = loadScenery(model, task.progress);
        task.result = Shape(scanLines(scan, **scenery, task.progress));
        return Json::Value();
    };
    // The job may be gone when the work stops.
    const QPointer<ScanJob> self(this);
    const Responder respond{
        [self, scenery, model = scanner.model()](const Json::Value&) {
            if (!self || self->isConcluded())
                return;
            // A client must find what it scanned when it hears of it.
            self->m_control.virtualScanner().setModel(model, *scenery);
            self->finish(JobEnded);
        },
        [self](const JsonRpcException& error) {
            if (!self || self->isConcluded())
                return;
            const bool wasCanceled = error.data()["name"].asString() == wire::error::kCanceled;
            self->finish(wasCanceled ? JobCanceled : JobFailed, toQString(error.message()));
        }};
    m_operation = m_shapes.run({m_client,
                                {m_cloud},
                                ShapeAccess::ChangesFirst,
                                work,
                                respond,
                                [self] {
                                    if (self)
                                        self->setStage(QStringLiteral("Scanning"));
                                },
                                [self](int percent) {
                                    if (self)
                                        self->setProgress(percent);
                                }});
}

void ScanJob::cancel()
{
    if (isConcluded())
        return;
    setStage(QStringLiteral("Canceling"));
    m_shapes.cancel(m_operation);
}

void ScanJob::abort(const QString& reason)
{
    if (isConcluded())
        return;
    finish(JobFailed, reason);
    m_shapes.cancel(m_operation);
}

void ScanJob::finish(JobConclusion conclusion, const QString& failure)
{
    m_occupation.reset();
    conclude(conclusion, failure);
}

} // namespace trovek::service
