#pragma once

#include "picture_schedule.h"

#include <QOpenGLFunctions_3_3_Core>
#include <QRect>
#include <QSize>

#include <array>

namespace pathscope {

/**
 * The framebuffers of a view: the picture that is drawn piece by piece, with its depths and copies
 * of both; and the finished one that the window shows.
 *
 * The picture has more pixels than the window where that is affordable, which is what smooths its
 * edges: on a software renderer it costs half of what samples in each pixel do.
 *
 * Every call, the destructor too, needs the context of the constructor as the current one.
 */
class PictureBuffers
{
public:
    explicit PictureBuffers(QOpenGLFunctions_3_3_Core& gl);
    ~PictureBuffers();

    /**
     * @param size  of the window's part, in device pixels
     * @return true when the size is another than before; nothing of the pictures is left then
     */
    bool resize(QSize size);
    QSize size() const { return m_size; }
    /** Of the picture, in its own pixels. */
    QSize pictureSize() const { return m_size * m_scale; }

    /** To draw onto the picture. */
    void bindPicture();
    /** To draw a quick picture without the additional pixels, in the place of the other. */
    void bindQuickPicture();

    void save(int checkpoint);
    void restore(int checkpoint);
    /**
     * Takes the picture over into what the window shows.
     *
     * @param part  what is new of it, in device pixels of the window's part from its bottom left
     */
    void finish(QRect part);
    void finishQuickPicture();
    /** Puts what was finished last into a framebuffer of the window's, at a place in it. */
    void show(GLuint framebuffer, QPoint bottomLeft);

private:
    struct Target
    {
        GLuint framebuffer = 0;
        GLuint colour = 0;
        GLuint depth = 0;
    };
    Target make(QSize size, bool withDepth);
    void destroy(Target& target);
    void copy(const Target& from, const Target& to);

    QOpenGLFunctions_3_3_Core& m_gl;
    QSize m_size;
    int m_scale = 1;
    Target m_picture;
    Target m_finished;
    /** Made when first needed: a short file never needs any. */
    std::array<Target, PictureSchedule::kCheckpoints> m_checkpoints;
};

} // namespace pathscope
