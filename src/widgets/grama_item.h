#pragma once

#include "trovek-ui/grama.h"

#include "widgets/row_counts.h"

#include <QFrame>
#include <QPointer>

#include <cstddef>

namespace trovek {

class GramaItem::Private
{
public:
    QPointer<Grama> form;
    QPointer<GramaItem> parent;
    /** Null for the root and for a row without a label. */
    std::shared_ptr<GramaLeftContainerWidget> sharedLeft;
    /** The same, as long as it lives: the form may go first and take it along. */
    QPointer<GramaLeftContainerWidget> left;
    QPointer<QWidget> label;
    QPointer<QWidget> field;
    QPointer<QFrame> separator;

    std::vector<std::shared_ptr<GramaItem>> children;
    /** The rows that each child takes in the form, with its line and all that is below it. */
    RowCounts childRows;
    /** The index among the parent's children. */
    std::size_t place = 0;
    /** The index among all items of the form; a parent's is below its children's. */
    std::size_t number = 0;
    /** The ancestors that have a row. */
    int level = 0;

    QStringList searchStrings;
    bool marked = false;
};

} // namespace trovek
