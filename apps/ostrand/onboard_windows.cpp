#include "onboard_windows.h"

#include <trovek-ui/onboard_preferences.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <QSettings>

namespace ostrand {

using trovek::ui::OnboardPreferences;

OnboardWindows::OnboardWindows(trovek::TrovekQt& facade, QSettings& settings, QWidget* parent)
    : m_facade(facade)
    , m_settings(settings)
    , m_parent(parent)
{}

void OnboardWindows::open(const QString& machine)
{
    OnboardPreferences* preferences = window(machine);
    if (!preferences) {
        const trovek::MachineName key(trovek::toStdString(machine));
        preferences = OnboardPreferences::create(m_facade, m_facade.printerFromKey(key), m_parent);
        if (!preferences)
            return;
        preferences->setSettings(&m_settings);
        m_windows.insert(machine, preferences);
    }
    preferences->show();
    preferences->raise();
    preferences->activateWindow();
}

OnboardPreferences* OnboardWindows::window(const QString& machine) const
{
    // A closed one is deleted a moment later.
    const QPointer<OnboardPreferences> found = m_windows.value(machine);
    return found && found->isVisible() ? found.data() : nullptr;
}

bool OnboardWindows::closeAll()
{
    for (const QString& machine : m_windows.keys()) {
        OnboardPreferences* const preferences = window(machine);
        if (preferences && !preferences->close())
            return false;
    }
    return true;
}

} // namespace ostrand
