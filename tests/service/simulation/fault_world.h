#pragma once

#include "service/service_world.h"

#include <memory>

namespace trovek {

/** A service with one open and idle machine, and a client that lets it fail. */
struct FaultWorld
{
    explicit FaultWorld(double timeScale = ServiceWorld::kFast)
        : service(timeScale)
    {
        service.start();
        connect();
        ServiceWorld::openMachine(*client);
    }

    void connect()
    {
        client = std::make_unique<RecordingTrovek>();
        client->connectToDaemon(service.address());
    }

    const MachineName key{ServiceWorld::kMachine};
    Printer* printer() const { return client->printerFromKey(key); }

    ServiceWorld service;
    std::unique_ptr<RecordingTrovek> client;
};

} // namespace trovek
