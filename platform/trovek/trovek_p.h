#pragma once

#include "present_printers.h"
#include "trovek/trovek.h"

#include <rpcwire/peer.h>

#include <QDeadlineTimer>
#include <QObject>

#include <deque>
#include <functional>
#include <map>

namespace trovek {

/**
 * The link and what the service said over it.
 *
 * Everything that ends in a hook goes through one queue of events, which is worked off from the
 * event loop only: announcements after a connect, notifications, and the losses. A hook may run an
 * event loop of its own or connect anew; the events behind it keep their order all the same.
 */
class Trovek::Private
{
public:
    explicit Private(Trovek& trovek);
    ~Private();

    void connectTo(const Address& address);
    /** Ends the link, if there is one, and lets its loss be announced. */
    void endLink();
    bool isOpen() const { return m_peer && m_peer->isOpen(); }

    /** @throws as rpcwire::Peer::call() */
    Json::Value call(const char* method, const Json::Value& params, int timeoutMs);
    int scaled(int timeoutMs) const;

    /** As rpcwire::Peer::request(), also when there is no link; nothing runs after the client. */
    void request(const std::string& method, const Json::Value& params,
                 rpcwire::Peer::AnswerHandler handler);

    const std::list<Printer*>& printers() const { return m_printers.list(); }
    const std::set<Port>& ports() const { return m_ports; }
    /** Null when it is not there now. */
    Printer* findPresent(const MachineName& key) const { return m_printers.find(key); }
    const std::string& serviceVersion() const { return m_serviceVersion; }
    quint64 callCount() const { return m_callCount; }
    void setDeadlineScale(double scale) { m_deadlineScale = scale; }

private:
    struct Event
    {
        /** The link that it came from; 0 for a loss, which outlives its link. */
        int link;
        std::function<void()> action;
    };

    void greet(rpcwire::Peer& peer, const Address& address, const QDeadlineTimer& deadline);
    void adoptSnapshot(const Json::Value& snapshot);
    void linkClosed(const std::string& reason);
    void retirePeer();

    void enqueue(int link, std::function<void()> action);
    void workOffLater();
    void workOff();
    /** What the hook throws is logged and dropped. */
    void callHook(const char* name, const std::function<void()>& hook);

    void handleNotification(const std::string& name, const Json::Value& params);
    void printerAdded(const Json::Value& params);
    void printerChanged(const Json::Value& params);
    void printerRemoved(const MachineName& key);
    void portAttached(const Json::Value& params);
    void portChanged(const Json::Value& params);
    void portDetached(const Port& port);

    void announce(Printer* printer);
    void announce(const Port& port);
    void withdraw(Printer* printer);
    void withdraw(const Port& port);

    /** The one object of that key, with the new data. */
    Printer* update(Printer::Data data);
    void markGone(Printer* printer);

    Trovek& m_trovek;
    QObject m_context;
    std::unique_ptr<rpcwire::Peer> m_peer;
    std::string m_serviceVersion;
    std::deque<Event> m_events;
    /** Counts the links; events and the snapshot say by it which one they belong to. */
    int m_link = 0;
    bool m_linkStands = false;
    bool m_closeWasReported = false;
    quint64 m_callCount = 0;
    double m_deadlineScale = 1;

    /** Every machine ever seen: pointers to them never dangle. */
    std::map<MachineName, std::unique_ptr<Printer>> m_known;
    PresentPrinters m_printers;
    std::set<Port> m_ports;
    /** What the hooks have announced and not withdrawn. */
    PresentPrinters m_announcedPrinters;
    std::set<Port> m_announcedPorts;
};

} // namespace trovek
