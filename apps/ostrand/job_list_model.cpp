#include "job_list_model.h"

#include "icons.h"
#include "unknown_job.h"

#include <trovek-ui/trovekqt.h>

#include <trovek/log.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <algorithm>
#include <exception>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\job_list_model";

bool isExport(const std::string& kind)
{
    return kind == trovek::wire::method::kPrintToFile || kind == trovek::wire::method::kSlice;
}

bool isShortMotion(const trovek::Job& job)
{
    return job.kind() == trovek::wire::method::kJog || job.kind() == trovek::wire::method::kHome;
}

} // namespace

QString durationText(int seconds)
{
    if (seconds < 0)
        return QString();
    if (seconds < 60)
        return JobListModel::tr("%1 s").arg(seconds);
    const int minutes = (seconds + 30) / 60;
    if (minutes < 60)
        return JobListModel::tr("%1 min").arg(minutes);
    return JobListModel::tr("%1 h %2 min")
        .arg(minutes / 60)
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}

JobListModel::JobListModel(trovek::TrovekQt& facade, QObject* parent)
    : QAbstractTableModel(parent)
    , m_facade(facade)
{
    m_refreshTimer.setSingleShot(true);
    m_refreshTimer.setInterval(0);
    connect(&m_refreshTimer, &QTimer::timeout, this, &JobListModel::refreshTouched);
    connect(&m_facade, &trovek::TrovekQt::jobAdded, this, &JobListModel::jobTouched);
    connect(&m_facade, &trovek::TrovekQt::jobChanged, this, &JobListModel::jobTouched);
    connect(&m_facade, &trovek::TrovekQt::jobConcluded, this, &JobListModel::jobTouched);
    connect(&m_facade, &trovek::TrovekQt::disconnected, this, &JobListModel::linkLost);
    connect(&m_facade, &trovek::TrovekQt::connected, this, &JobListModel::linkBack);
}

int JobListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int JobListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant JobListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return QVariant();
    const Row& row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case IDRole:
        return row.job.id;
    case ConclusionRole:
        return static_cast<int>(row.job.conclusion);
    case ProgressRole:
        return row.job.conclusion == trovek::JobEnded ? 100 : row.job.progress;
    case FailureRole:
        return trovek::toQString(row.job.failure);
    case Qt::ToolTipRole:
        return toolTip(row);
    case Qt::TextAlignmentRole:
        return static_cast<int>(
            (index.column() == TimeLeftColumn ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    case Qt::DecorationRole:
        if (index.column() != NameColumn)
            return QVariant();
        return icon(isExport(row.job.kind) ? "save" : "make");
    case Qt::DisplayRole:
        break;
    default:
        return QVariant();
    }
    switch (index.column()) {
    case NameColumn:
        return trovek::toQString(row.job.name);
    case MachineColumn:
        return row.machine;
    case StageColumn:
        return stageText(row);
    case ProgressColumn:
        // Also what a screen reader reads; the delegate draws a bar.
        return tr("%1%").arg(index.data(ProgressRole).toInt());
    case TimeLeftColumn:
        return isRunning(row) ? durationText(row.job.secondsLeft) : QString();
    default:
        return QVariant();
    }
}

QVariant JobListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return QVariant();
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>((section == TimeLeftColumn ? Qt::AlignRight : Qt::AlignLeft) |
                                Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case NameColumn:
        return tr("Job");
    case MachineColumn:
        return tr("Machine");
    case StageColumn:
        return tr("Stage");
    case ProgressColumn:
        return tr("Progress");
    case TimeLeftColumn:
        return tr("Time left");
    default:
        return QVariant();
    }
}

QModelIndex JobListModel::indexOf(trovek::Job::ID id) const
{
    const int row = rowOf(id);
    return row < 0 ? QModelIndex() : index(row, NameColumn);
}

trovek::JobConclusion JobListModel::conclusion(int row) const
{
    return m_rows.at(static_cast<std::size_t>(row)).job.conclusion;
}

bool JobListModel::isPrint(int row) const
{
    return m_rows.at(static_cast<std::size_t>(row)).job.kind == trovek::wire::method::kPrint;
}

int JobListModel::runningCount() const
{
    return static_cast<int>(std::count_if(m_rows.begin(), m_rows.end(),
                                          [this](const Row& row) { return isRunning(row); }));
}

int JobListModel::runningPrintCount() const
{
    int count = 0;
    for (int row = 0; row < rowCount(); ++row)
        count += isPrint(row) && isRunning(m_rows[static_cast<std::size_t>(row)]) ? 1 : 0;
    return count;
}

int JobListModel::finishedCount() const
{
    return rowCount() - runningCount();
}

