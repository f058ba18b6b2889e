#include "jobs_view.h"

#include "icons.h"
#include "job_list_model.h"
#include "job_progress_delegate.h"

#include <trovek-ui/message_box.h>

#include <trovek/log.h>
#include <trovek/wire.h>

#include <QAction>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include <exception>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\jobs_view";

QToolButton* makeButton(QAction* action, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

} // namespace

JobsView::JobsView(JobListModel& model, QWidget* parent)
    : QWidget(parent)
    , m_model(model)
    , m_list(new QTreeView(this))
    , m_cancel(new QAction(icon("cancel"), tr("&Cancel Job"), this))
    , m_clear(new QAction(icon("clear"), tr("Clear &Finished"), this))
{
    m_list->setObjectName(QStringLiteral("jobs"));
    m_list->setAccessibleName(tr("Jobs"));
    m_list->setModel(&model);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setAlternatingRowColors(true);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->setItemDelegateForColumn(JobListModel::ProgressColumn, new JobProgressDelegate(m_list));
    QHeaderView* header = m_list->header();
    header->setObjectName(QStringLiteral("jobsHeader"));
    header->setStretchLastSection(false);
    header->setSectionsMovable(false);
    header->setSectionResizeMode(JobListModel::StageColumn, QHeaderView::Stretch);
    header->resizeSection(JobListModel::NameColumn, 200);
    header->resizeSection(JobListModel::MachineColumn, 185);
    header->resizeSection(JobListModel::ProgressColumn, 140);
    header->resizeSection(JobListModel::TimeLeftColumn, 90);
    m_list->viewport()->installEventFilter(this);

    m_cancel->setObjectName(QStringLiteral("cancelJob"));
    m_cancel->setShortcut(QKeySequence::Delete);
    m_cancel->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    m_cancel->setToolTip(tr("End the selected job (Del)"));
    m_clear->setObjectName(QStringLiteral("clearFinished"));
    m_clear->setToolTip(tr("Remove the jobs that have ended from the list"));
    addActions({m_cancel, m_clear});

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(makeButton(m_cancel, this));
    buttons->addStretch();
    buttons->addWidget(makeButton(m_clear, this));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(m_list);
    layout->addLayout(buttons);

    connect(m_cancel, &QAction::triggered, this, &JobsView::cancelSelected);
    connect(m_clear, &QAction::triggered, &m_model, &JobListModel::clearFinished);
    connect(m_list, &QTreeView::customContextMenuRequested, this, &JobsView::showMenu);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &JobsView::updateActions);
    connect(&m_model, &QAbstractItemModel::rowsInserted, m_list, &QTreeView::scrollToBottom);
    connect(&m_model, &JobListModel::countsChanged, this, &JobsView::updateActions);
    updateActions();
}

void JobsView::cancelSelected()
{
    const int row = selectedRow();
    if (row < 0)
        return;
    const QPersistentModelIndex job = m_model.index(row, 0);
    const QPointer<JobsView> self(this);
    try {
        const bool confirmed = confirmCancel(row);
        if (self && confirmed && job.isValid())
            m_model.cancel(job.row());
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

bool JobsView::confirmCancel(int row)
{
    if (!m_model.isPrint(row))
        return true;
    const QPointer<trovek::MessageBox> box = new trovek::MessageBox(
        {trovek::MessageBox::Button(tr("&Keep Printing"), 0, 1),
         trovek::MessageBox::Button(tr("&Cancel Print"), 1, 0)},
        tr("Cancel this print?"), tr("A print that was canceled cannot be taken up again."),
        QMessageBox::Question, this);
    box->maybeShowModal();
    if (!box)
        return false;
    box->deleteLater();
    return box->finishCode() == 1;
}

bool JobsView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Paint && m_model.rowCount() == 0) {
        QPainter painter(m_list->viewport());
        painter.setPen(m_list->palette().color(QPalette::Disabled, QPalette::Text));
        painter.drawText(m_list->viewport()->rect(), Qt::AlignCenter,
                         tr("Prints and exports appear here"));
    }
    return QWidget::eventFilter(watched, event);
}

void JobsView::showMenu(const QPoint& position)
{
    QMenu menu(this);
    menu.addActions({m_cancel, m_clear});
    menu.exec(m_list->viewport()->mapToGlobal(position));
}

void JobsView::updateActions()
{
    const int row = selectedRow();
    m_cancel->setEnabled(row >= 0 && m_model.conclusion(row) == trovek::JobNotConcluded);
    m_clear->setEnabled(m_model.finishedCount() > 0);
    m_list->viewport()->update();
}

int JobsView::selectedRow() const
{
    const QModelIndexList rows = m_list->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

} // namespace ostrand
