#pragma once

#include <QStyledItemDelegate>

namespace ostrand {

/** Draws a job's progress as a bar; a job that did not end well has a greyed one. */
class JobProgressDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace ostrand
