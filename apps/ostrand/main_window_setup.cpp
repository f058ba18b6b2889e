// What of the main window is only put together: its actions, docks and menus.

#include "main_window.h"

#include "icons.h"
#include "job_list_model.h"
#include "jobs_view.h"
#include "log_view.h"
#include "machine_menu.h"
#include "machine_windows.h"
#include "notice_bar.h"
#include "recent_files.h"
#include "simulate_menu.h"

#include <trovek-ui/service.h>

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

namespace ostrand {

void MainWindow::makeActions()
{
    m_open = new QAction(icon("open"), tr("&Open..."), this);
    m_open->setObjectName(QStringLiteral("open"));
    m_open->setShortcut(QKeySequence::Open);
    m_open->setStatusTip(tr("Open a model or a G-code file"));
    connect(m_open, &QAction::triggered, this, &MainWindow::chooseFile);
    m_make = new QAction(icon("make"), tr("&Make..."), this);
    m_make->setObjectName(QStringLiteral("make"));
    m_make->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_M));
    m_make->setStatusTip(tr("Print the file or export it for a machine"));
    connect(m_make, &QAction::triggered, this, &MainWindow::make);
    m_quit = new QAction(tr("&Quit"), this);
    m_quit->setObjectName(QStringLiteral("quit"));
    m_quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    m_quit->setMenuRole(QAction::QuitRole);
    connect(m_quit, &QAction::triggered, this, &QWidget::close);
    m_restart = new QAction(tr("&Restart Background Service"), this);
    m_restart->setObjectName(QStringLiteral("restartService"));
    connect(m_restart, &QAction::triggered, this, &MainWindow::restartService);
    // Of a service that the system runs; our own comes and goes with us.
    m_startService = new QAction(tr("&Start Background Service"), this);
    m_startService->setObjectName(QStringLiteral("startService"));
    m_startService->setStatusTip(tr("Let the system start the background service"));
    connect(m_startService, &QAction::triggered, this,
            [this] { controlService(&trovek::service::start); });
    m_stopService = new QAction(tr("S&top Background Service"), this);
    m_stopService->setObjectName(QStringLiteral("stopService"));
    m_stopService->setStatusTip(tr("Let the system end the background service with all of its "
                                   "jobs"));
    connect(m_stopService, &QAction::triggered, this,
            [this] { controlService(&trovek::service::stop); });
    m_reconnect = new QAction(tr("Re&connect Now"), this);
    m_reconnect->setObjectName(QStringLiteral("reconnect"));
    m_reconnect->setShortcut(QKeySequence(Qt::Key_F5));
    connect(m_reconnect, &QAction::triggered, &m_link, &ServiceLink::connectNow);
    m_saveLog = new QAction(icon("save"), tr("&Save Log..."), this);
    m_saveLog->setObjectName(QStringLiteral("saveLogAction"));
    connect(m_saveLog, &QAction::triggered, m_logView, &LogView::save);
}

void MainWindow::makeDocks()
{
    m_jobsDock = new QDockWidget(tr("Jobs"), this);
    m_jobsDock->setObjectName(QStringLiteral("jobsDock"));
    m_jobsDock->setWidget(new JobsView(*m_jobs, m_jobsDock));
    addDockWidget(Qt::BottomDockWidgetArea, m_jobsDock);
    m_logDock = new QDockWidget(tr("Log"), this);
    m_logDock->setObjectName(QStringLiteral("logDock"));
    m_logDock->setWidget(m_logView);
    addDockWidget(Qt::BottomDockWidgetArea, m_logDock);
    tabifyDockWidget(m_jobsDock, m_logDock);
    m_logDock->hide();
    m_jobsDock->toggleViewAction()->setIcon(icon("jobs"));
    m_jobsDock->toggleViewAction()->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_J));
    m_logDock->toggleViewAction()->setIcon(icon("log"));
    m_logDock->toggleViewAction()->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
}

void MainWindow::makeMenus()
{
    QMenu* fileMenu = menuBar()->addMenu(tr("&File"));
    fileMenu->addAction(m_open);
    fileMenu->addMenu(m_recentFiles);
    fileMenu->addSeparator();
    fileMenu->addAction(m_quit);
    menuBar()->addMenu(tr("&Make"))->addAction(m_make);
    auto* machines = new MachineMenu(m_facade, this);
    menuBar()->addMenu(machines);
    connect(machines, &MachineMenu::controlPanelRequested, this,
            [this] { m_machineWindows->openControlPanel(); });
    connect(machines, &MachineMenu::preferencesRequested, this,
            [this](const QString& machine) { m_machineWindows->openPreferences(machine); });
    connect(machines, &MachineMenu::directControlsRequested, this,
            [this](const QString& machine) { m_machineWindows->openDirectControls(machine); });
    connect(machines, &MachineMenu::firmwareUploadRequested, this,
            [this](const QString& machine) { m_machineWindows->openFirmwareUpload(machine); });
    QMenu* services = menuBar()->addMenu(tr("Se&rvices"));
    services->addActions({m_startService, m_stopService, m_restart, m_reconnect});
    auto* simulate = new SimulateMenu(m_facade, this);
    menuBar()->addMenu(simulate);
    connect(simulate, &SimulateMenu::failed, this, [this](const QString& text) {
        m_noticeIsOfLink = false;
        m_notice->showNotice(QStyle::SP_MessageBoxWarning,
                             tr("The virtual machine could not be changed"), text);
    });
    QMenu* view = menuBar()->addMenu(tr("&View"));
    view->addActions({m_jobsDock->toggleViewAction(), m_logDock->toggleViewAction()});
    view->addSeparator();
    view->addAction(m_saveLog);
    QMenu* help = menuBar()->addMenu(tr("&Help"));
    QAction* aboutThis = help->addAction(tr("&About Ostrand"));
    aboutThis->setMenuRole(QAction::AboutRole);
    connect(aboutThis, &QAction::triggered, this, &MainWindow::about);
    connect(help->addAction(tr("About &Qt")), &QAction::triggered, qApp, &QApplication::aboutQt);

    QToolBar* bar = addToolBar(tr("Tool Bar"));
    bar->setObjectName(QStringLiteral("toolBar"));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setIconSize(QSize(24, 24));
    bar->addActions({m_open, m_make});
    bar->addSeparator();
    bar->addActions({m_jobsDock->toggleViewAction(), m_logDock->toggleViewAction()});
}

} // namespace ostrand
