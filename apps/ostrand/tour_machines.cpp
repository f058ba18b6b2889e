#include "tour_machines.h"

#include "host.h"
#include "machine_menu.h"
#include "machine_windows.h"
#include "main_window.h"
#include "pictures.h"
#include "robot.h"

#include <trovek-ui/message_box.h>
#include <trovek-ui/port_list.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QSpinBox>

#include <stdexcept>

namespace ostrand {
namespace {

constexpr char kOldFirmware[] = "5.9";
constexpr int kTargetCelsius = 210;

template <typename Widget>
Widget& part(const QWidget& window, const char* name)
{
    auto* found = window.findChild<Widget*>(QLatin1String(name));
    if (!found)
        throw std::runtime_error(std::string("The window has no ") + name);
    return *found;
}

void press(const QWidget& window, const char* name)
{
    auto& button = part<QAbstractButton>(window, name);
    if (!button.isEnabled())
        throw std::runtime_error(std::string("The button is disabled: ") + name);
    button.click();
}

void trigger(const MainWindow& window, const QString& action)
{
    auto* found = window.findChild<QAction*>(action);
    if (!found)
        throw std::runtime_error("There is no action " + trovek::toStdString(action));
    found->trigger();
}

/** The warning about old firmware, when it is shown. */
trovek::MessageBox* warning()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<trovek::MessageBox*>(window);
        if (box && box->isVisible() && !box->isModal())
            return box;
    }
    return nullptr;
}

} // namespace

MachineTour::MachineTour(Host& host, Pictures& pictures, Robot& robot, Say say)
    : m_host(host)
    , m_pictures(pictures)
    , m_robot(robot)
    , m_say(std::move(say))
{}

void MachineTour::run()
{
    for (const trovek::Printer* machine : m_host.facade().printers()) {
        if (machine->canPrint() && m_machine.isEmpty())
            m_machine = trovek::toQString(machine->key().name());
    }
    useControlPanel();
    useDirectControls();
    updateOldFirmware();
}

void MachineTour::photograph(QWidget& window, const QString& name, const QString& caption)
{
    m_say(QStringLiteral("  picture ") + m_pictures.save(window, name, caption));
}

trovek::Printer* MachineTour::printer() const
{
    return m_host.facade().printerFromKey(trovek::MachineName(trovek::toStdString(m_machine)));
}

void MachineTour::useControlPanel()
{
    m_say(QStringLiteral("Control panel"));
    trovek::WidgetFactory& factory = m_host.window().machineWindows().factory();
    const QString action = QStringLiteral("controlPanelAction");
    trigger(m_host.window(), action);
    m_robot.waitFor([&] { return factory.controlPanel() != nullptr; },
                    QStringLiteral("the control panel"));
    QWidget& panel = *factory.controlPanel();
    auto& ports = part<trovek::PortListView>(panel, "ports");
    const std::string port = printer()->portName();
    for (int row = 0; row < ports.model()->rowCount(); ++row) {
        const auto* model = qobject_cast<trovek::PortListModel*>(ports.model());
        if (model->port(model->index(row, 0)).name() == port)
            ports.setCurrentIndex(model->index(row, 0));
    }
    auto& status = part<QLabel>(panel, "printerStatus");
    m_robot.waitFor([&] { return status.text() == QLatin1String("Status: Idle"); },
                    QStringLiteral("the machine in the panel"));
    photograph(panel, QStringLiteral("control-panel"), QStringLiteral("Two machines"));

    press(panel, "disconnect");
    m_robot.waitFor([&] { return status.text() == QLatin1String("Not Connected"); },
                    QStringLiteral("the machine to be disconnected"));
    photograph(panel, QStringLiteral("control-panel-disconnected"),
               QStringLiteral("One that is disconnected"));
    press(panel, "connect");
    m_robot.waitFor([&] { return status.text() == QLatin1String("Status: Idle"); },
                    QStringLiteral("the machine to be connected"));

    trigger(m_host.window(), action);
    m_robot.waitFor([&] { return panel.isActiveWindow(); }, QStringLiteral("the panel in front"));
    if (factory.controlPanel() != &panel)
        throw std::runtime_error("There are two control panels");
    m_say(QStringLiteral("  disconnected and connected ") + m_machine);
}

