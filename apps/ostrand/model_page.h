#pragma once

#include "file_page.h"

#include <QDateTime>
#include <QPixmap>

#include <atomic>
#include <memory>

namespace trovek::geometry {
struct Mesh;
}

class QImage;
class QTimer;

namespace ostrand {

/** The page of a model: a picture of it, below a bar with the file and the button. */
class ModelPage : public FilePage
{
    Q_OBJECT

public:
    explicit ModelPage(QWidget* parent = nullptr);
    ~ModelPage() override;

    /** Reads the file when it is another one, or has changed on the disk. */
    void showFile(const QString& path) override;
    /** Whether the picture is still on its way. */
    bool isReading() const { return m_canceled != nullptr; }

signals:
    /** Shown is the picture of the model, or a text in its place. */
    void pictureChanged();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void read();
    void fail(const QString& reason);
    void takeMesh(std::shared_ptr<const trovek::geometry::Mesh> mesh);
    void draw();
    void takePictures(const QImage& large, const QImage& icon);
    void showPicture();
    void showText(const QString& text);
    /** Ends what runs in a thread; its result is dropped. */
    void stopWork();

    QLabel* const m_extent;
    QLabel* const m_large;
    QTimer* const m_drawTimer;
    QString m_path;
    qint64 m_bytes = -1;
    QDateTime m_changed;
    std::shared_ptr<const trovek::geometry::Mesh> m_mesh;
    QPixmap m_rendered;
    /** Of what runs in a thread now. */
    std::shared_ptr<std::atomic<bool>> m_canceled;
};

} // namespace ostrand
