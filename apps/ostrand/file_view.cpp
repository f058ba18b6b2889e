#include "file_view.h"

#include "icons.h"
#include "model_page.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ostrand {
namespace {

constexpr int kPictureSize = 96;

} // namespace

FileView::FileView(QWidget* parent)
    : QStackedWidget(parent)
{
    setObjectName(QStringLiteral("fileView"));
    setMinimumSize(420, 200);
    addWidget(makeInvitation());
    choosePage(FileKind::Unknown);
}

QWidget* FileView::makeInvitation()
{
    auto* content = new QWidget(this);
    auto* picture = new QLabel(content);
    picture->setAlignment(Qt::AlignCenter);
    picture->setPixmap(applicationIcon().pixmap(kPictureSize, kPictureSize));
    auto* heading = new QLabel(tr("Open a model or a G-code file"), content);
    heading->setObjectName(QStringLiteral("invitation"));
    heading->setAlignment(Qt::AlignCenter);
    setLargerFont(heading, 1.4);
    auto* hint = new QLabel(tr("or drop it here"), content);
    hint->setAlignment(Qt::AlignCenter);
    auto* open = new QPushButton(icon("open"), tr("O&pen..."), content);
    open->setObjectName(QStringLiteral("openButton"));
    open->setAutoDefault(true);
    open->setMinimumWidth(140);
    connect(open, &QPushButton::clicked, this, &FileView::openRequested);

    auto* layout = new QVBoxLayout(content);
    layout->setSpacing(10);
    layout->addWidget(picture);
    layout->addWidget(heading);
    layout->addWidget(open, 0, Qt::AlignHCenter);
    layout->addWidget(hint);
    return centered(content, this);
}

void FileView::choosePage(FileKind kind)
{
    if (m_page && kind == m_kind)
        return;
    // A page that is not seen would keep its paths in memory and its window on the screen.
    delete m_page;
    m_kind = kind;
    switch (kind) {
    case FileKind::GCode:
        m_page = new GCodePage(m_machine, this);
        break;
    case FileKind::Model:
        m_page = new ModelPage(this);
        break;
    case FileKind::Unknown:
        m_page = new DetailsPage(this);
        break;
    }
    addWidget(m_page);
    connect(m_page, &FilePage::makeRequested, this, &FileView::makeRequested);
}

void FileView::setFile(const QString& path)
{
    const bool isOther = path != m_path;
    m_path = path;
    if (path.isEmpty()) {
        setCurrentIndex(0);
        return;
    }
    choosePage(fileKindOf(path));
    setCurrentWidget(m_page);
    m_page->showFile(path);
    if (isOther)
        m_page->focusMakeButton();
}

void FileView::setMachine(const ViewedMachine& machine)
{
    m_machine = machine;
    if (auto* page = qobject_cast<GCodePage*>(m_page))
        page->setMachine(machine);
}

pathscope::ToolpathGLWidget* FileView::toolpathView() const
{
    const auto* page = qobject_cast<GCodePage*>(m_page);
    return page ? &page->view() : nullptr;
}

} // namespace ostrand