void MachineTour::useDirectControls()
{
    m_say(QStringLiteral("Direct controls"));
    trovek::WidgetFactory& factory = m_host.window().machineWindows().factory();
    press(*factory.controlPanel(), "directControls");
    QDialog* const window = factory.directControls(printer());
    if (!window)
        throw std::runtime_error("The direct controls did not open");
    press(*factory.controlPanel(), "directControls");
    if (factory.directControls(printer()) != window)
        throw std::runtime_error("There are two windows of direct controls");
    m_robot.click([&] { factory.controlPanel()->close(); });
    photograph(*window, QStringLiteral("direct-controls"), QStringLiteral("Direct controls"));

    auto& heat = part<QAbstractButton>(*window, "heat");
    part<QSpinBox>(*window, "targetTemperature").setValue(kTargetCelsius);
    heat.click();
    m_robot.waitFor([&] { return heat.text() == QLatin1String("Stop Heating"); },
                    QStringLiteral("the heater"));
    const auto celsius = [&] {
        const auto text = part<QLabel>(*window, "currentTemperature").text();
        return text.section(QLatin1Char(' '), 0, 0).toInt();
    };
    m_robot.waitFor([&] { return celsius() >= kTargetCelsius - 2; },
                    QStringLiteral("the extruder to be hot"));
    photograph(*window, QStringLiteral("direct-controls-hot"), QStringLiteral("Hot"));
    press(*window, "load");
    m_robot.waitFor([&] { return printer()->state() == trovek::Printer::Running; },
                    QStringLiteral("the filament to move"));
    photograph(*window, QStringLiteral("direct-controls-feeding"),
               QStringLiteral("Feeding filament"));
    press(*window, "stop");
    m_robot.waitFor([&] { return printer()->state() == trovek::Printer::Idle; },
                    QStringLiteral("the filament to stop"));
    heat.click();
    m_robot.waitFor([&] { return heat.text() == QLatin1String("Heat"); },
                    QStringLiteral("the heater to be off"));
    m_robot.click([&] { window->close(); });
    m_say(QStringLiteral("  heated to %1 degrees and fed filament").arg(kTargetCelsius));
}

void MachineTour::updateOldFirmware()
{
    m_say(QStringLiteral("Firmware"));
    m_host.facade().simulateFirmware(trovek::toStdString(m_machine), kOldFirmware);
    m_robot.waitFor([] { return warning() != nullptr; },
                    QStringLiteral("the warning about old firmware"));
    photograph(*warning(), QStringLiteral("firmware-warning"),
               QStringLiteral("A machine with an old firmware"));
    m_robot.waitFor([this] { return machinesAreReady(m_host.facade()); },
                    QStringLiteral("the machine to be ready"));
    for (QAbstractButton* button : warning()->findChildren<QAbstractButton*>()) {
        if (button->text() == QLatin1String("&Upgrade Firmware...")) {
            button->click();
            break;
        }
    }
    trovek::WidgetFactory& factory = m_host.window().machineWindows().factory();
    m_robot.waitFor([&] { return factory.firmwareUploadDialog(printer()) != nullptr; },
                    QStringLiteral("the window for firmware"));
    upload(*factory.firmwareUploadDialog(printer()));
    m_robot.waitFor(
        [this] { return printer() && printer()->firmwareVersion().str() != kOldFirmware; },
        QStringLiteral("the machine with its new firmware"));
    m_say(QStringLiteral("  updated from %1 to %2")
              .arg(QLatin1String(kOldFirmware),
                   trovek::toQString(printer()->firmwareVersion().str())));
    m_robot.waitFor([this] { return machinesAreReady(m_host.facade()); },
                    QStringLiteral("the machine to be ready again"));
}

void MachineTour::upload(QDialog& dialog)
{
    photograph(dialog, QStringLiteral("firmware-choice"), QStringLiteral("Choosing a firmware"));
    press(dialog, "next");
    photograph(dialog, QStringLiteral("firmware-ready"), QStringLiteral("Ready to upload"));
    press(dialog, "upload");
    const QString text = part<QLabel>(dialog, "resultStatus").text();
    photograph(dialog, QStringLiteral("firmware-done"), QStringLiteral("After the upload"));
    if (text != QLatin1String("Firmware upload successful"))
        throw std::runtime_error(trovek::toStdString(text));
    press(dialog, "main");
}

} // namespace ostrand
