#pragma once

#include <json/value.h>

#include <QMenu>
#include <QTimer>

#include <functional>

namespace trovek {
class TrovekQt;
}

namespace ostrand {

/**
 * The service's virtual machines, each to be plugged in and out, to be moved to another port or to
 * be given another firmware; and what the service is to do wrong.
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
    void addTroubles(const Json::Value& machines);
    void addFaults(QMenu* menu);
    /** A menu of the machines, each of which the request is made for. */
    void addMachineChoices(QMenu* menu, const QString& title, const QString& objectName,
                           const Json::Value& machines,
                           const std::function<void(const std::string& machine)>& request);
    void setPluggedIn(const QString& name, bool pluggedIn);
    void setFirmware(const QString& name, const QString& version);
    /** Asks something of the service, and shows what has become of it. */
    void ask(const std::function<void()>& request);

    trovek::TrovekQt& m_facade;
    QTimer m_fillTimer;
    /** So that each gets a name of its own. */
    int m_movedPorts = 0;
};

} // namespace ostrand
