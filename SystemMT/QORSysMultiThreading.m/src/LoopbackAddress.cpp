#include "LoopbackAddress.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>

int MakeLoopbackAddress(const char* host, unsigned short port, sockaddr_in* address) {
    *address = {};
    address->sin_family = AF_INET;
    address->sin_port = htons(port);
    address->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (!host || std::strcmp(host, "localhost") == 0) {
        return 0;
    }
    const bool isNumeric = inet_pton(AF_INET, host, &address->sin_addr) == 1;
    if (isNumeric && ntohl(address->sin_addr.s_addr) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET) {
        return 0;
    }
    errno = EADDRNOTAVAIL;
    return -1;
}
