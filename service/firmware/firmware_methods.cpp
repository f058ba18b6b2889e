#include "firmware/firmware_methods.h"

#include "background_task.h"
#include "firmware/firmware_cache.h"
#include "firmware/firmware_catalogue.h"
#include "firmware/firmware_image.h"
#include "firmware/firmware_source.h"
#include "firmware/firmware_upload.h"
#include "machine_list.h"
#include "method_table.h"
#include "onboard/onboard_map.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QThreadPool>

#include <algorithm>
#include <functional>
#include <optional>
#include <vector>

namespace trovek::service {

namespace {

constexpr char kIndexName[] = "catalogue.json";
constexpr int kIndexBytesAtMost = 4 * 1024 * 1024;
/** Clients wait a minute for a list and five for a download, which needs the index as well. */
constexpr int kIndexTimeoutMs = 30'000;
constexpr int kImageTimeoutMs = 240'000;
/** A site that is slow to answer must not hold up an upload. */
constexpr int kThreads = 4;

JsonRpcException imageError(const FirmwareEntry& entry, const std::string& whatIsWrong)
{
    return wire::makeError(wire::error::kFirmwareImage,
                           "The firmware file " + toStdString(entry.file) + " " + whatIsWrong);
}

/** What a failed download shows to its user stands in "error". */
JsonRpcException downloadError(const JsonRpcException& error)
{
    Json::Value data = error.data();
    data["error"] = error.message();
    return JsonRpcException(error.message(), data, error.code());
}

/** Nothing that differs from the index in any way is ever kept. */
void checkImage(const FirmwareEntry& entry, const QByteArray& image)
{
    if (image.size() < entry.bytes)
        throw imageError(entry, "is not complete");
    if (firmwareHash(image) != entry.hash)
        throw imageError(entry, "is damaged: its SHA-256 is not the catalogue's");
    try {
        const FirmwareHeader header = readFirmwareHeader(image);
        if (header.type != entry.type || header.version.str() != entry.version.str())
            throw std::runtime_error("is for another machine or of another version");
    } catch (const std::exception& error) {
        throw imageError(entry, error.what());
    }
}

} // namespace

class FirmwareMethods::Private
{
public:
    using IsCanceled = std::function<bool()>;
    using Work = std::function<Json::Value(const IsCanceled&)>;

    Private(MachineList& machineList, const QString& catalogue, const QString& cacheFolder)
        : machines(machineList)
        , source(catalogue)
        , cache(cacheFolder)
    {
        pool.setMaxThreadCount(kThreads);
    }

    FirmwareCatalogue readCatalogue(const IsCanceled& isCanceled) const;
    Json::Value versions(const std::string& machine, int type, const IsCanceled& isCanceled) const;
    std::string download(const std::string& machine, int type, const std::string& version,
                         const IsCanceled& isCanceled);
    QByteArray readImage(const FirmwareEntry& entry, const IsCanceled& isCanceled) const;
    void answerLater(const Responder& respond, Work work);
    void upload(const Call& call);

