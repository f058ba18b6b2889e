#pragma once

#include "picture_view.h"

#include <qtshared/bounding_box.h>
#include <qtshared/ground.h>

#include <QColor>
#include <QOpenGLFunctions_3_3_Core>
#include <QOpenGLShaderProgram>
#include <QOpenGLVertexArrayObject>
#include <QPalette>
#include <QVector3D>

#include <memory>
#include <vector>

namespace pathscope {

/** What lies behind and under the paths, in light or dark neutrals. */
struct GroundColours
{
    QColor top;
    QColor bottom;
    QColor platform;
    QColor grid;
    QColor volume;

    /** Light or dark as the palette is. */
    static GroundColours of(const QPalette& palette);
};

/** What the ground of a view looks like. */
struct GroundShape
{
    /** The build volume; without a height only its platform is drawn. */
    Orvane::BoundingBox box;
    Orvane::Ground::PlatformShape platform = Orvane::Ground::Rectangular;
    /** DrawBuildVolume stands for the platform and its grid as well. */
    int flags = Orvane::Ground::DrawBuildVolume;
};

/**
 * Draws background, platform, grid, build volume and axes. Paths are drawn over them, so nothing of
 * the ground ever hides one.
 *
 * Every call, the destructor too, needs the context of the constructor as the current one.
 */
class GroundRenderer
{
public:
    /** @throws std::runtime_error with what the driver says when it does not take the shaders */
    explicit GroundRenderer(QOpenGLFunctions_3_3_Core& gl);
    ~GroundRenderer();

    void setShape(const GroundShape& shape);
    /** Clears the bound framebuffer, and draws the ground. */
    void draw(const PictureView& view, const GroundColours& colours);

private:
    struct Lines
    {
        GLint first = 0;
        GLsizei count = 0;
    };
    void drawLines(Lines lines, const QColor& colour);

    QOpenGLFunctions_3_3_Core& m_gl;
    std::unique_ptr<QOpenGLShaderProgram> m_background;
    std::unique_ptr<QOpenGLShaderProgram> m_platform;
    std::unique_ptr<QOpenGLShaderProgram> m_lines;
    QOpenGLVertexArrayObject m_array;
    GLuint m_buffer = 0;
    GroundShape m_shape;
    Lines m_outline;
    Lines m_volume;
    Lines m_axes;
};

} // namespace pathscope
