#pragma once

#include "trovek-ui/export.h"

#include <QColor>
#include <QLabel>

namespace trovek {

/** A small swatch with rounded corners; grey while it is disabled. */
class TROVEK_UI_EXPORT ColorLabel : public QLabel
{
    Q_OBJECT

public:
    /** Black at first. */
    explicit ColorLabel(QWidget* parent = nullptr);
    ~ColorLabel() override;

    QColor color() const { return m_color; }
    void setColor(const QColor& color);

private:
    QColor m_color;
};

} // namespace trovek
