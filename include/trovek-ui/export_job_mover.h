#pragma once

#include "trovek-ui/export.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>

class QFile;

namespace trovek {

class TrovekQt;

/**
 * Brings the result of each export from where the service may write to where the user wants it.
 *
 * The destination is created, empty, when an export is added, so that a place that cannot be
 * written shows at once; it is filled when the job ends and removed when the job fails or is
 * canceled. A job that never concludes, as when the link is lost, keeps its record and its empty
 * destination. The source files are left alone. GUI thread only.
 */
class TROVEK_UI_EXPORT ExportJobMover : public QObject
{
    Q_OBJECT

public:
    /** The one of the process, made for the facade of the first call and never destroyed. */
    static ExportJobMover& instance(TrovekQt& facade);

    /** @param facade not owned; must outlive the mover's jobs */
    explicit ExportJobMover(TrovekQt& facade, QObject* parent = nullptr);
    ~ExportJobMover() override;

    /**
     * Follows a job that the service has just accepted; an earlier record of the same job is
     * dropped. A file that stands at the destination is removed.
     * @param source what the service writes
     * @throws std::runtime_error "Destination directory does not exist"
     * @throws std::runtime_error "Failed to open export file for writing"
     */
    void addExport(int jobID, const QString& destination, const QString& source);

    /** Destinations of the jobs that have not concluded, in the order of the jobs' IDs. */
    QStringList unfinishedExports() const;
    /** The same by job ID, for who wants to ask the service about them. */
    std::map<int, QString> pendingExports() const;

    /**
     * Copies a whole file into one that is open for writing.
     * @return why it failed, translated; empty when every byte is written
     */
    static QString copy(const QString& source, QFile& destination);

private slots:
    void jobConcluded(const int jobID);

private:
    struct Export;

    void conclude(int jobID);
    static QString fill(Export& finished);

    TrovekQt* const m_facade;
    std::map<int, std::unique_ptr<Export>> m_exports;
};

} // namespace trovek
