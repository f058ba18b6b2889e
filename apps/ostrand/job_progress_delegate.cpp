#include "job_progress_delegate.h"

#include "job_list_model.h"

#include <QApplication>
#include <QStyleOptionProgressBar>

#include <algorithm>

namespace ostrand {

void JobProgressDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                const QModelIndex& index) const
{
    QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);

    QStyleOptionProgressBar bar;
    bar.rect = option.rect.adjusted(4, 3, -4, -3);
    bar.palette = option.palette;
    bar.fontMetrics = option.fontMetrics;
    bar.direction = option.direction;
    bar.minimum = 0;
    bar.maximum = 100;
    bar.progress = index.data(JobListModel::ProgressRole).toInt();
    bar.text = index.data(Qt::DisplayRole).toString();
    bar.textVisible = true;
    bar.textAlignment = Qt::AlignCenter;
    bar.state = QStyle::State_Horizontal;
    const int conclusion = index.data(JobListModel::ConclusionRole).toInt();
    if (conclusion == trovek::JobFailed || conclusion == trovek::JobCanceled)
        bar.palette.setCurrentColorGroup(QPalette::Disabled);
    else
        bar.state |= QStyle::State_Enabled;
    style->drawControl(QStyle::CE_ProgressBar, &bar, painter, option.widget);
}

QSize JobProgressDelegate::sizeHint(const QStyleOptionViewItem& option,
                                    const QModelIndex& index) const
{
    const QSize base = QStyledItemDelegate::sizeHint(option, index);
    return QSize(std::max(base.width(), 140), option.fontMetrics.height() + 14);
}

} // namespace ostrand
