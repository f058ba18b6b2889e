#pragma once

#include "pathscope/export.h"

#include <QWidget>

#include <memory>

namespace pathscope {

class ToolpathScene;

/**
 * The controls of a toolpath view: layers, moves, colours with their legend, totals, progress.
 *
 * Works on the scene and its view model alone, so it is also of use without a picture.
 */
class PATHSCOPE_EXPORT ToolpathOverlay : public QWidget
{
    Q_OBJECT

public:
    /** @param scene not owned; must outlive the overlay */
    explicit ToolpathOverlay(ToolpathScene* scene, QWidget* parent = nullptr);
    ~ToolpathOverlay() override;

    /** Wide enough for its texts; as high as the view, since it scrolls. */
    QSize sizeHint() const override;

public slots:
    void layerUp();
    void layerDown();
    /** As the button "Fit" does. */
    void fit();
    /** While a file is read; 1 hides the bar. */
    void setProgress(double fraction);
    /** In place of totals; an empty text takes it away. */
    void setError(const QString& reason);

signals:
    /** Of the buttons "Top", "Front", "Side", "Isometric" and "Fit"; a Camera::Preset, or -1 to
     * fit. */
    void cameraRequested(int preset);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace pathscope
