#pragma once

#include "pathscope/export.h"

#include <qtshared/bounding_box.h>
#include <qtshared/ground.h>
#include <qtshared/material.h>

#include <QColor>
#include <QFileInfo>
#include <QGLWidget>

#include <cstdint>
#include <memory>
#include <vector>

namespace pathscope {

class ToolpathOverlay;
class ToolpathScene;

/**
 * Shows the toolpaths of a sliced file with OpenGL 3.3, and the controls to look through them.
 *
 * Where there is no OpenGL 3.3 the controls are there all the same, and a text says why there is
 * no picture, with layers, size, time and filament in words. Draws only when something changed.
 *
 * Made to stand in a window beside other widgets: the toolkit does not paint the controls of one
 * that is a window itself.
 */
class PATHSCOPE_EXPORT ToolpathGLWidget : public QGLWidget
{
    Q_OBJECT

public:
    /**
     * @param share        context to share with; null for none
     * @param materials    one an extruder
     * @param colours      one an extruder; what is missing gets a colour of the view's own
     * @param buildVolume  millimetres; an empty box draws no volume
     */
    ToolpathGLWidget(const QGLWidget* share, bool dualExtrusion,
                     const std::vector<Orvane::Material>& materials,
                     const std::vector<QColor>& colours, const Orvane::BoundingBox& buildVolume,
                     Orvane::Ground::PlatformShape platformShape,
                     Orvane::Ground::DrawFlags drawFlags, QWidget* parent = nullptr);
    ~ToolpathGLWidget() override;

    /** Starts to read the file; what was shown goes. */
    void setFile(const QFileInfo& file);

    /** Both live as long as the view. */
    ToolpathOverlay* overlayWidget() const;
    ToolpathScene* toolpathScene() const;

    /** Why there is no picture, for the user; empty when there is one or before the first show. */
    QString whyNoPicture() const;
    /** Frames drawn so far: a still picture draws none. */
    int frameCount() const;
    /** Bytes sent to the GPU so far. */
    std::uint64_t uploadedBytes() const;
    /** Segments handed to OpenGL so far, by this context: what a change costs to draw. */
    std::uint64_t drawnSegments() const;
    /** All of the file is shown as it is wanted now, in full detail. */
    bool isPictureComplete() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /** A file was read to its end and stands in full detail on the screen, or was given up. */
    void pictureComplete();
    void loadFailed(const QString& reason);

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    class PATHSCOPE_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace pathscope
