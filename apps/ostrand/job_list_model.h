#pragma once

#include <trovek/job.h>

#include <QAbstractTableModel>
#include <QString>
#include <QTimer>

#include <set>
#include <vector>

namespace trovek {
class TrovekQt;
}

namespace ostrand {

/**
 * The service's jobs in the order in which they came; those that have ended stay until cleared.
 *
 * Short motions (jogs and homings) are left out. Jobs that were running when the link was lost are
 * asked for again when it is back; those that the service no longer knows have failed.
 */
class JobListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column : int {
        NameColumn,
        MachineColumn,
        StageColumn,
        ProgressColumn,
        TimeLeftColumn,
        ColumnCount,
    };

    enum Role : int {
        /** trovek::Job::ID */
        IDRole = Qt::UserRole,
        /** trovek::JobConclusion as int */
        ConclusionRole,
        /** 0 to 100 */
        ProgressRole,
        /** Why it failed; empty otherwise. */
        FailureRole,
    };

    /** @param facade not owned; must outlive the model */
    explicit JobListModel(trovek::TrovekQt& facade, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    /** The row's first column; invalid for a job that is not in the list. */
    QModelIndex indexOf(trovek::Job::ID id) const;
    trovek::JobConclusion conclusion(int row) const;
    /** False for exports and the like, which can simply be started again. */
    bool isPrint(int row) const;
    int runningCount() const;
    int runningPrintCount() const;
    int finishedCount() const;

public slots:
    /** Asks the service to cancel; nothing happens for a job that has ended. */
    void cancel(int row);
    void clearFinished();

signals:
    /** A job came, went or ended. */
    void countsChanged();
    /** Once for each job; it is in the list with its conclusion. */
    void concluded(trovek::Job::ID id);

private:
    struct Row
    {
        trovek::Job::Data job;
        QString machine;
    };

    void jobTouched(trovek::Job::ID id);
    void refreshTouched();
    void refresh(trovek::Job::ID id);
    void update(const trovek::Job& job);
    void markLost(trovek::Job::ID id);
    void linkLost();
    void linkBack();
    int rowOf(trovek::Job::ID id) const;
    bool isRunning(const Row& row) const;
    QString machineText(const trovek::MachineName& machine) const;
    QString endText(const Row& row) const;
    QString stageText(const Row& row) const;
    QString toolTip(const Row& row) const;
    void changed(int row);

    trovek::TrovekQt& m_facade;
    std::vector<Row> m_rows;
    /** Jobs whose news have not been read yet: one question a job answers many notifications. */
    std::set<trovek::Job::ID> m_touched;
    /** Jobs that the user has cleared, or that are not shown. */
    std::set<trovek::Job::ID> m_hidden;
    QTimer m_refreshTimer;
};

/** "1 h 05 min", "12 min", "45 s"; empty for a negative number. */
QString durationText(int seconds);

} // namespace ostrand
