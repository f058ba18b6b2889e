#pragma once

#include "machine.h"
#include "running_job.h"

#include <rpcwire/json_rpc_exception.h>

#include <QByteArray>

#include <memory>
#include <string>

class QThreadPool;

namespace trovek::service {

class BackgroundTask;
class FirmwareCache;
class OnboardMaps;

/**
 * Gives a machine other firmware, after a backup of its onboard memory. When it has ended, the
 * machine has left and come back with the new version; when it has failed, the machine still runs
 * the earlier one and can be given firmware again.
 *
 * It occupies the machine as a job does, but clients see no job: whoever asked for it waits for the
 * answer. It goes on when that client leaves.
 */
class FirmwareUpload : public RunningJob
{
    Q_OBJECT

public:
    struct Tools
    {
        const FirmwareCache& cache;
        const OnboardMaps& maps;
        QThreadPool& pool;
    };

    /**
     * @param machine free, idle and not owned; must outlive it, as the tools must
     * @param path    of the image in the cache
     */
    FirmwareUpload(Machine& machine, std::string path, const Tools& tools);
    ~FirmwareUpload() override;

    void start() override;
    /** Does nothing: half a firmware is of no use. */
    void cancel() override;
    void abort(const QString& reason) override;

    /** Why it has failed. */
    const JsonRpcException& error() const { return m_error; }

private:
    void readImage();
    void write();
    void backUpMemory();
    void written(const QString& failure);
    void restartMachine();
    void fail(const JsonRpcException& error);
    void end(JobConclusion conclusion);

    Machine& m_machine;
    const std::string m_path;
    const Tools m_tools;
    std::unique_ptr<Machine::Lease> m_lease;
    QByteArray m_image;
    std::string m_version;
    bool m_restarting = false;
    JsonRpcException m_error;
    /** Last, for it writes to the others until it has ended. */
    std::unique_ptr<BackgroundTask> m_reading;
};

} // namespace trovek::service
