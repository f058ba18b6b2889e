#include "machine_menu.h"

#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

namespace ostrand {

MachineMenu::MachineMenu(trovek::TrovekQt& facade, QWidget* parent)
    : QMenu(tr("M&achine"), parent)
    , m_facade(facade)
{
    setObjectName(QStringLiteral("machineMenu"));
    m_fillTimer.setSingleShot(true);
    m_fillTimer.setInterval(0);
    connect(&m_fillTimer, &QTimer::timeout, this, &MachineMenu::fill);
    const auto fillLater = [this] {
        m_fillTimer.start();
    };
    connect(&m_facade, &trovek::TrovekQt::printerAdded, this, fillLater);
    connect(&m_facade, &trovek::TrovekQt::printerRemoved, this, fillLater);
    connect(&m_facade, &trovek::TrovekQt::printerChanged, this, fillLater);
    fill();
}

QString MachineMenu::preferencesActionName(const QString& machine)
{
    return QStringLiteral("onboardPreferences:") + machine;
}

QString MachineMenu::directControlsActionName(const QString& machine)
{
    return QStringLiteral("directControls:") + machine;
}

QString MachineMenu::firmwareActionName(const QString& machine)
{
    return QStringLiteral("uploadFirmware:") + machine;
}

void MachineMenu::addTool(QMenu* menu, const QString& text, const QString& statusTip,
                          const QString& objectName, const QString& machine, Request request)
{
    QAction* tool = menu->addAction(text);
    tool->setObjectName(objectName);
    tool->setStatusTip(statusTip);
    // Queued: while the machine is asked this menu may be filled anew.
    connect(
        tool, &QAction::triggered, this,
        [this, machine, request] { emit(this->*request)(machine); }, Qt::QueuedConnection);
}

void MachineMenu::fill()
{
    std::list<trovek::Printer*> machines = m_facade.printers();
    machines.remove_if([](const trovek::Printer* machine) { return !machine->canPrint(); });
    QStringList now;
    for (const trovek::Printer* machine : machines) {
        now.append(trovek::toQString(machine->key().name()));
        now.append(trovek::toQString(machine->displayName()));
    }
    // A machine tells its temperatures all the time; a menu that is open stays as it is then.
    if (now == m_shown && !isEmpty())
        return;
    m_shown = now;
    for (QMenu* menu : findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly))
        menu->deleteLater();
    clear();
    QAction* panel = addAction(tr("&Control Panel..."));
    panel->setObjectName(QStringLiteral("controlPanelAction"));
    panel->setStatusTip(tr("Connect and disconnect machines, and open their tools"));
    connect(panel, &QAction::triggered, this, &MachineMenu::controlPanelRequested,
            Qt::QueuedConnection);
    addSeparator();
    for (const trovek::Printer* machine : machines) {
        QString name = trovek::toQString(machine->displayName());
        QMenu* menu = addMenu(name.replace(QLatin1Char('&'), QLatin1String("&&")));
        const QString key = trovek::toQString(machine->key().name());
        addTool(menu, tr("&Direct Controls..."), tr("Home, heat and feed this machine by hand"),
                directControlsActionName(key), key, &MachineMenu::directControlsRequested);
        addTool(menu, tr("&Onboard Preferences..."),
                tr("Change the settings in this machine's own memory"), preferencesActionName(key),
                key, &MachineMenu::preferencesRequested);
        addTool(menu, tr("&Upload Firmware..."), tr("Give this machine another firmware"),
                firmwareActionName(key), key, &MachineMenu::firmwareUploadRequested);
    }
    if (machines.empty())
        addAction(tr("No machine is connected"))->setEnabled(false);
}

} // namespace ostrand
