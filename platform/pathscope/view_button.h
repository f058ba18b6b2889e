#pragma once

#include "pathscope/export.h"

#include <QToolButton>

namespace pathscope {

/** A button with the picture of a cube whose face it looks at; drawn in the palette's colours. */
class PATHSCOPE_EXPORT ViewButton : public QToolButton
{
    Q_OBJECT

public:
    /** @param preset a Camera::Preset, or -1 for "fit" */
    explicit ViewButton(int preset, QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const int m_preset;
};

} // namespace pathscope
