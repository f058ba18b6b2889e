#include "picture_buffers.h"

#include "gl_program.h"

namespace pathscope {

namespace {

/** Windows above this have pixels so fine, or so many, that more would not be seen or afforded. */
constexpr int kMostPixelsToDouble = 2'200'000;

} // namespace

PictureBuffers::PictureBuffers(QOpenGLFunctions_3_3_Core& gl)
    : m_gl(gl)
{}

PictureBuffers::~PictureBuffers()
{
    destroy(m_picture);
    destroy(m_finished);
    for (Target& checkpoint : m_checkpoints)
        destroy(checkpoint);
}

PictureBuffers::Target PictureBuffers::make(QSize size, bool withDepth)
{
    Target made;
    m_gl.glGenFramebuffers(1, &made.framebuffer);
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, made.framebuffer);
    const auto attach = [&](GLuint& buffer, GLenum format, GLenum attachment) {
        m_gl.glGenRenderbuffers(1, &buffer);
        m_gl.glBindRenderbuffer(GL_RENDERBUFFER, buffer);
        m_gl.glRenderbufferStorage(GL_RENDERBUFFER, format, size.width(), size.height());
        m_gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, buffer);
    };
    attach(made.colour, GL_RGBA8, GL_COLOR_ATTACHMENT0);
    if (withDepth)
        attach(made.depth, GL_DEPTH_COMPONENT24, GL_DEPTH_ATTACHMENT);
    checkGl(m_gl, "PictureBuffers::make");
    return made;
}

void PictureBuffers::destroy(Target& target)
{
    m_gl.glDeleteFramebuffers(1, &target.framebuffer);
    m_gl.glDeleteRenderbuffers(1, &target.colour);
    m_gl.glDeleteRenderbuffers(1, &target.depth);
    target = {};
}

bool PictureBuffers::resize(QSize size)
{
    if (size == m_size)
        return false;
    m_size = size;
    m_scale = size.width() * size.height() <= kMostPixelsToDouble ? 2 : 1;
    destroy(m_picture);
    destroy(m_finished);
    for (Target& checkpoint : m_checkpoints)
        destroy(checkpoint);
    m_picture = make(pictureSize(), true);
    m_finished = make(m_size, false);
    return true;
}

void PictureBuffers::bindPicture()
{
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, m_picture.framebuffer);
    m_gl.glViewport(0, 0, pictureSize().width(), pictureSize().height());
}

void PictureBuffers::bindQuickPicture()
{
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, m_picture.framebuffer);
    m_gl.glViewport(0, 0, m_size.width(), m_size.height());
}

void PictureBuffers::copy(const Target& from, const Target& to)
{
    const QSize size = pictureSize();
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, from.framebuffer);
    m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, to.framebuffer);
    m_gl.glBlitFramebuffer(0, 0, size.width(), size.height(), 0, 0, size.width(), size.height(),
                           GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT, GL_NEAREST);
    checkGl(m_gl, "PictureBuffers::copy");
}

void PictureBuffers::save(int checkpoint)
{
    if (m_checkpoints[checkpoint].framebuffer == 0)
        m_checkpoints[checkpoint] = make(pictureSize(), true);
    copy(m_picture, m_checkpoints[checkpoint]);
}

void PictureBuffers::restore(int checkpoint)
{
    copy(m_checkpoints[checkpoint], m_picture);
}

void PictureBuffers::finish(QRect part)
{
    part &= QRect(QPoint(), m_size);
    if (part.isEmpty())
        return;
    const int left = part.left();
    const int bottom = part.top();
    const int right = left + part.width();
    const int top = bottom + part.height();
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, m_picture.framebuffer);
    m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_finished.framebuffer);
    // Halving with linear filtering takes the mean of four pixels.
    m_gl.glBlitFramebuffer(m_scale * left, m_scale * bottom, m_scale * right, m_scale * top, left,
                           bottom, right, top, GL_COLOR_BUFFER_BIT,
                           m_scale > 1 ? GL_LINEAR : GL_NEAREST);
    checkGl(m_gl, "PictureBuffers::finish");
}

void PictureBuffers::finishQuickPicture()
{
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, m_picture.framebuffer);
    m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_finished.framebuffer);
    m_gl.glBlitFramebuffer(0, 0, m_size.width(), m_size.height(), 0, 0, m_size.width(),
                           m_size.height(), GL_COLOR_BUFFER_BIT, GL_NEAREST);
    checkGl(m_gl, "PictureBuffers::finishQuickPicture");
}

void PictureBuffers::show(GLuint framebuffer, QPoint bottomLeft)
{
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, m_finished.framebuffer);
    m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    m_gl.glBlitFramebuffer(0, 0, m_size.width(), m_size.height(), bottomLeft.x(), bottomLeft.y(),
                           bottomLeft.x() + m_size.width(), bottomLeft.y() + m_size.height(),
                           GL_COLOR_BUFFER_BIT, GL_NEAREST);
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    checkGl(m_gl, "PictureBuffers::show");
}

} // namespace pathscope
