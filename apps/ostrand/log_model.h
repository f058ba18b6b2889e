#pragma once

#include <trovek/log.h>

#include <QAbstractTableModel>

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace ostrand {

/**
 * The newest entries of the process's log, from all threads, in the order in which they came.
 *
 * Entries written between two turns of the event loop arrive together.
 */
class LogModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column : int {
        TimeColumn,
        SeverityColumn,
        UnitColumn,
        MessageColumn,
        ColumnCount,
    };
    enum Role : int {
        /** int, see trovek::Log::Severity */
        SeverityRole = Qt::UserRole,
        /** The whole entry as one line. */
        LineRole,
    };

    /** @param maximum entries that are kept; the oldest go first */
    explicit LogModel(int maximum = 5000, QObject* parent = nullptr);
    ~LogModel() override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

public slots:
    void clear();

private:
    class Sink;
    void take();

    const int m_maximum;
    std::deque<trovek::LogEntry> m_entries;
    const std::shared_ptr<Sink> m_sink;
};

} // namespace ostrand
