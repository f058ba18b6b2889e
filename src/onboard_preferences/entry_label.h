#pragma once

#include <QLabel>

namespace trovek {

/**
 * The label of an entry: bold, with a dot behind the text, while the entry is changed.
 *
 * It always asks for the room that this takes, so that the form stays as it is while one edits.
 */
class EntryLabel : public QLabel
{
public:
    explicit EntryLabel(const QString& text, QWidget* parent = nullptr);

    bool isMarked() const { return m_marked; }
    /** @param toolTip plain text */
    void mark(const QString& toolTip);
    void unmark();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    int markedWidth() const;

    bool m_marked = false;
    mutable int m_markedWidth = -1;
};

} // namespace trovek
