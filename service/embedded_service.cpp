#include "embedded_service.h"

#include <trovek/text.h>

#include <QEventLoop>
#include <QThread>

#include <future>
#include <stdexcept>

namespace trovek::service {

class EmbeddedService::Private
{
public:
    Address address = Address::local(std::string());
    std::optional<Address> tcpAddress;
    std::unique_ptr<QThread> thread;
};

EmbeddedService::EmbeddedService(const Options& options)
    : d(new Private)
{
    const std::string stateDir = options.stateDir.empty() ? defaultStateDir() : options.stateDir;
    const ServiceOptions serviceOptions{toQString(stateDir),
                                        toQString(options.machinesFile),
                                        options.timeScale,
                                        toQString(options.firmwareCatalogue),
                                        toQString(options.firmwareCache),
                                        toQString(options.slicer),
                                        options.slicesAtOnce,
                                        toQString(options.scannerFile)};
    const ServerOptions serverOptions{options.socketName, toQString(stateDir), options.tcpPort};
    const auto ready = std::make_shared<std::promise<void>>();
    std::future<void> isReady = ready->get_future();
    d->thread.reset(QThread::create([&, this, ready] {
        // What it refers to outside is valid until it is ready.
        std::unique_ptr<Service> service;
        std::unique_ptr<Server> server;
        try {
            service = std::make_unique<Service>(serviceOptions);
            server = std::make_unique<Server>(*service, serverOptions);
            d->address = server->localAddress();
            d->tcpAddress = server->tcpAddress();
        } catch (...) {
            server.reset();
            service.reset();
            ready->set_exception(std::current_exception());
            return;
        }
        ready->set_value();
        QEventLoop().exec();
    }));
    d->thread->setObjectName(QStringLiteral("trovekd"));
    d->thread->start();
    try {
        isReady.get();
    } catch (...) {
        d->thread->wait();
        throw;
    }
}

EmbeddedService::~EmbeddedService()
{
    d->thread->quit();
    d->thread->wait();
}

const Address& EmbeddedService::address() const
{
    return d->address;
}

const std::optional<Address>& EmbeddedService::tcpAddress() const
{
    return d->tcpAddress;
}

} // namespace trovek::service
