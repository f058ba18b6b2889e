#include "log_model.h"

#include <trovek/text.h>

#include <QDateTime>
#include <QMetaObject>

#include <algorithm>
#include <iterator>

namespace ostrand {

/** Collects entries on whatever thread they are written and calls the model once for many. */
class LogModel::Sink : public trovek::LogSink
{
public:
    explicit Sink(LogModel& model)
        : m_model(&model)
    {}

    void write(const trovek::LogEntry& entry) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_model)
            return;
        m_waiting.push_back(entry);
        // A model that is not read any more (a thread that hangs) must not eat up the memory.
        if (m_waiting.size() > static_cast<std::size_t>(m_model->m_maximum))
            m_waiting.pop_front();
        if (m_waiting.size() > 1)
            return;
        LogModel* model = m_model;
        QMetaObject::invokeMethod(
            model, [model] { model->take(); }, Qt::QueuedConnection);
    }

    std::deque<trovek::LogEntry> takeWaiting()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::deque<trovek::LogEntry> waiting;
        waiting.swap(m_waiting);
        return waiting;
    }

    void forgetModel()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_model = nullptr;
    }

private:
    std::mutex m_mutex;
    LogModel* m_model;
    std::deque<trovek::LogEntry> m_waiting;
};

LogModel::LogModel(int maximum, QObject* parent)
    : QAbstractTableModel(parent)
    , m_maximum(std::max(1, maximum))
    , m_sink(std::make_shared<Sink>(*this))
{
    trovek::addLogSink(m_sink);
}

LogModel::~LogModel()
{
    m_sink->forgetModel();
    trovek::removeLogSink(m_sink);
}

int LogModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

int LogModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LogModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return QVariant();
    const trovek::LogEntry& entry = m_entries[static_cast<std::size_t>(index.row())];
    if (role == SeverityRole)
        return entry.severity;
    if (role == LineRole)
        return trovek::toQString(trovek::formatLogEntry(entry));
    if (role != Qt::DisplayRole)
        return QVariant();
    switch (index.column()) {
    case TimeColumn:
        return QDateTime::fromSecsSinceEpoch(entry.time).toString(QStringLiteral("HH:mm:ss"));
    case SeverityColumn:
        return entry.severity <= 0   ? tr("Error")
               : entry.severity == 1 ? tr("Progress")
                                     : tr("Detail");
    case UnitColumn:
        return trovek::toQString(entry.file);
    case MessageColumn:
        return trovek::toQString(entry.message).replace(QLatin1Char('\n'), QChar(0x21B5));
    default:
        return QVariant();
    }
}

QVariant LogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case TimeColumn:
        return tr("Time");
    case SeverityColumn:
        return tr("Kind");
    case UnitColumn:
        return tr("Source");
    case MessageColumn:
        return tr("Message");
    default:
        return QVariant();
    }
}

void LogModel::clear()
{
    beginResetModel();
    m_entries.clear();
    endResetModel();
}

void LogModel::take()
{
    const std::deque<trovek::LogEntry> entries = m_sink->takeWaiting();
    if (entries.empty())
        return;
    const int surplus = rowCount() + static_cast<int>(entries.size()) - m_maximum;
    if (surplus > 0 && rowCount() > 0) {
        const int removed = std::min(surplus, rowCount());
        beginRemoveRows(QModelIndex(), 0, removed - 1);
        m_entries.erase(m_entries.begin(), m_entries.begin() + removed);
        endRemoveRows();
    }
    beginInsertRows(QModelIndex(), rowCount(), rowCount() + static_cast<int>(entries.size()) - 1);
    std::copy(entries.begin(), entries.end(), std::back_inserter(m_entries));
    endInsertRows();
}

} // namespace ostrand
