#pragma once

#include <json/value.h>

#include <QMenu>
#include <QTimer>

#include <functional>

namespace trovek {
class TrovekQt;
}

namespace ostrand {

/** The service's virtual machines, each to be plugged in and out or to be given another firmware.
 */
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
    void addMachine(const Json::Value& machine);
    void addFirmwares(const Json::Value& machines);
    void setPluggedIn(const QString& name, bool pluggedIn);
    void setFirmware(const QString& name, const QString& version);
    /** Asks something of the service, and shows what has become of it. */
    void ask(const std::function<void()>& request);

    trovek::TrovekQt& m_facade;
    QTimer m_fillTimer;
};

} // namespace ostrand
