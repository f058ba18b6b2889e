#include "make_window.h"

#include <trovek-ui/export_job_mover.h>
#include <trovek-ui/make_gcode_dialog.h>
#include <trovek-ui/make_thing_dialog.h>

#include <QDir>
#include <QFileInfo>

namespace trovek {

namespace made {

const QStringList kServiceError = {QStringLiteral("An error occurred in the background service.")};
const QStringList kNotStarted = {
    QStringLiteral("Print Failed"),
    QStringLiteral("An unexpected error occurred while starting print.")};
const QStringList kNoService = {QStringLiteral("Service Error"),
                                QStringLiteral("No connection to background service")};

Verdict shows(const QStringList& message)
{
    Verdict made;
    made.messages = {message};
    return made;
}

Verdict showsAfterSomeLines(const QStringList& message)
{
    Verdict made = shows(message);
    made.logged = -1;
    return made;
}

} // namespace made

namespace {

/** The folders that the library makes for the service to write into. */
QStringList managedFiles()
{
    QStringList files;
    const QDir temporary = QDir::temp();
    for (const QString& folder : temporary.entryList({QStringLiteral("trovek-ui-*")}, QDir::Dirs)) {
        for (const QString& file : QDir(temporary.filePath(folder)).entryList(QDir::Files))
            files.append(folder + QLatin1Char('/') + file);
    }
    return files;
}

} // namespace

MakeWindow::MakeWindow(FaultScene& scene, Dialog dialog, const QString& suffix)
    : m_scene(scene)
    , m_suffix(suffix)
{
    if (dialog == ForThing)
        m_dialog =
            new MakeThingDialog(scene.facade, scene.model(), SlicerConfiguration::Right,
                                &scene.settings, scene.printer(), scene.exportFolder(), true);
    else
        m_dialog = new MakeGCodeDialog(scene.facade, scene.gcode(), &scene.settings,
                                       scene.printer(), scene.exportFolder(), true);
    m_dialog->show();
}

MakeWindow::~MakeWindow()
{
    delete m_dialog;
    // What is left of a test is not the next one's.
    for (const QString& file : managedFiles())
        QFile::remove(QDir::temp().filePath(file));
}

bool MakeWindow::chooseMachine() const
{
    auto& machines = find<MachineComboBox>("machineCombo");
    Printer* const printer = m_scene.printer();
    if (printer != nullptr)
        machines.select(printer);
    FaultScene::settle();
    return machines.machine() != nullptr && machines.machine() == printer;
}

bool MakeWindow::prepare()
{
    FaultScene::settle();
    auto& mode = find<QRadioButton>(isPrint() ? "makeRadio" : "exportRadio");
    if (!mode.isEnabled())
        return false;
    QTest::mouseClick(&mode, Qt::LeftButton, {}, QPoint(8, mode.height() / 2));
    FaultScene::settle();
    if (!chooseMachine() && isPrint())
        return false;
    m_prints = isPrint() ? m_scene.jobsOf("print") : 0;
    static int exports = 0;
    m_destination =
        m_scene.exportFolder() + QStringLiteral("/made%1.%2").arg(++exports).arg(m_suffix);
    return find<QPushButton>("mainButton").isEnabled();
}

void MakeWindow::announceQuestions(ModalDriver& driver)
{
    if (isPrint())
        return;
    const QString filter = m_suffix == QLatin1String("gcode") ? QStringLiteral("GCode, slice only")
                           : m_suffix == QLatin1String("s3g")
                               ? QStringLiteral("S3G, SD print for firmware earlier than 7.0")
                               : QStringLiteral("X3G, SD print for firmware 7.0 or later");
    driver.expect<QFileDialog>([this, filter](QFileDialog* dialog) {
        auto* const kinds = dialog->findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
        for (int row = 0; row < kinds->count(); ++row) {
            if (kinds->itemText(row).startsWith(filter)) {
                kinds->setCurrentIndex(row);
                emit kinds->activated(row);
            }
        }
        auto* const edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        edit->setText(m_destination);
        pressButton(dialog, QStringLiteral("&Save"));
    });
}

void MakeWindow::press()
{
    QTest::mouseClick(&find<QPushButton>("mainButton"), Qt::LeftButton);
}

bool MakeWindow::isDone()
{
    if (isPrint())
        return m_scene.jobsOf("print") > m_prints;
    return QFileInfo(m_destination).size() > 0 &&
           !ExportJobMover::instance(m_scene.facade).unfinishedExports().contains(m_destination);
}

bool MakeWindow::isOpen()
{
    return m_dialog && m_dialog->isVisible();
}

/** What nobody will ever look for. */
QStringList MakeWindow::leftovers()
{
    if (isDone())
        return {};
    QStringList files = managedFiles();
    if (QFileInfo::exists(m_destination))
        files.append(m_destination);
    return files;
}

} // namespace trovek
