#include "rpcwire/pending_requests.h"

#include <utility>

namespace rpcwire {

void PendingRequests::add(int id, Peer::AnswerHandler handler)
{
    m_requests[id].handler = std::move(handler);
}

PendingRequests::Conclusion PendingRequests::conclude(int id)
{
    if (m_forgotten.erase(id) > 0)
        return Conclusion::Forgotten;
    const auto request = m_requests.find(id);
    if (request == m_requests.end() || request->second.concluded)
        return Conclusion::Unknown;
    request->second.concluded = true;
    return Conclusion::Wanted;
}

std::vector<int> PendingRequests::concludeAll()
{
    std::vector<int> ids;
    for (auto& [id, request] : m_requests) {
        if (!request.concluded)
            ids.push_back(id);
        request.concluded = true;
    }
    return ids;
}

Peer::AnswerHandler PendingRequests::takeHandler(int id)
{
    const auto request = m_requests.find(id);
    if (request == m_requests.end())
        return nullptr;
    Peer::AnswerHandler handler = std::move(request->second.handler);
    m_requests.erase(request);
    return handler;
}

void PendingRequests::forget(int id)
{
    const auto request = m_requests.find(id);
    if (request == m_requests.end())
        return;
    if (!request->second.concluded)
        m_forgotten.insert(id);
    m_requests.erase(request);
}

} // namespace rpcwire
