#pragma once

#include "trovek-ui/export.h"

#include <QSpinBox>

/**
 * A box for whole numbers that tells an intended move from a change of its value.
 *
 * Points, commas and group separators are not taken in any locale: "1.000" cannot be pasted, and
 * is seen as "1000" when it is typed.
 */
class TROVEK_UI_EXPORT SpinBox : public QSpinBox
{
    Q_OBJECT

public:
    explicit SpinBox(QWidget* parent = nullptr);

    void stepBy(int steps) override;
    QValidator::State validate(QString& text, int& position) const override;

public slots:
    /** Whether the wheel gives the focus and steps, as at first, or scrolls what is around. */
    void setFocusOnScroll(bool enabled);

signals:
    /**
     * Emitted by every step with the single step times the steps, also where the value stops at a
     * limit, and by Return and Enter with the typed value.
     */
    void triggered(int value);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    bool m_focusOnScroll = true;
};
