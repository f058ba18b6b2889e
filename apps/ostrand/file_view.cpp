#include "file_view.h"

#include "icons.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace ostrand {
namespace {

constexpr int kPictureSize = 96;

QLabel* valueLabel(const char* name, QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    // Names come from outside and must not turn into mark-up.
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setWordWrap(true);
    return label;
}

void setLargerFont(QLabel* label, qreal factor)
{
    QFont font = label->font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(qRound(font.pixelSize() * factor));
    font.setBold(true);
    label->setFont(font);
}

/** Puts the widget into the middle of a page, which scrolls where the window is too small. */
QWidget* centered(QWidget* content, QWidget* parent)
{
    auto* page = new QWidget(parent);
    auto* row = new QHBoxLayout(page);
    row->setContentsMargins(24, 16, 24, 16);
    row->addStretch(1);
    row->addWidget(content, 4, Qt::AlignVCenter);
    row->addStretch(1);
    auto* area = new QScrollArea(parent);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(page);
    return area;
}

} // namespace

QString whyNotMakeable(const QString& path)
{
    if (!QFileInfo(path).isFile())
        return FileView::tr("This file no longer exists.");
    switch (fileKindOf(path)) {
    case FileKind::GCode:
        return QString();
    case FileKind::Model:
        return FileView::tr("This version of Ostrand prints G-code only. Slice the model with a "
                            "slicer and open the G-code file that it saves.");
    case FileKind::Unknown:
        break;
    }
    return FileView::tr("Ostrand does not know this kind of file. It prints G-code files.");
}

FileView::FileView(QWidget* parent)
    : QStackedWidget(parent)
{
    setObjectName(QStringLiteral("fileView"));
    setMinimumSize(420, 200);
    addWidget(makeInvitation());
    addWidget(makeDetails());
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

QWidget* FileView::makeDetails()
{
    m_details = new QWidget(this);
    m_picture = new QLabel(m_details);
    m_name = valueLabel("fileName", m_details);
    setLargerFont(m_name, 1.4);
    m_folder = valueLabel("fileFolder", m_details);
    m_kind = valueLabel("fileKind", m_details);
    m_size = valueLabel("fileSize", m_details);
    m_modified = valueLabel("fileModified", m_details);
    m_remark = valueLabel("fileRemark", m_details);
    m_make = new QPushButton(icon("make"), tr("Ma&ke..."), m_details);
    m_make->setObjectName(QStringLiteral("makeButton"));
    m_make->setAutoDefault(true);
    m_make->setDefault(true);
    m_make->setMinimumWidth(140);
    connect(m_make, &QPushButton::clicked, this, &FileView::makeRequested);

    auto* form = new QFormLayout;
    form->setHorizontalSpacing(16);
    form->addRow(tr("Kind:"), m_kind);
    form->addRow(tr("Size:"), m_size);
    form->addRow(tr("Changed:"), m_modified);
    form->addRow(tr("Folder:"), m_folder);
    auto* column = new QVBoxLayout;
    column->setSpacing(14);
    column->addWidget(m_name);
    column->addLayout(form);
    column->addWidget(m_remark);
    column->addWidget(m_make, 0, Qt::AlignLeft);
    auto* layout = new QHBoxLayout(m_details);
    layout->setSpacing(24);
    layout->addWidget(m_picture, 0, Qt::AlignTop);
    layout->addLayout(column, 1);
    return centered(m_details, this);
}

void FileView::setFile(const QString& path)
{
    const bool isOther = path != m_path;
    m_path = path;
    setCurrentIndex(path.isEmpty() ? 0 : 1);
    if (path.isEmpty())
        return;
    const QFileInfo info(path);
    const FileKind kind = fileKindOf(path);
    m_picture->setPixmap(
        icon(kind == FileKind::Model ? "model_file_large" : "gcode_file_large").pixmap(64, 64));
    m_name->setText(info.fileName());
    m_folder->setText(QDir::toNativeSeparators(info.absolutePath()));
    m_kind->setText(fileKindText(kind));
    m_size->setText(info.exists() ? fileSizeText(info.size()) : QString());
    m_modified->setText(
        info.exists() ? QLocale().toString(info.lastModified(), QLocale::ShortFormat) : QString());
    const QString remark = whyNotMakeable(path);
    m_remark->setText(remark);
    m_remark->setVisible(!remark.isEmpty());
    m_make->setEnabled(remark.isEmpty());
    m_make->setToolTip(remark.isEmpty() ? tr("Print this file or export it for a machine (Ctrl+M)")
                                        : remark);
    if (isOther && m_make->isEnabled())
        m_make->setFocus();
}

} // namespace ostrand
