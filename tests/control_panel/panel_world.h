#pragma once

#include "support/scripted_service.h"

#include <trovek-ui/trovekqt.h>

#include <QSignalSpy>
#include <QTest>

#include <string>

namespace trovek {

/** A service with ports, and a facade that is connected to it. */
class PanelWorld
{
public:
    ~PanelWorld()
    {
        facade.disconnectFromDaemon();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /** What is there so far has been announced. */
    void connectFacade()
    {
        QSignalSpy attached(&facade, &TrovekQt::portAttached);
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        facade.connectToDaemon(service.address());
        QTRY_COMPARE(attached.count(), int(facade.ports().size()));
        QTRY_COMPARE(added.count(), int(facade.printers().size()));
    }

    void addPort(const std::string& name) { service.addPort(ScriptedService::port(name)); }

    /** On a port of that name, which has to be there. */
    void addMachine(const std::string& key, Printer::Type type, const std::string& port,
                    Printer::State state = Printer::Idle)
    {
        Printer::Data machine = ScriptedService::machine(key, type);
        machine.portName = port;
        machine.state = state;
        service.addPrinter(machine);
    }

    void changeState(const std::string& key, Printer::State state, bool isConnected = true)
    {
        Printer::Data machine = service.printer(key);
        machine.state = state;
        machine.connected = isConnected;
        service.changePrinter(machine);
    }

    ScriptedService service;
    TrovekQt facade;
};

} // namespace trovek
