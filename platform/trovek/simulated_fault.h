#pragma once

#include "trovek/export.h"

#include <rpcwire/json_rpc_exception.h>

#include <json/value.h>

#include <string>

namespace trovek {

/**
 * What the service is asked to do wrong, for tests and for demonstrations.
 *
 *     client.simulateFault(SimulatedFault::late("print", 2000));
 *     client.simulateFault(SimulatedFault::never("read_eeprom").always());
 *
 * Methods have their names on the wire; "*" stands for every method but "subscribe". A fault
 * happens to the next request of its method, whoever's it is.
 */
struct TROVEK_EXPORT SimulatedFault
{
    enum Kind : int {
        /** Taken up after delayMs. */
        Late = 0,
        /** Neither carried out nor answered. */
        Never = 1,
        /** Not carried out; errorMessage and errorData are the answer. */
        Error = 2,
        /** Not carried out; `result` is the answer. */
        Answer = 3,
        /** Carried out, but the link ends before the answer. */
        DropBefore = 4,
        /** Carried out and answered, then the link ends. */
        DropAfter = 5,
        /** The cable of `machine` is pulled out delayMs after the request has come. */
        Unplug = 6,
    };

    /** Requests that it happens to; this value until the faults are cleared. */
    static constexpr int kAlways = 0;

    std::string method;
    Kind kind = Error;
    int times = 1;
    /** Up to ten minutes; with 0 a cable is pulled out before the request is carried out. */
    int delayMs = 0;
    std::string machine;
    Json::Value result;
    std::string errorMessage;
    Json::Value errorData;

    static SimulatedFault late(std::string method, int delayMs);
    static SimulatedFault never(std::string method);
    /** With the exception's text and data, of whatever shape. */
    static SimulatedFault error(std::string method, const JsonRpcException& error);
    static SimulatedFault answer(std::string method, Json::Value result);
    static SimulatedFault dropBefore(std::string method);
    static SimulatedFault dropAfter(std::string method);
    static SimulatedFault unplug(std::string method, std::string machine, int afterMs = 0);

    /** The same for that many requests. */
    SimulatedFault forTimes(int count) const;
    SimulatedFault always() const { return forTimes(kAlways); }
};

} // namespace trovek
