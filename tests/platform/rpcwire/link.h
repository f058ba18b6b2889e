#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QObject>
#include <QTemporaryDir>
#include <QThread>

#include <functional>
#include <memory>

enum class Transport { Local, Tcp };
Q_DECLARE_METATYPE(Transport)

/** Adds the column "transport" and a row for each. */
void addTransportRows();

/** A pair of connected sockets, both in the calling thread. */
struct Link
{
    explicit Link(Transport transport = Transport::Local);

    std::unique_ptr<QIODevice> near;
    std::unique_ptr<QIODevice> far;

private:
    QTemporaryDir m_folder;
};

/**
 * The other end of a link in a thread of its own, so that a call can wait for it.
 *
 * Its answer function gets each line that comes in, without line break, and writes what it likes
 * to the socket, as bytes. Ready and connected when the constructor returns.
 */
class FarEnd
{
public:
    using Answer = std::function<void(QIODevice& socket, const QByteArray& line)>;

    explicit FarEnd(Answer answer, Transport transport = Transport::Local);
    ~FarEnd();

    /** The end in the calling thread, handed out once. */
    QIODevice* takeNear() { return m_link.near.release(); }

private:
    Link m_link;
    QThread m_thread;
};

/** A JSON-RPC message with these members, and its line break. */
QByteArray object(const QByteArray& members);
/** Writes and makes sure that the bytes are on their way as a piece of their own. */
void writeNow(QIODevice& socket, const QByteArray& bytes);
/** Ends the connection without a word. */
void vanish(QIODevice& socket);
/** True when the connection is gone, as this end sees it. */
bool hasEnded(const QIODevice& socket);
