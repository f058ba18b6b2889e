#pragma once

#include "service_link.h"

#include <QTimer>
#include <QWidget>

class QLabel;

namespace ostrand {

/** The state of the service link for the status bar, with the seconds to the next attempt. */
class LinkIndicator : public QWidget
{
    Q_OBJECT

public:
    /** @param link not owned; must outlive the indicator */
    explicit LinkIndicator(ServiceLink& link, QWidget* parent = nullptr);

    QString text() const;

private:
    void update();

    ServiceLink& m_link;
    QLabel* const m_picture;
    QLabel* const m_text;
    QTimer m_second;
};

} // namespace ostrand
