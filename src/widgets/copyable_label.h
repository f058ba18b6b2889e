#pragma once

#include "trovek-ui/export.h"

#include <QLabel>

namespace trovek {

/** A label whose text, markup included, is copied to the clipboard by a press of the mouse. */
class TROVEK_UI_EXPORT CopyableLabel : public QLabel
{
public:
    explicit CopyableLabel(const QString& text, QWidget* parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent* event) override;
};

} // namespace trovek
