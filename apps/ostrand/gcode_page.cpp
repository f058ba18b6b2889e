#include "gcode_page.h"

#include <pathscope/thumbnail.h>
#include <pathscope/toolpath_gl_widget.h>
#include <pathscope/toolpath_keys.h>
#include <pathscope/toolpath_scene.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QImage>
#include <QPointer>
#include <QThreadPool>

namespace ostrand {

bool ViewedMachine::operator==(const ViewedMachine& other) const
{
    const Orvane::BoundingBox& a = buildVolume;
    const Orvane::BoundingBox& b = other.buildVolume;
    return a.xMin == b.xMin && a.yMin == b.yMin && a.zMin == b.zMin && a.xMax == b.xMax &&
           a.yMax == b.yMax && a.zMax == b.zMax && extruders == other.extruders;
}

GCodePage::GCodePage(const ViewedMachine& machine, QWidget* parent)
    : PicturePage(parent)
    , m_machine(machine)
{
    makeView();
}

void GCodePage::makeView()
{
    m_view = new pathscope::ToolpathGLWidget(nullptr, m_machine.extruders >= 2, {}, {},
                                             m_machine.buildVolume, Orvane::Ground::Rectangular,
                                             Orvane::Ground::DrawBuildVolume, this);
    m_view->setObjectName(QStringLiteral("toolpathView"));
    m_keys = new pathscope::ToolpathKeys(*m_view->toolpathScene(), *m_view->overlayWidget(), *this,
                                         Qt::WidgetWithChildrenShortcut);
    setLargePicture(*m_view);
    connect(m_view->toolpathScene(), &pathscope::ToolpathScene::toolpathsChanged, this,
            &GCodePage::renderPicture);
}

void GCodePage::renderPicture()
{
    const auto paths = m_view->toolpathScene()->toolpaths();
    if (!paths->complete)
        return;
    const qreal ratio = devicePixelRatioF();
    const QSize size = smallPictureSize();
    // In a thread: a large file takes a moment.
    QThreadPool::globalInstance()->start([self = QPointer<GCodePage>(this), paths, size, ratio] {
        QImage image = pathscope::renderThumbnail(*paths, size);
        image.setDevicePixelRatio(ratio);
        const auto take = [self, paths, image] {
            if (self && self->m_view->toolpathScene()->toolpaths() == paths)
                self->setSmallPicture(image);
        };
        QMetaObject::invokeMethod(QCoreApplication::instance(), take, Qt::QueuedConnection);
    });
}

void GCodePage::setMachine(const ViewedMachine& machine)
{
    if (machine == m_machine)
        return;
    m_machine = machine;
    delete m_keys;
    delete m_view;
    makeView();
    if (!path().isEmpty())
        m_view->setFile(QFileInfo(path()));
}

void GCodePage::read(const QFileInfo& file)
{
    m_view->setFile(file);
}

} // namespace ostrand
