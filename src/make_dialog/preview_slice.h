#pragma once

#include <trovek/job.h>

#include <QObject>
#include <QString>

namespace trovek {

class JobWatch;
class TrovekQt;

/**
 * The slice that is made for a preview, from its job to its file; one at a time.
 *
 * Exactly one of sliced(), failed(), canceled() and linkLost() follows watch(), unless cancel() or
 * the end of this object comes before; both ask the service to cancel the job.
 */
class PreviewSlice : public QObject
{
    Q_OBJECT

public:
    /** @param facade not owned; must outlive this */
    explicit PreviewSlice(TrovekQt& facade, QObject* parent = nullptr);
    ~PreviewSlice() override;

    /**
     * An empty file for the service to slice into; that of the last slice goes.
     * @return its absolute path
     * @throws std::runtime_error "Failed to create temporary file"
     */
    QString createFile();
    /** The absolute path of the file, which is the caller's from now on. */
    QString takeFile();
    /** For a file into which nothing will be sliced. */
    void removeFile();

    /** The signals may come before this returns. */
    void watch(Job::ID job);
    bool isRunning() const { return m_running; }
    /** No signal follows. Nothing happens when no slice runs. */
    void cancel();

signals:
    /** @param stage what the service does now; may be empty @param percent 0 to 100 */
    void progressed(const QString& stage, int percent);
    void sliced();
    /** @param reason the service's words for a user; may be empty */
    void failed(const QString& reason);
    /** By somebody else. */
    void canceled();
    void linkLost();

private:
    void showProgress();
    void fail();
    void loseLink();
    bool stop();
    bool giveUp();

    TrovekQt& m_facade;
    JobWatch* const m_watch;
    QString m_file;
    bool m_running = false;
    /** Whether the service knows the job. */
    bool m_known = false;
};

} // namespace trovek
