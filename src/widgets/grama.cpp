#include "trovek-ui/grama.h"

#include "widgets/grama_item.h"
#include "widgets/tab_order.h"
#include "widgets/visibility_change.h"

#include <trovek/log.h>

#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

#include <utility>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "src\\widgets\\grama";

constexpr int kRightMargin = 9;
constexpr int kHorizontalSpacing = 24;
constexpr int kSeparatorHeight = 20;
/** A row and the line below it. */
constexpr int kRowsOfAnItem = 2;

bool isHiddenByItsOwner(const QWidget* widget)
{
    return widget != nullptr && widget->isHidden() &&
           widget->testAttribute(Qt::WA_WState_ExplicitShowHide);
}

/** Both its form and its item own a container; the one that goes first deletes it. */
std::shared_ptr<GramaLeftContainerWidget> share(GramaLeftContainerWidget* container)
{
    const QPointer<GramaLeftContainerWidget> alive(container);
    return std::shared_ptr<GramaLeftContainerWidget>(
        container, [alive](GramaLeftContainerWidget*) { delete alive.data(); });
}

bool containsWord(const QStringList& texts, const QString& word)
{
    for (const QString& text : texts) {
        if (text.contains(word, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

QFormLayout* makeFormLayout(QWidget* inner)
{
    auto* const layout = new QFormLayout(inner);
    layout->setContentsMargins(0, 0, kRightMargin, 0);
    layout->setVerticalSpacing(0);
    layout->setHorizontalSpacing(kHorizontalSpacing);
    layout->setSizeConstraint(QLayout::SetMinimumSize);
    layout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    // Some styles put labels to the right, where the indentation of the levels could not be seen.
    layout->setLabelAlignment(Qt::AlignLeft);
    return layout;
}

} // namespace

class Grama::Private
{
public:
    explicit Private(Grama* form);

    bool hasRow(const GramaItem& item) const;
    int rowOf(const GramaItem& item) const;
    std::shared_ptr<GramaItem> makeItem(GramaItem& parent, QWidget* label, QWidget* field);
    void insert(const GramaItem& item, int row, VisibilityChange& change);
    void countRow(const GramaItem& item);

    bool isShown(const GramaItem& item) const;
    bool isFirstShownChild(const GramaItem& item) const;
    void judgeSeparator(const GramaItem& item, VisibilityChange& change);
    void judgeSeparatorsAround(const GramaItem& item, VisibilityChange& change);
    void judgeAllSeparators(VisibilityChange& change);

    void showDescendants(const GramaItem& item, bool shown);
    void filter();
    void orderTabs();

    Grama* const q;
    QWidget* const inner;
    QFormLayout* const layout;
    const std::shared_ptr<GramaItem> root;
    /** In the order in which they were added, from the root on: parents before their children. */
    std::vector<GramaItem*> items;
    QString filterText;
    bool markedOnly = false;
    bool tabsInOrder = true;
};

Grama::Private::Private(Grama* form)
    : q(form)
    , inner(new QWidget)
    , layout(makeFormLayout(inner))
    , root(new GramaItem)
    , items{root.get()}
{
    inner->setObjectName(QStringLiteral("rows"));
    root->d->form = form;
    root->d->level = -1;
}

bool Grama::Private::hasRow(const GramaItem& item) const
{
    return item.d->form == q && item.d->left != nullptr && item.d->left->parentWidget() == inner;
}

/** From the tree, as the layout could only be searched. Children stand below their parent, the
 *  last one first; rows at the top stand in their order. */
int Grama::Private::rowOf(const GramaItem& item) const
{
    int row = 0;
    const GramaItem* below = &item;
    for (; below->d->parent != root.get(); below = below->d->parent)
        row += 1 + below->d->parent->d->childRows.after(below->d->place);
    return row + root->d->childRows.before(below->d->place);
}

std::shared_ptr<GramaItem> Grama::Private::makeItem(GramaItem& parent, QWidget* label,
                                                    QWidget* field)
{
    const std::shared_ptr<GramaItem> item(new GramaItem);
    GramaItem::Private& data = *item->d;
    data.form = q;
    data.parent = &parent;
    data.level = parent.d->level + 1;
    data.place = parent.d->children.size();
    data.number = items.size();
    data.label = label;
    data.field = field;
    data.separator = new QFrame(inner);
    data.separator->setFrameStyle(QFrame::HLine | QFrame::Sunken);
    data.separator->setMinimumHeight(kSeparatorHeight);
    if (label != nullptr) {
        data.left = new GramaLeftContainerWidget(label, data.level, inner);
        data.sharedLeft = share(data.left);
        GramaItem* const self = item.get();
        connect(data.left, &GramaLeftContainerWidget::collapsedOrExpanded, self, [this, self] {
            showDescendants(*self, self->d->left->button()->isChecked());
            emit self->requestVisibilityUpdate();
        });
    }
    connect(item.get(), &GramaItem::requestVisibilityUpdate, q, &Grama::updateSeparatorVisibility);
    parent.d->children.push_back(item);
    if (parent.d->left != nullptr)
        parent.d->left->button()->setCollapsible(true);
    items.push_back(item.get());
    return item;
}

void Grama::Private::insert(const GramaItem& item, int row, VisibilityChange& change)
{
    const GramaItem::Private& data = *item.d;
    layout->insertRow(row, data.left, data.field);
    layout->insertRow(row + 1, data.separator);
    // In a form that is shown a new widget is hidden until it is told otherwise.
    change.set(data.left, true);
    if (!isHiddenByItsOwner(data.field))
        change.set(data.field, true);
    tabsInOrder = false;
}

void Grama::Private::countRow(const GramaItem& item)
{
    item.d->parent->d->childRows.append(kRowsOfAnItem);
    for (const GramaItem* block = item.d->parent; block != root.get(); block = block->d->parent)
        block->d->parent->d->childRows.grow(block->d->place, kRowsOfAnItem);
}

bool Grama::Private::isShown(const GramaItem& item) const
{
    return item.d->left != nullptr && !item.d->left->isHidden();
}

/** Whether the row stands right below its parent's, with no line between them. */
bool Grama::Private::isFirstShownChild(const GramaItem& item) const
{
    const GramaItem& parent = *item.d->parent;
    return &parent != root.get() && parent.d->children.back().get() == &item;
}

/**
 * A line shows below a row that shows. The line of a row with children stands below the line of
 * its lowest child; that of a row without is reached from the line above it by the row and those
 * ancestors that stand right above it.
 */
void Grama::Private::judgeSeparator(const GramaItem& item, VisibilityChange& change)
{
    bool needed = false;
    if (item.d->children.empty()) {
        const GramaItem* row = &item;
        needed = isShown(*row);
        while (!needed && isFirstShownChild(*row)) {
            row = row->d->parent;
            needed = isShown(*row);
        }
    }
    change.set(item.d->separator, needed);
}

/** Judges the lines that a new row changes: its own, its parent's, and the one that the row which
 *  stood below the parent so far led to. */
void Grama::Private::judgeSeparatorsAround(const GramaItem& item, VisibilityChange& change)
{
    judgeSeparator(item, change);
    const GramaItem& parent = *item.d->parent;
    if (&parent == root.get())
        return;
    const auto& siblings = parent.d->children;
    if (siblings.size() == 1) {
        judgeSeparator(parent, change);
        return;
    }
    const GramaItem* next = siblings[siblings.size() - 2].get();
    if (isShown(*next))
        return;
    while (!next->d->children.empty())
        next = next->d->children.back().get();
    judgeSeparator(*next, change);
}

void Grama::Private::judgeAllSeparators(VisibilityChange& change)
{
    bool rowShown = false;
    for (int row = 0; row < layout->rowCount(); ++row) {
        if (QLayoutItem* line = layout->itemAt(row, QFormLayout::SpanningRole)) {
            change.set(line->widget(), rowShown);
            rowShown = false;
        } else if (QLayoutItem* label = layout->itemAt(row, QFormLayout::LabelRole)) {
            rowShown = rowShown || !label->widget()->isHidden();
        }
    }
}

void Grama::Private::showDescendants(const GramaItem& item, bool shown)
{
    VisibilityChange change(layout);
    std::vector<const GramaItem*> rest{&item};
    while (!rest.empty()) {
        const GramaItem& parent = *rest.back();
        rest.pop_back();
        for (const std::shared_ptr<GramaItem>& child : parent.d->children) {
            change.set(child->d->left, shown);
            change.set(child->d->field, shown);
            rest.push_back(child.get());
        }
    }
}

void Grama::Private::filter()
{
    struct Verdict
    {
        /** The words that neither the row nor an ancestor has; without any the row matches. */
        QStringList missing;
        bool hasShownChild = false;
    };
    std::vector<Verdict> verdicts(items.size());
    const QStringList words = filterText.simplified().split(QLatin1Char(' '));
    for (const GramaItem* item : items) {
        const GramaItem* parent = item->d->parent;
        QStringList& missing = verdicts[item->d->number].missing;
        missing = parent != nullptr ? verdicts[parent->d->number].missing : words;
        for (int i = missing.size() - 1; i >= 0; --i) {
            if (containsWord(item->d->searchStrings, qAsConst(missing)[i]))
                missing.removeAt(i);
        }
    }

    VisibilityChange change(layout);
    for (std::size_t number = items.size() - 1; number > 0; --number) {
        const GramaItem& item = *items[number];
        const Verdict& verdict = verdicts[number];
        const bool matches = verdict.missing.isEmpty() && (item.d->marked || !markedOnly);
        const bool shown = matches || verdict.hasShownChild;
        change.set(item.d->left, shown);
        change.set(item.d->field, shown);
        if (shown)
            verdicts[item.d->parent->d->number].hasShownChild = true;
    }
    judgeAllSeparators(change);
}

void Grama::Private::orderTabs()
{
    if (!std::exchange(tabsInOrder, true))
        orderTabStops(*layout, q);
}

Grama::Grama(QWidget* parent)
    : VerticalScrollArea(parent)
    , d(new Private(this))
{
    setWidget(d->inner);
}

Grama::~Grama()
{
    // Before the items: with the form and its layout gone, nothing is taken out of them one by one.
    delete widget();
}

std::shared_ptr<GramaItem> Grama::addRow(QWidget* const label, QWidget* const field,
                                         std::shared_ptr<GramaItem> parent)
{
    if (parent && !d->hasRow(*parent)) {
        TROVEK_LOG(0) << "Invalid parent" << std::endl;
        return nullptr;
    }
    const int row = parent ? d->rowOf(*parent) + 1 : d->layout->rowCount();
    const std::shared_ptr<GramaItem> item = d->makeItem(parent ? *parent : *d->root, label, field);
    // Rows come in bunches: a form that was laid out for each would take the square of their
    // number.
    VisibilityChange change(d->layout, VisibilityChange::Later);
    d->insert(*item, row, change);
    d->countRow(*item);
    d->judgeSeparatorsAround(*item, change);
    return item;
}

QHBoxLayout* Grama::createFilterBar()
{
    auto* const label = new QLabel(tr("&Filter:"));
    auto* const edit = new QLineEdit;
    edit->setObjectName(QStringLiteral("filterEdit"));
    label->setBuddy(edit);
    connect(edit, SIGNAL(textEdited(const QString&)), this, SLOT(filterByText(const QString&)));
    auto* const bar = new QHBoxLayout;
    bar->addStretch(1);
    bar->addWidget(label, 0, Qt::AlignRight);
    bar->addWidget(edit, 0, Qt::AlignRight);
    return bar;
}

void Grama::filterByText(const QString& text)
{
    d->filterText = text;
    d->filter();
}

void Grama::setShowMarkedOnly(bool markedOnly)
{
    d->markedOnly = markedOnly;
    d->filter();
}

void Grama::updateSeparatorVisibility()
{
    VisibilityChange change(d->layout);
    d->judgeAllSeparators(change);
}

bool Grama::eventFilter(QObject* watched, QEvent* event)
{
    // Rows come in bunches; one request stands for all that came since the last.
    if (watched == d->inner && event->type() == QEvent::LayoutRequest)
        d->orderTabs();
    return VerticalScrollArea::eventFilter(watched, event);
}

bool Grama::focusNextPrevChild(bool next)
{
    d->orderTabs();
    return VerticalScrollArea::focusNextPrevChild(next);
}

} // namespace trovek
