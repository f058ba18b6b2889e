#include "tour_model.h"

#include "host.h"
#include "job_list_model.h"
#include "main_window.h"
#include "model_extruders.h"
#include "pictures.h"
#include "robot.h"
#include "toolpath_steps.h"

#include <trovek-ui/create_profile_dialog.h>
#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/machine_types.h>
#include <trovek-ui/pathscope_dialog.h>
#include <trovek-ui/profile_combo_box.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <pathscope/toolpath_gl_widget.h>

#include <QAbstractButton>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QProgressBar>
#include <QSpinBox>

#include <stdexcept>

namespace ostrand {
namespace {

/** A machine shows names up to 30 characters, the suffix included. */
constexpr int kLongestBaseName = 24;

template <typename Widget>
Widget& part(const QWidget& window, const char* name)
{
    auto* found = window.findChild<Widget*>(QLatin1String(name));
    if (!found)
        throw std::runtime_error(std::string("The make dialog has no ") + name);
    return *found;
}

QString typeName(trovek::Printer::Type type)
{
    return trovek::printerTypeToHumanString(type, trovek::PrinterStringWithBrand);
}

} // namespace

ModelTour::ModelTour(Host& host, Pictures& pictures, Robot& robot, Say say)
    : m_host(host)
    , m_pictures(pictures)
    , m_robot(robot)
    , m_say(std::move(say))
    , m_steps(host, robot)
{}

void ModelTour::run(const QString& file)
{
    m_file = file;
    m_extruders = extrudersOfModel(file) == trovek::SlicerConfiguration::Both ? 2 : 1;
    lookThroughDialog();
    printAfterPreview();
    for (int type = trovek::Printer::FabrinoSingle; type <= trovek::Printer::CubioDual; ++type)
        exportFor(static_cast<trovek::Printer::Type>(type));
    exportWithProfile();
}

void ModelTour::photograph(QWidget& window, const QString& name, const QString& caption)
{
    m_say(QStringLiteral("  picture ") + m_pictures.save(window, name, caption));
}

QString ModelTour::destination(const QString& ending) const
{
    const QString base = QFileInfo(m_file).completeBaseName().left(kLongestBaseName);
    const QString path =
        m_pictures.dir().filePath(QStringLiteral("exports/%1-%2.gcode").arg(base, ending));
    QFile::remove(path);
    return path;
}

void ModelTour::lookThroughDialog()
{
    QDialog& dialog = m_steps.openDialog(false);
    m_steps.chooseExtruders(dialog, m_extruders);
    photograph(dialog, QStringLiteral("make-thing"), QStringLiteral("Making a model"));
    auto& header = MakeSteps::button(dialog, "advancedHeader");
    const bool wasOpen = header.isChecked();
    if (!wasOpen)
        header.click();
    auto& infill = part<QSpinBox>(dialog, "infill");
    m_robot.waitFor([&] { return infill.isVisible(); }, QStringLiteral("the advanced options"));
    infill.setValue(infill.value() + 15);
    photograph(dialog, QStringLiteral("make-thing-advanced"),
               QStringLiteral("Numbers of the user's own"));
    MakeSteps::button(dialog, "defaultsButton").click();
    if (!wasOpen)
        header.click();
    m_steps.closeDialog();
}

void ModelTour::printAfterPreview()
{
    QDialog& dialog = m_steps.openDialog(false);
    const trovek::Printer& machine = m_steps.chooseExtruders(dialog, m_extruders);
    m_say(QStringLiteral("Preview, then print on ") + trovek::toQString(machine.displayName()));
    // A part that is printed by one extruder may hang over; the choice is remembered for exports.
    if (machine.numberOfExtruders() == 1) {
        auto& supports = MakeSteps::button(dialog, "supportsCheckBox");
        if (!supports.isChecked())
            supports.click();
    }
    auto& wanted = MakeSteps::button(dialog, "previewWanted");
    if (!wanted.isChecked())
        wanted.click();
    m_robot.click([&] { MakeSteps::button(dialog, "mainButton").click(); });
    auto& progress = part<QProgressBar>(dialog, "previewProgress");
    trovek::PathscopeDialog* preview = nullptr;
    m_robot.waitFor(
        [&] {
            preview = dialog.findChild<trovek::PathscopeDialog*>();
            return preview || progress.value() > 0;
        },
        QStringLiteral("the slice for the preview"));
    if (!preview)
        photograph(dialog, QStringLiteral("preview-slicing"),
                   QStringLiteral("Slicing for the preview"));
    m_robot.waitFor(
        [&] {
            preview = dialog.findChild<trovek::PathscopeDialog*>();
            return preview && preview->isVisible();
        },
        QStringLiteral("the preview"));
    waitForToolpaths(m_robot, *preview->findChild<pathscope::ToolpathGLWidget*>());
    photograph(*preview, QStringLiteral("preview"),
               QStringLiteral("The toolpaths before they are made"));

    const trovek::Job::ID job = m_steps.jobStartedBy(
        [&] { m_robot.click([&] { MakeSteps::button(*preview, "acceptButton").click(); }); });
    m_steps.waitForHalf(job, QStringLiteral("the middle of the print"));
    photograph(m_host.window(), QStringLiteral("printing"), QStringLiteral("While it prints"));
    m_steps.waitForEnd(job, QStringLiteral("the print's end"));
    photograph(m_host.window(), QStringLiteral("printed"), QStringLiteral("After the print"));
    m_say(QStringLiteral("  printed %1 to the end").arg(QFileInfo(m_file).fileName()));
}

void ModelTour::exportFor(trovek::Printer::Type type)
{
    QDialog& dialog = m_steps.openDialog(true);
    const trovek::Printer& machine = m_steps.chooseType(dialog, type);
    if (machine.numberOfExtruders() < m_extruders) {
        photograph(dialog, QStringLiteral("too-few-extruders"),
                   QStringLiteral("Two extruders for a machine with one"));
        m_say(QStringLiteral("  not exported for %1, which has one extruder").arg(typeName(type)));
        m_steps.closeDialog();
        return;
    }
    auto& wanted = MakeSteps::button(dialog, "previewWanted");
    if (wanted.isChecked())
        wanted.click();
    const QString path = destination(trovek::printerTypeToIdentifier(type));
    photograph(dialog, QStringLiteral("export-thing-%1").arg(int(type)),
               QStringLiteral("Exporting for %1").arg(typeName(type)));
    const trovek::Job::ID job = m_steps.exportTo(dialog, path, QStringLiteral("GCode"));
    const QString reason =
        m_steps.waitForConclusion(job, QStringLiteral("the export for ") + typeName(type));
    m_steps.waitForExport(job);
    if (reason.isEmpty()) {
        m_say(QStringLiteral("  exported %1, %2 bytes").arg(path).arg(QFileInfo(path).size()));
    } else if (reason.contains(QLatin1String("too large"))) {
        photograph(m_host.window(), QStringLiteral("too-large"),
                   QStringLiteral("Too large for a machine"));
        m_say(QStringLiteral("  not exported for %1: %2").arg(typeName(type), reason));
    } else {
        throw std::runtime_error(trovek::toStdString(reason));
    }
}

void ModelTour::exportWithProfile()
{
    const QString name = QStringLiteral("My PLA");
    QDialog& dialog = m_steps.openDialog(true);
    const trovek::Printer& machine = m_steps.chooseExtruders(dialog, m_extruders);
    auto& header = MakeSteps::button(dialog, "advancedHeader");
    if (!header.isChecked())
        header.click();
    createProfile(dialog, name);
    photograph(dialog, QStringLiteral("profile"), QStringLiteral("A profile of the user's"));
    const QString path = destination(QStringLiteral("profile"));
    m_say(QStringLiteral("Export with the profile \"%1\" for %2")
              .arg(name, trovek::toQString(machine.displayName())));
    const trovek::Job::ID job = m_steps.exportTo(dialog, path, QStringLiteral("GCode"));
    m_steps.waitForEnd(job, QStringLiteral("the export with a profile"));
    m_steps.waitForExport(job);
    m_say(QStringLiteral("  exported %1, %2 bytes").arg(path).arg(QFileInfo(path).size()));

    // It was used last, so it is selected again.
    QDialog& again = m_steps.openDialog(true);
    if (part<trovek::ProfileComboBox>(again, "profiles").currentText() != name)
        throw std::runtime_error("The profile used last is not selected");
    deleteProfile(again);
    MakeSteps::button(again, "advancedHeader").click();
    m_steps.closeDialog();
}

void ModelTour::createProfile(QDialog& dialog, const QString& name)
{
    m_robot.click([&] { MakeSteps::button(dialog, "createProfileButton").click(); });
    auto* create = dialog.findChild<trovek::CreateProfileDialog*>();
    if (!create)
        throw std::runtime_error("The window for a new profile did not open");
    m_robot.waitFor([&] { return create->isVisible(); }, QStringLiteral("the window"));
    part<trovek::ProfileComboBox>(*create, "template")
        .selectProfile(QStringLiteral("Orvane PLA Standard"));
    part<QLineEdit>(*create, "name").setText(name);
    photograph(*create, QStringLiteral("create-profile"),
               QStringLiteral("A new profile from one that is there"));
    MakeSteps::button(*create, "create").click();
    auto& profiles = part<trovek::ProfileComboBox>(dialog, "profiles");
    m_robot.waitFor([&] { return profiles.currentText() == name; },
                    QStringLiteral("the new profile"));
}

void ModelTour::deleteProfile(QDialog& dialog)
{
    auto& profiles = part<trovek::ProfileComboBox>(dialog, "profiles");
    const QString name = profiles.currentText();
    m_robot.clickAndPress([&] { MakeSteps::button(dialog, "deleteButton").click(); },
                          QStringLiteral("&Delete Profile"),
                          [&](QDialog& message) {
                              photograph(message, QStringLiteral("delete-profile"),
                                         QStringLiteral("Before a profile is deleted"));
                          });
    m_robot.waitFor([&] { return profiles.findText(name) < 0; },
                    QStringLiteral("the profile to go"));
}

} // namespace ostrand
