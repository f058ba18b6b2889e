#include "trovek-ui/spin_box.h"

#include "widgets/number_text.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QWheelEvent>

SpinBox::SpinBox(QWidget* parent)
    : QSpinBox(parent)
{}

void SpinBox::stepBy(int steps)
{
    QSpinBox::stepBy(steps);
    emit triggered(singleStep() * steps);
}

QValidator::State SpinBox::validate(QString& text, int& position) const
{
    if (text != specialValueText()) {
        const QStringRef number = trovek::numberIn(text, prefix(), suffix());
        if (trovek::hasSeparator(number, locale()))
            return QValidator::Invalid;
    }
    return QSpinBox::validate(text, position);
}

void SpinBox::setFocusOnScroll(bool enabled)
{
    m_focusOnScroll = enabled;
    setFocusPolicy(enabled ? Qt::WheelFocus : Qt::StrongFocus);
}

void SpinBox::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        const QPointer<SpinBox> self(this);
        emit triggered(valueFromText(text()));
        if (!self)
            return;
    }
    const int length = text().size();
    QSpinBox::keyPressEvent(event);
    if (key == Qt::Key_Backspace)
        trovek::leaveSuffix(lineEdit(), length, suffix());
}

void SpinBox::wheelEvent(QWheelEvent* event)
{
    if (m_focusOnScroll)
        QSpinBox::wheelEvent(event);
    else
        event->ignore();
}
