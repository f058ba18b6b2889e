#pragma once

#include "trovek/address.h"

#include <rpcwire/peer.h>

#include <QDeadlineTimer>

#include <memory>

namespace trovek {

/**
 * Opens the link to the service, before any greeting.
 *
 * @throws std::runtime_error when nobody listens there in time, or a local socket is not safe
 */
std::unique_ptr<rpcwire::Peer> openConnection(const Address& address,
                                              const QDeadlineTimer& deadline);

/** Milliseconds until the deadline, at least 1: sockets take 0 and less for something else. */
int remainingMs(const QDeadlineTimer& deadline);

} // namespace trovek
