#include "main_window.h"

#include "export_watch.h"
#include "file_view.h"
#include "icons.h"
#include "job_list_model.h"
#include "link_indicator.h"
#include "log_view.h"
#include "machine_windows.h"
#include "model_extruders.h"
#include "notice_bar.h"
#include "recent_files.h"

#include <trovek-ui/make_gcode_dialog.h>
#include <trovek-ui/make_thing_dialog.h>
#include <trovek-ui/message_box.h>
#include <trovek-ui/messages.h>
#include <trovek-ui/service.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/log.h>
#include <trovek/text.h>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QScreen>
#include <QSessionManager>
#include <QSettings>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include <exception>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\main_window";
constexpr char kGeometryKey[] = "ostrand/geometry";
constexpr char kLayoutKey[] = "ostrand/layout";
constexpr char kLastMachineKey[] = "make_dialog/printer";
constexpr char kLastOpenDirKey[] = "ostrand/lastOpenDir";
// Raise it when docks or tool bars change so that old layouts no longer fit.
constexpr int kLayoutVersion = 1;
constexpr int kDocksHeight = 140;

QString documentsDir()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

/** One path a line; a long list ends with how many more there are. */
QString pathLines(const QStringList& paths)
{
    constexpr int kShown = 8;
    QStringList lines;
    for (const QString& path : paths.mid(0, kShown))
        lines.append(QDir::toNativeSeparators(path));
    if (paths.size() > kShown)
        lines.append(MainWindow::tr("and %1 more").arg(paths.size() - kShown));
    return lines.join(QLatin1Char('\n'));
}

ViewedMachine viewedMachine(const trovek::Printer& machine)
{
    return {{machine.buildVolumeXmin(), machine.buildVolumeYmin(), machine.buildVolumeZmin(),
             machine.buildVolumeXmax(), machine.buildVolumeYmax(), machine.buildVolumeZmax()},
            machine.numberOfExtruders()};
}

/** Shows a message without waiting for its end. */
void showLater(trovek::MessageBox* box)
{
    if (!box)
        return;
    QObject::connect(box, &QDialog::finished, box, &QObject::deleteLater);
    box->open();
}

QString firstLocalFile(const QMimeData* data)
{
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile())
            return url.toLocalFile();
    }
    return QString();
}

} // namespace

MainWindow::MainWindow(const Surroundings& surroundings, QWidget* parent)
    : QMainWindow(parent)
    , m_facade(surroundings.facade)
    , m_settings(surroundings.settings)
    , m_link(surroundings.link)
    , m_exports(surroundings.exports)
    , m_fileView(new FileView(this))
    , m_notice(new NoticeBar(this))
    , m_jobs(new JobListModel(surroundings.facade, this))
    , m_recentFiles(new RecentFiles(surroundings.settings, this))
    , m_machineWindows(
          std::make_unique<MachineWindows>(surroundings.facade, surroundings.settings, this))
    , m_logView(new LogView(surroundings.log, surroundings.settings))
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowIcon(applicationIcon());
    setAcceptDrops(true);
    setUnifiedTitleAndToolBarOnMac(true);

    auto* middle = new QWidget(this);
    auto* layout = new QVBoxLayout(middle);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_notice);
    layout->addWidget(m_fileView, 1);
    setCentralWidget(middle);

    makeActions();
    makeDocks();
    makeMenus();
    statusBar()->addWidget(new LinkIndicator(m_link, this));
    connect(m_fileView, &FileView::openRequested, this, &MainWindow::chooseFile);
    connect(m_fileView, &FileView::makeRequested, this, &MainWindow::make);
    connect(m_recentFiles, &RecentFiles::chosen, this, &MainWindow::openFile, Qt::QueuedConnection);
    connectService();
    restoreLayout();
    updateActions();
}

MainWindow::~MainWindow() = default;

void MainWindow::connectService()
{
    connect(&m_link, &ServiceLink::stateChanged, this, &MainWindow::showLinkState);
    connect(&m_exports, &ExportWatch::interrupted, this, &MainWindow::showInterrupted);
    connect(&m_exports, &ExportWatch::lost, this, &MainWindow::showLost);
    connect(m_jobs, &QAbstractItemModel::rowsInserted, m_jobsDock, &QWidget::raise);
    for (const auto signal : {&trovek::TrovekQt::printerAdded, &trovek::TrovekQt::printerChanged})
        connect(&m_facade, signal, this, &MainWindow::chooseViewedMachine);
}

