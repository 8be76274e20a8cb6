/// @file
/// The addresses that the socket classes use.
#pragma once

#include <netinet/in.h>

/// Fills in the address of a port on the loopback interface, without looking a name up anywhere.
/// @param host  "localhost" or an address in dotted form from 127.0.0.0/8; null for "localhost".
/// @return 0, or -1 with `errno` at `EADDRNOTAVAIL` for any other host.
int MakeLoopbackAddress(const char* host, unsigned short port, sockaddr_in* address);
