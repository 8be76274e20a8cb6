/// @file
/// A TCP connection on the loopback interface.
#pragma once

#include "QORSysMTExport.h"

class QORSocketConnector;

/// How a connection behaves.
enum QORSocketOptions : int {
    /// What is sent leaves at once, however little it is. Connections of `QORSockets::Connect` begin with it.
    QORSocketNoDelay = 0
};

/// One end of a TCP connection within the machine.
///
/// No call waits for ever: each has a limit for the whole of its run, however its time is spent, so a peer that sends
/// or takes nothing, or one byte now and then, or more and more without a pause, cannot hold it. The limit is that of
/// the connector a connection was accepted by, and `defaultWaitLimit` for all others; `SetWaitLimit` changes it.
///
/// A socket belongs to one thread at a time. No call raises a signal, and the descriptor does not pass to programs that
/// the process starts. Results are 0 for success and -1 for failure; `errno` then tells the reason, `ETIMEDOUT` when
/// the limit was reached.
class QORSYSMT_EXPORT QORSockets {
public:
    /// The limit of one call in milliseconds on a connection that this side made: a server may take its time.
    static constexpr int defaultWaitLimit = 120000;

    /// @param descriptor  A connected stream socket, which becomes this object's own; -1 for none yet.
    /// @param connector   The connector that accepted the connection, read for its limit during the construction only;
    ///                    null for none.
    QORSockets(int descriptor, QORSocketConnector* connector);
    QORSockets(const QORSockets&) = delete;
    QORSockets& operator=(const QORSockets&) = delete;

    /// Closes the connection.
    ~QORSockets();

    /// Connects. An earlier connection is closed first.
    /// @param host  "localhost" or an address in dotted form from 127.0.0.0/8; null for "localhost". Any other is
    ///              refused, and no name is looked up.
    int Connect(unsigned short port, const char* host);

    /// Closes the connection. What was sent is still delivered.
    /// @return 0, also when there is no connection.
    int Close();

    /// Sends all of `size` bytes.
    /// @return 0 when the platform has taken them all. After -1 the connection is of no further use.
    int Send(const void* data, unsigned int size);

    /// Receives exactly `size` bytes.
    /// @param data      Room for `size` bytes. It may be written in part when the call fails.
    /// @param received  Receives the number of bytes that came, unless null, also on failure.
    /// @return 0 when all came; -1 when the peer closed before (`errno` is 0 then), the limit was reached, or the
    ///         connection failed.
    int Receive(void* data, unsigned int size, unsigned int* received);

    /// @return 0, or -1 when there is no connection or the option is unknown.
    int SetOptions(QORSocketOptions option);

    /// @param milliseconds  The limit of one call from now on.
    /// @return 0, or -1, with nothing changed, when it is below 1.
    int SetWaitLimit(int milliseconds);

private:
    int _descriptor;
    int _waitLimit;
};
