#include "shape_view.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace scan_example {

using trovek::geometry::Mesh;
using trovek::geometry::PointCloud;
using trovek::geometry::Vector;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kHomeAround = 25;
constexpr double kHomeDown = 20;
constexpr double kStep = 10;
/** On dark and light grounds. */
const QColor kCloudColors[] = {QColor(0x3d, 0xa8, 0xd8), QColor(0xe0, 0x7a, 0x30)};
const QColor kMeshColor(0xc9, 0xb7, 0x98);

/** Between a shade and the full color. */
QColor lit(const QColor& color, double light)
{
    return QColor::fromRgbF(color.redF() * light, color.greenF() * light, color.blueF() * light);
}

} // namespace

ShapeView::ShapeView(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("shapeView"));
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAccessibleName(tr("What was scanned"));
    goHome();
}

void ShapeView::showNothing()
{
    m_clouds.clear();
    m_mesh = {};
    update();
}

void ShapeView::showClouds(const std::vector<PointCloud>& clouds)
{
    m_clouds = clouds;
    m_mesh = {};
    std::vector<Vector> all;
    for (const PointCloud& cloud : clouds)
        all.insert(all.end(), cloud.positions.begin(), cloud.positions.end());
    fit(all);
    update();
}

void ShapeView::showMesh(const Mesh& mesh)
{
    m_clouds.clear();
    m_mesh = mesh;
    fit(mesh.vertices);
    update();
}

/** All of it stays in the picture from whatever side. */
void ShapeView::fit(const std::vector<Vector>& points)
{
    if (points.empty())
        return;
    Vector least = points.front();
    Vector most = points.front();
    for (const Vector& point : points) {
        least = {std::min(least.x, point.x), std::min(least.y, point.y),
                 std::min(least.z, point.z)};
        most = {std::max(most.x, point.x), std::max(most.y, point.y), std::max(most.z, point.z)};
    }
    m_middle = 0.5 * (least + most);
    m_radius = 1e-3;
    for (const Vector& point : points)
        m_radius = std::max(m_radius, length(point - m_middle));
}

void ShapeView::turn(double around, double down)
{
    m_around = std::fmod(m_around + around, 360);
    m_down = std::clamp(m_down + down, -90.0, 90.0);
    update();
}

void ShapeView::zoom(double factor)
{
    m_zoom = std::clamp(m_zoom * factor, 0.2, 20.0);
    update();
}

void ShapeView::goHome()
{
    m_around = kHomeAround;
    m_down = kHomeDown;
    m_zoom = 1;
    update();
}

Vector ShapeView::seen(const Vector& point) const
{
    const Vector from = point - m_middle;
    const double around = m_around * kPi / 180;
    const double down = m_down * kPi / 180;
    const double right = std::cos(around) * from.x + std::sin(around) * from.y;
    const double away = -std::sin(around) * from.x + std::cos(around) * from.y;
    const double up = std::cos(down) * from.z + std::sin(down) * away;
    const double near = std::sin(down) * from.z - std::cos(down) * away;
    const double scale = 0.45 * std::min(width(), height()) / m_radius * m_zoom;
    return {width() / 2.0 + scale * right, height() / 2.0 - scale * up, near};
}

void ShapeView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    if (!m_mesh.triangles.empty()) {
        paintMesh(painter);
    } else if (!m_clouds.empty()) {
        paintClouds(painter);
    } else {
        painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, tr("Nothing is scanned yet."));
    }
    if (hasFocus()) {
        painter.setPen(palette().color(QPalette::Highlight));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

/** The nearest points last, and the brightest. */
void ShapeView::paintClouds(QPainter& painter) const
{
    struct Dot
    {
        Vector place;
        std::size_t cloud;
    };
    std::vector<Dot> dots;
    for (std::size_t i = 0; i < m_clouds.size(); ++i) {
        for (const Vector& point : m_clouds[i].positions)
            dots.push_back({seen(point), i});
    }
    std::sort(dots.begin(), dots.end(),
              [](const Dot& a, const Dot& b) { return a.place.z < b.place.z; });
    constexpr std::size_t kMany = 30000;
    const double size = dots.size() < kMany ? 3 : 2;
    for (const Dot& dot : dots) {
        const double light = std::clamp(0.65 + 0.45 * dot.place.z / m_radius, 0.3, 1.0);
        const QColor& color = kCloudColors[dot.cloud % std::size(kCloudColors)];
        painter.fillRect(QRectF(dot.place.x - 1, dot.place.y - 1, size, size), lit(color, light));
    }
}

void ShapeView::paintMesh(QPainter& painter) const
{
    struct Face
    {
        QPointF corners[3];
        double nearness;
        double light;
    };
    // Over the left shoulder of who looks.
    const Vector lamp = trovek::geometry::normalized({-0.4, -0.5, 0.9});
    std::vector<Vector> places;
    places.reserve(m_mesh.vertices.size());
    for (const Vector& vertex : m_mesh.vertices)
        places.push_back(seen(vertex));
    std::vector<Face> faces;
    for (const auto& triangle : m_mesh.triangles) {
        const Vector& a = places[triangle[0]];
        const Vector& b = places[triangle[1]];
        const Vector& c = places[triangle[2]];
        // In pixels across, millimetres towards the eye: brought to one measure for the light.
        const double scale = 0.45 * std::min(width(), height()) / m_radius * m_zoom;
        const Vector ab{b.x - a.x, b.y - a.y, scale * (b.z - a.z)};
        const Vector ac{c.x - a.x, c.y - a.y, scale * (c.z - a.z)};
        // y points down, which turns the corners' order round.
        const Vector normal = cross(ac, ab);
        if (normal.z <= 0)
            continue;
        const double light = std::max(0.0, dot(normalized(normal), lamp));
        faces.push_back({{{a.x, a.y}, {b.x, b.y}, {c.x, c.y}}, a.z + b.z + c.z, light});
    }
    std::sort(faces.begin(), faces.end(),
              [](const Face& a, const Face& b) { return a.nearness < b.nearness; });
    for (const Face& face : faces) {
        const QColor color = lit(kMeshColor, 0.25 + 0.75 * face.light);
        // Its own edges too, or the ground would shine through between two faces.
        painter.setPen(QPen(color, 0));
        painter.setBrush(color);
        painter.drawPolygon(face.corners, 3);
    }
}

void ShapeView::mousePressEvent(QMouseEvent* event)
{
    m_dragged = event->pos();
}

void ShapeView::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint by = event->pos() - m_dragged;
    m_dragged = event->pos();
    turn(-0.5 * by.x(), 0.5 * by.y());
}

void ShapeView::wheelEvent(QWheelEvent* event)
{
    zoom(std::pow(1.001, event->angleDelta().y()));
    event->accept();
}

void ShapeView::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        turn(kStep, 0);
        break;
    case Qt::Key_Right:
        turn(-kStep, 0);
        break;
    case Qt::Key_Up:
        turn(0, -kStep);
        break;
    case Qt::Key_Down:
        turn(0, kStep);
        break;
    case Qt::Key_Plus:
        zoom(1.2);
        break;
    case Qt::Key_Minus:
        zoom(1 / 1.2);
        break;
    case Qt::Key_Home:
        goHome();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace scan_example
