#include "pathscope/toolpath_gl_widget.h"

#include "gl_program.h"
#include "picture_painter.h"

#include "pathscope/camera_gestures.h"
#include "pathscope/toolpath_loader.h"
#include "pathscope/toolpath_overlay.h"
#include "pathscope/toolpath_scene.h"
#include "pathscope/toolpath_texts.h"
#include "pathscope/toolpath_view_model.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QPointer>
#include <QTimer>

namespace pathscope {

namespace {

constexpr char kLogUnit[] = "platform\\pathscope\\toolpath_gl_widget";

constexpr int kNeededVersion = 33;
/** How long the event loop may be kept by drawing. */
constexpr int kSliceMilliseconds = 8;
/** The first picture after a change of size is drawn at once, if it takes no longer. */
constexpr int kFirstPictureMilliseconds = 100;
constexpr int kRestMilliseconds = 300;

QGLFormat wantedFormat()
{
    QGLFormat format;
    format.setVersion(kNeededVersion / 10, kNeededVersion % 10);
    format.setProfile(QGLFormat::CoreProfile);
    // The picture has a framebuffer of its own, with all that it needs.
    format.setDepth(false);
    format.setStencil(false);
    format.setAlpha(false);
    format.setSampleBuffers(false);
    return format;
}

} // namespace

class ToolpathGLWidget::Private
{
public:
    Private(ToolpathGLWidget& view, SceneSetting setting)
        : q(view)
        , scene(std::move(setting))
    {}

    void layOut();
    void follow();
    void give(const std::shared_ptr<const Toolpaths>& toolpaths);
    void fit();
    void goTo(int preset);
    void setCamera(const Camera& camera);
    void cameraMoved();
    void showGesture();
    void updateMotion();
    void takeSize();
    void work();
    void wake();
    void release();
    QString whatIsMissing() const;
    void showNotice();
    bool isComplete() const;
    void completeIfDone();

    QSizeF window() const { return notice->size(); }
    /** A place of the view's where there is a picture. */
    bool isOnPicture(QPoint position) const
    {
        return why.isEmpty() && notice->geometry().contains(position);
    }
    QPointF inPicture(QPointF position) const { return position - QPointF(notice->pos()); }
    bool isOrthographic() const { return scene.viewModel()->isOrthographic(); }

    ToolpathGLWidget& q;
    ToolpathScene scene;
    ToolpathLoader loader;
    ToolpathOverlay* overlay = nullptr;
    /** Lies where the picture is; seen only when there is none. */
    QLabel* notice = nullptr;
    QTimer working;
    QTimer resting;

    std::unique_ptr<PicturePainter> painter;
    QPointer<QOpenGLContext> painterContext;
    QString why;
    int frames = 0;
    /** By painters that are gone. */
    std::uint64_t uploadedBefore = 0;

