#pragma once

#include <QMap>
#include <QPointer>
#include <QString>
#include <QWidget>

class QSettings;

namespace trovek {
class TrovekQt;
namespace ui {
class OnboardPreferences;
}
} // namespace trovek

namespace ostrand {

/** The windows of onboard preferences: at most one a machine. */
class OnboardWindows
{
public:
    /**
     * @param settings keeps the windows' place and the last folder
     * @param parent   of the windows
     */
    OnboardWindows(trovek::TrovekQt& facade, QSettings& settings, QWidget* parent);

    /** Shows the machine's window, or a message that says why there is none. */
    void open(const QString& machine);
    /** The open one, or null. */
    trovek::ui::OnboardPreferences* window(const QString& machine) const;
    /** Each asks about its changes. @return false when the user wants to keep one open */
    bool closeAll();

private:
    trovek::TrovekQt& m_facade;
    QSettings& m_settings;
    QWidget* const m_parent;
    QMap<QString, QPointer<trovek::ui::OnboardPreferences>> m_windows;
};

} // namespace ostrand
