#pragma once

#include <vector>

class QLayout;
class QWidget;

namespace trovek {

/**
 * Shows and hides rows of a form, in time that grows with them and no faster.
 *
 * A form that is shown would be laid out anew for every widget; that is put off to the end. And
 * every widget that comes to be shown would ask to be painted, wherever it is: painting compares
 * each that asks with all its siblings. So these may not ask, and the form does for all of them.
 */
class VisibilityChange
{
public:
    /** When a form that is shown is laid out: at the end, or once for all changes until it paints.
     */
    enum LayOut { AtOnce, Later };

    /** @param layout that of the form, whose rows are its widget's children */
    explicit VisibilityChange(QLayout* layout, LayOut layOut = AtOnce);
    ~VisibilityChange();

    VisibilityChange(const VisibilityChange&) = delete;
    VisibilityChange& operator=(const VisibilityChange&) = delete;

    /** Nothing happens for what is null, or shown or hidden already. */
    void set(QWidget* widget, bool shown);

private:
    void silence(QWidget* widget);

    QLayout* const m_layout;
    QWidget* const m_form;
    const LayOut m_layOut;
    std::vector<QWidget*> m_silent;
    bool m_isRunning = false;
};

} // namespace trovek
