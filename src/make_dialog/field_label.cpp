#include "make_dialog/field_label.h"

namespace trovek {

namespace {

const QLatin1String kStar(" *");

} // namespace

FieldLabel::FieldLabel(const QString& name, QWidget* parent)
    : QLabel(name, parent)
    , m_name(name)
{}

void FieldLabel::setName(const QString& name)
{
    m_name = name;
    showText();
}

void FieldLabel::setMark(const QString& toolTip)
{
    if (toolTip == this->toolTip())
        return;
    setToolTip(toolTip);
    showText();
}

QSize FieldLabel::sizeHint() const
{
    return withRoomForStar(QLabel::sizeHint());
}

QSize FieldLabel::minimumSizeHint() const
{
    return withRoomForStar(QLabel::minimumSizeHint());
}

void FieldLabel::showText()
{
    setText(isMarked() ? m_name + kStar : m_name);
}

QSize FieldLabel::withRoomForStar(QSize hint) const
{
    // The label itself rounds otherwise.
    constexpr int kSlack = 2;
    const QSize marked = fontMetrics().size(Qt::TextShowMnemonic, m_name + kStar);
    return hint.expandedTo({marked.width() + kSlack, 0});
}

} // namespace trovek
