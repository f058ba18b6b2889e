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
    for (const trovek::Printer* machine : machines) {
        QString name = trovek::toQString(machine->displayName());
        QMenu* menu = addMenu(name.replace(QLatin1Char('&'), QLatin1String("&&")));
        QAction* preferences = menu->addAction(tr("&Onboard Preferences..."));
        const QString key = trovek::toQString(machine->key().name());
        preferences->setObjectName(preferencesActionName(key));
        preferences->setStatusTip(tr("Change the settings in this machine's own memory"));
        // Queued: while the machine is read this menu may be filled anew.
        connect(
            preferences, &QAction::triggered, this, [this, key] { emit preferencesRequested(key); },
            Qt::QueuedConnection);
    }
    if (isEmpty())
        addAction(tr("No machine is connected"))->setEnabled(false);
}

} // namespace ostrand
