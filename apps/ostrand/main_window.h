#pragma once

#include "service_link.h"

#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>

class QDialog;
class QSessionManager;
class QSettings;

namespace pathscope {
class ToolpathGLWidget;
}

namespace trovek {
class TrovekQt;
}

namespace ostrand {

class ExportWatch;
class FileView;
class JobListModel;
class JobsView;
class LogModel;
class LogView;
class NoticeBar;
class MachineWindows;
class RecentFiles;

/** What the window works with; everything is owned elsewhere and outlives it. */
struct Surroundings
{
    trovek::TrovekQt& facade;
    QSettings& settings;
    ServiceLink& link;
    ExportWatch& exports;
    LogModel& log;
};

/** The host's window: one file, what can be made of it, the jobs and the link to the service. */
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(const Surroundings& surroundings, QWidget* parent = nullptr);
    ~MainWindow() override;

    /** Absolute path; empty when nothing is open. */
    QString file() const;
    JobListModel& jobs() { return *m_jobs; }
    NoticeBar& notice() { return *m_notice; }
    MachineWindows& machineWindows() { return *m_machineWindows; }
    /** The open make dialog, or null. */
    QDialog* makeDialog() const { return m_makeDialog; }
    /** Of the open G-code file; null for any other. */
    pathscope::ToolpathGLWidget* toolpathView() const;

public slots:
    /** Shows the file; one that is not there gives a message and changes nothing. */
    void openFile(const QString& path);
    /** Asks which file to open. */
    void chooseFile();
    /** Opens the make dialog for the file; nothing happens when there is one already. */
    void make();
    /** At the end of the session: asks the same questions as closing does. */
    void endSession(QSessionManager& manager);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void makeActions();
    void makeDocks();
    void makeMenus();
    void connectService();
    void restoreLayout();
    void saveLayout();
    QDialog* newMakeDialog();
    void updateActions();
    /** Shows what the disk says of the file now. */
    void lookAgain();
    /** The machine that was used last, or else the first that can print. */
    void chooseViewedMachine();
    void showLinkState(ServiceLink::State state);
    void showInterrupted(const QStringList& destinations);
    void showLost(const QStringList& destinations);
    void restartService();
    /** Lets the system do it, and connects again as soon as that is possible. */
    void controlService(void (*action)());
    void about();
    /** True when nothing speaks against closing, or the user wants it all the same. */
    bool mayClose();
    bool confirmEndOfOwnPrints(const QString& heading, const QString& confirm);

    trovek::TrovekQt& m_facade;
    QSettings& m_settings;
    ServiceLink& m_link;
    ExportWatch& m_exports;
    FileView* const m_fileView;
    NoticeBar* const m_notice;
    JobListModel* const m_jobs;
    RecentFiles* const m_recentFiles;
    const std::unique_ptr<MachineWindows> m_machineWindows;
    QDockWidget* m_jobsDock = nullptr;
    QDockWidget* m_logDock = nullptr;
    LogView* m_logView = nullptr;
    QAction* m_open = nullptr;
    QAction* m_make = nullptr;
    QAction* m_quit = nullptr;
    QAction* m_startService = nullptr;
    QAction* m_stopService = nullptr;
    QAction* m_restart = nullptr;
    QAction* m_reconnect = nullptr;
    QAction* m_saveLog = nullptr;
    QPointer<QDialog> m_makeDialog;
    bool m_wasConnected = false;
    bool m_isLost = false;
    bool m_noticeIsOfLink = false;
    bool m_asking = false;
};

} // namespace ostrand
