#include "toolpath_renderer.h"

#include "gl_program.h"

#include <QVector2D>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace pathscope {

namespace {

constexpr int kPointsUnit = 0;
constexpr int kStylesUnit = 1;
constexpr std::uint32_t kMaxStyles = 65536;
/** Beads thinner than this many pixels are drawn as lines. */
constexpr float kThinPixels = 1.2F;
constexpr GLsizei kRecord = sizeof(PathPoint);

enum Attribute : GLuint {
    FromAttribute = 0,
    ToAttribute = 1,
    KindAndStyleAttribute = 2,
};

const void* offset(std::size_t bytes)
{
    // OpenGL takes a position in the bound buffer as if it were an address.
    return reinterpret_cast<const void*>(bytes); // NOLINT(performance-no-int-to-ptr)
}

QVector4D unpacked(std::uint32_t colour)
{
    const auto channel = [colour](unsigned shift) {
        return float(colour >> shift & 255U) / 255;
    };
    return {channel(0), channel(8), channel(16), channel(24)};
}

// How far a feature's beads stand one on another, so that their sides are seen: 0 to 1.
float wallShare(Feature feature)
{
    switch (feature) {
    case Feature::OuterWall:
    case Feature::InnerWall:
    case Feature::Overhang:
    case Feature::Support:
    case Feature::PrimeTower:
        return 1;
    case Feature::Unknown:
    case Feature::Custom:
    case Feature::SparseInfill:
    case Feature::GapFill:
        return 0.5F;
    default:
        return 0;
    }
}

} // namespace

struct ToolpathRenderer::Programs
{
    std::unique_ptr<QOpenGLShaderProgram> surface =
        buildProgram({QStringLiteral("bead.glsl"), QStringLiteral("surface.vert")},
                     {QStringLiteral("light.glsl"), QStringLiteral("surface.frag")});
    std::unique_ptr<QOpenGLShaderProgram> thin = buildProgram(
        {QStringLiteral("bead.glsl"), QStringLiteral("light.glsl"), QStringLiteral("thin.vert")},
        {QStringLiteral("thin.frag")});

    /** Sets a uniform that both have. */
    template <typename Value>
    void set(const char* name, const Value& value)
    {
        for (QOpenGLShaderProgram* program : {surface.get(), thin.get()}) {
            program->bind();
            program->setUniformValue(name, value);
        }
    }
};

ToolpathRenderer::ToolpathRenderer(QOpenGLFunctions_3_3_Core& gl)
    : m_gl(gl)
    , m_programs(std::make_unique<Programs>())
{
    m_programs->set("uStyles", kStylesUnit);
    m_programs->surface->bind();
    m_programs->surface->setUniformValue("uPoints", kPointsUnit);
    m_surfaceArray.create();
    m_thinArray.create();
    m_gl.glGenBuffers(1, &m_styleBuffer);
    m_gl.glGenTextures(1, &m_styleTexture);
    makeIndices();
    checkGl(m_gl, "ToolpathRenderer");
}

ToolpathRenderer::~ToolpathRenderer()
{
    clear();
    m_gl.glDeleteTextures(1, &m_styleTexture);
    m_gl.glDeleteBuffers(1, &m_styleBuffer);
    m_gl.glDeleteBuffers(1, &m_indices);
}

/** Two triangles for each segment of a chunk, of its four vertices. */
void ToolpathRenderer::makeIndices()
{
    constexpr std::array<std::uint32_t, 6> kCorners = {0, 1, 2, 2, 1, 3};
    std::vector<std::uint32_t> indices;
    indices.reserve(kSegmentsAChunk * kCorners.size());
    for (std::uint32_t segment = 0; segment < kSegmentsAChunk; ++segment) {
        for (const std::uint32_t corner : kCorners)
            indices.push_back(4 * segment + corner);
    }
    m_surfaceArray.bind();
    m_gl.glGenBuffers(1, &m_indices);
    m_gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_indices);
    m_gl.glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(indices.size() * sizeof(indices.front())),
                      indices.data(), GL_STATIC_DRAW);
    m_surfaceArray.release();
}

ToolpathRenderer::Buffer ToolpathRenderer::makeBuffer(std::size_t capacity)
{
    Buffer made;
    made.capacity = capacity;
    m_gl.glGenBuffers(1, &made.buffer);
    m_gl.glBindBuffer(GL_TEXTURE_BUFFER, made.buffer);
    // The last vertex of a line strip looks one record ahead.
    m_gl.glBufferData(GL_TEXTURE_BUFFER, GLsizeiptr(capacity + 1) * kRecord, nullptr,
                      GL_STATIC_DRAW);
    m_gl.glGenTextures(1, &made.texture);
    m_gl.glActiveTexture(GL_TEXTURE0 + kPointsUnit);
    m_gl.glBindTexture(GL_TEXTURE_BUFFER, made.texture);
    m_gl.glTexBuffer(GL_TEXTURE_BUFFER, GL_RGBA32UI, made.buffer);
    return made;
}

