#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace ostrand {

/** What is told of an open file and the button that makes it; the subclass lays it out. */
class FilePage : public QWidget
{
    Q_OBJECT

public:
    /** Shows the file with what the disk says of it now. */
    virtual void showFile(const QString& path);
    void focusMakeButton();

signals:
    void makeRequested();

protected:
    explicit FilePage(QWidget* parent);

    QLabel* const m_picture;
    QLabel* const m_name;
    QLabel* const m_folder;
    QLabel* const m_kind;
    QLabel* const m_size;
    QLabel* const m_modified;
    QLabel* const m_remark;
    QPushButton* const m_make;
};

/** The page of a file that has no picture of its own: large, in the middle. */
class DetailsPage : public FilePage
{
    Q_OBJECT

public:
    explicit DetailsPage(QWidget* parent = nullptr);
};

/** Why the file cannot be made, for the user; empty when it can be. */
QString whyNotMakeable(const QString& path);

void setLargerFont(QLabel* label, qreal factor);

/** Puts the widget into the middle of a page, which scrolls where the window is too small. */
QWidget* centered(QWidget* content, QWidget* parent);

} // namespace ostrand
