#pragma once

#include "trovek-ui/export.h"

#include <QDoubleSpinBox>

/**
 * A box for numbers with decimals that tells an intended move from a change of its value.
 *
 * In every locale both the point and the comma are decimal signs, and group separators are not
 * taken: "0.16" typed on a German system is 0.16. The value is shown with the locale's own sign.
 */
class TROVEK_UI_EXPORT DoubleSpinBox : public QDoubleSpinBox
{
    Q_OBJECT

public:
    explicit DoubleSpinBox(QWidget* parent = nullptr);

    void stepBy(int steps) override;
    QValidator::State validate(QString& text, int& position) const override;
    double valueFromText(const QString& text) const override;

public slots:
    /** Whether the wheel gives the focus and steps, as at first, or scrolls what is around. */
    void setFocusOnScroll(bool enabled);

signals:
    /**
     * Emitted by every step with the single step times the steps, also where the value stops at a
     * limit, and by Return and Enter with the typed value.
     */
    void triggered(double value);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    bool m_focusOnScroll = true;
};
