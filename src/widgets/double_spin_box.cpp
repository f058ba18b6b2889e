#include "trovek-ui/double_spin_box.h"

#include "widgets/number_text.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QWheelEvent>

DoubleSpinBox::DoubleSpinBox(QWidget* parent)
    : QDoubleSpinBox(parent)
{}

void DoubleSpinBox::stepBy(int steps)
{
    QDoubleSpinBox::stepBy(steps);
    emit triggered(singleStep() * steps);
}

QValidator::State DoubleSpinBox::validate(QString& text, int& position) const
{
    if (text != specialValueText()) {
        text = trovek::withLocalDecimalSign(text, prefix(), suffix(), locale());
        if (trovek::hasGroupSeparator(trovek::numberIn(text, prefix(), suffix()), locale()))
            return QValidator::Invalid;
    }
    return QDoubleSpinBox::validate(text, position);
}

double DoubleSpinBox::valueFromText(const QString& text) const
{
    return QDoubleSpinBox::valueFromText(
        trovek::withLocalDecimalSign(text, prefix(), suffix(), locale()));
}

void DoubleSpinBox::setFocusOnScroll(bool enabled)
{
    m_focusOnScroll = enabled;
    setFocusPolicy(enabled ? Qt::WheelFocus : Qt::StrongFocus);
}

void DoubleSpinBox::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        const QPointer<DoubleSpinBox> self(this);
        emit triggered(valueFromText(text()));
        if (!self)
            return;
    }
    const int length = text().size();
    QDoubleSpinBox::keyPressEvent(event);
    if (key == Qt::Key_Backspace)
        trovek::leaveSuffix(lineEdit(), length, suffix());
}

void DoubleSpinBox::wheelEvent(QWheelEvent* event)
{
    if (m_focusOnScroll)
        QDoubleSpinBox::wheelEvent(event);
    else
        event->ignore();
}
