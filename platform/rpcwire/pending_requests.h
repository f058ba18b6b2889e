#pragma once

#include "rpcwire/peer.h"

#include <map>
#include <set>
#include <vector>

namespace rpcwire {

/**
 * Our requests to the other side, from their sending until their handler is taken out to run.
 *
 * Between the two a request may be concluded: its outcome is known and waits for its delivery.
 */
class PendingRequests
{
public:
    enum class Conclusion {
        /** The handler is to get the outcome. */
        Wanted,
        /** Nobody wants it. */
        Forgotten,
        /** There is no such request, or it had its outcome before. */
        Unknown,
    };

    void add(int id, Peer::AnswerHandler handler);
    Conclusion conclude(int id);
    /** The ids of all requests without an outcome, in order; they are concluded now. */
    std::vector<int> concludeAll();
    /** Null when the request was forgotten after its conclusion, or had no handler. */
    Peer::AnswerHandler takeHandler(int id);
    void forget(int id);

private:
    struct Request
    {
        Peer::AnswerHandler handler;
        bool concluded = false;
    };

    std::map<int, Request> m_requests;
    /** They were forgotten before their answer came. */
    std::set<int> m_forgotten;
};

} // namespace rpcwire
