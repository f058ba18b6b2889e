#include "notice_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

namespace ostrand {

NoticeBar::NoticeBar(QWidget* parent)
    : QFrame(parent)
    , m_picture(new QLabel(this))
    , m_heading(new QLabel(this))
    , m_text(new QLabel(this))
{
    setObjectName(QStringLiteral("notice"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    for (QLabel* label : {m_heading, m_text}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setForegroundRole(QPalette::ToolTipText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    m_heading->setObjectName(QStringLiteral("noticeHeading"));
    m_text->setObjectName(QStringLiteral("noticeText"));
    QFont bold = m_heading->font();
    bold.setBold(true);
    m_heading->setFont(bold);

    auto* close = new QToolButton(this);
    close->setObjectName(QStringLiteral("noticeClose"));
    close->setIcon(style()->standardIcon(QStyle::SP_DockWidgetCloseButton));
    close->setAutoRaise(true);
    close->setToolTip(tr("Close this message"));
    close->setAccessibleName(tr("Close this message"));
    connect(close, &QToolButton::clicked, this, &QWidget::hide);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(m_heading);
    texts->addWidget(m_text);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 8, 8, 8);
    layout->setSpacing(12);
    layout->addWidget(m_picture, 0, Qt::AlignTop);
    layout->addLayout(texts, 1);
    layout->addWidget(close, 0, Qt::AlignTop);
    hide();
}

void NoticeBar::showNotice(QStyle::StandardPixmap picture, const QString& heading,
                           const QString& text)
{
    m_picture->setPixmap(style()->standardIcon(picture).pixmap(24, 24));
    m_heading->setText(heading);
    m_text->setText(text);
    m_text->setVisible(!text.isEmpty());
    setAccessibleName(heading);
    show();
}

QString NoticeBar::heading() const
{
    return m_heading->text();
}

QString NoticeBar::text() const
{
    return m_text->text();
}

} // namespace ostrand
