#include "file_page.h"

#include "file_kinds.h"
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

constexpr int kPictureSize = 64;

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

} // namespace

QString whyNotMakeable(const QString& path)
{
    if (!QFileInfo(path).isFile())
        return FileView::tr("This file no longer exists.");
    switch (fileKindOf(path)) {
    case FileKind::GCode:
    case FileKind::Model:
        return QString();
    case FileKind::Unknown:
        break;
    }
    return FileView::tr("Ostrand does not know this kind of file. It prints models and G-code "
                        "files.");
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

FilePage::FilePage(QWidget* parent)
    : QWidget(parent)
    , m_picture(new QLabel(this))
    , m_name(valueLabel("fileName", this))
    , m_folder(valueLabel("fileFolder", this))
    , m_kind(valueLabel("fileKind", this))
    , m_size(valueLabel("fileSize", this))
    , m_modified(valueLabel("fileModified", this))
    , m_remark(valueLabel("fileRemark", this))
    , m_make(new QPushButton(icon("make"), tr("Ma&ke..."), this))
{
    m_picture->setObjectName(QStringLiteral("filePicture"));
    m_make->setObjectName(QStringLiteral("makeButton"));
    m_make->setAutoDefault(true);
    m_make->setDefault(true);
    m_make->setMinimumWidth(140);
    connect(m_make, &QPushButton::clicked, this, &FilePage::makeRequested);
}

void FilePage::showFile(const QString& path)
{
    const QFileInfo info(path);
    const FileKind kind = fileKindOf(path);
    m_picture->setPixmap(icon(kind == FileKind::Model ? "model_file_large" : "gcode_file_large")
                             .pixmap(kPictureSize, kPictureSize));
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
}

void FilePage::focusMakeButton()
{
    if (m_make->isEnabled())
        m_make->setFocus();
}

DetailsPage::DetailsPage(QWidget* parent)
    : FilePage(parent)
{
    auto* content = new QWidget(this);
    setLargerFont(m_name, 1.4);
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
    auto* row = new QHBoxLayout(content);
    row->setSpacing(24);
    row->addWidget(m_picture, 0, Qt::AlignTop);
    row->addLayout(column, 1);
    auto* page = new QVBoxLayout(this);
    page->setContentsMargins(0, 0, 0, 0);
    page->addWidget(centered(content, this));
}

} // namespace ostrand
