#include "picture_page.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ostrand {
namespace {

constexpr int kPictureSize = 44;

} // namespace

PicturePage::PicturePage(QWidget* parent)
    : FilePage(parent)
    , m_column(new QVBoxLayout(this))
    , m_facts(new QHBoxLayout)
{
    setLargerFont(m_name, 1.15);
    // The tool tip says where it lies.
    m_folder->hide();
    m_picture->setFixedSize(kPictureSize, kPictureSize);
    m_picture->setScaledContents(true);
    m_name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_facts->setSpacing(14);
    m_facts->addStretch(1);
    for (QLabel* label : {m_kind, m_size, m_modified})
        addFact(*label);

    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    words->addWidget(m_name);
    words->addLayout(m_facts);
    words->addWidget(m_remark);
    auto* bar = new QHBoxLayout;
    bar->setContentsMargins(12, 8, 12, 8);
    bar->setSpacing(16);
    bar->addWidget(m_picture);
    bar->addLayout(words, 1);
    bar->addWidget(m_make, 0, Qt::AlignVCenter);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    m_column->addLayout(bar);
}

void PicturePage::addFact(QLabel& label)
{
    label.setWordWrap(false);
    // Before the stretch.
    m_facts->insertWidget(m_facts->count() - 1, &label);
}

void PicturePage::setLargePicture(QWidget& widget)
{
    m_column->addWidget(&widget, 1);
}

QSize PicturePage::smallPictureSize() const
{
    return QSize(kPictureSize, kPictureSize) * devicePixelRatioF();
}

void PicturePage::setSmallPicture(const QImage& image)
{
    m_small = QPixmap::fromImage(image);
    m_picture->setPixmap(m_small);
}

void PicturePage::showFile(const QString& path)
{
    FilePage::showFile(path);
    m_name->setToolTip(Qt::convertFromPlainText(QDir::toNativeSeparators(path)));
    const QFileInfo file(path);
    const qint64 bytes = file.exists() ? file.size() : -1;
    if (path == m_path && bytes == m_bytes && file.lastModified() == m_changed) {
        if (!m_small.isNull())
            m_picture->setPixmap(m_small);
        return;
    }
    m_small = QPixmap();
    m_path = path;
    m_bytes = bytes;
    m_changed = file.lastModified();
    read(file);
}

} // namespace ostrand