void MainWindow::restoreLayout()
{
    // Room for the toolpaths and their controls above some jobs, where the screen has it.
    resize(QSize(1200, 880).boundedTo(screen()->availableSize() * 0.92));
    resizeDocks({m_jobsDock, m_logDock}, {kDocksHeight, kDocksHeight}, Qt::Vertical);
    restoreGeometry(m_settings.value(QLatin1String(kGeometryKey)).toByteArray());
    restoreState(m_settings.value(QLatin1String(kLayoutKey)).toByteArray(), kLayoutVersion);
}

void MainWindow::saveLayout()
{
    m_settings.setValue(QLatin1String(kGeometryKey), saveGeometry());
    m_settings.setValue(QLatin1String(kLayoutKey), saveState(kLayoutVersion));
}

QString MainWindow::file() const
{
    return m_fileView->file();
}

void MainWindow::openFile(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isFile()) {
        TROVEK_LOG(1) << "Cannot open " << path.toStdString() << std::endl;
        m_recentFiles->remove(path);
        showLater(message::FileNotFound(this).box());
        return;
    }
    m_fileView->setFile(info.absoluteFilePath());
    m_recentFiles->add(info.absoluteFilePath());
    m_settings.setValue(QLatin1String(kLastOpenDirKey), info.absolutePath());
    updateActions();
}