void ToolpathRenderer::destroy(Buffer& buffer)
{
    m_gl.glDeleteTextures(1, &buffer.texture);
    m_gl.glDeleteBuffers(1, &buffer.buffer);
    buffer = {};
}

void ToolpathRenderer::clear()
{
    for (Buffer& chunk : m_chunks)
        destroy(chunk);
    m_chunks.clear();
    destroy(m_coarse);
    m_batches.clear();
}

void ToolpathRenderer::send(Buffer& buffer, const PathPoint* points, std::size_t first,
                            std::size_t count)
{
    m_gl.glBindBuffer(GL_TEXTURE_BUFFER, buffer.buffer);
    m_gl.glBufferSubData(GL_TEXTURE_BUFFER, GLintptr(first) * kRecord, GLsizeiptr(count) * kRecord,
                         points + first);
    buffer.points = first + count;
    m_uploadedBytes += count * kRecord;
}

std::uint64_t ToolpathRenderer::upload(const Toolpaths& toolpaths, std::uint64_t maxBytes)
{
    std::uint64_t left = maxBytes / kRecord;
    std::size_t chunk = m_chunks.empty() ? 0 : m_chunks.size() - 1;
    for (; chunk < toolpaths.chunks.size() && left > 0; ++chunk) {
        const std::vector<PathPoint>& points = toolpaths.chunks[chunk]->points;
        if (chunk == m_chunks.size()) {
            // Only the last chunk of a file that is still read may grow.
            const bool grows = !toolpaths.complete && chunk + 1 == toolpaths.chunks.size();
            m_chunks.push_back(makeBuffer(grows ? PointChunk::kCapacity : points.size()));
        }
        Buffer& buffer = m_chunks[chunk];
        const std::uint64_t count = std::min<std::uint64_t>(left, points.size() - buffer.points);
        if (count > 0)
            send(buffer, points.data(), buffer.points, count);
        left -= count;
        if (buffer.points < points.size())
            break;
    }
    std::uint64_t segments = 0;
    if (!m_chunks.empty()) {
        const std::size_t last = m_chunks.back().points;
        segments = (m_chunks.size() - 1) * kSegmentsAChunk + (last > 0 ? last - 1 : 0);
    }
    m_batches.append(toolpaths, segments);
    checkGl(m_gl, "upload");
    return segments;
}

void ToolpathRenderer::uploadCoarse(const CoarsePaths& paths)
{
    const std::size_t count = std::min(paths.points().size(), std::size_t(PointChunk::kCapacity));
    if (count > m_coarse.capacity) {
        destroy(m_coarse);
        m_coarse = makeBuffer(PointChunk::kCapacity);
    }
    if (count > 0)
        send(m_coarse, paths.points().data(), 0, count);
    m_coarse.points = count;
}

void ToolpathRenderer::setStyles(const std::vector<MoveStyle>& styles,
                                 const std::vector<std::uint32_t>& colours)
{
    constexpr std::uint32_t kGrey = 0xff909090;
    const auto bits = [](float value) {
        std::uint32_t result = 0;
        std::memcpy(&result, &value, sizeof(result));
        return result;
    };
    std::vector<std::array<std::uint32_t, 4>> texels;
    texels.reserve(styles.size());
    float widths = 0;
    int extruding = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(styles.size(), kMaxStyles); ++i) {
        texels.push_back({i < colours.size() ? colours[i] : kGrey, bits(styles[i].width),
                          bits(styles[i].height), bits(wallShare(styles[i].feature))});
        if (styles[i].width > 0) {
            widths += styles[i].width;
            ++extruding;
        }
    }
    if (texels.empty())
        texels.emplace_back();
    if (extruding > 0)
        m_usualWidth = widths / float(extruding);
    const std::size_t bytes = texels.size() * sizeof(texels.front());
    m_gl.glBindBuffer(GL_TEXTURE_BUFFER, m_styleBuffer);
    m_gl.glBufferData(GL_TEXTURE_BUFFER, GLsizeiptr(bytes), texels.data(), GL_STATIC_DRAW);
    m_gl.glActiveTexture(GL_TEXTURE0 + kStylesUnit);
    m_gl.glBindTexture(GL_TEXTURE_BUFFER, m_styleTexture);
    m_gl.glTexBuffer(GL_TEXTURE_BUFFER, GL_RGBA32UI, m_styleBuffer);
    m_uploadedBytes += bytes;
    checkGl(m_gl, "setStyles");
}

