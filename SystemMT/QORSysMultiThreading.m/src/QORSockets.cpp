#include "QORSockets.h"

#include "LoopbackAddress.h"
#include "QORSocketConnector.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// How many bytes the platform is asked to move at once. A busy peer can keep it moving for as long as there are more.
constexpr unsigned int s_largestPiece = 256U << 10;

/// The end of the time that one call has.
class Deadline {
public:
    explicit Deadline(int milliseconds) : _end(Clock::now() + std::chrono::milliseconds(milliseconds)) {}

    /// The time left, in milliseconds, rounded up; 0 when it is over.
    int GetRemaining() const {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(_end - Clock::now()).count();
        return static_cast<int>(std::max<long>(left, 0));
    }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point _end;
};

/// Waits until the descriptor can be used. Signals do not end the wait.
/// @return 0, or -1 with `errno` set.
int WaitUntilReady(int descriptor, short events, const Deadline& deadline) {
    for (;;) {
        pollfd entry{descriptor, events, 0};
        const int result = poll(&entry, 1, deadline.GetRemaining());
        if (result > 0) {
            return 0;
        }
        if (result == 0) {
            errno = ETIMEDOUT;
            return -1;
        }
        if (errno != EINTR) {
            return -1;
        }
    }
}

/// Calls `transfer(done, piece)`, which moves up to `piece` bytes or answers -1 with `errno` set and never blocks,
/// until all of `size` bytes have been moved. A result of 0 ends the transfer with `errno` at 0.
/// @param done  Counts the bytes.
template <typename Transfer>
int TransferAll(int descriptor, short events, int waitLimit, unsigned int size, unsigned int* done, Transfer transfer) {
    const Deadline deadline(waitLimit);
    while (*done < size) {
        const ssize_t moved = transfer(*done, std::min(size - *done, s_largestPiece));
        if (moved == 0) {
            errno = 0;
            return -1;
        }
        if (moved > 0) {
            *done += static_cast<unsigned int>(moved);
        } else if (errno == EAGAIN) {
            if (WaitUntilReady(descriptor, events, deadline) != 0) {
                return -1;
            }
        } else if (errno != EINTR) {
            return -1;
        }
        // Also where the platform never says that there is nothing to do.
        if (*done < size && deadline.GetRemaining() == 0) {
            errno = ETIMEDOUT;
            return -1;
        }
    }
    return 0;
}

int SetNoDelay(int descriptor) {
    const int on = 1;
    return setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

/// A port that nobody listens on may be picked for the near end of the connection to it, which then meets itself.
bool IsConnectedToItself(int descriptor, const sockaddr_in& peer) {
    sockaddr_in own{};
    socklen_t size = sizeof own;
    return getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &size) == 0 && own.sin_port == peer.sin_port &&
           own.sin_addr.s_addr == peer.sin_addr.s_addr;
}

/// Connects a socket that does not block.
/// @return 0, or -1 with `errno` set.
int ConnectDescriptor(int descriptor, const sockaddr_in& peer, const Deadline& deadline) {
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0) {
        if (errno != EINPROGRESS && errno != EINTR) {
            return -1;
        }
        if (WaitUntilReady(descriptor, POLLOUT, deadline) != 0) {
            return -1;
        }
        int error = 0;
        socklen_t size = sizeof error;
        if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) != 0) {
            return -1;
        }
        if (error != 0) {
            errno = error;
            return -1;
        }
    }
    if (IsConnectedToItself(descriptor, peer)) {
        errno = ECONNREFUSED;
        return -1;
    }
    return SetNoDelay(descriptor);
}

} // namespace

QORSockets::QORSockets(int descriptor, QORSocketConnector* connector)
    : _descriptor(descriptor), _waitLimit(connector ? connector->GetWaitLimit() : defaultWaitLimit) {}

QORSockets::~QORSockets() {
    Close();
}

int QORSockets::Connect(unsigned short port, const char* host) {
    Close();
    sockaddr_in peer;
    if (MakeLoopbackAddress(host, port, &peer) != 0) {
        return -1;
    }
    _descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (_descriptor < 0) {
        return -1;
    }
    if (ConnectDescriptor(_descriptor, peer, Deadline(_waitLimit)) == 0) {
        return 0;
    }
    const int error = errno;
    Close();
    errno = error;
    return -1;
}

int QORSockets::Close() {
    if (_descriptor < 0) {
        return 0;
    }
    // The descriptor is gone even when the platform reports an error.
    const int result = close(_descriptor);
    _descriptor = -1;
    return result == 0 ? 0 : -1;
}

int QORSockets::Send(const void* data, unsigned int size) {
    unsigned int sent = 0;
    return TransferAll(
        _descriptor, POLLOUT, _waitLimit, size, &sent, [this, data](unsigned int done, unsigned int piece) {
            return send(_descriptor, static_cast<const char*>(data) + done, piece, MSG_NOSIGNAL | MSG_DONTWAIT);
        });
}

int QORSockets::Receive(void* data, unsigned int size, unsigned int* received) {
    unsigned int count = 0;
    const int result =
        TransferAll(_descriptor, POLLIN, _waitLimit, size, &count, [this, data](unsigned int done, unsigned int piece) {
            return recv(_descriptor, static_cast<char*>(data) + done, piece, MSG_DONTWAIT);
        });
    if (received) {
        *received = count;
    }
    return result;
}

int QORSockets::SetOptions(QORSocketOptions option) {
    if (option != QORSocketNoDelay) {
        errno = EINVAL;
        return -1;
    }
    return SetNoDelay(_descriptor);
}

int QORSockets::SetWaitLimit(int milliseconds) {
    if (milliseconds < 1) {
        errno = EINVAL;
        return -1;
    }
    _waitLimit = milliseconds;
    return 0;
}
