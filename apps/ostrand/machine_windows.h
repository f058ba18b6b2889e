#pragma once

#include <trovek-ui/widget_factory.h>

#include <QString>

class QSettings;
class QWidget;

namespace trovek {
class TrovekQt;
namespace ui {
class OnboardPreferences;
}
} // namespace trovek

namespace ostrand {

/** The windows that look after machines, by the names of the machines. */
class MachineWindows
{
public:
    /**
     * @param settings keeps the windows' place and the last folder
     * @param parent   of the windows
     */
    MachineWindows(trovek::TrovekQt& facade, QSettings& settings, QWidget* parent);

    trovek::WidgetFactory& factory() { return m_factory; }

    void openControlPanel();
    /** Shows the machine's window, or a message that says why there is none. */
    void openPreferences(const QString& machine);
    void openDirectControls(const QString& machine);
    void openFirmwareUpload(const QString& machine);

    /** The open one, or null. */
    trovek::ui::OnboardPreferences* preferences(const QString& machine) const;
    /** Each asks about its changes. @return false when the user wants to keep one open */
    bool closeAll();

private:
    trovek::Printer* printer(const QString& machine) const;

    trovek::TrovekQt& m_facade;
    QWidget* const m_parent;
    trovek::WidgetFactory m_factory;
};

} // namespace ostrand
