#pragma once

#include "support/scripted_service.h"

#include <string>

namespace trovek {

const MachineName kLeft("left");

/** What a client hears of addOneMachine() after connecting, and on the loss of the link. */
const std::string kArrival = "portAttached one, printerAdded left";
const std::string kDeparture = "printerRemoved left, portDetached one, disconnected";

inline Printer::Data leftOnPortOne()
{
    Printer::Data data = ScriptedService::machine("left", Printer::Fabrino2);
    data.portName = "one";
    return data;
}

/** One machine, "left", on the port "one". */
inline void addOneMachine(ScriptedService& service)
{
    service.addPort(ScriptedService::port("one"));
    service.addPrinter(leftOnPortOne());
}

} // namespace trovek
