#pragma once

#include <QFrame>
#include <QStyle>

class QLabel;

namespace ostrand {

/** A message across the window that waits until it is closed and stops nobody. */
class NoticeBar : public QFrame
{
    Q_OBJECT

public:
    explicit NoticeBar(QWidget* parent = nullptr);

    /**
     * Replaces what is shown. Plain text; line breaks count.
     * @param picture a standard picture such as QStyle::SP_MessageBoxWarning
     */
    void showNotice(QStyle::StandardPixmap picture, const QString& heading, const QString& text);
    QString heading() const;
    QString text() const;

private:
    QLabel* const m_picture;
    QLabel* const m_heading;
    QLabel* const m_text;
};

} // namespace ostrand
