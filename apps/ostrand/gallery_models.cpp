#include "gallery_models.h"

#include "host.h"
#include "machine_windows.h"
#include "main_window.h"
#include "make_steps.h"
#include "model_page.h"
#include "robot.h"

#include <trovek-ui/create_profile_dialog.h>
#include <trovek-ui/profile_combo_box.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <QAbstractButton>
#include <QDialog>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QSettings>
#include <QSpinBox>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace ostrand {
namespace {

struct Corner
{
    double x;
    double y;
    double z;
};

QByteArray facet(const Corner& a, const Corner& b, const Corner& c)
{
    QByteArray text("facet normal 0 0 0\nouter loop\n");
    for (const Corner& corner : {a, b, c}) {
        text += "vertex " + QByteArray::number(corner.x) + ' ' + QByteArray::number(corner.y) +
                ' ' + QByteArray::number(corner.z) + '\n';
    }
    return text + "endloop\nendfacet\n";
}

/** A gear wheel of 24 teeth, twisted by half a tooth. */
QByteArray gearWheel()
{
    constexpr int kCorners = 96;
    constexpr double kPi = 3.14159265358979323846;
    constexpr double kHeight = 16;
    const auto corner = [](int i, bool top) {
        const double angle = 2 * kPi * i / kCorners + (top ? kPi / 24 : 0);
        const double radius = i % 4 < 2 ? 24 : 20;
        return Corner{radius * std::cos(angle), radius * std::sin(angle), top ? kHeight : 0};
    };
    QByteArray text("solid gear\n");
    for (int i = 0; i < kCorners; ++i) {
        const Corner a = corner(i, false);
        const Corner b = corner(i + 1, false);
        const Corner c = corner(i, true);
        const Corner d = corner(i + 1, true);
        text +=
            facet(a, b, d) + facet(a, d, c) + facet({0, 0, 0}, b, a) + facet({0, 0, kHeight}, c, d);
    }
    return text + "endsolid gear\n";
}

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw std::runtime_error("Cannot write " + trovek::toStdString(path));
}

} // namespace

void photographModels(Host& host, Robot& robot,
                      const std::function<void(QWidget& window, const QString& name,
                                               const QString& caption)>& photograph)
{
    MainWindow& window = host.window();
    const QString path = QFileInfo(host.settings().fileName())
                             .absoluteDir()
                             .filePath(QStringLiteral("gear_wheel.stl"));
    writeFile(path, gearWheel());
    window.openFile(path);
    auto* page = window.findChild<ModelPage*>();
    robot.waitFor([page] { return !page->isReading(); }, QStringLiteral("the model"));
    photograph(window, QStringLiteral("main-model"), QStringLiteral("A model"));

    MakeSteps steps(host, robot);
    QDialog& dialog = steps.openDialog(false);
    steps.chooseType(dialog, trovek::Printer::Fabrino2);
    photograph(dialog, QStringLiteral("thing-single"), QStringLiteral("One extruder"));
    steps.chooseType(dialog, trovek::Printer::Fabrino2X);
    photograph(dialog, QStringLiteral("thing-dual"), QStringLiteral("Two extruders"));
    MakeSteps::button(dialog, "advancedHeader").click();
    auto* infill = dialog.findChild<QSpinBox*>(QStringLiteral("infill"));
    robot.waitFor([infill] { return infill->isVisible(); }, QStringLiteral("the advanced options"));
    photograph(dialog, QStringLiteral("thing-advanced"), QStringLiteral("Advanced options"));
    infill->setValue(infill->value() + 30);
    photograph(dialog, QStringLiteral("thing-changed"), QStringLiteral("With changed numbers"));

    robot.click([&dialog] { MakeSteps::button(dialog, "createProfileButton").click(); });
    auto* create = dialog.findChild<trovek::CreateProfileDialog*>();
    create->findChild<QLineEdit*>(QStringLiteral("name"))->setText(QStringLiteral("Strong gears"));
    photograph(*create, QStringLiteral("create-profile"), QStringLiteral("A new profile"));
    MakeSteps::button(*create, "create").click();
    auto* profiles = dialog.findChild<trovek::ProfileComboBox*>(QStringLiteral("profiles"));
    robot.waitFor([profiles] { return profiles->currentText() == QLatin1String("Strong gears"); },
                  QStringLiteral("the new profile"));
    photograph(dialog, QStringLiteral("thing-profile"), QStringLiteral("A profile of one's own"));
    writeFile(host.profileDir().filePath(QStringLiteral("Strong gears/profile.json")), "{");
    robot.waitFor([profiles] { return !profiles->isCurrentEnabled(); },
                  QStringLiteral("the broken profile"));
    photograph(dialog, QStringLiteral("thing-broken-profile"),
               QStringLiteral("A profile with an error"));
    steps.closeDialog();
}

void photographMachineTools(Host& host, Robot& robot,
                            const std::function<void(QWidget& window, const QString& name,
                                                     const QString& caption)>& photograph)
{
    MachineWindows& windows = host.window().machineWindows();
    trovek::WidgetFactory& factory = windows.factory();
    windows.openControlPanel();
    photograph(*factory.controlPanel(), QStringLiteral("control-panel"),
               QStringLiteral("The control panel"));
    robot.click([&factory] { factory.controlPanel()->close(); });
    for (trovek::Printer* machine : host.facade().printers()) {
        if (!machine->canPrint())
            continue;
        const QString key = trovek::toQString(machine->key().name());
        windows.openDirectControls(key);
        QDialog* controls = factory.directControls(machine);
        photograph(*controls, QStringLiteral("direct-controls-") + key,
                   QStringLiteral("Direct controls"));
        robot.click([controls] { controls->close(); });
    }
    // Those that stand for their type alone have no port to upload to.
    const auto machines = host.facade().printers();
    const auto machine = std::find_if(machines.begin(), machines.end(),
                                      [](trovek::Printer* each) { return each->canPrint(); });
    if (machine == machines.end())
        return;
    windows.openFirmwareUpload(trovek::toQString((*machine)->key().name()));
    QDialog* firmware = factory.firmwareUploadDialog(*machine);
    photograph(*firmware, QStringLiteral("firmware"), QStringLiteral("Other firmware"));
    MakeSteps::button(*firmware, "next").click();
    photograph(*firmware, QStringLiteral("firmware-ready"), QStringLiteral("Ready to upload"));
    robot.click([firmware] { firmware->reject(); });
}

} // namespace ostrand
