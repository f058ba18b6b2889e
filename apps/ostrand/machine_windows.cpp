#include "machine_windows.h"

#include <trovek-ui/onboard_preferences.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <QPointer>
#include <QWidget>

namespace ostrand {

using trovek::ui::OnboardPreferences;

MachineWindows::MachineWindows(trovek::TrovekQt& facade, QSettings& settings, QWidget* parent)
    : m_facade(facade)
    , m_parent(parent)
    , m_factory(facade)
{
    m_factory.setSettings(&settings);
}

trovek::Printer* MachineWindows::printer(const QString& machine) const
{
    return m_facade.printerFromKey(trovek::MachineName(trovek::toStdString(machine)));
}

void MachineWindows::openControlPanel()
{
    m_factory.showControlPanel(m_parent);
}

void MachineWindows::openPreferences(const QString& machine)
{
    m_factory.showOnboardPreferences(printer(machine), m_parent);
}

void MachineWindows::openDirectControls(const QString& machine)
{
    m_factory.showDirectControls(printer(machine), m_parent);
}

void MachineWindows::openFirmwareUpload(const QString& machine)
{
    m_factory.showFirmwareUploadDialog(printer(machine), m_parent);
}

OnboardPreferences* MachineWindows::preferences(const QString& machine) const
{
    // A closed one is deleted a moment later.
    auto* found = qobject_cast<OnboardPreferences*>(m_factory.onboardPreferences(printer(machine)));
    return found && found->isVisible() ? found : nullptr;
}

bool MachineWindows::closeAll()
{
    // Also of machines that are away: the changes in them are still somebody's work.
    QList<QPointer<OnboardPreferences>> windows;
    for (OnboardPreferences* each : m_parent->findChildren<OnboardPreferences*>())
        windows.append(each);
    for (const QPointer<OnboardPreferences>& each : windows) {
        if (each && each->isVisible() && !each->close())
            return false;
    }
    return true;
}

} // namespace ostrand
