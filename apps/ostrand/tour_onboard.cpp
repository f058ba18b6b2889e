#include "tour_onboard.h"

#include "host.h"
#include "machine_menu.h"
#include "machine_windows.h"
#include "main_window.h"
#include "onboard_scenes.h"
#include "pictures.h"
#include "robot.h"

#include <trovek-ui/eeprom_grama.h>
#include <trovek-ui/onboard_preferences.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <QAbstractButton>
#include <QAction>

#include <stdexcept>
#include <utility>

namespace ostrand {
namespace {

QAbstractButton& button(QWidget& window, const char* name)
{
    auto* found = window.findChild<QAbstractButton*>(QLatin1String(name));
    if (!found)
        throw std::runtime_error(std::string("The window has no ") + name);
    return *found;
}

trovek::Printer& firstMachine(const trovek::TrovekQt& facade)
{
    for (trovek::Printer* printer : facade.printers()) {
        if (printer->canPrint())
            return *printer;
    }
    throw std::runtime_error("There is no machine");
}

} // namespace

OnboardTour::OnboardTour(Host& host, Pictures& pictures, Robot& robot, Say say)
    : m_host(host)
    , m_pictures(pictures)
    , m_robot(robot)
    , m_say(std::move(say))
{}

void OnboardTour::run()
{
    if (!m_host.link().canRestartService()) {
        m_say(QStringLiteral("The onboard preferences of other people's machines stay as they "
                             "are"));
        return;
    }
    const trovek::Printer& machine = firstMachine(m_host.facade());
    m_machine = trovek::toQString(machine.key().name());
    m_say(QStringLiteral("Onboard preferences of ") + trovek::toQString(machine.displayName()));

    trovek::ui::OnboardPreferences& window = open();
    lookAround(window);
    write(window);
    const QStringList written = onboard::Samples(onboard::formOf(window)).shown();
    showBackups(window);
    close();

    m_host.link().restartService();
    m_robot.waitFor([this] { return machinesAreReady(m_host.facade()); },
                    QStringLiteral("the machines of the new service"));
    trovek::ui::OnboardPreferences& again = open();
    const QStringList found = onboard::Samples(onboard::formOf(again)).shown();
    if (found != written)
        throw std::runtime_error("The machine did not keep its preferences: " +
                                 trovek::toStdString(found.join(QStringLiteral(", "))));
    photograph(again, QStringLiteral("onboard-kept"),
               QStringLiteral("After the service was restarted"));
    m_say(QStringLiteral("  kept over a restart: ") + found.join(QStringLiteral(", ")));
    close();
    showErrors();
}

trovek::ui::OnboardPreferences& OnboardTour::open()
{
    MainWindow& window = m_host.window();
    const QString name = MachineMenu::preferencesActionName(m_machine);
    m_robot.waitFor([&] { return window.findChild<QAction*>(name) != nullptr; },
                    QStringLiteral("the machine in the menu"));
    window.findChild<QAction*>(name)->trigger();
    const auto opened = [&] {
        return window.machineWindows().preferences(m_machine);
    };
    m_robot.waitFor([&] { return opened() != nullptr; }, QStringLiteral("the preferences"));
    return *opened();
}

void OnboardTour::close()
{
    trovek::ui::OnboardPreferences& window =
        *m_host.window().machineWindows().preferences(m_machine);
    m_robot.click([&window] { button(window, "cancelButton").click(); });
    m_robot.waitFor([this] { return !m_host.window().machineWindows().preferences(m_machine); },
                    QStringLiteral("the end of the preferences"));
}

void OnboardTour::lookAround(trovek::ui::OnboardPreferences& window)
{
    trovek::EepromGrama& form = onboard::formOf(window);
    photograph(window, QStringLiteral("onboard"), QStringLiteral("Onboard preferences"));
    onboard::setCollapsed(form, true);
    photograph(window, QStringLiteral("onboard-collapsed"), QStringLiteral("Collapsed"));
    onboard::setCollapsed(form, false);
    onboard::filter(window, QStringLiteral("temperature"));
    photograph(window, QStringLiteral("onboard-filtered"), QStringLiteral("Filtered"));
    onboard::filter(window, QString());
}

void OnboardTour::write(trovek::ui::OnboardPreferences& window)
{
    trovek::EepromGrama& form = onboard::formOf(window);
    const onboard::Samples samples(form);
    const QStringList before = samples.shown();
    samples.edit();
    const QStringList after = samples.shown();
    for (int i = 0; i < before.size(); ++i) {
        if (before[i] == after[i])
            throw std::runtime_error("An edit changed nothing: " + trovek::toStdString(before[i]));
    }
    if (form.changedCount() != before.size())
        throw std::runtime_error("Not every edit counts as a change");
    button(window, "showChangedOnly").click();
    photograph(window, QStringLiteral("onboard-changed"), QStringLiteral("What is changed"));
    button(window, "showChangedOnly").click();
    m_robot.clickAndConfirm([&window] { button(window, "writeButton").click(); },
                            QStringLiteral("Successfully updated onboard preferences"));
    if (form.isModified())
        throw std::runtime_error("What was written counts as changed");
    m_say(QStringLiteral("  written: ") + after.join(QStringLiteral(", ")));
}

void OnboardTour::showBackups(trovek::ui::OnboardPreferences& window)
{
    m_robot.clickAndAnswer([&window] { button(window, "backupsButton").click(); },
                           [this](QDialog& dialog) {
                               photograph(dialog, QStringLiteral("onboard-backups"),
                                          QStringLiteral("Backups"));
                               dialog.reject();
                               return true;
                           });
}

void OnboardTour::showErrors()
{
    trovek::TrovekQt& facade = m_host.facade();
    const trovek::MachineName key(trovek::toStdString(m_machine));
    const std::unique_ptr<QWidget> form =
        onboard::makeFormWithErrors(facade.readEeprom(facade.printerFromKey(key)).getEepromMap());
    photograph(*form, QStringLiteral("onboard-errors"),
               QStringLiteral("Settings that cannot be edited"));
}

void OnboardTour::photograph(QWidget& window, const QString& name, const QString& caption)
{
    m_say(QStringLiteral("  picture ") + m_pictures.save(window, name, caption));
}

} // namespace ostrand