    MachineList& machines;
    const FirmwareSource source;
    FirmwareCache cache;
    const OnboardMaps maps;
    QThreadPool pool;
    std::vector<std::unique_ptr<FirmwareUpload>> uploads;
    /** Parent of the tasks: they go first. */
    QObject tasks;
};

FirmwareCatalogue FirmwareMethods::Private::readCatalogue(const IsCanceled& isCanceled) const
{
    try {
        return FirmwareCatalogue(
            source.read(QLatin1String(kIndexName), kIndexBytesAtMost, kIndexTimeoutMs, isCanceled));
    } catch (const std::exception& error) {
        throw wire::makeError(wire::error::kFirmwareCatalogue, error.what());
    }
}

Json::Value FirmwareMethods::Private::versions(const std::string& machine, int type,
                                               const IsCanceled& isCanceled) const
{
    const FirmwareCatalogue catalogue = readCatalogue(isCanceled);
    if (!catalogue.offersAnythingFor(machine)) {
        throw wire::makeError(wire::error::kFirmwareUnavailable,
                              "There is no firmware for machines named \"" + machine + "\"");
    }
    Json::Value list(Json::arrayValue);
    for (const FirmwareEntry& entry : catalogue.entries()) {
        if (entry.machine != machine || entry.type != type)
            continue;
        Json::Value pair(Json::arrayValue);
        pair.append(entry.version.str());
        pair.append(entry.version.description());
        list.append(pair);
    }
    return list;
}

std::string FirmwareMethods::Private::download(const std::string& machine, int type,
                                               const std::string& version,
                                               const IsCanceled& isCanceled)
{
    const FirmwareCatalogue catalogue = readCatalogue(isCanceled);
    const FirmwareEntry* const entry =
        catalogue.find(machine, static_cast<Printer::Type>(type), version);
    if (entry == nullptr) {
        throw wire::makeError(wire::error::kFirmwareUnavailable,
                              "There is no firmware " + version + " for this machine");
    }
    const QByteArray image = readImage(*entry, isCanceled);
    checkImage(*entry, image);
    return cache.add(image);
}

QByteArray FirmwareMethods::Private::readImage(const FirmwareEntry& entry,
                                               const IsCanceled& isCanceled) const
{
    try {
        return source.read(entry.file, entry.bytes, kImageTimeoutMs, isCanceled);
    } catch (const std::exception& error) {
        throw wire::makeError(wire::error::kFirmwareImage, error.what());
    }
}

void FirmwareMethods::Private::answerLater(const Responder& respond, Work work)
{
    struct Outcome
    {
        Json::Value result;
        std::optional<JsonRpcException> error;
    };
    const auto outcome = std::make_shared<Outcome>();
    auto* const task = new BackgroundTask(
        pool,
        [outcome, work = std::move(work)](BackgroundTask::Control& control) {
            try {
                outcome->result = work([&control] { return control.isCanceled(); });
            } catch (const JsonRpcException& error) {
                outcome->error = error;
            }
        },
        &tasks);
    QObject::connect(
        task, &BackgroundTask::ended, task, [task, outcome, respond](const QString& error) {
            if (outcome->error)
                respond.error(*outcome->error);
            else if (!error.isEmpty())
                respond.error(wire::makeError(wire::error::kFirmwareCatalogue, toStdString(error)));
            else
                respond.result(outcome->result);
            task->deleteLater();
        });
    task->start();
}

void FirmwareMethods::Private::upload(const Call& call)
{
    const std::string path = call.params.string("path");
    Machine& machine = machines.openMachine(call.params.string("machine"));
    if (machine.job() != nullptr) {
        throw wire::makeError(wire::error::kPrinterThreadNotIdle,
                              "The machine is busy: " + machine.job()->data().name);
    }
    if (machine.driver().status().state != Printer::Idle)
        throw wire::makeError(wire::error::kPrinterThreadNotIdle, "The machine is not ready");
    uploads.erase(std::remove_if(uploads.begin(), uploads.end(),
                                 [](const auto& upload) { return upload->isConcluded(); }),
                  uploads.end());
    auto owned =
        std::make_unique<FirmwareUpload>(machine, path, FirmwareUpload::Tools{cache, maps, pool});
    const FirmwareUpload* const upload = owned.get();
    QObject::connect(upload, &RunningJob::concluded, upload, [upload, respond = call.respond] {
        if (upload->data().conclusion == JobEnded)
            respond.result(Json::Value());
        else
            respond.error(upload->error());
    });
    uploads.push_back(std::move(owned));
    uploads.back()->start();
}

FirmwareMethods::FirmwareMethods(MachineList& machines, const QString& catalogue,
                                 const QString& cache)
    : d(new Private(machines, catalogue, cache))
{}

FirmwareMethods::~FirmwareMethods() = default;

void FirmwareMethods::addTo(MethodTable& table)
{
    using namespace wire::method;
    Private* const p = d.get();
    table.addLate(kGetUploadableMachines, [p](const Call& call) {
        p->answerLater(call.respond, [p](const Private::IsCanceled& isCanceled) {
            return wire::toJson(p->readCatalogue(isCanceled).machines());
        });
    });
    table.addLate(kGetMachineVersions, [p](const Call& call) {
        const std::string machine = call.params.string("machine");
        const int type = call.params.integer("type");
        p->answerLater(call.respond, [=](const Private::IsCanceled& isCanceled) {
            return p->versions(machine, type, isCanceled);
        });
    });
    table.addLate(kDownloadFirmware, [p](const Call& call) {
        const auto refuse = [respond = call.respond](const JsonRpcException& error) {
            respond.error(downloadError(error));
        };
        try {
            const std::string machine = call.params.string("machine");
            const int type = call.params.integer("type");
            const std::string version = call.params.string("version");
            p->answerLater({call.respond.result, refuse},
                           [=](const Private::IsCanceled& isCanceled) {
                               return Json::Value(p->download(machine, type, version, isCanceled));
                           });
        } catch (const JsonRpcException& error) {
            throw downloadError(error);
        }
    });
    table.addLate(kUploadFirmware, [p](const Call& call) { p->upload(call); });
}

} // namespace trovek::service
