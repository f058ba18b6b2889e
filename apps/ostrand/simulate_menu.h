#pragma once

#include <QMenu>
#include <QTimer>

namespace trovek {
class TrovekQt;
}

namespace ostrand {

/** The service's virtual machines, each to be plugged in and out. */
class SimulateMenu : public QMenu
{
    Q_OBJECT

public:
    /** @param facade not owned; must outlive the menu */
    explicit SimulateMenu(trovek::TrovekQt& facade, QWidget* parent = nullptr);

signals:
    /** The service refused; the text is for the user. */
    void failed(const QString& text);

private:
    void fill();
    void addMachine(const QString& name, const QString& typeName, bool pluggedIn);
    void setPluggedIn(const QString& name, bool pluggedIn);

    trovek::TrovekQt& m_facade;
    QTimer m_fillTimer;
};

} // namespace ostrand
