#include "trovek-ui/export_job_mover.h"

#include "trovek-ui/messages.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <exception>
#include <stdexcept>
#include <utility>

static constexpr char kLogUnit[] = "src\\make_dialog\\export_job_mover";

namespace trovek {

struct ExportJobMover::Export
{
    /** Open for writing while the job runs. */
    QFile destination;
    QString source;
};

ExportJobMover& ExportJobMover::instance(TrovekQt& facade)
{
    // On the heap, since exports may conclude until the very end of the process.
    static auto* const mover = new ExportJobMover(facade);
    return *mover;
}

ExportJobMover::ExportJobMover(TrovekQt& facade, QObject* parent)
    : QObject(parent)
    , m_facade(&facade)
{
    connect(m_facade, &TrovekQt::jobConcluded, this, &ExportJobMover::jobConcluded);
}

ExportJobMover::~ExportJobMover() = default;

void ExportJobMover::addExport(int jobID, const QString& destination, const QString& source)
{
    if (!QFileInfo(destination).absoluteDir().exists())
        throw std::runtime_error("Destination directory does not exist");

    auto added = std::make_unique<Export>();
    added->destination.setFileName(destination);
    added->source = source;
    if (added->destination.exists())
        added->destination.remove();
    if (!added->destination.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw std::runtime_error("Failed to open export file for writing");
    m_exports[jobID] = std::move(added);
}

QStringList ExportJobMover::unfinishedExports() const
{
    QStringList destinations;
    for (const auto& [jobID, unfinished] : m_exports)
        destinations.append(unfinished->destination.fileName());
    return destinations;
}

std::map<int, QString> ExportJobMover::pendingExports() const
{
    std::map<int, QString> pending;
    for (const auto& [jobID, unfinished] : m_exports)
        pending[jobID] = unfinished->destination.fileName();
    return pending;
}

void ExportJobMover::jobConcluded(const int jobID)
{
    try {
        conclude(jobID);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
    }
}

void ExportJobMover::conclude(int jobID)
{
    const auto found = m_exports.find(jobID);
    if (found == m_exports.end())
        return;
    TROVEK_LOG(1) << "job id=" << jobID << std::endl;
    TROVEK_LOG(1) << "srcPath=" << toStdString(found->second->source)
                  << "\ndstFile=" << toStdString(found->second->destination.fileName())
                  << std::endl;

    const JobConclusion conclusion = m_facade->jobFromID(jobID).conclusion();

    // Out of the map before a message runs the event loop, in which other jobs conclude.
    std::unique_ptr<Export> finished = std::move(found->second);
    m_exports.erase(found);

    if (conclusion == JobFailed || conclusion == JobCanceled) {
        TROVEK_LOG(1) << "Export job failed, deleting output file" << std::endl;
        finished->destination.close();
        finished->destination.remove();
        return;
    }

    const QString failure = fill(*finished);
    // Closed before the message, so that the user can do with the file what he likes while reading.
    finished.reset();
    if (!failure.isEmpty()) {
        TROVEK_LOG(0) << toStdString(failure) << std::endl;
        message::ExportJobMoverFailed notice(nullptr);
        notice.exec();
        // Without a parent nobody else does.
        delete notice.box();
    }
}

QString ExportJobMover::fill(Export& finished)
{
    QFile& destination = finished.destination;
    if (!destination.exists()) {
        TROVEK_LOG(1) << "Destination file does not exist" << std::endl;
        destination.close();
        if (!destination.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return QStringLiteral("Failed to re-open file for writing");
        TROVEK_LOG(1) << "Successfully reopened" << std::endl;
    }
    return copy(finished.source, destination);
}

QString ExportJobMover::copy(const QString& source, QFile& destination)
{
    QFile input(source);
    if (!input.exists())
        return tr("%1 does not exist").arg(source);
    const qint64 size = input.size();
    if (!input.open(QIODevice::ReadOnly))
        return tr("Failed to open %1 for reading").arg(source);

    const QByteArray bytes = input.read(size);
    if (bytes.size() != size)
        return tr("Failed to read all %1 bytes from %2").arg(QString::number(size), source);

    // What a write leaves in the buffer may still not fit on the disk.
    if (destination.write(bytes) != size || !destination.flush())
        return tr("Failed to copy all data from %1 to %2").arg(source, destination.fileName());
    return {};
}

} // namespace trovek
