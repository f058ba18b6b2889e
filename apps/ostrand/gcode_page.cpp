#include "gcode_page.h"

#include <pathscope/thumbnail.h>
#include <pathscope/toolpath_gl_widget.h>
#include <pathscope/toolpath_keys.h>
#include <pathscope/toolpath_scene.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QThreadPool>
#include <QVBoxLayout>

namespace ostrand {
namespace {

constexpr int kPictureSize = 44;

} // namespace

bool ViewedMachine::operator==(const ViewedMachine& other) const
{
    const Orvane::BoundingBox& a = buildVolume;
    const Orvane::BoundingBox& b = other.buildVolume;
    return a.xMin == b.xMin && a.yMin == b.yMin && a.zMin == b.zMin && a.xMax == b.xMax &&
           a.yMax == b.yMax && a.zMax == b.zMax && extruders == other.extruders;
}

GCodePage::GCodePage(const ViewedMachine& machine, QWidget* parent)
    : FilePage(parent)
    , m_machine(machine)
    , m_column(new QVBoxLayout(this))
{
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    makeBar();
    makeView();
}

void GCodePage::makeBar()
{
    setLargerFont(m_name, 1.15);
    // The tool tip says where it lies.
    m_folder->hide();
    m_picture->setFixedSize(kPictureSize, kPictureSize);
    m_picture->setScaledContents(true);
    m_name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    auto* facts = new QHBoxLayout;
    facts->setSpacing(14);
    for (QLabel* label : {m_kind, m_size, m_modified}) {
        label->setWordWrap(false);
        facts->addWidget(label);
    }
    facts->addStretch(1);
    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    words->addWidget(m_name);
    words->addLayout(facts);
    words->addWidget(m_remark);
    auto* bar = new QHBoxLayout;
    bar->setContentsMargins(12, 8, 12, 8);
    bar->setSpacing(16);
    bar->addWidget(m_picture);
    bar->addLayout(words, 1);
    bar->addWidget(m_make, 0, Qt::AlignVCenter);
    m_column->addLayout(bar);
}

void GCodePage::makeView()
{
    m_view = new pathscope::ToolpathGLWidget(nullptr, m_machine.extruders >= 2, {}, {},
                                             m_machine.buildVolume, Orvane::Ground::Rectangular,
                                             Orvane::Ground::DrawBuildVolume, this);
    m_view->setObjectName(QStringLiteral("toolpathView"));
    m_keys = new pathscope::ToolpathKeys(*m_view->toolpathScene(), *m_view->overlayWidget(), *this,
                                         Qt::WidgetWithChildrenShortcut);
    m_column->addWidget(m_view, 1);
    connect(m_view->toolpathScene(), &pathscope::ToolpathScene::toolpathsChanged, this,
            &GCodePage::renderPicture);
}

void GCodePage::renderPicture()
{
    const auto paths = m_view->toolpathScene()->toolpaths();
    if (!paths->complete)
        return;
    const qreal ratio = devicePixelRatioF();
    const QSize size = QSize(kPictureSize, kPictureSize) * ratio;
    // In a thread: a large file takes a moment.
    QThreadPool::globalInstance()->start([self = QPointer<GCodePage>(this), paths, size, ratio] {
        QImage image = pathscope::renderThumbnail(*paths, size);
        image.setDevicePixelRatio(ratio);
        const auto take = [self, paths, image] {
            if (!self || self->m_view->toolpathScene()->toolpaths() != paths)
                return;
            self->m_rendered = QPixmap::fromImage(image);
            self->showPicture();
        };
        QMetaObject::invokeMethod(QCoreApplication::instance(), take, Qt::QueuedConnection);
    });
}

void GCodePage::showPicture()
{
    if (!m_rendered.isNull())
        m_picture->setPixmap(m_rendered);
}

void GCodePage::setMachine(const ViewedMachine& machine)
{
    if (machine == m_machine)
        return;
    m_machine = machine;
    delete m_keys;
    delete m_view;
    makeView();
    if (!m_path.isEmpty())
        m_view->setFile(QFileInfo(m_path));
}

void GCodePage::showFile(const QString& path)
{
    FilePage::showFile(path);
    m_name->setToolTip(Qt::convertFromPlainText(QDir::toNativeSeparators(path)));
    const QFileInfo info(path);
    const qint64 bytes = info.exists() ? info.size() : -1;
    if (path == m_path && bytes == m_bytes && info.lastModified() == m_changed) {
        showPicture();
        return;
    }
    m_rendered = QPixmap();
    m_path = path;
    m_bytes = bytes;
    m_changed = info.lastModified();
    m_view->setFile(info);
}

} // namespace ostrand
