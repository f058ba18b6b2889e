#include "gallery_onboard.h"

#include "host.h"
#include "machine_windows.h"
#include "main_window.h"
#include "onboard_scenes.h"
#include "robot.h"

#include <trovek-ui/eeprom_grama.h>
#include <trovek-ui/onboard_preferences.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <QAbstractButton>
#include <QDialog>
#include <QLabel>

#include <algorithm>
#include <stdexcept>

namespace ostrand {

void photographOnboardPreferences(Host& host, Robot& robot,
                                  const std::function<void(QWidget& window, const QString& name,
                                                           const QString& caption)>& photograph)
{
    trovek::TrovekQt& facade = host.facade();
    const std::list<trovek::Printer*> printers = facade.printers();
    const auto first =
        std::find_if(printers.begin(), printers.end(),
                     [](const trovek::Printer* printer) { return printer->canPrint(); });
    if (first == printers.end())
        throw std::runtime_error("There is no machine");
    trovek::Printer* const machine = *first;
    const QString key = trovek::toQString(machine->key().name());
    MachineWindows& windows = host.window().machineWindows();
    robot.click([&] { windows.openPreferences(key); });
    if (!windows.preferences(key))
        throw std::runtime_error("The onboard preferences did not open");
    QDialog& window = *windows.preferences(key);
    trovek::EepromGrama& form = onboard::formOf(window);
    const auto click = [&window](const char* name) {
        window.findChild<QAbstractButton*>(QLatin1String(name))->click();
    };

    photograph(window, QStringLiteral("onboard"), QStringLiteral("Onboard preferences"));
    onboard::setCollapsed(form, true);
    photograph(window, QStringLiteral("onboard-collapsed"), QStringLiteral("Collapsed"));
    onboard::setCollapsed(form, false);
    onboard::filter(window, QStringLiteral("temperature"));
    photograph(window, QStringLiteral("onboard-filtered"), QStringLiteral("Filtered"));
    onboard::filter(window, QString());
    onboard::Samples(form).edit();
    photograph(window, QStringLiteral("onboard-changed"), QStringLiteral("With changes"));
    click("showChangedOnly");
    photograph(window, QStringLiteral("onboard-changed-only"), QStringLiteral("Changes only"));
    robot.clickAndConfirm([&] { click("writeButton"); },
                          QStringLiteral("Successfully updated onboard preferences"));
    click("showChangedOnly");
    robot.clickAndAnswer([&] { click("backupsButton"); },
                         [&](QDialog& dialog) {
                             photograph(dialog, QStringLiteral("onboard-backups"),
                                        QStringLiteral("Backups"));
                             dialog.reject();
                             return true;
                         });

    facade.simulateUnplug(machine->key().name());
    robot.waitFor([&] { return !form.isEnabled(); }, QStringLiteral("the machine to go"));
    photograph(window, QStringLiteral("onboard-gone"), QStringLiteral("Without its machine"));
    facade.simulatePlugIn(machine->key().name());
    robot.waitFor([&] { return form.isEnabled(); }, QStringLiteral("the machine to come back"));
    robot.click([&window] { window.reject(); });

    const std::unique_ptr<QWidget> broken =
        onboard::makeFormWithErrors(facade.readEeprom(machine).getEepromMap());
    photograph(*broken, QStringLiteral("onboard-errors"),
               QStringLiteral("Settings that cannot be edited"));
}

} // namespace ostrand
