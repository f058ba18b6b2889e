#include "onboard_preferences/preferences_notice.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace trovek {

PreferencesNotice::PreferencesNotice(QWidget* parent)
    : QFrame(parent)
    , m_text(new QLabel(this))
    , m_button(new QPushButton(this))
{
    setObjectName(QStringLiteral("notice"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    m_text->setObjectName(QStringLiteral("noticeText"));
    // Names of machines and files, which may look like markup, stand in it.
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_text->setForegroundRole(QPalette::ToolTipText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_button->setObjectName(QStringLiteral("noticeButton"));
    m_button->setAutoDefault(false);
    connect(m_button, &QPushButton::clicked, this, [this] {
        // A copy, which lives on when the action replaces the notice.
        const auto action = m_action;
        action();
    });

    auto* const layout = new QHBoxLayout(this);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_button);
    hide();
}

void PreferencesNotice::showNotice(const QString& text, const QString& button,
                                   const std::function<void()>& action)
{
    m_action = action;
    m_text->setText(text);
    m_button->setText(button);
    m_button->setVisible(!button.isEmpty());
    setVisible(!text.isEmpty());
}

} // namespace trovek
