#include "trovek-ui/push_button.h"

namespace {

constexpr int kTightPadding = 24;

} // namespace

PushButton::PushButton(const QIcon& icon, const QString& text, QWidget* parent)
    : QPushButton(icon, text, parent)
{}

PushButton::PushButton(const QString& text, QWidget* parent)
    : QPushButton(text, parent)
{}

PushButton::PushButton(QWidget* parent)
    : QPushButton(parent)
{}

void PushButton::setTight(bool tight)
{
    if (m_tight == tight)
        return;
    m_tight = tight;
    updateGeometry();
}

QSize PushButton::sizeHint() const
{
    QSize hint = QPushButton::sizeHint();
    if (m_tight)
        hint.setWidth(fontMetrics().size(Qt::TextShowMnemonic, text()).width() + kTightPadding);
    return hint;
}
