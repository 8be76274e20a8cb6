#include "QORSockets.h"

#include "QORSocketConnector.h"
#include "TestSupport.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// While one is alive, the platform's calls of this thread that move bytes go to a peer that is always ready: each call
/// takes a millisecond and moves one byte.
class TirelessPeer {
public:
    TirelessPeer();
    TirelessPeer(const TirelessPeer&) = delete;
    TirelessPeer& operator=(const TirelessPeer&) = delete;
    ~TirelessPeer();

    ssize_t Move(size_t size);

    unsigned int calls = 0;
    size_t largestSize = 0;
};

thread_local TirelessPeer* t_peer = nullptr;

TirelessPeer::TirelessPeer() {
    t_peer = this;
}

TirelessPeer::~TirelessPeer() {
    t_peer = nullptr;
}

ssize_t TirelessPeer::Move(size_t size) {
    // Whoever holds no limit does not run for ever.
    constexpr unsigned int enough = 3000;
    if (++calls > enough) {
        errno = EIO;
        return -1;
    }
    largestSize = std::max(largestSize, size);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return 1;
}

} // namespace

// The platform's calls, as the library finds them.
extern "C" ssize_t recv(int descriptor, void* data, size_t size, int flags) {
    static auto* const platforms = reinterpret_cast<decltype(&recv)>(dlsym(RTLD_NEXT, "recv"));
    return t_peer ? t_peer->Move(size) : platforms(descriptor, data, size, flags);
}

extern "C" ssize_t send(int descriptor, const void* data, size_t size, int flags) {
    static auto* const platforms = reinterpret_cast<decltype(&send)>(dlsym(RTLD_NEXT, "send"));
    return t_peer ? t_peer->Move(size) : platforms(descriptor, data, size, flags);
}

namespace {

/// The limit of the connections in these tests where they are to run into it.
constexpr int s_limit = 200;

int NextDescriptor() {
    const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(descriptor);
    return descriptor;
}

/// Both ends of a connection.
class QORSocketsTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(connector.Declare("localhost"), 0);
        clientDescriptor = NextDescriptor();
        ASSERT_EQ(client.Connect(connector.GetPort(), nullptr), 0);
        int wait = 10000;
        ASSERT_GT(connector.Select(&wait), 0);
        QORSockets* accepted = nullptr;
        ASSERT_EQ(connector.Accept(&accepted), 0);
        server.reset(accepted);
        ASSERT_NE(server, nullptr);
    }

    QORSocketConnector connector{0, 10, s_limit};
    QORSockets client{-1, nullptr};
    int clientDescriptor = -1;
    std::unique_ptr<QORSockets> server;
};

TEST_F(QORSocketsTest, WhatOneEndSendsTheOtherReceives) {
    const std::string text = "some text";
    char buffer[16] = {};
    unsigned int received = 0;
    EXPECT_EQ(client.Send(text.data(), static_cast<unsigned int>(text.size())), 0);
    EXPECT_EQ(server->Receive(buffer, static_cast<unsigned int>(text.size()), &received), 0);
    EXPECT_EQ(received, text.size());
    EXPECT_EQ(buffer, text);
    EXPECT_EQ(server->Send("answer", 6), 0);
    EXPECT_EQ(client.Receive(buffer, 6, nullptr), 0);
    EXPECT_EQ(std::string(buffer, 6), "answer");
}

