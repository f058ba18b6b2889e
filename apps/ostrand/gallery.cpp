#include "gallery.h"

#include "gallery_messages.h"
#include "gallery_models.h"
#include "gallery_onboard.h"
#include "gallery_widgets.h"
#include "host.h"
#include "job_list_model.h"
#include "main_window.h"
#include "toolpath_steps.h"

#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/message_box.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/log.h>
#include <trovek/text.h>

#include <qtshared/material.h>

#include <QAbstractButton>
#include <QDialog>
#include <QDockWidget>
#include <QFile>
#include <QSettings>
#include <QTextStream>

#include <exception>
#include <memory>
#include <stdexcept>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\gallery";
constexpr int kDeadlineMs = 180 * 1000;

/** A square tower; long enough that a print of it can be caught in the middle. */
QByteArray sampleGCode()
{
    QByteArray code = "; sample\nG21\nG90\nM82\nM104 S210 T0\nM109 S210 T0\nG92 E0\n";
    double extruded = 0;
    for (int layer = 0; layer < 400; ++layer) {
        code += "G1 Z" + QByteArray::number(0.2 * (layer + 1), 'f', 2) + " F600\n";
        for (const auto& [x, y] :
             {std::pair(60, 40), std::pair(100, 40), std::pair(100, 80), std::pair(60, 80)}) {
            extruded += 1.3;
            code += "G1 X" + QByteArray::number(x) + " Y" + QByteArray::number(y) + " E" +
                    QByteArray::number(extruded, 'f', 3) + " F2400\n";
        }
    }
    return code + "M104 S0 T0\n";
}

} // namespace

QPalette darkPalette()
{
    const QColor window(45, 45, 48);
    const QColor base(30, 30, 32);
    const QColor text(232, 232, 232);
    const QColor faint(130, 130, 130);
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, QColor(38, 38, 41));
    palette.setColor(QPalette::ToolTipBase, QColor(66, 62, 46));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, faint);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, QColor(58, 58, 62));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, Qt::red);
    palette.setColor(QPalette::Link, QColor(90, 170, 255));
    palette.setColor(QPalette::LinkVisited, QColor(180, 140, 255));
    palette.setColor(QPalette::Highlight, QColor(42, 110, 190));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Light, QColor(80, 80, 84));
    palette.setColor(QPalette::Midlight, QColor(68, 68, 72));
    palette.setColor(QPalette::Mid, QColor(38, 38, 40));
    palette.setColor(QPalette::Dark, QColor(24, 24, 26));
    palette.setColor(QPalette::Shadow, QColor(12, 12, 12));
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(QPalette::Disabled, role, faint);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(80, 80, 84));
    return palette;
}

Gallery::Gallery(Host& host, const QString& dir, const QStringList& files, QTextStream& lines)
    : m_host(host)
    , m_files(files)
    , m_lines(lines)
    , m_pictures(dir)
    , m_robot(kDeadlineMs)
{}

int Gallery::run()
{
    try {
        m_robot.waitFor([this] { return machinesAreReady(m_host.facade()); },
                        QStringLiteral("a machine"));
        const Photograph take = [this](QWidget& window, const QString& name,
                                       const QString& caption) {
            photograph(window, name, caption);
        };
        photographMainWindow();
        photographModels(m_host, m_robot, take);
        photographMachineTools(m_host, m_robot, take);
        m_host.window().openFile(m_sample);
        photographMakeDialog();
        photographPreviews();
        photographOnboardPreferences(m_host, m_robot, take);
        photographJobs();
        photographWidgets();
        photographMessages();
        photographLostLink();
        m_pictures.writeContactSheet(QStringLiteral("Gallery"));
        m_lines << m_count << " pictures in " << m_pictures.dir().path() << '\n';
        m_lines.flush();
        return 0;
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        return 1;
    }
}

void Gallery::photograph(QWidget& window, const QString& name, const QString& caption)
{
    m_pictures.save(window, name, caption);
    ++m_count;
}

QString Gallery::sampleFile(const QString& name, const QByteArray& content) const
{
    const QString path = QFileInfo(m_host.settings().fileName()).absoluteDir().filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw std::runtime_error("Cannot write " + trovek::toStdString(path));
    return path;
}

void Gallery::photographMainWindow()
{
    MainWindow& window = m_host.window();
    photograph(window, QStringLiteral("main-empty"), QStringLiteral("Nothing open"));
    m_sample = sampleFile(QStringLiteral("gear_housing.gcode"), sampleGCode());
    window.openFile(m_sample);
    waitForToolpaths(m_robot, *window.toolpathView());
    photograph(window, QStringLiteral("main-gcode"), QStringLiteral("A G-code file"));
}

