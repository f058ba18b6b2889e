#pragma once

#include <QObject>
#include <QString>

#include <memory>
#include <string>

class QThreadPool;

namespace trovek::service {

class JobList;
class MethodTable;

/**
 * The scanner of the service, and the point clouds and meshes of its clients.
 *
 * It must outlive the jobs that are made of it.
 */
class ScannerService : public QObject
{
    Q_OBJECT

public:
    /**
     * @param settingsFile as docs/formats/scanner_settings.md describes it; the usual scanner when
     *                     empty
     * @param memoryFile   stands for the scanner's memory
     * @param pool         not owned; must outlive it
     * @throws std::runtime_error for a user: settings with an error
     */
    ScannerService(const QString& settingsFile, const QString& memoryFile, QThreadPool& pool,
                   QObject* parent = nullptr);
    ~ScannerService() override;

    /** The table calls this object from now on. @param jobs not owned */
    void addTo(MethodTable& table, JobList& jobs);

signals:
    void cameraClosed(const std::string& devicePath);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
