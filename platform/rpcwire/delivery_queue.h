#pragma once

#include <QtGlobal>

#include <deque>
#include <functional>

QT_BEGIN_NAMESPACE
class QObject;
QT_END_NAMESPACE

namespace rpcwire {

/** Runs what is put in from the event loop, in order, one a turn. */
class DeliveryQueue
{
public:
    using Delivery = std::function<void()>;

    /**
     * @param context  its thread's event loop is meant; a delivery may delete it, and the queue too
     * @param makeRoom runs before each delivery and may append
     */
    DeliveryQueue(QObject* context, Delivery makeRoom);

    void append(Delivery delivery);
    std::size_t size() const { return m_deliveries.size(); }

private:
    void schedule();
    void deliverNext();

    QObject* const m_context;
    const Delivery m_makeRoom;
    std::deque<Delivery> m_deliveries;
    bool m_scheduled = false;
};

} // namespace rpcwire