void MainWindow::chooseFile()
{
    try {
        const QPointer<MainWindow> self(this);
        const trovek::FileChooserResult chosen = trovek::chooseOpenPath(
            this, tr("Open"),
            m_settings.value(QLatin1String(kLastOpenDirKey), documentsDir()).toString(),
            openFileFilters());
        if (self && !chosen.cancelled)
            openFile(chosen.paths.first());
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

void MainWindow::make()
{
    if (m_makeDialog || file().isEmpty())
        return;
    if (const QString reason = whyNotMakeable(file()); !reason.isEmpty()) {
        // The file may have changed behind our back.
        m_fileView->setFile(file());
        m_noticeIsOfLink = false;
        m_notice->showNotice(QStyle::SP_MessageBoxInformation, tr("This file cannot be made"),
                             reason);
        updateActions();
        return;
    }
    try {
        m_makeDialog = newMakeDialog();
        // Another machine may have been chosen in it.
        connect(m_makeDialog, &QDialog::finished, this, &MainWindow::chooseViewedMachine);
        m_makeDialog->open();
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        delete m_makeDialog;
        showLater(message::FailedToStartPrint(this).box());
    }
}

QDialog* MainWindow::newMakeDialog()
{
    if (fileKindOf(file()) == FileKind::GCode) {
        return new trovek::MakeGCodeDialog(m_facade, file(), &m_settings, nullptr, documentsDir(),
                                           true, this);
    }
    return new trovek::MakeThingDialog(m_facade, file(), extrudersOfModel(file()), &m_settings,
                                       nullptr, documentsDir(), true, this);
}

pathscope::ToolpathGLWidget* MainWindow::toolpathView() const
{
    return m_fileView->toolpathView();
}

void MainWindow::updateActions()
{
    const QString name = QFileInfo(file()).fileName();
    setWindowFilePath(file());
    setWindowTitle(name.isEmpty() ? tr("Ostrand") : tr("%1 - Ostrand").arg(name));
    m_make->setEnabled(!name.isEmpty() && whyNotMakeable(file()).isEmpty());
    const bool isOwnService = m_link.canRestartService();
    const bool isControllable = !isOwnService && trovek::service::actions_supported();
    m_startService->setVisible(isControllable);
    m_stopService->setVisible(isControllable);
    m_restart->setEnabled(isOwnService || isControllable);
    m_restart->setStatusTip(
        tr("End the background service with all of its jobs and start it again"));
    m_reconnect->setEnabled(m_link.state() != ServiceLink::Connected);
}

void MainWindow::chooseViewedMachine()
{
    const QString last = m_settings.value(QLatin1String(kLastMachineKey)).toString();
    const trovek::Printer* chosen = nullptr;
    for (const trovek::Printer* machine : m_facade.printers()) {
        if (!machine->canPrint())
            continue;
        const bool isLast = trovek::toQString(machine->key().name()) == last;
        if (!chosen || isLast)
            chosen = machine;
        if (isLast)
            break;
    }
    // Without any, what was drawn around the paths stays.
    if (chosen)
        m_fileView->setMachine(viewedMachine(*chosen));
}

void MainWindow::showLinkState(ServiceLink::State state)
{
    updateActions();
    if (state == ServiceLink::Connected) {
        m_wasConnected = true;
        m_isLost = false;
        if (m_noticeIsOfLink)
            m_notice->hide();
        m_noticeIsOfLink = false;
        return;
    }
    if (state != ServiceLink::Waiting || m_isLost)
        return;
    // Once for each loss: whoever has closed the notice need not close it after every attempt.
    m_isLost = true;
    if (!m_wasConnected) {
        showLater(message::BackgroundServiceUnavailable(this).box());
    } else if (!m_noticeIsOfLink) {
        m_noticeIsOfLink = true;
        m_notice->showNotice(QStyle::SP_MessageBoxWarning,
                             tr("The connection to the background service is lost"),
                             tr("Ostrand tries by itself to connect again."));
    }
}

void MainWindow::showInterrupted(const QStringList& destinations)
{
    m_noticeIsOfLink = true;
    m_notice->showNotice(
        QStyle::SP_MessageBoxWarning, tr("The connection to the background service is lost"),
        tr("Ostrand tries by itself to connect again. These exports are not finished yet:") +
            QLatin1Char('\n') + pathLines(destinations));
}

void MainWindow::showLost(const QStringList& destinations)
{
    m_noticeIsOfLink = false;
    m_notice->showNotice(
        QStyle::SP_MessageBoxWarning, tr("Exports were lost"),
        tr("The background service stopped before these files were finished. Please export "
           "them again:") +
            QLatin1Char('\n') + pathLines(destinations));
}

void MainWindow::restartService()
{
    if (m_asking)
        return;
    const QScopedValueRollback<bool> asking(m_asking, true);
    if (m_jobs->runningCount() &&
        !confirmEndOfOwnPrints(tr("Restart while jobs are running?"), tr("&Restart")))
        return;
    if (m_link.canRestartService())
        m_link.restartService();
    else
        controlService(&trovek::service::restart);
}

void MainWindow::controlService(void (*action)())
{
    action();
    m_link.connectNow();
}

void MainWindow::about()
{
    QMessageBox::about(
        this, tr("About Ostrand"),
        tr("<h3>Ostrand %1</h3><p>Prints on 3D printers and exports files for them.</p>")
            .arg(QApplication::applicationVersion()));
}

bool MainWindow::mayClose()
{
    if (m_asking)
        return false;
    const QScopedValueRollback<bool> asking(m_asking, true);
    try {
        if (!m_machineWindows->closeAll())
            return false;
        if (!m_exports.unfinished().isEmpty() && message::UnfinishedExportJobs(this).exec() !=
                                                     message::UnfinishedExportJobs::CloseOstrand)
            return false;
        // A service of somebody else goes on with its prints, ours ends with us.
        return !m_link.canRestartService() || !m_jobs->runningPrintCount() ||
               confirmEndOfOwnPrints(tr("Quit while printing?"), tr("&Quit"));
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        return true;
    }
}

bool MainWindow::confirmEndOfOwnPrints(const QString& heading, const QString& confirm)
{
    const QPointer<trovek::MessageBox> box = new trovek::MessageBox(
        {trovek::MessageBox::Button(tr("&Cancel"), 0, 1),
         trovek::MessageBox::Button(confirm, 1, 0)},
        heading, tr("The background service ends, and with it the jobs in progress."),
        QMessageBox::Question, this);
    box->maybeShowModal();
    if (!box)
        return false;
    box->deleteLater();
    return box->finishCode() == 1;
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!mayClose()) {
        event->ignore();
        return;
    }
    saveLayout();
    event->accept();
}

void MainWindow::endSession(QSessionManager& manager)
{
    saveLayout();
    if (m_exports.unfinished().isEmpty() || !manager.allowsInteraction())
        return;
    const bool close = mayClose();
    manager.release();
    if (!close)
        manager.cancel();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!firstLocalFile(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    const QString path = firstLocalFile(event->mimeData());
    if (path.isEmpty())
        return;
    event->acceptProposedAction();
    openFile(path);
}

void MainWindow::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    // What the disk says of the file may have changed while another program was in front.
    // Later: this also comes while a page makes its windows.
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        QTimer::singleShot(0, this, &MainWindow::lookAgain);
}

void MainWindow::lookAgain()
{
    if (file().isEmpty())
        return;
    m_fileView->setFile(file());
    updateActions();
}

} // namespace ostrand