void Gallery::photographMakeDialog()
{
    MainWindow& window = m_host.window();
    window.make();
    QDialog& dialog = *window.makeDialog();
    auto& machines = *dialog.findChild<trovek::MachineComboBox*>();
    const auto click = [&dialog](const char* name) {
        dialog.findChild<QAbstractButton*>(QLatin1String(name))->click();
    };
    const auto settle = [&](bool exporting) {
        m_robot.waitFor([&] { return machines.archetypesEnabled() == exporting; },
                        QStringLiteral("the make dialog"));
        QCoreApplication::processEvents();
    };
    settle(false);
    photograph(dialog, QStringLiteral("make"), QStringLiteral("Making now"));
    click("addStartEnd");
    for (trovek::Printer* machine : machines.machines()) {
        machines.select(machine);
        settle(false);
        photograph(dialog, QStringLiteral("make-%1-extruders").arg(machine->numberOfExtruders()),
                   QStringLiteral("Making on ") + trovek::toQString(machine->displayName()));
    }
    click("exportRadio");
    settle(true);
    photograph(dialog, QStringLiteral("export"), QStringLiteral("Exporting"));
    m_robot.click([&dialog] { dialog.reject(); });
    m_robot.waitFor([&] { return !window.makeDialog(); }, QStringLiteral("the dialog's end"));
}

void Gallery::photographPreviews()
{
    const QString before = m_host.window().file();
    for (const QString& file : m_files)
        photographPreview(m_host, m_robot, file,
                          [this](QWidget& window, const QString& name, const QString& caption) {
                              photograph(window, name, caption);
                          });
    m_host.window().openFile(before);
}

void Gallery::photographJobs()
{
    MainWindow& window = m_host.window();
    trovek::TrovekQt& facade = m_host.facade();
    const std::unique_ptr<trovek::SlicerConfiguration> configuration(
        trovek::SlicerConfiguration::defaultConfiguration(
            static_cast<trovek::SlicerConfiguration::Preset>(1)));
    int print = trovek::Job::kInvalidID;
    for (const trovek::Printer* machine : facade.printers()) {
        if (!machine->canPrint())
            continue;
        const std::vector<std::string> materials(
            static_cast<std::size_t>(machine->numberOfExtruders()),
            trovek::toStdString(Orvane::materialToIdentifier(Orvane::PLA)));
        print = facade.print(machine->key(), trovek::toStdString(window.file()), *configuration,
                             materials, true);
    }
    // One that fails: it is no model.
    const trovek::Printer* archetype = facade.printers().back();
    const QString output = sampleFile(QStringLiteral("out.gcode"), QByteArray());
    facade.slice(archetype->key(),
                 trovek::toStdString(sampleFile(QStringLiteral("bracket.stl"), " ")),
                 trovek::toStdString(output), *configuration, {"pla"}, false);
    JobListModel& jobs = window.jobs();
    m_robot.waitFor(
        [&] {
            const QModelIndex index = jobs.indexOf(print);
            return jobs.finishedCount() > 0 &&
                   (index.data(JobListModel::ProgressRole).toInt() > 20 ||
                    index.data(JobListModel::ConclusionRole).toInt() != trovek::JobNotConcluded);
        },
        QStringLiteral("the jobs"));
    photograph(window, QStringLiteral("main-jobs"), QStringLiteral("Jobs"));
    m_robot.waitFor([&] { return jobs.runningCount() == 0; }, QStringLiteral("the jobs' end"));
    photograph(window, QStringLiteral("main-jobs-ended"), QStringLiteral("Jobs that have ended"));
    auto* log = window.findChild<QDockWidget*>(QStringLiteral("logDock"));
    log->show();
    log->raise();
    QCoreApplication::processEvents();
    photograph(window, QStringLiteral("main-log"), QStringLiteral("The log"));
    log->hide();
}

void Gallery::photographWidgets()
{
    const std::unique_ptr<QWidget> page = makeWidgetsPage(m_host.facade());
    page->show();
    QCoreApplication::processEvents();
    photograph(*page, QStringLiteral("widgets"), QStringLiteral("Small widgets"));
}

void Gallery::photographMessages()
{
    for (const SampleMessage& sample : sampleMessages()) {
        QWidget parent;
        trovek::MessageBox* box = sample.make(&parent, &m_host.settings());
        box->show();
        QCoreApplication::processEvents();
        photograph(*box, QStringLiteral("message-") + sample.name, sample.name);
    }
}

void Gallery::photographLostLink()
{
    m_host.facade().disconnectFromDaemon();
    m_robot.waitFor([this] { return m_host.link().state() == ServiceLink::Waiting; },
                    QStringLiteral("the loss of the link"));
    photograph(m_host.window(), QStringLiteral("main-link-lost"),
               QStringLiteral("The link is lost"));
}

} // namespace ostrand
