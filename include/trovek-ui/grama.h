#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/vertical_scroll_area.h"

#include <QAbstractButton>
#include <QStringList>
#include <QWidget>

#include <memory>
#include <vector>

class QHBoxLayout;

namespace trovek {

class Grama;

/**
 * The small arrow before a row's label: pointing down while the row is expanded (checked, as at
 * first), to the right while it is collapsed.
 *
 * Paints nothing and takes no focus until the row has something to collapse. Space toggles it.
 */
class TROVEK_UI_EXPORT GramaCollapseExpandButton : public QAbstractButton
{
    Q_OBJECT

public:
    explicit GramaCollapseExpandButton(QWidget* parent = nullptr);

    /** Whether the row has something to collapse; false at first. */
    bool isCollapsible() const;
    void setCollapsible(bool collapsible);

    /** 24 by 24 pixels. */
    QSize sizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_collapsible = false;
};

/** The left side of a row: the indentation of its level, its arrow and its label. */
class TROVEK_UI_EXPORT GramaLeftContainerWidget : public QWidget
{
    Q_OBJECT

public:
    /**
     * @param label not null; becomes a child of the container
     * @param level 0 for a row at the top, 1 for its children and so on; 12 pixels each
     */
    GramaLeftContainerWidget(QWidget* label, int level, QWidget* parent = nullptr);

    GramaCollapseExpandButton* button() const;

signals:
    /** Emitted when the arrow was toggled: by a click, a key, or a double-click anywhere here. */
    void collapsedOrExpanded();

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    GramaCollapseExpandButton* const m_button;
};

/**
 * One row of a Grama: its widgets, its child rows and the words by which the filter finds it.
 *
 * Made only by Grama::addRow(). A caller may keep it for longer than the form; it then answers
 * null for everything that went with the form.
 */
class TROVEK_UI_EXPORT GramaItem : public QObject
{
    Q_OBJECT

public:
    ~GramaItem() override;

    /** Null when the form is gone. */
    Grama* form() const;
    /** Null for the form's root, which has no row. */
    GramaItem* parentItem() const;
    /** Null for the root and for a row that was added without a label. */
    GramaLeftContainerWidget* leftContainer() const;
    QWidget* label() const;
    QWidget* field() const;
    /** In the order in which they were added: the reverse of the order in which they show. */
    const std::vector<std::shared_ptr<GramaItem>>& children() const;

    /** The texts that Grama::filterByText() looks into; empty at first. */
    QStringList searchStrings() const;
    void setSearchStrings(const QStringList& strings);

    /** Whether the row is one of those that Grama::setShowMarkedOnly() leaves; false at first. */
    bool isMarked() const;
    /** Shows or hides nothing by itself, so that no row goes away under the user's hands. */
    void setMarked(bool marked);

signals:
    /** Emitted after the row was collapsed or expanded. */
    void requestVisibilityUpdate();

private:
    friend class Grama;
    class TROVEK_UI_NO_EXPORT Private;
    GramaItem();

    const std::unique_ptr<Private> d;
};

/**
 * A scrolling form of two columns whose rows form a tree: a row with children collapses and
 * expands, and a filter hides what does not match. After every row stands a line; only those below
 * a row that shows are shown.
 *
 * Rows are never removed. Adding one costs the same however many there are.
 */
class TROVEK_UI_EXPORT Grama : public VerticalScrollArea
{
    Q_OBJECT

public:
    explicit Grama(QWidget* parent = nullptr);
    ~Grama() override;

    /**
     * Adds a row. A row without parent goes to the end of the form; a child goes directly below its
     * parent, above the children that were added before it. The form takes both widgets.
     *
     * @param label  null for a row without one, which can have no children
     * @param field  null for a row without one
     * @param parent an item of this form with a label, or null
     * @return null, with nothing added and "Invalid parent" in the log, when `parent` has no row
     * here
     */
    std::shared_ptr<GramaItem> addRow(QWidget* const label, QWidget* const field,
                                      std::shared_ptr<GramaItem> parent);

    /**
     * A line to type a filter into, with its label, at the right end of the layout returned.
     * The caller owns the layout and places it; the line edit's objectName is "filterEdit".
     */
    QHBoxLayout* createFilterBar();

public slots:
    /**
     * Shows the rows in which, or in whose ancestors, every word is found, whatever their case,
     * with the ancestors of these rows and their descendants. Whether a row is collapsed does not
     * count. Only rows that change are touched.
     */
    void filterByText(const QString& text);
    /** Shows the lines below rows that are shown, and hides the others. */
    void updateSeparatorVisibility();
    /** Filters again, for the last text, leaving only marked rows and their ancestors when set. */
    void setShowMarkedOnly(bool markedOnly);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    friend class GramaItem;
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
