#pragma once

#include <service/geometry/mesh.h>
#include <service/geometry/point_cloud.h>

#include <QPoint>
#include <QWidget>

#include <vector>

namespace scan_example {

/**
 * Shows clouds, each in a color of its own, or a mesh, from any side: dragging and the arrow keys
 * turn it, the wheel and plus and minus zoom, Home shows it as in the beginning.
 */
class ShapeView : public QWidget
{
    Q_OBJECT

public:
    explicit ShapeView(QWidget* parent = nullptr);

    void showNothing();
    void showClouds(const std::vector<trovek::geometry::PointCloud>& clouds);
    void showMesh(const trovek::geometry::Mesh& mesh);

    QSize sizeHint() const override { return {640, 560}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void fit(const std::vector<trovek::geometry::Vector>& points);
    void turn(double around, double down);
    void zoom(double factor);
    void goHome();
    void paintClouds(QPainter& painter) const;
    void paintMesh(QPainter& painter) const;
    /** x to the right, y down, in pixels; z towards the eye. */
    trovek::geometry::Vector seen(const trovek::geometry::Vector& point) const;

    std::vector<trovek::geometry::PointCloud> m_clouds;
    trovek::geometry::Mesh m_mesh;
    trovek::geometry::Vector m_middle;
    double m_radius = 1;
    /** Degrees. */
    double m_around = 0;
    double m_down = 0;
    double m_zoom = 1;
    QPoint m_dragged;
};

} // namespace scan_example
