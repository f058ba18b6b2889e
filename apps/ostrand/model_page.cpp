#include "model_page.h"

#include "file_kinds.h"
#include "model_picture.h"

#include <geometry/mesh.h>
#include <geometry/mesh_file.h>

#include <trovek/text.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>

#include <exception>

namespace ostrand {
namespace {

using trovek::geometry::Mesh;

/** After the last change of the size. */
constexpr int kDrawDelayMs = 50;
/** Reading more than this for a picture takes the memory that the slicer needs. */
constexpr qint64 kLargestFile = 512 * 1024 * 1024;
constexpr QSize kSmallestPicture(120, 120);

/** "40.0 x 40.0 x 12.5 mm" */
QString extentText(const Mesh& mesh)
{
    const trovek::geometry::Box box = boundingBox(mesh);
    const trovek::geometry::Vector size = box.maximum - box.minimum;
    const QLocale locale;
    const auto text = [&locale](double millimetres) {
        return locale.toString(millimetres, 'f', 1);
    };
    return ModelPage::tr("%1 x %2 x %3 mm").arg(text(size.x), text(size.y), text(size.z));
}

/** Hands over to the window's thread; nothing happens when the page has gone. */
template <typename Function>
void later(QPointer<ModelPage> page, Function function)
{
    const auto call = [page, function] {
        if (page)
            function(*page);
    };
    QMetaObject::invokeMethod(QCoreApplication::instance(), call, Qt::QueuedConnection);
}

} // namespace

ModelPage::ModelPage(QWidget* parent)
    : PicturePage(parent)
    , m_extent(new QLabel(this))
    , m_large(new QLabel(this))
    , m_drawTimer(new QTimer(this))
{
    addFact(*m_extent);
    m_extent->setObjectName(QStringLiteral("modelExtent"));
    m_large->setObjectName(QStringLiteral("modelPicture"));
    m_large->setAlignment(Qt::AlignCenter);
    m_large->setWordWrap(true);
    m_large->setMinimumSize(kSmallestPicture);
    m_large->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    setLargePicture(*m_large);

    m_drawTimer->setSingleShot(true);
    m_drawTimer->setInterval(kDrawDelayMs);
    connect(m_drawTimer, &QTimer::timeout, this, &ModelPage::draw);
}

ModelPage::~ModelPage()
{
    stopWork();
}

void ModelPage::stopWork()
{
    if (m_canceled)
        *m_canceled = true;
    m_canceled.reset();
}

void ModelPage::read(const QFileInfo& file)
{
    stopWork();
    m_mesh.reset();
    m_extent->clear();
    if (!file.exists()) {
        showText(QString());
        return;
    }
    if (!trovek::geometry::meshFormatOfPath(trovek::toStdString(path()))) {
        showText(tr("There is no picture of this kind of model. It can be made all the same."));
        return;
    }
    if (file.size() > kLargestFile) {
        showText(tr("The model is too large for a picture. It can be made all the same."));
        return;
    }
    showText(tr("Reading the model..."));
    const auto canceled = std::make_shared<std::atomic<bool>>(false);
    m_canceled = canceled;
    const auto work = [page = QPointer<ModelPage>(this), canceled,
                       path = trovek::toStdString(path())] {
        try {
            const auto mesh = std::make_shared<const Mesh>(
                trovek::geometry::loadMesh(path, [canceled](double) { return !*canceled; }));
            later(page, [canceled, mesh](ModelPage& self) {
                if (!*canceled)
                    self.takeMesh(mesh);
            });
        } catch (const std::exception& e) {
            const QString reason = QString::fromUtf8(e.what());
            later(page, [canceled, reason](ModelPage& self) {
                if (!*canceled)
                    self.fail(reason);
            });
        }
    };
    QThreadPool::globalInstance()->start(work);
}

void ModelPage::fail(const QString& reason)
{
    m_canceled.reset();
    showText(tr("The model cannot be shown: %1").arg(reason));
}

void ModelPage::takeMesh(std::shared_ptr<const Mesh> mesh)
{
    m_mesh = std::move(mesh);
    m_extent->setText(extentText(*m_mesh));
    draw();
}

void ModelPage::draw()
{
    if (!m_mesh)
        return;
    stopWork();
    const auto canceled = std::make_shared<std::atomic<bool>>(false);
    m_canceled = canceled;
    const qreal ratio = devicePixelRatioF();
    const QSize size = m_large->size() * ratio;
    const QSize small = smallPictureSize();
    // In a thread: a model of many triangles takes a moment.
    const auto work = [page = QPointer<ModelPage>(this), canceled, mesh = m_mesh, size, small,
                       ratio] {
        QImage large = renderModel(*mesh, size, *canceled);
        QImage icon = renderModel(*mesh, small, *canceled);
        large.setDevicePixelRatio(ratio);
        icon.setDevicePixelRatio(ratio);
        later(page, [canceled, large, icon](ModelPage& self) {
            if (!*canceled)
                self.takePictures(large, icon);
        });
    };
    QThreadPool::globalInstance()->start(work);
}

void ModelPage::takePictures(const QImage& large, const QImage& icon)
{
    m_canceled.reset();
    m_large->setPixmap(QPixmap::fromImage(large));
    setSmallPicture(icon);
    emit pictureChanged();
}

void ModelPage::showText(const QString& text)
{
    m_large->setText(text);
    emit pictureChanged();
}

void ModelPage::resizeEvent(QResizeEvent* event)
{
    PicturePage::resizeEvent(event);
    m_drawTimer->start();
}

} // namespace ostrand
