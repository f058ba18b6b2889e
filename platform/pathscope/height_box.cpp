#include "pathscope/height_box.h"

namespace pathscope {

HeightBox::HeightBox(QWidget* parent)
    : QDoubleSpinBox(parent)
{
    setDecimals(2);
    setSuffix(tr(" mm"));
}

QValidator::State HeightBox::validate(QString& input, int& position) const
{
    input.replace(QLatin1Char('.'), locale().decimalPoint());
    return QDoubleSpinBox::validate(input, position);
}

void HeightBox::stepBy(int steps)
{
    emit stepped(steps);
    selectAll();
}

QAbstractSpinBox::StepEnabled HeightBox::stepEnabled() const
{
    return StepUpEnabled | StepDownEnabled;
}

} // namespace pathscope
