/// @file
/// A listening TCP port on the loopback interface.
#pragma once

#include "QORSysMTExport.h"

class QORSockets;

/// Listens on a port of the loopback interface and accepts connections. Nothing outside the machine reaches it.
///
/// A connector belongs to one thread at a time. The descriptor does not pass to programs that the process starts.
/// Results are 0 for success and -1 for failure unless stated; `errno` then tells the reason.
class QORSYSMT_EXPORT QORSocketConnector {
public:
    /// The limit of one call in milliseconds on an accepted connection: a client that is stuck keeps its server no
    /// longer than this with each message.
    static constexpr int defaultWaitLimit = 10000;

    /// @param port       The port to listen on; 0 to have a free one picked.
    /// @param backlog    How many connections may wait to be accepted, below 1 counting as 1. The platform lets a few
    ///                   more wait, and keeps the number below a limit of its own. A client beyond that is kept waiting
    ///                   in its `Connect`.
    /// @param waitLimit  The limit of one call on an accepted connection, in milliseconds; below 1 for
    ///                   `defaultWaitLimit`.
    QORSocketConnector(unsigned short port, int backlog, int waitLimit);
    QORSocketConnector(const QORSocketConnector&) = delete;
    QORSocketConnector& operator=(const QORSocketConnector&) = delete;

    /// Stops listening. Connections that were accepted live on.
    ~QORSocketConnector();

    /// Takes the port and listens.
    /// @param host  "localhost" or an address in dotted form from 127.0.0.0/8; null for "localhost". Any other is
    ///              refused, and no name is looked up.
    /// @return 0, or -1 when the host is refused, the port is taken, or the connector listens already.
    int Declare(const char* host);

    /// @return The port that is listened on; before `Declare` the one that was asked for.
    unsigned short GetPort() const;

    /// Waits until a connection can be accepted.
    /// @param milliseconds  The longest wait; read only, so that a caller's value serves for each call. Null or a
    ///                      negative value waits without limit.
    /// @return Positive when a connection waits, 0 when the time has run out, -1 on failure; a signal that arrives
    ///         meanwhile is a failure with `errno` at `EINTR`.
    int Select(int* milliseconds);

    /// Accepts a connection without waiting for one.
    /// @param socket  Receives the connection, owned by the caller and deleted with `delete`. It receives null, with a
    ///                result of 0, when there is none after all: the client has gone, or the process is short of
    ///                descriptors or memory; then a short pause comes first, so that a loop does not spin.
    /// @return 0, or -1 when `socket` is null or the connector cannot accept any more.
    int Accept(QORSockets** socket);

    /// @return The limit of one call on an accepted connection, in milliseconds.
    int GetWaitLimit() const;

private:
    int _descriptor;
    int _backlog;
    int _waitLimit;
    unsigned short _port;
};