    CameraGestures gestures;
    /** Once the user has looked somewhere, the view does not look elsewhere by itself. */
    bool cameraIsTheUsers = false;
    /** A file was asked for, and pictureComplete() was not emitted yet. */
    bool awaitsPicture = false;
};

ToolpathGLWidget::ToolpathGLWidget(const QGLWidget* share, bool dualExtrusion,
                                   const std::vector<Orvane::Material>& materials,
                                   const std::vector<QColor>& colours,
                                   const Orvane::BoundingBox& buildVolume,
                                   Orvane::Ground::PlatformShape platformShape,
                                   Orvane::Ground::DrawFlags drawFlags, QWidget* parent)
    : QGLWidget(wantedFormat(), parent, share)
    , d(std::make_unique<Private>(*this, SceneSetting{dualExtrusion, materials, colours,
                                                      buildVolume, platformShape, drawFlags}))
{
    setFocusPolicy(Qt::ClickFocus);
    setCursor(Qt::OpenHandCursor);
    d->layOut();
    d->follow();
}

ToolpathGLWidget::~ToolpathGLWidget()
{
    // The overlay works on the scene to its end.
    delete d->overlay;
    d->release();
    // The context goes after this object's parts.
    if (d->painterContext)
        d->painterContext->disconnect(this);
}

void ToolpathGLWidget::Private::layOut()
{
    notice = new QLabel(&q);
    notice->setObjectName(QStringLiteral("notice"));
    notice->setWordWrap(true);
    notice->setAlignment(Qt::AlignCenter);
    notice->setMargin(24);
    notice->setAutoFillBackground(true);
    notice->setTextInteractionFlags(Qt::TextSelectableByMouse);
    notice->setCursor(Qt::ArrowCursor);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    policy.setRetainSizeWhenHidden(true);
    notice->setSizePolicy(policy);
    notice->hide();
    overlay = new ToolpathOverlay(&scene, &q);
    overlay->setObjectName(QStringLiteral("overlay"));
    overlay->setAutoFillBackground(true);
    overlay->setCursor(Qt::ArrowCursor);
    // The view is a window of the system's own; what lies on it has to be one as well.
    notice->setAttribute(Qt::WA_NativeWindow);
    overlay->setAttribute(Qt::WA_NativeWindow);
    auto* layout = new QHBoxLayout(&q);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(notice, 1);
    layout->addWidget(overlay);
}

void ToolpathGLWidget::Private::follow()
{
    working.setSingleShot(true);
    working.setInterval(0);
    connect(&working, &QTimer::timeout, &q, [this] { work(); });
    resting.setSingleShot(true);
    resting.setInterval(kRestMilliseconds);
    connect(&resting, &QTimer::timeout, &q, [this] { updateMotion(); });

    connect(&scene, &ToolpathScene::cameraChanged, &q, [this] { cameraMoved(); });
    connect(&scene, &ToolpathScene::changed, &q, [this] { wake(); });
    connect(overlay, &ToolpathOverlay::cameraRequested, &q, [this](int preset) { goTo(preset); });

    connect(&loader, &ToolpathLoader::progressChanged, overlay, &ToolpathOverlay::setProgress);
    connect(&loader, &ToolpathLoader::pieceReady, &q,
            [this](const std::shared_ptr<const Toolpaths>& toolpaths) { give(toolpaths); });
    connect(&loader, &ToolpathLoader::finished, &q,
            [this](const std::shared_ptr<const Toolpaths>& toolpaths) {
                give(toolpaths);
                updateMotion();
                showNotice();
                completeIfDone();
            });
    connect(&loader, &ToolpathLoader::failed, &q, [this](const QString& reason) {
        overlay->setProgress(1);
        overlay->setError(reason);
        updateMotion();
        const QPointer<ToolpathGLWidget> self(&q);
        emit q.loadFailed(reason);
        if (self && awaitsPicture) {
            awaitsPicture = false;
            emit q.pictureComplete();
        }
    });
}

void ToolpathGLWidget::setFile(const QFileInfo& file)
{
    d->awaitsPicture = true;
    d->cameraIsTheUsers = false;
    d->overlay->setError(QString());
    d->scene.setToolpaths(nullptr);
    d->fit();
    d->loader.load(file.filePath());
    d->updateMotion();
}

ToolpathOverlay* ToolpathGLWidget::overlayWidget() const
{
    return d->overlay;
}

ToolpathScene* ToolpathGLWidget::toolpathScene() const
{
    return &d->scene;
}

QString ToolpathGLWidget::whyNoPicture() const
{
    return d->why;
}

int ToolpathGLWidget::frameCount() const
{
    return d->frames;
}

std::uint64_t ToolpathGLWidget::uploadedBytes() const
{
    return d->uploadedBefore + (d->painter != nullptr ? d->painter->uploadedBytes() : 0);
}

std::uint64_t ToolpathGLWidget::drawnSegments() const
{
    return d->painter != nullptr ? d->painter->drawnSegments() : 0;
}

bool ToolpathGLWidget::isPictureComplete() const
{
    return d->isComplete();
}

QSize ToolpathGLWidget::sizeHint() const
{
    return {960, 640};
}

QSize ToolpathGLWidget::minimumSizeHint() const
{
    return {480, 320};
}

void ToolpathGLWidget::Private::give(const std::shared_ptr<const Toolpaths>& toolpaths)
{
    scene.setToolpaths(toolpaths);
    if (!cameraIsTheUsers)
        fit();
}

void ToolpathGLWidget::Private::fit()
{
    Camera camera = scene.camera();
    camera.fit(scene.fitBox(), window(), isOrthographic());
    scene.setCamera(camera);
}

void ToolpathGLWidget::Private::goTo(int preset)
{
    Camera camera = scene.camera();
    if (preset >= 0)
        camera.setPreset(Camera::Preset(preset));
    camera.fit(scene.fitBox(), window(), isOrthographic());
    cameraIsTheUsers = preset >= 0;
    scene.setCamera(camera);
}

void ToolpathGLWidget::Private::setCamera(const Camera& camera)
{
    cameraIsTheUsers = true;
    scene.setCamera(camera);
}

void ToolpathGLWidget::Private::cameraMoved()
{
    resting.start();
    updateMotion();
}

void ToolpathGLWidget::Private::showGesture()
{
    switch (gestures.kind()) {
    case CameraGestures::Kind::None:
        q.setCursor(Qt::OpenHandCursor);
        break;
    case CameraGestures::Kind::Turn:
        q.setCursor(Qt::ClosedHandCursor);
        break;
    case CameraGestures::Kind::Move:
        q.setCursor(Qt::SizeAllCursor);
        break;
    }
}

void ToolpathGLWidget::Private::updateMotion()
{
    if (painter != nullptr)
        painter->setInMotion(resting.isActive() || loader.isLoading());
    wake();
}

/** The picture may be another now. */
void ToolpathGLWidget::Private::wake()
{
    if (q.isVisible() && painter != nullptr && !working.isActive())
        working.start();
}

/** The painter may work before the first paint, and then needs to know how large. */
void ToolpathGLWidget::Private::takeSize()
{
    const QSizeF device = window() * q.devicePixelRatioF();
    painter->setSize(window(), QSize(qRound(device.width()), qRound(device.height())));
}

/** Receivers of what it emits in the end may do what they like, such as to delete the view. */
void ToolpathGLWidget::Private::work()
{
    if (painter == nullptr || !q.isVisible())
        return;
    q.makeCurrent();
    painter->update();
    if (painter->work(kSliceMilliseconds)) {
        // paintGL() goes on from there.
        q.update();
        return;
    }
    if (painter->isBusy())
        working.start();
    else
        completeIfDone();
}

bool ToolpathGLWidget::Private::isComplete() const
{
    return painter != nullptr && !loader.isLoading() && !working.isActive() &&
           painter->isComplete();
}

void ToolpathGLWidget::Private::completeIfDone()
{
    const bool isGivenUp = !why.isEmpty() && !loader.isLoading();
    if (!awaitsPicture || !(isComplete() || isGivenUp))
        return;
    awaitsPicture = false;
    emit q.pictureComplete();
}

/** With the painter's context as the current one, or without any. */
void ToolpathGLWidget::Private::release()
{
    if (painter == nullptr)
        return;
    if (painterContext != nullptr && q.context() != nullptr && q.context()->isValid())
        q.makeCurrent();
    uploadedBefore += painter->uploadedBytes();
    painter.reset();
}

/** Why OpenGL cannot draw the picture; empty when it can. */
QString ToolpathGLWidget::Private::whatIsMissing() const
{
    const QGLContext* context = q.context();
    if (context == nullptr || !context->isValid())
        return tr("There is no picture of the toolpaths, because OpenGL is not available here.");
    const QGLFormat format = context->format();
    if (10 * format.majorVersion() + format.minorVersion() < kNeededVersion)
        return tr("There is no picture of the toolpaths, because it needs OpenGL 3.3, and here is "
                  "only OpenGL %1.%2.")
            .arg(format.majorVersion())
            .arg(format.minorVersion());
    return QString();
}

void ToolpathGLWidget::Private::showNotice()
{
    notice->setVisible(!why.isEmpty());
    if (why.isEmpty())
        return;
    QStringList lines{why};
    if (scene.toolpaths()->segmentCount > 0)
        lines << QString() << totalsLines(scene.totals());
    notice->setText(lines.join(QLatin1Char('\n')));
}

void ToolpathGLWidget::initializeGL()
{
    d->release();
    d->why = d->whatIsMissing();
    if (d->why.isEmpty()) {
        auto* gl = context()->contextHandle()->versionFunctions<QOpenGLFunctions_3_3_Core>();
        try {
            if (gl == nullptr || !gl->initializeOpenGLFunctions())
                throw std::runtime_error("no functions of OpenGL 3.3");
            d->painter = std::make_unique<PicturePainter>(*gl, d->scene);
            d->painter->setColours(GroundColours::of(palette()));
            d->takeSize();
            d->painterContext = context()->contextHandle();
            connect(
                d->painterContext, &QOpenGLContext::aboutToBeDestroyed, this,
                [this] { d->release(); }, Qt::DirectConnection);
        } catch (const std::exception& error) {
            TROVEK_LOG(1) << "OpenGL does not take the shaders: " << error.what() << std::endl;
            d->why = tr("There is no picture of the toolpaths, because the graphics driver does "
                        "not take the view's shaders.");
        }
    }
    d->showNotice();
    d->updateMotion();
}

void ToolpathGLWidget::resizeGL(int /*width*/, int /*height*/)
{
    if (!d->cameraIsTheUsers)
        d->fit();
    d->cameraMoved();
}

void ToolpathGLWidget::paintGL()
{
    if (d->painter == nullptr)
        return;
    const qreal ratio = devicePixelRatioF();
    const QRect place = d->notice->geometry();
    d->takeSize();
    d->painter->update();
    if (!d->painter->hasPicture())
        d->painter->work(kFirstPictureMilliseconds);

    auto* gl = context()->contextHandle()->versionFunctions<QOpenGLFunctions_3_3_Core>();
    const GLuint window = context()->contextHandle()->defaultFramebufferObject();
    gl->glBindFramebuffer(GL_FRAMEBUFFER, window);
    const QColor ground = GroundColours::of(palette()).bottom;
    gl->glClearColor(float(ground.redF()), float(ground.greenF()), float(ground.blueF()), 1);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    if (d->painter->hasPicture())
        d->painter->show(window, QPoint(qRound(place.x() * ratio),
                                        qRound((height() - place.bottom() - 1) * ratio)));
    ++d->frames;
    // The next slice; or that the picture is complete, which is told when it is on the screen.
    d->wake();
}

void ToolpathGLWidget::showEvent(QShowEvent* event)
{
    QGLWidget::showEvent(event);
    // Without a context there is no initializeGL() to find that out.
    if (!isValid()) {
        d->why = d->whatIsMissing();
        d->showNotice();
        d->completeIfDone();
    }
    d->wake();
}

void ToolpathGLWidget::changeEvent(QEvent* event)
{
    QGLWidget::changeEvent(event);
    if (event->type() != QEvent::PaletteChange || d->painter == nullptr)
        return;
    d->painter->setColours(GroundColours::of(palette()));
    d->wake();
}

void ToolpathGLWidget::mousePressEvent(QMouseEvent* event)
{
    if (!d->isOnPicture(event->pos()) ||
        !d->gestures.press(event->button(), event->modifiers(), d->inPicture(event->localPos()))) {
        event->ignore();
        return;
    }
    d->showGesture();
}

void ToolpathGLWidget::mouseMoveEvent(QMouseEvent* event)
{
    Camera camera = d->scene.camera();
    if (d->gestures.drag(camera, event->buttons(), d->inPicture(event->localPos()), d->window(),
                         d->isOrthographic()))
        d->setCamera(camera);
    d->showGesture();
}

void ToolpathGLWidget::mouseReleaseEvent(QMouseEvent* event)
{
    d->gestures.release(event->button());
    d->showGesture();
}

void ToolpathGLWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && d->isOnPicture(event->pos()))
        d->goTo(-1);
}

void ToolpathGLWidget::wheelEvent(QWheelEvent* event)
{
    event->setAccepted(d->isOnPicture(event->position().toPoint()));
    if (!event->isAccepted())
        return;
    Camera camera = d->scene.camera();
    if (CameraGestures::wheel(camera, event->angleDelta().y(), d->inPicture(event->position()),
                              d->window(), d->isOrthographic()))
        d->setCamera(camera);
}

} // namespace pathscope
