#include "rpcwire/delivery_queue.h"

#include <QObject>

#include <utility>

namespace rpcwire {

DeliveryQueue::DeliveryQueue(QObject* context, Delivery makeRoom)
    : m_context(context)
    , m_makeRoom(std::move(makeRoom))
{}

void DeliveryQueue::append(Delivery delivery)
{
    m_deliveries.push_back(std::move(delivery));
    schedule();
}

void DeliveryQueue::schedule()
{
    if (m_scheduled)
        return;
    m_scheduled = true;
    QMetaObject::invokeMethod(
        m_context, [this] { deliverNext(); }, Qt::QueuedConnection);
}

void DeliveryQueue::deliverNext()
{
    m_scheduled = false;
    const Delivery delivery = std::move(m_deliveries.front());
    m_deliveries.pop_front();
    m_makeRoom();
    // Before the delivery, since that may run an event loop of its own or delete the queue.
    if (!m_deliveries.empty())
        schedule();
    delivery();
}

} // namespace rpcwire
