#pragma once

#include "trovek-ui/export.h"

#include <QScrollArea>

namespace trovek {

/** Scrolls up and down only, and is never narrower than its content and the scroll bar. */
class TROVEK_UI_EXPORT VerticalScrollArea : public QScrollArea
{
public:
    explicit VerticalScrollArea(QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;
};

} // namespace trovek