void JobListModel::cancel(int row)
{
    if (row < 0 || row >= rowCount() || !isRunning(m_rows[static_cast<std::size_t>(row)]))
        return;
    try {
        m_facade.cancelJob(m_rows[static_cast<std::size_t>(row)].job.id);
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

void JobListModel::clearFinished()
{
    for (int row = rowCount() - 1; row >= 0; --row) {
        const Row& ended = m_rows[static_cast<std::size_t>(row)];
        if (isRunning(ended))
            continue;
        beginRemoveRows(QModelIndex(), row, row);
        m_hidden.insert(ended.job.id);
        m_rows.erase(m_rows.begin() + row);
        endRemoveRows();
    }
    emit countsChanged();
}

void JobListModel::jobTouched(trovek::Job::ID id)
{
    if (m_hidden.count(id) > 0)
        return;
    m_touched.insert(id);
    m_refreshTimer.start();
}

void JobListModel::refreshTouched()
{
    std::set<trovek::Job::ID> touched;
    touched.swap(m_touched);
    for (const trovek::Job::ID id : touched)
        refresh(id);
}

void JobListModel::refresh(trovek::Job::ID id)
{
    const int row = rowOf(id);
    if (row >= 0 && !isRunning(m_rows[static_cast<std::size_t>(row)]))
        return;
    // Without a link the answer comes with the next one.
    if (!m_facade.isConnected())
        return;
    try {
        update(m_facade.jobFromID(id));
    } catch (const JsonRpcException& e) {
        TROVEK_LOG(1) << "Job " << id << ": " << e.message() << std::endl;
        if (saysUnknownJob(e))
            markLost(id);
    } catch (const std::exception& e) {
        TROVEK_LOG(1) << "Job " << id << ": " << e.what() << std::endl;
    }
}

void JobListModel::update(const trovek::Job& job)
{
    if (isShortMotion(job)) {
        m_hidden.insert(job.id());
        return;
    }
    int row = rowOf(job.id());
    const bool isNew = row < 0;
    if (isNew) {
        row = rowCount();
        beginInsertRows(QModelIndex(), row, row);
        m_rows.emplace_back();
        m_rows.back().job.id = job.id();
        m_rows.back().machine = machineText(job.machine());
    }
    Row& target = m_rows[static_cast<std::size_t>(row)];
    target.job.name = job.name();
    target.job.kind = job.kind();
    target.job.machine = job.machine();
    target.job.conclusion = job.conclusion();
    target.job.progress = std::clamp(job.progress(), 0, 100);
    target.job.stage = job.stage();
    target.job.failure = job.failure();
    target.job.secondsLeft = job.secondsLeft();
    const bool hasConcluded = !isRunning(target);
    if (isNew)
        endInsertRows();
    else
        changed(row);
    if (isNew || hasConcluded)
        emit countsChanged();
    if (hasConcluded)
        emit concluded(job.id());
}

void JobListModel::markLost(trovek::Job::ID id)
{
    const int row = rowOf(id);
    if (row < 0)
        return;
    Row& lost = m_rows[static_cast<std::size_t>(row)];
    lost.job.conclusion = trovek::JobFailed;
    lost.job.failure =
        trovek::toStdString(tr("The background service was restarted and has lost this job."));
    changed(row);
    emit countsChanged();
    emit concluded(id);
}

void JobListModel::linkLost()
{
    m_touched.clear();
    if (!m_rows.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

void JobListModel::linkBack()
{
    for (const Row& row : m_rows) {
        if (isRunning(row))
            jobTouched(row.job.id);
    }
}

int JobListModel::rowOf(trovek::Job::ID id) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(),
                                  [id](const Row& candidate) { return candidate.job.id == id; });
    return row == m_rows.end() ? -1 : static_cast<int>(row - m_rows.begin());
}

bool JobListModel::isRunning(const Row& row) const
{
    return row.job.conclusion != trovek::JobEnded && row.job.conclusion != trovek::JobFailed &&
           row.job.conclusion != trovek::JobCanceled;
}

QString JobListModel::machineText(const trovek::MachineName& machine) const
{
    const trovek::Printer* printer = m_facade.printerFromKey(machine);
    if (printer && !printer->displayName().empty())
        return trovek::toQString(printer->displayName());
    return trovek::toQString(machine.name());
}

QString JobListModel::endText(const Row& row) const
{
    if (row.job.kind == trovek::wire::method::kPrint)
        return tr("Printed");
    return isExport(row.job.kind) ? tr("Exported") : tr("Finished");
}

QString JobListModel::stageText(const Row& row) const
{
    switch (row.job.conclusion) {
    case trovek::JobEnded:
        return endText(row);
    case trovek::JobFailed:
        return row.job.failure.empty() ? tr("Failed")
                                       : tr("Failed: %1").arg(trovek::toQString(row.job.failure));
    case trovek::JobCanceled:
        return tr("Canceled");
    case trovek::JobNotConcluded:
        break;
    }
    if (!m_facade.isConnected())
        return tr("Unknown: no connection");
    return row.job.stage.empty() ? tr("Waiting") : trovek::toQString(row.job.stage);
}

QString JobListModel::toolTip(const Row& row) const
{
    // Names and failures come from outside: never rich text.
    const QString text = row.job.failure.empty() ? trovek::toQString(row.job.name)
                                                 : trovek::toQString(row.job.failure);
    return text.toHtmlEscaped().prepend(QStringLiteral("<span>")).append(QStringLiteral("</span>"));
}

void JobListModel::changed(int row)
{
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

} // namespace ostrand
