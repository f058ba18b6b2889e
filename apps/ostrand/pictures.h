#pragma once

#include <QDir>
#include <QList>
#include <QString>

class QWidget;

namespace ostrand {

/** Saves numbered pictures of windows, "01-name.png", and remembers them. */
class Pictures
{
public:
    struct Picture
    {
        QString file;
        QString caption;
    };

    /** @throws std::runtime_error when the folder cannot be made */
    explicit Pictures(const QString& dir);

    /** @return the file's name @throws std::runtime_error when it cannot be written */
    QString save(QWidget& window, const QString& name, const QString& caption = QString());
    const QDir& dir() const { return m_dir; }
    /** All pictures on one page, DIR/index.html. @throws std::runtime_error */
    void writeContactSheet(const QString& title) const;

private:
    QDir m_dir;
    QList<Picture> m_pictures;
};

} // namespace ostrand
