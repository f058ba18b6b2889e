#include "scanner/scanner_control.h"

#include "background_task.h"
#include "scanner/virtual_scanner.h"
#include "scanner/work_error.h"

#include <trovek/wire.h>

#include <algorithm>

namespace trovek::service {

struct ScannerControl::LateWork
{
    Responder respond;
    std::function<Json::Value()> finish;
    /** The pool's thread has it to itself while it works. */
    std::optional<JsonRpcException> error;
    std::unique_ptr<BackgroundTask> task;
};

ScannerControl::ScannerControl(VirtualScanner& scanner, QThreadPool& pool, QObject* parent)
    : QObject(parent)
    , m_scanner(scanner)
    , m_pool(pool)
{
    const auto readMemory = [this] {
        m_calibration = m_scanner.userCalibration().value_or(Calibration());
    };
    if (scanner.isPluggedIn())
        readMemory();
    connect(&scanner, &VirtualScanner::pluggedIn, this, readMemory);
    connect(&scanner, &VirtualScanner::unplugged, this, [this] { m_calibration = {}; });
}

ScannerControl::~ScannerControl()
{
    // All at once; destroying them waits for one after the other.
    for (const auto& work : m_works)
        work->task->cancel();
}

VirtualScanner& ScannerControl::scanner() const
{
    if (!m_scanner.isPluggedIn())
        throw wire::makeError(wire::error::kScannerUnavailable, "No scanner is connected");
    return m_scanner;
}

VirtualScanner& ScannerControl::idleScanner() const
{
    VirtualScanner& idle = scanner();
    if (!m_occupation.expired()) {
        throw wire::makeError(wire::error::kScannerBusy, "The scanner is busy: " + m_occupiedBy);
    }
    return idle;
}

ScannerControl::Occupation ScannerControl::occupy(const std::string& what)
{
    idleScanner();
    m_occupiedBy = what;
    const auto occupation = std::make_shared<int>();
    m_occupation = occupation;
    return occupation;
}

const Calibration& ScannerControl::completeCalibration() const
{
    const auto missing = [this]() -> const char* {
        if (!m_calibration.camera)
            return "camera";
        return m_calibration.lasers ? "turntable" : "lasers";
    };
    if (!m_calibration.isComplete()) {
        throw wire::makeError(wire::error::kNotCalibrated,
                              std::string("The scanner is not calibrated: ") + missing());
    }
    return m_calibration;
}

void ScannerControl::runLate(const Responder& respond,
                             std::function<void(const geometry::Progress&)> work,
                             std::function<Json::Value()> finishWork)
{
    auto owned = std::make_unique<LateWork>();
    LateWork* const late = owned.get();
    late->respond = respond;
    late->finish = std::move(finishWork);
    late->task = std::make_unique<BackgroundTask>(
        m_pool, [late, work = std::move(work)](BackgroundTask::Control& control) {
            const geometry::Progress progress = [&control](double) {
                return !control.isCanceled();
            };
            late->error = errorOfWork([&] { work(progress); });
        });
    connect(late->task.get(), &BackgroundTask::ended, this, [this, late] { finish(*late); });
    m_works.push_back(std::move(owned));
    late->task->start();
}

void ScannerControl::finish(LateWork& work)
{
    const auto found = std::find_if(m_works.begin(), m_works.end(),
                                    [&work](const auto& other) { return other.get() == &work; });
    // Its task is inside its own signal.
    m_retired.push_back(std::move(*found));
    m_works.erase(found);
    QMetaObject::invokeMethod(
        this, [this] { m_retired.clear(); }, Qt::QueuedConnection);

    Json::Value answer;
    if (!work.error) {
        work.error = errorOfWork([&] {
            scanner();
            answer = work.finish();
        });
    }
    // What it occupied is free before anybody hears of it.
    work.finish = nullptr;
    if (work.error)
        work.respond.error(*work.error);
    else
        work.respond.result(answer);
}

} // namespace trovek::service
