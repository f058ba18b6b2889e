#include "link_indicator.h"

#include "icons.h"

#include <QHBoxLayout>
#include <QLabel>

namespace ostrand {

LinkIndicator::LinkIndicator(ServiceLink& link, QWidget* parent)
    : QWidget(parent)
    , m_link(link)
    , m_picture(new QLabel(this))
    , m_text(new QLabel(this))
{
    setObjectName(QStringLiteral("linkIndicator"));
    m_text->setObjectName(QStringLiteral("linkText"));
    m_text->setTextFormat(Qt::PlainText);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 0, 6, 0);
    layout->setSpacing(6);
    layout->addWidget(m_picture);
    layout->addWidget(m_text);
    m_second.setInterval(1000);
    connect(&m_second, &QTimer::timeout, this, &LinkIndicator::update);
    connect(&m_link, &ServiceLink::stateChanged, this, &LinkIndicator::update);
    update();
}

QString LinkIndicator::text() const
{
    return m_text->text();
}

void LinkIndicator::update()
{
    QString text;
    bool connected = false;
    switch (m_link.state()) {
    case ServiceLink::Idle:
        text = tr("Connecting to the background service");
        break;
    case ServiceLink::Connected:
        connected = true;
        text = tr("Connected to %1").arg(m_link.description());
        break;
    case ServiceLink::Waiting:
        text = tr("No connection to the background service; next try in %1 s")
                   .arg((m_link.remainingMs() + 999) / 1000);
        break;
    }
    m_picture->setPixmap(icon(connected ? "link_ok" : "link_broken").pixmap(16, 16));
    m_text->setText(text);
    setToolTip(connected ? QString() : m_link.failure().toHtmlEscaped());
    setAccessibleName(text);
    if (m_link.state() == ServiceLink::Waiting) {
        if (!m_second.isActive())
            m_second.start();
    } else {
        m_second.stop();
    }
}

} // namespace ostrand
