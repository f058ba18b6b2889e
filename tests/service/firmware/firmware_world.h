#pragma once

#include "catalogue_folder.h"
#include "service/service_world.h"
#include "support/thrown_text.h"

#include <trovek/text.h>

#include <memory>

namespace trovek {

/** The error that a call throws. */
template <typename Call>
JsonRpcException thrown(Call call)
{
    try {
        call();
    } catch (const JsonRpcException& error) {
        return error;
    }
    return JsonRpcException("nothing thrown", Json::Value(Json::objectValue));
}

/** "NAME: TEXT" of the error that a call throws. */
template <typename Call>
std::string refusalOf(Call call)
{
    const JsonRpcException error = thrown(call);
    return errorName(error) + ": " + error.message();
}

/** A service with one open and idle machine, and firmware for it that a test may spoil. */
struct FirmwareWorld
{
    explicit FirmwareWorld(double timeScale = ServiceWorld::kFast)
        : service(timeScale)
    {
        catalogue.add("fabrino_2", Printer::Fabrino2, "7.5", "The usual one.");
        catalogue.add("fabrino_2", Printer::Fabrino2, "7.6", "Warm. Quiet.");
        catalogue.add("fabrino_2x", Printer::Fabrino2X, "7.6");
        service.options.firmwareCatalogue = toStdString(catalogue.path());
        service.start();
        connect();
    }

    void connect()
    {
        client = std::make_unique<RecordingTrovek>();
        client->connectToDaemon(service.address());
        ServiceWorld::openMachine(*client);
    }

    void restart()
    {
        client.reset();
        service.stop();
        service.start();
        connect();
    }

    MachineName key{ServiceWorld::kMachine};
    Printer* printer() const { return client->printerFromKey(key); }
    /** Empty while the machine is away. */
    std::string version() const
    {
        return printer() != nullptr ? printer()->firmwareVersion().str() : std::string();
    }
    std::string download(const std::string& wanted = "7.6") const
    {
        return client->downloadFirmware("fabrino_2", Printer::Fabrino2, FirmwareVersion(wanted));
    }
    QString cacheFolder() const { return service.stateDir() + QStringLiteral("/firmware"); }

    CatalogueFolder catalogue;
    ServiceWorld service;
    std::unique_ptr<RecordingTrovek> client;
};

} // namespace trovek
