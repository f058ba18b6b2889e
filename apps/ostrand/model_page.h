#pragma once

#include "picture_page.h"

#include <atomic>
#include <memory>

namespace trovek::geometry {
struct Mesh;
}

class QImage;
class QTimer;

namespace ostrand {

/** The page of a model: a picture of it, below a bar with the file and the button. */
class ModelPage : public PicturePage
{
    Q_OBJECT

public:
    explicit ModelPage(QWidget* parent = nullptr);
    ~ModelPage() override;

    /** Whether the picture is still on its way. */
    bool isReading() const { return m_canceled != nullptr; }

signals:
    /** Shown is the picture of the model, or a text in its place. */
    void pictureChanged();

protected:
    void read(const QFileInfo& file) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void fail(const QString& reason);
    void takeMesh(std::shared_ptr<const trovek::geometry::Mesh> mesh);
    void draw();
    void takePictures(const QImage& large, const QImage& icon);
    void showText(const QString& text);
    /** Ends what runs in a thread; its result is dropped. */
    void stopWork();

    QLabel* const m_extent;
    QLabel* const m_large;
    QTimer* const m_drawTimer;
    std::shared_ptr<const trovek::geometry::Mesh> m_mesh;
    /** Of what runs in a thread now. */
    std::shared_ptr<std::atomic<bool>> m_canceled;
};

} // namespace ostrand
