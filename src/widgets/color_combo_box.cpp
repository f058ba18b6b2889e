#include "trovek-ui/color_combo_box.h"

#include <QObject>

#include <iterator>

namespace trovek {

namespace {

struct NamedColor
{
    const char* name;
    int red;
    int green;
    int blue;
};

constexpr NamedColor kColors[] = {
    {QT_TRANSLATE_NOOP("QObject", "Orvane True Red"), 192, 30, 52},
    {QT_TRANSLATE_NOOP("QObject", "Orvane True Orange"), 255, 88, 0},
    {QT_TRANSLATE_NOOP("QObject", "Orvane True Yellow"), 249, 223, 121},
    {QT_TRANSLATE_NOOP("QObject", "Orvane True Green"), 0, 149, 48},
    {QT_TRANSLATE_NOOP("QObject", "Orvane True Blue"), 0, 113, 209},
    {QT_TRANSLATE_NOOP("QObject", "Orvane True Purple"), 89, 5, 141},
    {QT_TRANSLATE_NOOP("QObject", "Orvane True Gray"), 140, 140, 140},
    {QT_TRANSLATE_NOOP("QObject", "Orvane True White"), 235, 235, 235},
    {QT_TRANSLATE_NOOP("QObject", "Orvane True Black"), 60, 60, 60},
};
constexpr int kColorCount = static_cast<int>(std::size(kColors));
static_assert(kColorCount == ColorComboBox::UnknownColor);

bool isListed(int color)
{
    return color >= 0 && color < kColorCount;
}

} // namespace

ColorComboBox::ColorComboBox(QWidget* parent)
    : QComboBox(parent)
{
    for (int i = 0; i < kColorCount; ++i) {
        const auto color = static_cast<Color>(i);
        addItem(colorToString(color));
        setItemData(i, colorToQColor(color), Qt::DecorationRole);
    }
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ColorComboBox::indexChanged);
}

ColorComboBox::~ColorComboBox() = default;

ColorComboBox::Color ColorComboBox::color() const
{
    return static_cast<Color>(currentIndex());
}

QColor ColorComboBox::qcolor() const
{
    return colorToQColor(color());
}

QString ColorComboBox::colorToString(Color color)
{
    return isListed(color) ? QObject::tr(kColors[color].name) : QObject::tr("Unknown Color");
}

QColor ColorComboBox::colorToQColor(Color color)
{
    if (!isListed(color))
        return QColor(0, 0, 0);
    const NamedColor& named = kColors[color];
    return QColor(named.red, named.green, named.blue);
}

ColorComboBox::Color ColorComboBox::qcolorToColor(QColor color)
{
    for (int i = 0; i < kColorCount; ++i) {
        if (colorToQColor(static_cast<Color>(i)) == color)
            return static_cast<Color>(i);
    }
    return UnknownColor;
}

void ColorComboBox::indexChanged(int index)
{
    const auto changed = static_cast<Color>(index);
    emit colorChanged(changed);
    emit colorChanged(colorToQColor(changed));
}

void ColorComboBox::selectColor(const QColor& color)
{
    const int row = findData(color, Qt::DecorationRole, Qt::MatchCaseSensitive);
    if (row >= 0)
        setCurrentIndex(row);
}

void ColorComboBox::selectColor(Color color)
{
    selectColor(colorToQColor(color));
}

} // namespace trovek
