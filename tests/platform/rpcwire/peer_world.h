#pragma once

#include "link.h"

#include <rpcwire/json_text.h>
#include <rpcwire/peer.h>

#include <QStringList>
#include <QTest>

#include <memory>
#include <vector>

/**
 * A peer with a bare socket at the other end, and a list of all that happens to it, in order:
 * "notification a {...}", "request b {...} id", "answer 1 ...", "error 1 text", "closed reason".
 * Log lines stand in a list of their own, behind their severity.
 */
struct PeerWorld
{
    explicit PeerWorld(const rpcwire::Limits& limits = rpcwire::Limits(),
                       Transport transport = Transport::Local);

    /** From the other side to the peer, line breaks included. */
    void send(const QByteArray& bytes);
    /** Sends the bytes and returns when the peer has taken them in, before any delivery. */
    void sendAndRead(const QByteArray& bytes);
    /** Lines that the other side got so far, without line breaks. */
    QStringList received();
    /** Starts a request of the peer whose outcome becomes an event. */
    int request(const std::string& method);
    /** An event as it would follow on the log of a peer that closed. */
    bool hasClosed() const;

    std::unique_ptr<QIODevice> far;
    std::unique_ptr<rpcwire::Peer> peer;
    QStringList events;
    QStringList logLines;
    /** Every request of the other side, to answer it. */
    std::vector<rpcwire::Peer::Request> requests;

private:
    Link m_link;
    QByteArray m_received;
};

/** One notification as it stands on the wire, and the event that it makes. */
QByteArray notificationBytes(int number);
QString notificationEvent(int number);
QStringList notificationEvents(int count);
