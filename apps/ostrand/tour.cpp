#include "tour.h"

#include "file_kinds.h"
#include "host.h"
#include "job_list_model.h"
#include "main_window.h"
#include "model_page.h"
#include "toolpath_steps.h"
#include "tour_machines.h"
#include "tour_model.h"
#include "tour_onboard.h"

#include <trovek-ui/trovekqt.h>

#include <trovek/log.h>
#include <trovek/text.h>

#include <qtshared/material.h>

#include <QAbstractButton>
#include <QAction>
#include <QDialog>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <exception>
#include <memory>
#include <stdexcept>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\tour";
constexpr int kStartDeadlineMs = 60 * 1000;
constexpr int kDeadlineAFileMs = 600 * 1000;
/** A machine shows names up to 30 characters, the suffix included. */
constexpr int kLongestBaseName = 24;

[[noreturn]] void fail(const QString& text)
{
    throw std::runtime_error(trovek::toStdString(text));
}

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("Cannot read %1: %2").arg(path, file.errorString()));
    return file.readAll();
}

/** Whether the G-code names the second tool. */
bool needsTwoExtruders(const QString& path)
{
    static const QRegularExpression secondTool(QStringLiteral("^[^;(]*\\bT1\\b"),
                                               QRegularExpression::MultilineOption |
                                                   QRegularExpression::CaseInsensitiveOption);
    return secondTool.match(QString::fromUtf8(bytesOf(path))).hasMatch();
}

QString baseNameOf(const QString& file)
{
    return QFileInfo(file).completeBaseName().left(kLongestBaseName);
}

} // namespace

Tour::Tour(Host& host, const QString& dir, const QStringList& files, QTextStream& lines)
    : m_host(host)
    , m_files(files)
    , m_lines(lines)
    , m_pictures(dir)
    , m_robot(kStartDeadlineMs + kDeadlineAFileMs * files.size())
    , m_steps(host, m_robot)
{}

int Tour::run()
{
    try {
        if (!m_pictures.dir().mkpath(QStringLiteral("exports")))
            fail(QStringLiteral("Cannot make the folder for the exports"));
        waitForMachines();
        for (const QString& file : m_files) {
            const QString path = QFileInfo(file).absoluteFilePath();
            open(path);
            if (fileKindOf(path) == FileKind::Model) {
                ModelTour(m_host, m_pictures, m_robot, [this](const QString& line) {
                    say(line);
                }).run(path);
                continue;
            }
            print(path);
            exportAs(path, QStringLiteral("x3g"), QStringLiteral("X3G"));
            exportAs(path, QStringLiteral("s3g"), QStringLiteral("S3G"));
            exportAs(path, QStringLiteral("gcode"), QStringLiteral("GCode"));
        }
        OnboardTour(m_host, m_pictures, m_robot, [this](const QString& line) { say(line); }).run();
        MachineTour(m_host, m_pictures, m_robot, [this](const QString& line) { say(line); }).run();
        m_pictures.writeContactSheet(QStringLiteral("Ostrand"));
        say(QStringLiteral("All is well; the pictures are in %1").arg(m_pictures.dir().path()));
        return 0;
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        say(QStringLiteral("FAILED: ") + QString::fromUtf8(e.what()));
        try {
            photograph(m_host.window(), QStringLiteral("failed"), QStringLiteral("Failed"));
        } catch (const std::exception& noPicture) {
            TROVEK_LOG(0) << noPicture.what() << std::endl;
        }
        return 1;
    }
}

void Tour::say(const QString& line)
{
    m_lines << line << '\n';
    m_lines.flush();
}

void Tour::photograph(QWidget& window, const QString& name, const QString& caption)
{
    say(QStringLiteral("  picture ") + m_pictures.save(window, name, caption));
}

void Tour::waitForMachines()
{
    trovek::TrovekQt& facade = m_host.facade();
    m_robot.waitFor([&] { return machinesAreReady(facade); }, QStringLiteral("a machine"));
    QStringList names;
    for (const trovek::Printer* printer : facade.printers()) {
        if (printer->canPrint())
            names.append(trovek::toQString(printer->displayName()));
    }
    say(QStringLiteral("Machines: ") + names.join(QStringLiteral(", ")));
    photograph(m_host.window(), QStringLiteral("start"), QStringLiteral("At the start"));
}

void Tour::open(const QString& file)
{
    say(QStringLiteral("Open ") + file);
    MainWindow& window = m_host.window();
    auto* action = window.findChild<QAction*>(QStringLiteral("open"));
    m_robot.clickAndAnswer([action] { action->trigger(); },
                           [&](QDialog& dialog) {
                               return Robot::fillFileDialog(dialog, file, QString(), [&] {
                                   photograph(dialog, QStringLiteral("open"),
                                              QStringLiteral("Choosing a file"));
                               });
                           });
    m_robot.waitFor([&] { return window.file() == file; }, QStringLiteral("the file"));
    if (const auto* page = window.findChild<ModelPage*>())
        m_robot.waitFor([page] { return !page->isReading(); }, QStringLiteral("the model"));
    photograph(window, QStringLiteral("file"), QFileInfo(file).fileName());
    if (!window.toolpathView())
        return;
    lookThroughToolpaths(window, m_robot,
                         [this](QWidget& widget, const QString& name, const QString& caption) {
                             photograph(widget, name, caption);
                         });
}

