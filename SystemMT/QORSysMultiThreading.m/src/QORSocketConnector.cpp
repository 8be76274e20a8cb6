#include "QORSocketConnector.h"

#include "LoopbackAddress.h"
#include "QORSockets.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// How long `Accept` pauses when the process is short of something, in milliseconds.
constexpr int s_pauseInShortage = 10;

/// Errors of one connection, after which the next can be accepted.
bool IsConnectionGone(int error) {
    return error == EAGAIN || error == EINTR || error == ECONNABORTED || error == EPROTO;
}

bool IsShortage(int error) {
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

int BindAndListen(int descriptor, sockaddr_in* address, int backlog) {
    // A server that is started again finds its port free although old connections are still being wound up.
    const int on = 1;
    socklen_t size = sizeof *address;
    auto* const generic = reinterpret_cast<sockaddr*>(address);
    if (setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 || bind(descriptor, generic, size) != 0 ||
        listen(descriptor, backlog) != 0) {
        return -1;
    }
    return getsockname(descriptor, generic, &size);
}

} // namespace

QORSocketConnector::QORSocketConnector(unsigned short port, int backlog, int waitLimit)
    : _descriptor(-1), _backlog(std::max(backlog, 1)), _waitLimit(waitLimit < 1 ? defaultWaitLimit : waitLimit),
      _port(port) {}

QORSocketConnector::~QORSocketConnector() {
    if (_descriptor >= 0) {
        close(_descriptor);
    }
}

int QORSocketConnector::Declare(const char* host) {
    if (_descriptor >= 0) {
        errno = EALREADY;
        return -1;
    }
    sockaddr_in address;
    if (MakeLoopbackAddress(host, _port, &address) != 0) {
        return -1;
    }
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) {
        return -1;
    }
    if (BindAndListen(descriptor, &address, _backlog) != 0) {
        const int error = errno;
        close(descriptor);
        errno = error;
        return -1;
    }
    _descriptor = descriptor;
    _port = ntohs(address.sin_port);
    return 0;
}

unsigned short QORSocketConnector::GetPort() const {
    return _port;
}

int QORSocketConnector::Select(int* milliseconds) {
    // The platform would take a negative descriptor for none at all, and wait.
    if (_descriptor < 0) {
        errno = EBADF;
        return -1;
    }
    constexpr int withoutLimit = -1;
    pollfd entry{_descriptor, POLLIN, 0};
    return poll(&entry, 1, milliseconds ? std::max(*milliseconds, withoutLimit) : withoutLimit);
}

int QORSocketConnector::Accept(QORSockets** socket) {
    if (!socket) {
        errno = EINVAL;
        return -1;
    }
    *socket = nullptr;
    const int descriptor = accept4(_descriptor, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (descriptor < 0) {
        if (IsShortage(errno)) {
            poll(nullptr, 0, s_pauseInShortage);
            return 0;
        }
        return IsConnectionGone(errno) ? 0 : -1;
    }
    *socket = new (std::nothrow) QORSockets(descriptor, this);
    if (!*socket) {
        close(descriptor);
        poll(nullptr, 0, s_pauseInShortage);
    }
    return 0;
}

int QORSocketConnector::GetWaitLimit() const {
    return _waitLimit;
}
