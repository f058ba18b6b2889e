#include "firmware/firmware_upload.h"

#include "background_task.h"
#include "driver.h"
#include "firmware/firmware_cache.h"
#include "firmware/firmware_image.h"
#include "onboard/onboard_map.h"
#include "onboard/onboard_memory.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QDateTime>
#include <QDir>

#include <optional>
#include <stdexcept>

namespace trovek::service {

namespace {

trovek::Job::Data describeJob(const Machine& machine)
{
    trovek::Job::Data data;
    data.name = "Firmware upload";
    data.kind = wire::method::kUploadFirmware;
    data.machine = MachineName(machine.definition().key);
    return data;
}

JsonRpcException uploadError(const std::string& text)
{
    return wire::makeError(wire::error::kFirmwareUpload, text);
}

} // namespace

FirmwareUpload::FirmwareUpload(Machine& machine, std::string path, const Tools& tools)
    : RunningJob(describeJob(machine))
    , m_machine(machine)
    , m_path(std::move(path))
    , m_tools(tools)
    , m_error(std::string())
{}

FirmwareUpload::~FirmwareUpload() = default;

void FirmwareUpload::start()
{
    connect(&m_machine.driver(), &MachineDriver::firmwareWritten, this, &FirmwareUpload::written);
    m_lease = std::make_unique<Machine::Lease>(m_machine, *this);
    readImage();
}

void FirmwareUpload::readImage()
{
    // The task is a member: what it refers to lives until it has returned.
    const auto refusal = std::make_shared<std::optional<JsonRpcException>>();
    m_reading =
        std::make_unique<BackgroundTask>(m_tools.pool, [this, refusal](BackgroundTask::Control&) {
            try {
                m_image = m_tools.cache.read(m_path);
            } catch (const JsonRpcException& error) {
                *refusal = error;
            }
        });
    connect(m_reading.get(), &BackgroundTask::ended, this, [this, refusal](const QString& error) {
        if (isConcluded())
            return;
        if (*refusal)
            fail(**refusal);
        else if (!error.isEmpty())
            fail(uploadError(toStdString(error)));
        else
            write();
    });
    m_reading->start();
}

void FirmwareUpload::write()
{
    try {
        const FirmwareHeader header = readFirmwareHeader(m_image);
        if (header.type != m_machine.definition().type) {
            throw wire::makeError(wire::error::kFirmwareType,
                                  "This firmware is for another type of machine: " +
                                      machineTypeName(header.type));
        }
        m_version = header.version.str();
        backUpMemory();
        m_machine.driver().writeFirmware(m_version, m_image);
    } catch (const JsonRpcException& error) {
        fail(error);
    } catch (const std::exception& error) {
        fail(uploadError(error.what()));
    }
}

/** The new firmware lays the memory out anew; the way back must not cost a user the settings. */
void FirmwareUpload::backUpMemory()
{
    const FirmwareVersion version(m_machine.driver().firmwareVersion());
    const OnboardMap* const map =
        m_tools.maps.find({m_machine.definition().type, version.major(), version.minor()});
    const QString folder = QDir(m_machine.folder()).filePath(QStringLiteral("backups"));
    if (map != nullptr) {
        OnboardMemory(m_machine.driver(), m_tools.maps, *map, folder).makeBackup();
        return;
    }
    const QByteArray image = m_machine.driver().readMemory(0, kOnboardBytes);
    if (image.count(kErasedByte) != image.size())
        OnboardBackups(folder).add(image, QDateTime::currentMSecsSinceEpoch());
}

void FirmwareUpload::written(const QString& failure)
{
    if (!failure.isEmpty()) {
        fail(uploadError(toStdString(failure)));
        return;
    }
    restartMachine();
    end(JobEnded);
}

void FirmwareUpload::restartMachine()
{
    // It is not this job that the machine takes away.
    m_restarting = true;
    m_machine.unplug();
    m_lease.reset();
    m_machine.plugIn();
    m_machine.open();
}

void FirmwareUpload::cancel() {}

void FirmwareUpload::abort(const QString& reason)
{
    if (!m_restarting)
        fail(uploadError(toStdString(reason)));
}

void FirmwareUpload::fail(const JsonRpcException& error)
{
    if (isConcluded())
        return;
    m_error = error;
    end(JobFailed);
}

void FirmwareUpload::end(JobConclusion conclusion)
{
    disconnect(&m_machine.driver(), nullptr, this, nullptr);
    m_lease.reset();
    conclude(conclusion, toQString(m_error.message()));
}

} // namespace trovek::service