void Tour::print(const QString& file)
{
    QDialog& dialog = m_steps.openDialog(false);
    const trovek::Printer& machine =
        m_steps.chooseExtruders(dialog, needsTwoExtruders(file) ? 2 : 1);
    say(QStringLiteral("Print on ") + trovek::toQString(machine.displayName()));
    photograph(dialog, QStringLiteral("make"), QStringLiteral("Printing now"));
    const trovek::Job::ID job = m_steps.jobStartedBy(
        [&] { m_robot.click([&] { MakeSteps::button(dialog, "mainButton").click(); }); });
    m_steps.waitForHalf(job, QStringLiteral("the middle of the print"));
    photograph(m_host.window(), QStringLiteral("printing"), QStringLiteral("While it prints"));
    m_steps.waitForEnd(job, QStringLiteral("the print's end"));
    photograph(m_host.window(), QStringLiteral("printed"), QStringLiteral("After the print"));
    say(QStringLiteral("  printed %1 to the end").arg(QFileInfo(file).fileName()));
}

void Tour::exportAs(const QString& file, const QString& suffix, const QString& filterStart)
{
    const QString destination =
        m_pictures.dir().filePath(QStringLiteral("exports/%1.%2").arg(baseNameOf(file), suffix));
    QFile::remove(destination);
    QDialog& dialog = m_steps.openDialog(true);
    const trovek::Printer& machine =
        m_steps.chooseExtruders(dialog, needsTwoExtruders(file) ? 2 : 1);
    const std::string key = machine.key().name();
    say(QStringLiteral("Export for %1 as %2")
            .arg(trovek::toQString(machine.displayName()), suffix));
    photograph(dialog, QStringLiteral("export-") + suffix, QStringLiteral("Exporting"));
    const trovek::Job::ID job =
        m_steps.exportTo(dialog, destination, filterStart, [&](QDialog& chooser) {
            photograph(chooser, QStringLiteral("choose-") + suffix,
                       QStringLiteral("Choosing where to export"));
        });
    m_steps.waitForEnd(job, QStringLiteral("the export's end"));
    m_steps.waitForExport(job);
    compareWithService(file, destination, key, suffix);
    photograph(m_host.window(), QStringLiteral("exported-") + suffix,
               QStringLiteral("After the export"));
}

void Tour::compareWithService(const QString& file, const QString& exported,
                              const std::string& machine, const QString& suffix)
{
    // What the service wrote for the dialog lies where only the mover knows; the same request
    // gives the same bytes.
    QTemporaryDir folder;
    const QString path = QDir(folder.path()).filePath(QFileInfo(exported).fileName());
    QFile output(path);
    if (!output.open(QIODevice::WriteOnly))
        fail(QStringLiteral("Cannot write %1").arg(path));
    output.close();

    trovek::TrovekQt& facade = m_host.facade();
    const std::unique_ptr<trovek::SlicerConfiguration> configuration(
        trovek::SlicerConfiguration::defaultConfiguration(
            static_cast<trovek::SlicerConfiguration::Preset>(1)));
    const trovek::Printer* printer = facade.printerFromKey(trovek::MachineName(machine));
    if (!printer)
        fail(QStringLiteral("The machine has gone"));
    const std::vector<std::string> materials(
        printer->numberOfExtruders() < 2 ? 1 : 2,
        trovek::toStdString(Orvane::materialToIdentifier(Orvane::ABS)));
    const std::string input = trovek::toStdString(file);
    const std::string written = trovek::toStdString(path);
    const int job =
        suffix == QLatin1String("gcode")
            ? facade.slice(printer->key(), input, written, *configuration, materials, false)
            : facade.printToFile(printer->key(), input, written, *configuration, materials, true,
                                 trovek::toStdString(suffix));
    m_robot.waitFor([&] { return m_host.window().jobs().indexOf(job).isValid(); },
                    QStringLiteral("the service's own file"));
    m_steps.waitForEnd(job, QStringLiteral("the service's own file"));

    const QByteArray here = bytesOf(exported);
    if (here.isEmpty())
        fail(QStringLiteral("%1 is empty").arg(exported));
    if (here != bytesOf(path))
        fail(QStringLiteral("%1 is not what the service wrote").arg(exported));
    say(QStringLiteral("  exported %1, %2 bytes, as the service wrote them")
            .arg(exported)
            .arg(here.size()));
}

} // namespace ostrand
