#pragma once

#include "trovek-ui/vertical_scroll_area.h"

namespace trovek {

/**
 * The page of a dialog: as large as its content, which scrolls once the dialog would be higher than
 * the screen.
 *
 * It is an item of the column that is the window's layout. Its width has room for the scroll bar
 * whether there is one or not, so that nothing moves sideways when the content grows.
 */
class FittingScrollArea : public VerticalScrollArea
{
public:
    explicit FittingScrollArea(QWidget* parent = nullptr);
    ~FittingScrollArea() override;

    QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    int roomOnScreen() const;
    void followScreen();
    void showFocus(const QWidget* focused);

    /** The most that fits, in pixels; 0 until somebody asks. */
    mutable int m_maximumHeight = 0;
};

} // namespace trovek
