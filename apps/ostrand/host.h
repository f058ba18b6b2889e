#pragma once

#include <QDir>
#include <QTemporaryDir>

#include <memory>

class QSettings;

namespace trovek {
class LogSink;
class TrovekQt;
namespace ui {
class TrovekHandle;
}
} // namespace trovek

namespace ostrand {

class ExportWatch;
class LogModel;
class MainWindow;
class ServiceLink;
struct Options;

/**
 * Everything that a running host consists of, made and taken down in the right order.
 *
 * A run without hands keeps settings and state in a temporary folder, so that it always starts
 * from the same place and leaves the user's own alone.
 */
class Host
{
public:
    /** @throws std::exception when a file that the options name cannot be used */
    explicit Host(const Options& options);
    ~Host();

    MainWindow& window() { return *m_window; }
    trovek::TrovekQt& facade();
    QSettings& settings() { return *m_settings; }
    ServiceLink& link() { return *m_link; }
    LogModel& log() { return *m_log; }
    /** Where the user's slicer profiles are kept. */
    const QDir& profileDir() const { return m_profileDir; }

private:
    void startLog();
    void makeProfileDir(const QString& dataDir);

    std::unique_ptr<QTemporaryDir> m_temporary;
    QDir m_profileDir;
    std::shared_ptr<trovek::LogSink> m_logFile;
    std::unique_ptr<LogModel> m_log;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<trovek::ui::TrovekHandle> m_handle;
    std::unique_ptr<ServiceLink> m_link;
    std::unique_ptr<ExportWatch> m_exports;
    std::unique_ptr<MainWindow> m_window;
};

} // namespace ostrand