TEST_F(QORSocketsTest, ReceiveGathersWhatComesInPieces) {
    std::thread sender([&] {
        for (int round = 0; round < 4; ++round) {
            client.Send("ab", 2);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    char buffer[9] = {};
    unsigned int received = 0;
    EXPECT_EQ(server->Receive(buffer, 8, &received), 0);
    EXPECT_EQ(received, 8u);
    EXPECT_STREQ(buffer, "abababab");
    sender.join();
}

TEST_F(QORSocketsTest, ALargeMessageArrivesWhole) {
    server->SetWaitLimit(60000);
    std::vector<unsigned char> sent(8 << 20);
    for (unsigned long index = 0; index < sent.size(); ++index) {
        sent[index] = static_cast<unsigned char>(index * 7 + (index >> 8));
    }
    const auto size = static_cast<unsigned int>(sent.size());
    std::thread sender([&] { EXPECT_EQ(client.Send(sent.data(), size), 0); });
    std::vector<unsigned char> received(sent.size());
    unsigned int count = 0;
    EXPECT_EQ(server->Receive(received.data(), size, &count), 0);
    sender.join();
    EXPECT_EQ(count, size);
    EXPECT_TRUE(sent == received);
}

TEST_F(QORSocketsTest, NothingToMoveSucceedsAtOnce) {
    unsigned int received = 7;
    EXPECT_EQ(client.Send(nullptr, 0), 0);
    EXPECT_EQ(server->Receive(nullptr, 0, &received), 0);
    EXPECT_EQ(received, 0u);
}

TEST_F(QORSocketsTest, AnEarlyEndFailsAndTellsWhatCame) {
    client.Send("ab", 2);
    EXPECT_EQ(client.Close(), 0);
    char buffer[4] = {};
    unsigned int received = 7;
    EXPECT_EQ(server->Receive(buffer, 4, &received), -1);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(received, 2u);
    EXPECT_EQ(server->Receive(buffer, 4, &received), -1);
    EXPECT_EQ(received, 0u);
}

TEST_F(QORSocketsTest, ASilentPeerIsNotWaitedForBeyondTheLimit) {
    client.Send("ab", 2);
    char buffer[4] = {};
    unsigned int received = 0;
    const Stopwatch watch;
    EXPECT_EQ(server->Receive(buffer, 4, &received), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(received, 2u);
    EXPECT_GE(watch.Elapsed().count(), s_limit - 1);
    EXPECT_LT(watch.Elapsed(), s_promptly);
}

TEST_F(QORSocketsTest, ADrippingPeerIsNotWaitedForBeyondTheLimit) {
    constexpr unsigned int size = 100000;
    std::atomic<bool> isOver{false};
    std::thread sender([&] {
        while (!isOver && client.Send("a", 1) == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    std::vector<char> buffer(size);
    unsigned int received = 0;
    const Stopwatch watch;
    EXPECT_EQ(server->Receive(buffer.data(), size, &received), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_LT(received, size);
    EXPECT_LT(watch.Elapsed(), s_promptly);
    isOver = true;
    sender.join();
}

TEST_F(QORSocketsTest, APeerThatTakesNothingIsNotWaitedForBeyondTheLimit) {
    const std::vector<char> much(64 << 20);
    const Stopwatch watch;
    EXPECT_EQ(server->Send(much.data(), static_cast<unsigned int>(much.size())), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_LT(watch.Elapsed(), s_promptly);
}

TEST_F(QORSocketsTest, APeerThatKeepsTheSocketFullIsNotReadFromBeyondTheLimit) {
    std::vector<char> much(2 << 20);
    unsigned int received = 0;
    server->SetWaitLimit(20);
    TirelessPeer peer;
    EXPECT_EQ(server->Receive(much.data(), static_cast<unsigned int>(much.size()), &received), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(received, peer.calls);
    EXPECT_LE(peer.calls, 20u);
}

TEST_F(QORSocketsTest, APeerThatKeepsTakingIsNotSentToBeyondTheLimit) {
    const std::vector<char> much(2 << 20);
    server->SetWaitLimit(20);
    TirelessPeer peer;
    EXPECT_EQ(server->Send(much.data(), static_cast<unsigned int>(much.size())), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_LE(peer.calls, 20u);
}

TEST_F(QORSocketsTest, ThePlatformIsNotAskedToMoveSoMuchThatItOutlastsTheLimit) {
    constexpr size_t soon = 1 << 20;
    std::vector<char> much(2 << 20);
    const auto size = static_cast<unsigned int>(much.size());
    server->SetWaitLimit(1);
    TirelessPeer peer;
    server->Receive(much.data(), size, nullptr);
    EXPECT_LE(peer.largestSize, soon);
    server->Send(much.data(), size);
    EXPECT_LE(peer.largestSize, soon);
}

TEST_F(QORSocketsTest, WhatIsThereWholeSucceedsHoweverShortTheLimit) {
    char byte = 0;
    server->SetWaitLimit(1);
    TirelessPeer peer;
    EXPECT_EQ(server->Send(&byte, 1), 0);
    EXPECT_EQ(server->Receive(&byte, 1, nullptr), 0);
}

TEST_F(QORSocketsTest, SendingToAPeerThatHasGoneFailsWithoutASignal) {
    client.Close();
    int result = 0;
    for (int round = 0; round < 100 && result == 0; ++round) {
        result = server->Send("ab", 2);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(result, -1);
    EXPECT_TRUE(errno == EPIPE || errno == ECONNRESET);
}

TEST_F(QORSocketsTest, TheLimitCanBeChanged) {
    char byte = 0;
    EXPECT_EQ(client.SetWaitLimit(30), 0);
    EXPECT_EQ(client.SetWaitLimit(0), -1);
    EXPECT_EQ(client.SetWaitLimit(-1), -1);
    const Stopwatch watch;
    EXPECT_EQ(client.Receive(&byte, 1, nullptr), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_LT(watch.Elapsed(), s_promptly);
}

TEST_F(QORSocketsTest, OptionZeroSendsAtOnce) {
    EXPECT_EQ(static_cast<int>(QORSocketNoDelay), 0);
    EXPECT_EQ(server->SetOptions(static_cast<QORSocketOptions>(0)), 0);
    EXPECT_EQ(server->SetOptions(static_cast<QORSocketOptions>(1)), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(QORSocketsTest, AConnectionBeginsWithoutDelayAndClosesOnExec) {
    int noDelay = 0;
    socklen_t size = sizeof noDelay;
    ASSERT_EQ(getsockopt(clientDescriptor, IPPROTO_TCP, TCP_NODELAY, &noDelay, &size), 0);
    EXPECT_NE(noDelay, 0);
    EXPECT_EQ(fcntl(clientDescriptor, F_GETFD), FD_CLOEXEC);
}

TEST_F(QORSocketsTest, ConnectClosesAnEarlierConnection) {
    EXPECT_EQ(client.Connect(connector.GetPort(), "127.0.0.1"), 0);
    char byte = 0;
    EXPECT_EQ(server->Receive(&byte, 1, nullptr), -1);
    EXPECT_EQ(errno, 0);
}

TEST_F(QORSocketsTest, TheDestructorCloses) {
    server.reset();
    char byte = 0;
    EXPECT_EQ(client.Receive(&byte, 1, nullptr), -1);
    EXPECT_EQ(errno, 0);
}

TEST_F(QORSocketsTest, TheTwoEndsWorkOnTwoThreads) {
    constexpr int rounds = 200;
    RunAtOnce(2, [&](int number) {
        QORSockets& own = number == 0 ? client : *server;
        own.SetWaitLimit(60000);
        for (int round = 0; round < rounds; ++round) {
            int other = -1;
            EXPECT_EQ(own.Send(&round, sizeof round), 0);
            EXPECT_EQ(own.Receive(&other, sizeof other, nullptr), 0);
            EXPECT_EQ(other, round);
        }
    });
}

TEST(QORSocketsWithoutConnectionTest, EverythingButCloseFails) {
    char byte = 0;
    unsigned int received = 7;
    QORSockets socket(-1, nullptr);
    EXPECT_EQ(socket.Send(&byte, 1), -1);
    EXPECT_EQ(socket.Receive(&byte, 1, &received), -1);
    EXPECT_EQ(received, 0u);
    EXPECT_EQ(socket.SetOptions(QORSocketNoDelay), -1);
    EXPECT_EQ(socket.Close(), 0);
    EXPECT_EQ(socket.Close(), 0);
}

TEST(QORSocketsWithoutConnectionTest, APortWithoutAServerIsRefused) {
    unsigned short port = 0;
    {
        QORSocketConnector connector(0, 10, 0);
        ASSERT_EQ(connector.Declare("localhost"), 0);
        port = connector.GetPort();
    }
    QORSockets socket(-1, nullptr);
    EXPECT_EQ(socket.Connect(port, nullptr), -1);
    EXPECT_EQ(errno, ECONNREFUSED);
}

TEST(QORSocketsWithoutConnectionTest, AHostThatIsNotTheMachineItselfIsRefused) {
    for (const char* host : {"10.0.0.1", "0.0.0.0", "example.org", "", "::1"}) {
        QORSockets socket(-1, nullptr);
        EXPECT_EQ(socket.Connect(80, host), -1) << host;
        EXPECT_EQ(errno, EADDRNOTAVAIL);
    }
}

TEST(QORSocketsWithoutConnectionTest, ADescriptorThatIsHandedOverIsClosed) {
    int ends[2] = {};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    {
        QORSockets socket(ends[0], nullptr);
        EXPECT_EQ(socket.Send("x", 1), 0);
    }
    EXPECT_EQ(fcntl(ends[0], F_GETFD), -1);
    close(ends[1]);
}

TEST(QORSocketsWithoutConnectionTest, ABlockingDescriptorIsHeldToTheLimitToo) {
    int ends[2] = {};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    QORSockets socket(ends[0], nullptr);
    socket.SetWaitLimit(30);
    char byte = 0;
    EXPECT_EQ(socket.Receive(&byte, 1, nullptr), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    close(ends[1]);
}

TEST(QORSocketsWithoutConnectionTest, AConnectionNeverMeetsItself) {
    // A port of the kind that the platform picks for the near end of a connection, with nobody listening on it. Tried
    // often enough, the platform picks that very port.
    unsigned short port = 0;
    {
        QORSocketConnector connector(0, 10, 0);
        ASSERT_EQ(connector.Declare("localhost"), 0);
        const int descriptor = NextDescriptor();
        QORSockets client(-1, nullptr);
        ASSERT_EQ(client.Connect(connector.GetPort(), nullptr), 0);
        sockaddr_in own{};
        socklen_t size = sizeof own;
        ASSERT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &size), 0);
        port = ntohs(own.sin_port);
        // Reset, so that the port is free at once.
        const linger atOnce{1, 0};
        setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    }
    QORSockets socket(-1, nullptr);
    int connections = 0;
    for (int round = 0; round < 40000; ++round) {
        connections += socket.Connect(port, nullptr) == 0;
    }
    EXPECT_EQ(connections, 0);
}

} // namespace
