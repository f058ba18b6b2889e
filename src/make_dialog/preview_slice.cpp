#include "make_dialog/preview_slice.h"

#include "make_dialog/export_files.h"

#include "trovek-ui/job_watch.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QPointer>

#include <exception>
#include <utility>

static constexpr char kLogUnit[] = "src\\make_dialog\\make_thing_dialog";

namespace trovek {

PreviewSlice::PreviewSlice(TrovekQt& facade, QObject* parent)
    : QObject(parent)
    , m_facade(facade)
    , m_watch(new JobWatch(facade, "Slice the file for Print Preview", this))
{
    connect(m_watch, &JobWatch::changed, this, &PreviewSlice::showProgress);
    connect(m_watch, &JobWatch::ended, this, [this] {
        if (stop())
            emit sliced();
    });
    connect(m_watch, &JobWatch::failed, this, &PreviewSlice::fail);
    connect(m_watch, &JobWatch::canceled, this, [this] {
        if (giveUp())
            emit canceled();
    });
    // Others wait for this signal too, so whoever shows a message about it does so later.
    connect(&facade, &TrovekQt::disconnected, this, &PreviewSlice::loseLink, Qt::QueuedConnection);
}

PreviewSlice::~PreviewSlice()
{
    cancel();
    removeFile();
}

QString PreviewSlice::createFile()
{
    removeFile();
    m_file = createServiceOutput(QStringLiteral("slicedFile.gcode"));
    return m_file;
}

QString PreviewSlice::takeFile()
{
    return std::exchange(m_file, QString());
}

// A sliced file is large, and the host removes the managed folders only when it ends.
void PreviewSlice::removeFile()
{
    if (!m_file.isEmpty())
        removeServiceOutput(takeFile());
}

void PreviewSlice::watch(Job::ID job)
{
    m_running = true;
    m_known = false;
    const QPointer<PreviewSlice> self(this);
    // The job may be over already, and then this says so.
    m_watch->setJobID(job);
    if (self.isNull() || !m_running || m_known)
        return;
    if (m_facade.isConnected())
        fail();
    else
        loseLink();
}

void PreviewSlice::cancel()
{
    if (!m_running)
        return;
    m_watch->cancelJob();
    giveUp();
}

void PreviewSlice::showProgress()
{
    m_known = true;
    try {
        const Job job = m_watch->job();
        emit progressed(toQString(job.stage()), job.progress());
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
    }
}

void PreviewSlice::fail()
{
    QString reason;
    try {
        reason = toQString(m_watch->job().failure());
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
    }
    if (!giveUp())
        return;
    TROVEK_LOG(0) << "The slice for the preview failed: " << toStdString(reason) << std::endl;
    emit failed(reason);
}

void PreviewSlice::loseLink()
{
    if (giveUp())
        emit linkLost();
}

/** False when there is nothing to be stopped. */
bool PreviewSlice::stop()
{
    if (!std::exchange(m_running, false))
        return false;
    m_watch->clearJobID();
    return true;
}

bool PreviewSlice::giveUp()
{
    if (!stop())
        return false;
    removeFile();
    return true;
}

} // namespace trovek
