#include "make_steps.h"

#include "host.h"
#include "job_list_model.h"
#include "main_window.h"
#include "robot.h"

#include <trovek-ui/export_job_mover.h>
#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <QAbstractButton>
#include <QDialog>

#include <stdexcept>

namespace ostrand {
namespace {

[[noreturn]] void fail(const QString& text)
{
    throw std::runtime_error(trovek::toStdString(text));
}

trovek::MachineComboBox& machinesOf(const QDialog& dialog)
{
    return *dialog.findChild<trovek::MachineComboBox*>();
}

/** The first that the condition takes; the current one where it does. */
const trovek::Printer& choose(QDialog& dialog,
                              const std::function<bool(const trovek::Printer&)>& fits)
{
    trovek::MachineComboBox& machines = machinesOf(dialog);
    if (const trovek::Printer* current = machines.machine(); current && fits(*current))
        return *current;
    for (trovek::Printer* machine : machines.machines()) {
        if (!fits(*machine))
            continue;
        machines.select(machine);
        return *machine;
    }
    fail(QStringLiteral("There is no machine for this file"));
}

} // namespace

MakeSteps::MakeSteps(Host& host, Robot& robot)
    : m_host(host)
    , m_robot(robot)
{}

QAbstractButton& MakeSteps::button(const QDialog& dialog, const char* name)
{
    auto* found = dialog.findChild<QAbstractButton*>(QLatin1String(name));
    if (!found)
        fail(QStringLiteral("The make dialog has no %1").arg(QLatin1String(name)));
    return *found;
}

QDialog& MakeSteps::openDialog(bool exporting)
{
    MainWindow& window = m_host.window();
    auto* makeButton = window.findChild<QAbstractButton*>(QStringLiteral("makeButton"));
    if (!makeButton->isEnabled())
        fail(makeButton->toolTip());
    makeButton->click();
    m_robot.waitFor([&] { return window.makeDialog() && window.makeDialog()->isVisible(); },
                    QStringLiteral("the make dialog"));
    QDialog& dialog = *window.makeDialog();
    button(dialog, exporting ? "exportRadio" : "makeRadio").click();
    auto& mainButton = button(dialog, "mainButton");
    const QString text = exporting ? QStringLiteral("Export!") : QStringLiteral("Make It!");
    m_robot.waitFor(
        [&] {
            return mainButton.text() == text && machinesOf(dialog).archetypesEnabled() == exporting;
        },
        QStringLiteral("the dialog to change over"));
    return dialog;
}

void MakeSteps::closeDialog()
{
    MainWindow& window = m_host.window();
    m_robot.click([&] { window.makeDialog()->reject(); });
    m_robot.waitFor([&] { return !window.makeDialog(); },
                    QStringLiteral("the make dialog to close"));
}

const trovek::Printer& MakeSteps::chooseType(QDialog& dialog, trovek::Printer::Type type)
{
    return choose(dialog,
                  [type](const trovek::Printer& machine) { return machine.type() == type; });
}

const trovek::Printer& MakeSteps::chooseExtruders(QDialog& dialog, int extruders)
{
    return choose(dialog, [extruders](const trovek::Printer& machine) {
        return machine.numberOfExtruders() >= extruders;
    });
}

trovek::Job::ID MakeSteps::jobStartedBy(const std::function<void()>& action)
{
    JobListModel& jobs = m_host.window().jobs();
    const int before = jobs.rowCount();
    action();
    m_robot.waitFor([&] { return jobs.rowCount() > before; }, QStringLiteral("the job"));
    m_robot.waitFor([&] { return !m_host.window().makeDialog(); },
                    QStringLiteral("the make dialog to close"));
    return jobs.index(jobs.rowCount() - 1, 0).data(JobListModel::IDRole).toInt();
}

trovek::Job::ID MakeSteps::exportTo(QDialog& dialog, const QString& path,
                                    const QString& filterStart,
                                    const std::function<void(QDialog& chooser)>& beforeAccepting)
{
    return jobStartedBy([&] {
        m_robot.clickAndAnswer([&] { button(dialog, "mainButton").click(); },
                               [&](QDialog& chooser) {
                                   return Robot::fillFileDialog(chooser, path, filterStart, [&] {
                                       if (beforeAccepting)
                                           beforeAccepting(chooser);
                                   });
                               });
    });
}

void MakeSteps::waitForHalf(trovek::Job::ID job, const QString& what)
{
    JobListModel& jobs = m_host.window().jobs();
    m_robot.waitFor(
        [&] {
            const QModelIndex index = jobs.indexOf(job);
            return index.data(JobListModel::ProgressRole).toInt() >= 50 ||
                   index.data(JobListModel::ConclusionRole).toInt() != trovek::JobNotConcluded;
        },
        what);
}

QString MakeSteps::waitForConclusion(trovek::Job::ID job, const QString& what)
{
    JobListModel& jobs = m_host.window().jobs();
    const auto conclusion = [&] {
        return jobs.indexOf(job).data(JobListModel::ConclusionRole).toInt();
    };
    m_robot.waitFor([&] { return conclusion() != trovek::JobNotConcluded; }, what);
    return conclusion() == trovek::JobEnded
               ? QString()
               : jobs.indexOf(job).data(JobListModel::FailureRole).toString();
}

void MakeSteps::waitForEnd(trovek::Job::ID job, const QString& what)
{
    const QString reason = waitForConclusion(job, what);
    if (!reason.isEmpty())
        fail(reason);
}

void MakeSteps::waitForExport(trovek::Job::ID job)
{
    auto& mover = trovek::ExportJobMover::instance(m_host.facade());
    m_robot.waitFor([&] { return mover.pendingExports().count(job) == 0; },
                    QStringLiteral("the exported file"));
}

} // namespace ostrand
