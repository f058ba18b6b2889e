#include "ground_renderer.h"

#include "gl_program.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

namespace pathscope {

namespace {

constexpr int kPlatformCorners = 4;
constexpr int kCircleParts = 96;

/** A closed line as single lines. */
void appendLoop(std::vector<QVector3D>& lines, const std::vector<QVector3D>& loop)
{
    for (std::size_t i = 0; i < loop.size(); ++i) {
        lines.push_back(loop[i]);
        lines.push_back(loop[(i + 1) % loop.size()]);
    }
}

/** Of a round platform. */
float radiusOf(const Orvane::BoundingBox& box)
{
    return 0.5F * std::min(box.width(), box.depth());
}

std::vector<QVector3D> outline(const GroundShape& shape, float z)
{
    const Orvane::BoundingBox& box = shape.box;
    if (shape.platform != Orvane::Ground::Round)
        return {{box.xMin, box.yMin, z},
                {box.xMax, box.yMin, z},
                {box.xMax, box.yMax, z},
                {box.xMin, box.yMax, z}};
    const float radius = radiusOf(box);
    std::vector<QVector3D> loop;
    for (int i = 0; i < kCircleParts; ++i) {
        const double angle = 2 * M_PI * i / kCircleParts;
        loop.emplace_back(0.5F * (box.xMin + box.xMax) + radius * float(std::cos(angle)),
                          0.5F * (box.yMin + box.yMax) + radius * float(std::sin(angle)), z);
    }
    return loop;
}

void setColour(QOpenGLShaderProgram& program, const char* name, const QColor& colour)
{
    program.setUniformValue(name, float(colour.redF()), float(colour.greenF()),
                            float(colour.blueF()), float(colour.alphaF()));
}

} // namespace

GroundColours GroundColours::of(const QPalette& palette)
{
    const bool dark = palette.color(QPalette::Window).lightnessF() < 0.5;
    if (dark)
        return {QColor(0x34, 0x38, 0x3e), QColor(0x1e, 0x20, 0x24), QColor(255, 255, 255, 10),
                QColor(0x8a, 0x93, 0x9e, 95), QColor(0xa0, 0xaa, 0xb6, 90)};
    return {QColor(0xf3, 0xf5, 0xf7), QColor(0xd9, 0xde, 0xe4), QColor(255, 255, 255, 120),
            QColor(0x7f, 0x8b, 0x99, 110), QColor(0x6a, 0x76, 0x84, 110)};
}

GroundRenderer::GroundRenderer(QOpenGLFunctions_3_3_Core& gl)
    : m_gl(gl)
    , m_background(
          buildProgram({QStringLiteral("background.vert")}, {QStringLiteral("background.frag")}))
    , m_platform(buildProgram({QStringLiteral("ground.vert")}, {QStringLiteral("platform.frag")}))
    , m_lines(buildProgram({QStringLiteral("ground.vert")}, {QStringLiteral("ground_line.frag")}))
{
    m_array.create();
    m_array.bind();
    m_gl.glGenBuffers(1, &m_buffer);
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    m_gl.glEnableVertexAttribArray(0);
    m_gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(QVector3D), nullptr);
    m_array.release();
}

GroundRenderer::~GroundRenderer()
{
    m_gl.glDeleteBuffers(1, &m_buffer);
}

void GroundRenderer::setShape(const GroundShape& shape)
{
    m_shape = shape;
    const Orvane::BoundingBox& box = shape.box;
    std::vector<QVector3D> points = {{box.xMin, box.yMin, box.zMin},
                                     {box.xMax, box.yMin, box.zMin},
                                     {box.xMin, box.yMax, box.zMin},
                                     {box.xMax, box.yMax, box.zMin}};
    const auto part = [&points](std::size_t first) {
        return Lines{GLint(first), GLsizei(points.size() - first)};
    };
    std::size_t first = points.size();
    const std::vector<QVector3D> bottom = outline(shape, box.zMin);
    appendLoop(points, bottom);
    m_outline = part(first);

    first = points.size();
    if (box.height() > 0) {
        appendLoop(points, outline(shape, box.zMax));
        for (std::size_t i = 0; i < bottom.size(); i += bottom.size() / 4) {
            points.push_back(bottom[i]);
            points.emplace_back(bottom[i].x(), bottom[i].y(), box.zMax);
        }
    }
    m_volume = part(first);

    first = points.size();
    const QVector3D origin(box.xMin, box.yMin, box.zMin);
    const float length = 0.15F * std::max(box.width(), box.depth());
    for (int axis = 0; axis < 3; ++axis) {
        QVector3D end = origin;
        end[axis] += length;
        points.push_back(origin);
        points.push_back(end);
    }
    m_axes = part(first);

    m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    m_gl.glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(points.size() * sizeof(points.front())),
                      points.data(), GL_STATIC_DRAW);
    checkGl(m_gl, "GroundRenderer::setShape");
}

void GroundRenderer::drawLines(Lines lines, const QColor& colour)
{
    setColour(*m_lines, "uColour", colour);
    m_gl.glDrawArrays(GL_LINES, lines.first, lines.count);
}

void GroundRenderer::draw(const PictureView& view, const GroundColours& colours)
{
    using Orvane::Ground;
    m_gl.glDepthMask(GL_TRUE);
    m_gl.glClear(GL_DEPTH_BUFFER_BIT);
    m_gl.glDisable(GL_DEPTH_TEST);
    m_gl.glDisable(GL_BLEND);
    m_array.bind();
    m_background->bind();
    m_background->setUniformValue("uTop", float(colours.top.redF()), float(colours.top.greenF()),
                                  float(colours.top.blueF()));
    m_background->setUniformValue("uBottom", float(colours.bottom.redF()),
                                  float(colours.bottom.greenF()), float(colours.bottom.blueF()));
    m_gl.glDrawArrays(GL_TRIANGLES, 0, 3);

    m_gl.glEnable(GL_BLEND);
    m_gl.glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    const Orvane::BoundingBox& box = m_shape.box;
    const bool volume = (m_shape.flags & Ground::DrawBuildVolume) != 0;
    const bool grid = volume || (m_shape.flags & Ground::DrawGrid) != 0;
    const bool platform = volume || (m_shape.flags & Ground::DrawPlatform) != 0;
    if (platform || grid) {
        m_platform->bind();
        m_platform->setUniformValue("uViewProjection", view.viewProjection);
        const QColor none(0, 0, 0, 0);
        setColour(*m_platform, "uSurface", platform ? colours.platform : none);
        setColour(*m_platform, "uGrid", grid ? colours.grid : none);
        const bool round = m_shape.platform == Ground::Round;
        m_platform->setUniformValue("uRound", 0.5F * (box.xMin + box.xMax),
                                    0.5F * (box.yMin + box.yMax), round ? radiusOf(box) : 0.0F);
        m_gl.glDrawArrays(GL_TRIANGLE_STRIP, 0, kPlatformCorners);
    }
    m_lines->bind();
    m_lines->setUniformValue("uViewProjection", view.viewProjection);
    if (platform || grid)
        drawLines(m_outline, colours.volume);
    if (volume)
        drawLines(m_volume, colours.volume);
    if ((m_shape.flags & Ground::DrawAxes) != 0) {
        drawLines({m_axes.first, 2}, QColor(0xd0, 0x45, 0x45));
        drawLines({m_axes.first + 2, 2}, QColor(0x3f, 0x9e, 0x52));
        drawLines({m_axes.first + 4, 2}, QColor(0x3f, 0x70, 0xd0));
    }
    m_array.release();
    checkGl(m_gl, "GroundRenderer::draw");
}

} // namespace pathscope
