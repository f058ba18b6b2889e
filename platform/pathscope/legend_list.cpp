#include "pathscope/legend_list.h"

#include "pathscope/toolpath_scene.h"
#include "pathscope/toolpath_texts.h"

#include <QEvent>
#include <QLocale>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>
#include <cmath>

namespace pathscope {
namespace {

constexpr int kMostRows = 12;
constexpr int kFewestRows = 3;
constexpr int kMargin = 3;
constexpr int kSwatch = 12;

enum Role { ShareRole = Qt::UserRole, TimeRole, FilamentRole };

QFont smallFont(const QFont& font)
{
    QFont small = font;
    if (font.pointSizeF() > 0)
        small.setPointSizeF(font.pointSizeF() * 0.88);
    else
        small.setPixelSize(std::max(1, qRound(font.pixelSize() * 0.88)));
    return small;
}

QString shareText(double share)
{
    // A sliver is there, and must not read as nothing.
    if (share > 0 && share < 0.005)
        return LegendList::tr("< 1 %");
    return LegendList::tr("%1 %").arg(QLocale().toString(std::lround(share * 100)));
}

void fill(QListWidgetItem& item, const LegendEntry& entry)
{
    const QString share = shareText(entry.share);
    const QString time = durationText(entry.amount.seconds);
    const QString filament =
        entry.amount.filament > 0 ? filamentText(entry.amount.filament) : QString();
    QStringList words{entry.name, time, filament, LegendList::tr("%1 of the time").arg(share)};
    words.removeAll(QString());
    const QString sentence = words.join(QStringLiteral(", "));
    item.setText(entry.name);
    item.setData(Qt::DecorationRole, entry.colour);
    item.setData(ShareRole, share);
    item.setData(TimeRole, time);
    item.setData(FilamentRole, filament);
    item.setToolTip(Qt::convertFromPlainText(sentence, Qt::WhiteSpaceNormal));
    item.setData(Qt::AccessibleTextRole, sentence);
}

/** Two lines: swatch, name and share; below, smaller, time and filament. */
class EntryDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& /*index*/) const override
    {
        return {100, option.fontMetrics.height() + QFontMetrics(smallFont(option.font)).height() +
                         2 * kMargin};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        painter->save();
        const QRect area = option.rect.adjusted(kMargin, kMargin, -kMargin, -kMargin);
        const int firstLine = option.fontMetrics.height();
        const QRect top(area.left(), area.top(), area.width(), firstLine);
        const QRect bottom(area.left(), area.top() + firstLine, area.width(),
                           area.height() - firstLine);

        QColor text = option.palette.color(QPalette::Text);
        QColor edge = text;
        edge.setAlphaF(0.4);
        painter->setPen(edge);
        painter->setBrush(index.data(Qt::DecorationRole).value<QColor>());
        painter->drawRect(top.left(), top.top() + (firstLine - kSwatch) / 2, kSwatch, kSwatch);

        painter->setFont(option.font);
        painter->setPen(text);
        drawPair(*painter, top.adjusted(kSwatch + 6, 0, 0, 0), option.fontMetrics,
                 index.data().toString(), index.data(ShareRole).toString());
        const QFont small = smallFont(option.font);
        painter->setFont(small);
        text.setAlphaF(0.72);
        painter->setPen(text);
        drawPair(*painter, bottom.adjusted(kSwatch + 6, 0, 0, 0), QFontMetrics(small),
                 index.data(TimeRole).toString(), index.data(FilamentRole).toString());
        painter->restore();
    }

private:
    static void drawPair(QPainter& painter, const QRect& area, const QFontMetrics& metrics,
                         const QString& left, const QString& right)
    {
        const int width = area.width() - metrics.horizontalAdvance(right) - 6;
        painter.drawText(area, int(Qt::AlignLeft | Qt::AlignVCenter),
                         metrics.elidedText(left, Qt::ElideRight, width));
        painter.drawText(area, int(Qt::AlignRight | Qt::AlignVCenter), right);
    }
};

} // namespace

LegendList::LegendList(QWidget* parent)
    : QListWidget(parent)
{
    setItemDelegate(new EntryDelegate(this));
    setSelectionMode(QAbstractItemView::NoSelection);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setUniformItemSizes(true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

void LegendList::setEntries(const std::vector<LegendEntry>& entries)
{
    const int before = count();
    const int wanted = int(entries.size());
    // Rows are used again: whoever reads one, such as a screen reader, does not lose it.
    while (count() > wanted)
        delete takeItem(count() - 1);
    while (count() < wanted)
        (new QListWidgetItem(this))->setFlags(Qt::ItemIsEnabled);
    for (int row = 0; row < wanted; ++row)
        fill(*item(row), entries[std::size_t(row)]);
    if (wanted != before)
        updateGeometry();
}

int LegendList::heightOf(int rows) const
{
    const int row = fontMetrics().height() + QFontMetrics(smallFont(font())).height() + 2 * kMargin;
    return row * rows + 2 * frameWidth();
}

QSize LegendList::sizeHint() const
{
    return {180, heightOf(std::clamp(count(), 1, kMostRows))};
}

QSize LegendList::minimumSizeHint() const
{
    return {120, heightOf(std::clamp(count(), 1, kFewestRows))};
}

void LegendList::changeEvent(QEvent* event)
{
    QListWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateGeometry();
}

} // namespace pathscope
