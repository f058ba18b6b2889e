#pragma once

#include "file_kinds.h"

#include <QStackedWidget>

class QLabel;
class QPushButton;

namespace trovek {
class ElidedLabel;
}

namespace ostrand {

/** The middle of the window: the open file, or an invitation to open one. */
class FileView : public QStackedWidget
{
    Q_OBJECT

public:
    explicit FileView(QWidget* parent = nullptr);

    /** Shows the file with what the disk says of it now; an empty path shows the invitation. */
    void setFile(const QString& path);
    const QString& file() const { return m_path; }

signals:
    void openRequested();
    void makeRequested();

private:
    QWidget* makeInvitation();
    QWidget* makeDetails();

    QString m_path;
    QWidget* m_details = nullptr;
    QLabel* m_picture = nullptr;
    QLabel* m_name = nullptr;
    QLabel* m_folder = nullptr;
    QLabel* m_kind = nullptr;
    QLabel* m_size = nullptr;
    QLabel* m_modified = nullptr;
    QLabel* m_remark = nullptr;
    QPushButton* m_make = nullptr;
};

/** Why the file cannot be made, for the user; empty when it can be. */
QString whyNotMakeable(const QString& path);

} // namespace ostrand
