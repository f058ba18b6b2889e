#pragma once

#include "coarse_paths.h"
#include "path_batches.h"
#include "picture_view.h"

#include "pathscope/toolpaths.h"

#include <QOpenGLBuffer>
#include <QOpenGLFunctions_3_3_Core>
#include <QOpenGLShaderProgram>
#include <QOpenGLVertexArrayObject>

#include <memory>
#include <vector>

namespace pathscope {

/**
 * Draws toolpaths with OpenGL 3.3: records and colours in, pixels in the bound framebuffer out.
 *
 * Points are uploaded once, as they stand in memory. Order of calls: upload() until it has nothing
 * left, setStyles() after the styles or colours changed, then begin() and any number of draw() and
 * drawCoarse(). Every call, the destructor too, needs the context of the constructor as the current
 * one.
 */
class ToolpathRenderer
{
public:
    /** @throws std::runtime_error with what the driver says when it does not take the shaders */
    explicit ToolpathRenderer(QOpenGLFunctions_3_3_Core& gl);
    ~ToolpathRenderer();

    /** Forgets the points. */
    void clear();
    /**
     * Sends points that are not there yet, some bytes at most.
     *
     * @return the number of segments that are there now
     */
    std::uint64_t upload(const Toolpaths& toolpaths, std::uint64_t maxBytes);
    void uploadCoarse(const CoarsePaths& paths);
    /** @param colours  one a style, as 0xAABBGGRR; what is missing is grey */
    void setStyles(const std::vector<MoveStyle>& styles, const std::vector<std::uint32_t>& colours);
    /** Of the moves that do not extrude. */
    void setKindColour(MoveKind kind, std::uint32_t colour);

    /** @param kinds  bit n: moves of kind n are shown */
    void begin(const PictureView& view, std::uint32_t kinds);
    /** Draws with a colour instead of the styles' own, or with those again for 0. */
    void setColour(std::uint32_t colour);
    /**
     * How many times wider and, downwards, higher than told the beads are drawn from now on; once
     * each after begin().
     */
    void setFactors(float width, float height);
    void draw(SegmentRange segments);
    void drawCoarse(SegmentRange segments);

    /** Of the points that were uploaded. */
    const PathBatches& batches() const { return m_batches; }
    std::uint64_t uploadedBytes() const { return m_uploadedBytes; }
    /** Segments handed to OpenGL so far, the hidden ones among them. */
    std::uint64_t drawnSegments() const { return m_drawnSegments; }

private:
    /** Points on the GPU, as a vertex buffer and as a texture. */
    struct Buffer
    {
        GLuint buffer = 0;
        GLuint texture = 0;
        std::size_t points = 0;
        std::size_t capacity = 0;
    };
    struct Programs;

    Buffer makeBuffer(std::size_t capacity);
    void destroy(Buffer& buffer);
    void send(Buffer& buffer, const PathPoint* points, std::size_t first, std::size_t count);
    void makeIndices();
    void drawRun(const Buffer& buffer, std::uint32_t first, std::uint32_t count, bool thin);

    QOpenGLFunctions_3_3_Core& m_gl;
    const std::unique_ptr<Programs> m_programs;
    QOpenGLVertexArrayObject m_surfaceArray;
    QOpenGLVertexArrayObject m_thinArray;
    GLuint m_indices = 0;
    std::vector<Buffer> m_chunks;
    Buffer m_coarse;
    GLuint m_styleBuffer = 0;
    GLuint m_styleTexture = 0;
    PathBatches m_batches;
    std::unique_ptr<Frustum> m_frustum;
    float m_thinFrom = 0;
    /** Of the styles that extrude, in millimetres. */
    float m_usualWidth = 0.4F;
    std::uint64_t m_uploadedBytes = 0;
    std::uint64_t m_drawnSegments = 0;
};

} // namespace pathscope
