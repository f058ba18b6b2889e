#include "pictures.h"

#include <trovek/text.h>

#include <QCoreApplication>
#include <QEvent>
#include <QGLWidget>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QSaveFile>
#include <QWidget>

#include <stdexcept>

namespace ostrand {
namespace {

/** With what OpenGL draws, which a widget does not draw on paper. */
QPixmap pictureOf(QWidget& window)
{
    QPixmap picture = window.grab();
    QPainter painter(&picture);
    for (QGLWidget* view : window.findChildren<QGLWidget*>()) {
        if (!view->isVisible() || !view->isValid())
            continue;
        QImage drawn = view->grabFrameBuffer();
        drawn.setDevicePixelRatio(view->devicePixelRatioF());
        const QPoint corner = view->mapTo(&window, QPoint());
        painter.drawImage(corner, drawn);
        for (QObject* child : view->children()) {
            auto* above = qobject_cast<QWidget*>(child);
            if (above && above->isVisible())
                painter.drawPixmap(corner + above->pos(), above->grab());
        }
    }
    return picture;
}

} // namespace

Pictures::Pictures(const QString& dir)
    : m_dir(QDir(dir).absolutePath())
{
    if (!QDir().mkpath(m_dir.path()))
        throw std::runtime_error("Cannot make the folder " + trovek::toStdString(m_dir.path()));
}

QString Pictures::save(QWidget& window, const QString& name, const QString& caption)
{
    // What was shown just now is laid out later: a layout inside a layout takes another turn each.
    for (int depth = 0; depth < 4; ++depth)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    const QString file =
        QStringLiteral("%1-%2.png").arg(m_pictures.size() + 1, 2, 10, QLatin1Char('0')).arg(name);
    if (!pictureOf(window).save(m_dir.filePath(file)))
        throw std::runtime_error("Cannot write the picture " +
                                 trovek::toStdString(m_dir.filePath(file)));
    m_pictures.append({file, caption.isEmpty() ? name : caption});
    return file;
}

void Pictures::writeContactSheet(const QString& title) const
{
    QString page = QStringLiteral("<!DOCTYPE html>\n<meta charset=\"utf-8\">\n<title>%1</title>\n"
                                  "<style>body{font-family:sans-serif;background:#888;margin:2em}"
                                  "figure{display:inline-block;margin:1em;vertical-align:top}"
                                  "figcaption{margin-bottom:.4em}img{max-width:45em}</style>\n"
                                  "<h1>%1</h1>\n")
                       .arg(title.toHtmlEscaped());
    for (const Picture& picture : m_pictures) {
        const QString file = picture.file.toHtmlEscaped();
        page += QStringLiteral("<figure><figcaption>") + picture.caption.toHtmlEscaped() +
                QStringLiteral("</figcaption><img src=\"") + file + QStringLiteral("\" alt=\"") +
                file + QStringLiteral("\"></figure>\n");
    }
    QSaveFile sheet(m_dir.filePath(QStringLiteral("index.html")));
    const QByteArray bytes = page.toUtf8();
    if (!sheet.open(QIODevice::WriteOnly) || sheet.write(bytes) != bytes.size() || !sheet.flush() ||
        !sheet.commit())
        throw std::runtime_error("Cannot write " + trovek::toStdString(sheet.fileName()));
}

} // namespace ostrand
