#include "trovek_p.h"

#include "trovek/log.h"
#include "trovek/wire.h"

#include <stdexcept>
#include <utility>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "platform\\trovek\\trovek";

} // namespace

void Trovek::Private::handleNotification(const std::string& name, const Json::Value& params)
{
    namespace notification = wire::notification;
    try {
        if (name == notification::kPrinterAdded) {
            printerAdded(params);
        } else if (name == notification::kPrinterChanged) {
            printerChanged(params);
        } else if (name == notification::kPrinterRemoved) {
            printerRemoved(MachineName(wire::stringMember(params, "name")));
        } else if (name == notification::kPortAttached) {
            portAttached(params);
        } else if (name == notification::kPortChanged) {
            portChanged(params);
        } else if (name == notification::kPortDetached) {
            Port::Data port;
            port.name = wire::stringMember(params, "name");
            port.identity = wire::stringMember(params, "identity");
            portDetached(Port(port));
        } else if (name == notification::kJobAdded) {
            const int id = wire::intMember(params, "id");
            callHook("jobAdded", [&] { m_trovek.emitJobAdded(id); });
        } else if (name == notification::kJobChanged) {
            const int id = wire::intMember(params, "id");
            callHook("jobChanged", [&] { m_trovek.emitJobChanged(id); });
        } else if (name == notification::kJobConcluded) {
            const int id = wire::intMember(params, "id");
            callHook("jobConcluded", [&] { m_trovek.emitJobConcluded(id); });
        } else if (name == notification::kCameraClosed) {
            const std::string path = wire::stringMember(params, "device_path");
            callHook("cameraClosed", [&] { m_trovek.emitCameraClosed(path); });
        } else {
            throw std::runtime_error("unknown name");
        }
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << "Notification " << name << " dropped: " << e.what() << std::endl;
    }
}

// ---- Printers and ports

void Trovek::Private::printerAdded(const Json::Value& params)
{
    Printer* const printer = update(wire::printerFromJson(params));
    if (findPresent(printer->key())) {
        callHook("printerChanged", [&] { m_trovek.emitPrinterChanged(printer); });
        return;
    }
    m_printers.add(printer);
    announce(printer);
}

void Trovek::Private::printerChanged(const Json::Value& params)
{
    Printer::Data data = wire::printerFromJson(params);
    if (!findPresent(data.key))
        throw std::runtime_error("unknown printer " + data.key.name());
    Printer* const printer = update(std::move(data));
    callHook("printerChanged", [&] { m_trovek.emitPrinterChanged(printer); });
}

void Trovek::Private::printerRemoved(const MachineName& key)
{
    Printer* const printer = findPresent(key);
    if (!printer)
        throw std::runtime_error("unknown printer " + key.name());
    m_printers.remove(printer);
    m_announcedPrinters.remove(printer);
    markGone(printer);
    withdraw(printer);
}

void Trovek::Private::portAttached(const Json::Value& params)
{
    const Port port(wire::portFromJson(params));
    // The set compares name and identity only: the new value has to replace the old one.
    const bool known = m_ports.erase(port) > 0;
    m_ports.insert(port);
    if (!known)
        announce(port);
}

void Trovek::Private::portChanged(const Json::Value& params)
{
    const Port port(wire::portFromJson(params));
    if (m_ports.erase(port) == 0)
        throw std::runtime_error("unknown port " + port.name());
    m_ports.insert(port);
}

void Trovek::Private::portDetached(const Port& port)
{
    if (m_ports.erase(port) == 0)
        throw std::runtime_error("unknown port " + port.name());
    m_announcedPorts.erase(port);
    withdraw(port);
}

void Trovek::Private::announce(Printer* printer)
{
    m_announcedPrinters.add(printer);
    callHook("printerAdded", [&] { m_trovek.emitPrinterAdded(printer); });
}

void Trovek::Private::announce(const Port& port)
{
    m_announcedPorts.insert(port);
    callHook("portAttached", [&] { m_trovek.emitPortAttached(port.name()); });
}

void Trovek::Private::withdraw(Printer* printer)
{
    callHook("printerRemoved", [&] { m_trovek.emitPrinterRemoved(printer); });
}

void Trovek::Private::withdraw(const Port& port)
{
    callHook("portDetached", [&] { m_trovek.emitPortDetached(port.name()); });
}

Printer* Trovek::Private::update(Printer::Data data)
{
    std::unique_ptr<Printer>& printer = m_known[data.key];
    if (!printer) {
        printer = std::make_unique<Printer>(std::move(data));
        return printer.get();
    }
    if (data.portName.empty())
        data.portName = printer->m_data.portName;
    printer->m_data = std::move(data);
    return printer.get();
}

void Trovek::Private::markGone(Printer* printer)
{
    printer->m_data.connected = false;
    printer->m_data.canPrint = false;
}

} // namespace trovek
