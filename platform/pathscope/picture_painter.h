#pragma once

#include "coarse_paths.h"
#include "ground_renderer.h"
#include "picture_buffers.h"
#include "picture_schedule.h"
#include "picture_view.h"
#include "toolpath_renderer.h"

#include <QElapsedTimer>
#include <QOpenGLFunctions_3_3_Core>

#include <memory>

namespace pathscope {

class ToolpathScene;

/**
 * Paints a scene with OpenGL in short steps, and keeps the picture.
 *
 * Every call, the destructor too, needs the context of the constructor as the current one.
 */
class PicturePainter
{
public:
    /**
     * @param scene must outlive the painter
     * @throws std::runtime_error with what the driver says when it does not take the shaders
     */
    PicturePainter(QOpenGLFunctions_3_3_Core& gl, ToolpathScene& scene);
    ~PicturePainter();

    void setColours(const GroundColours& colours);
    /**
     * @param window  of the picture, in logical pixels
     * @param size    the same in device pixels
     */
    void setSize(QSizeF window, QSize size);
    /** While the camera moves, or the file is still read: quick pictures count more than full ones.
     */
    void setInMotion(bool inMotion);
    /** After any change of the scene. */
    void update();

    /** True while work() has something to do. */
    bool isBusy() const;
    /**
     * Works for about that long.
     *
     * @return true when there is another picture to show; the work goes no further then
     */
    bool work(int milliseconds);
    /** There is a picture to show. */
    bool hasPicture() const { return m_hasPicture; }
    /** The picture that is there shows all of the scene in full. */
    bool isComplete() const;
    /** Puts the picture into a framebuffer of the window's, at a place in it. */
    void show(GLuint framebuffer, QPoint bottomLeft);

    std::uint64_t uploadedBytes() const { return m_renderer.uploadedBytes(); }
    std::uint64_t drawnSegments() const { return m_renderer.drawnSegments(); }

private:
    struct Look;

    void takeInPoints(const QElapsedTimer& clock, int milliseconds);
    bool hasAllPoints() const;
    void setTarget();
    bool carryOut(const PictureSchedule::Step& step);
    void beginPaths(QSize pixels);
    void drawSegments(SegmentRange segments);
    void beginQuickPicture();
    bool goOnWithQuickPicture();
    void drawCoarse(SegmentRange segments);
    void drawTopLayer();
    QRect placeOf(SegmentRange segments) const;
    void learnSpeed(std::uint64_t segments, qint64 nanoseconds);

    QOpenGLFunctions_3_3_Core& m_gl;
    ToolpathScene& m_scene;
    ToolpathRenderer m_renderer;
    GroundRenderer m_ground;
    PictureBuffers m_buffers;
    PictureSchedule m_schedule;
    CoarsePaths m_coarse;
    int m_coarseUploaded = -1;
    std::unique_ptr<Look> m_look;
    GroundColours m_colours;
    QSizeF m_window;
    std::uint64_t m_segments = 0;
    std::uint64_t m_segmentsASlice = 8192;
    /** A quick picture is begun, and what is left of its coarse paths. */
    bool m_isQuickBegun = false;
    SegmentRange m_coarseLeft;
    bool m_hasPicture = false;
    /** Where the picture is another than the finished one, in pixels of the window's part. */
    QRect m_changed;
    /** The renderer is set up for the view of the full picture. */
    bool m_begun = false;
};

} // namespace pathscope
