#pragma once

#include "pathscope/export.h"

#include <QDoubleSpinBox>

namespace pathscope {

/**
 * Shows the height of a layer and takes one in millimetres: valueChanged() comes for what is typed.
 *
 * Takes a point for the decimals in every language, as people have it from other programs.
 * A step goes to the next layer wherever that lies, so the box leaves it to its user.
 */
class PATHSCOPE_EXPORT HeightBox : public QDoubleSpinBox
{
    Q_OBJECT

public:
    explicit HeightBox(QWidget* parent = nullptr);

    void stepBy(int steps) override;
    QValidator::State validate(QString& input, int& position) const override;

signals:
    /** An arrow, a key or the wheel; the value is still the same. */
    void stepped(int steps);

protected:
    StepEnabled stepEnabled() const override;
};

} // namespace pathscope