void ToolpathRenderer::setKindColour(MoveKind kind, std::uint32_t colour)
{
    const QByteArray name = QByteArray("uKindColours[") + QByteArray::number(int(kind)) + ']';
    m_programs->set(name.constData(), unpacked(colour).toVector3D());
}

void ToolpathRenderer::begin(const PictureView& view, std::uint32_t kinds)
{
    m_frustum = std::make_unique<Frustum>(view.viewProjection);
    // A retraction has no length: as a line there would be nothing to see of it.
    constexpr std::uint32_t kWithLength =
        1U << unsigned(MoveKind::Extrude) | 1U << unsigned(MoveKind::Travel);
    m_thinFrom = (kinds & ~kWithLength) == 0 ? m_usualWidth / (view.pixel * kThinPixels)
                                             : std::numeric_limits<float>::infinity();
    m_programs->set("uViewProjection", view.viewProjection);
    m_programs->set("uEye", view.eye);
    m_programs->set("uLight", view.light);
    m_programs->set("uKinds", GLint(kinds));
    m_programs->surface->bind();
    m_programs->surface->setUniformValue("uPixel", view.pixel);
    m_programs->surface->setUniformValue("uRight", view.right);
    m_programs->surface->setUniformValue("uUp", view.up);
    setFactors(1, 1);
    setColour(0);

    m_gl.glActiveTexture(GL_TEXTURE0 + kStylesUnit);
    m_gl.glBindTexture(GL_TEXTURE_BUFFER, m_styleTexture);
    m_gl.glActiveTexture(GL_TEXTURE0 + kPointsUnit);
    m_gl.glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
    m_gl.glEnable(GL_DEPTH_TEST);
    m_gl.glDepthFunc(GL_LEQUAL);
    m_gl.glDepthMask(GL_TRUE);
    m_gl.glDisable(GL_BLEND);
    m_gl.glDisable(GL_CULL_FACE);
}

void ToolpathRenderer::setColour(std::uint32_t colour)
{
    m_programs->set("uColour", unpacked(colour));
}

void ToolpathRenderer::setFactors(float width, float height)
{
    m_programs->set("uFactors", QVector2D(width, height));
}

void ToolpathRenderer::draw(SegmentRange segments)
{
    m_batches.visit(segments, *m_frustum, m_thinFrom, [this](const PathBatches::Run& run) {
        drawRun(m_chunks[run.chunk], run.first, run.count, run.thin);
    });
    checkGl(m_gl, "draw");
}

void ToolpathRenderer::drawCoarse(SegmentRange segments)
{
    const std::uint64_t there = m_coarse.points > 0 ? m_coarse.points - 1 : 0;
    const std::uint64_t end = std::min(segments.end, there);
    if (segments.first >= end)
        return;
    // Beads of many layers in one are never thin.
    drawRun(m_coarse, std::uint32_t(segments.first), std::uint32_t(end - segments.first), false);
    checkGl(m_gl, "drawCoarse");
}

void ToolpathRenderer::drawRun(const Buffer& buffer, std::uint32_t first, std::uint32_t count,
                               bool thin)
{
    m_drawnSegments += count;
    if (!thin) {
        constexpr std::size_t kIndices = 6;
        m_programs->surface->bind();
        m_surfaceArray.bind();
        m_gl.glBindTexture(GL_TEXTURE_BUFFER, buffer.texture);
        m_gl.glDrawElements(GL_TRIANGLES, GLsizei(count * kIndices), GL_UNSIGNED_INT,
                            offset(first * kIndices * sizeof(std::uint32_t)));
        m_surfaceArray.release();
        return;
    }
    m_programs->thin->bind();
    m_thinArray.bind();
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, buffer.buffer);
    for (const GLuint attribute : {FromAttribute, ToAttribute, KindAndStyleAttribute})
        m_gl.glEnableVertexAttribArray(attribute);
    m_gl.glVertexAttribPointer(FromAttribute, 3, GL_FLOAT, GL_FALSE, kRecord, offset(0));
    m_gl.glVertexAttribPointer(ToAttribute, 3, GL_FLOAT, GL_FALSE, kRecord, offset(kRecord));
    m_gl.glVertexAttribIPointer(KindAndStyleAttribute, 1, GL_UNSIGNED_INT, kRecord,
                                offset(kRecord + offsetof(PathPoint, kindAndStyle)));
    m_gl.glDrawArrays(GL_LINE_STRIP, GLint(first), GLsizei(count + 1));
    m_thinArray.release();
}

} // namespace pathscope
