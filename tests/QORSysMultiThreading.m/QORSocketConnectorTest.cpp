#include "QORSocketConnector.h"

#include "FailingAllocation.h"
#include "QORSockets.h"
#include "TestSupport.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <netinet/in.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// The descriptor that the next call which opens one will get.
int NextDescriptor() {
    const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(descriptor);
    return descriptor;
}

int SelectFor(QORSocketConnector& connector, int milliseconds) {
    return connector.Select(&milliseconds);
}

TEST(QORSocketConnectorTest, PortZeroPicksAFreePort) {
    QORSocketConnector first(0, 10, 0);
    QORSocketConnector second(0, 10, 0);
    EXPECT_EQ(first.GetPort(), 0);
    EXPECT_EQ(first.Declare("localhost"), 0);
    EXPECT_EQ(second.Declare("localhost"), 0);
    EXPECT_NE(first.GetPort(), 0);
    EXPECT_NE(first.GetPort(), second.GetPort());
}

TEST(QORSocketConnectorTest, APortThatIsTakenIsRefused) {
    QORSocketConnector first(0, 10, 0);
    ASSERT_EQ(first.Declare("localhost"), 0);
    QORSocketConnector second(first.GetPort(), 10, 0);
    EXPECT_EQ(second.GetPort(), first.GetPort());
    EXPECT_EQ(second.Declare("localhost"), -1);
    EXPECT_EQ(errno, EADDRINUSE);
}

TEST(QORSocketConnectorTest, APortIsFreeAgainAfterUse) {
    unsigned short port = 0;
    {
        QORSocketConnector connector(0, 10, 0);
        ASSERT_EQ(connector.Declare("localhost"), 0);
        port = connector.GetPort();
        QORSockets client(-1, nullptr);
        ASSERT_EQ(client.Connect(port, nullptr), 0);
        QORSockets* accepted = nullptr;
        ASSERT_EQ(connector.Accept(&accepted), 0);
        // The side that closes first keeps the port in a waiting state.
        delete accepted;
    }
    QORSocketConnector connector(port, 10, 0);
    EXPECT_EQ(connector.Declare("localhost"), 0);
    EXPECT_EQ(connector.GetPort(), port);
}

TEST(QORSocketConnectorTest, LoopbackHostsAreTaken) {
    for (const char* host : {"localhost", "127.0.0.1", "127.1.2.3", static_cast<const char*>(nullptr)}) {
        QORSocketConnector connector(0, 10, 0);
        EXPECT_EQ(connector.Declare(host), 0);
    }
}

TEST(QORSocketConnectorTest, AnyOtherHostIsRefused) {
    for (const char* host : {"0.0.0.0", "10.0.0.1", "128.0.0.1", "126.255.255.255", "::1", "", "127.0.0.1 ", "127.1",
                             "LOCALHOST.example", "example.org"}) {
        QORSocketConnector connector(0, 10, 0);
        EXPECT_EQ(connector.Declare(host), -1) << host;
        EXPECT_EQ(errno, EADDRNOTAVAIL);
    }
}

TEST(QORSocketConnectorTest, ListensOnTheLoopbackAddressAlone) {
    const int descriptor = NextDescriptor();
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ASSERT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size), 0);
    EXPECT_EQ(address.sin_family, AF_INET);
    EXPECT_EQ(ntohl(address.sin_addr.s_addr), INADDR_LOOPBACK);
    EXPECT_EQ(ntohs(address.sin_port), connector.GetPort());
}

TEST(QORSocketConnectorTest, ItsDescriptorsDoNotPassToOtherPrograms) {
    const int descriptor = NextDescriptor();
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    QORSockets client(-1, nullptr);
    ASSERT_EQ(client.Connect(connector.GetPort(), nullptr), 0);
    const int acceptedDescriptor = NextDescriptor();
    QORSockets* accepted = nullptr;
    ASSERT_EQ(connector.Accept(&accepted), 0);
    EXPECT_EQ(fcntl(acceptedDescriptor, F_GETFD), FD_CLOEXEC);
    delete accepted;
}

TEST(QORSocketConnectorTest, ASecondDeclareIsRefused) {
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    const unsigned short port = connector.GetPort();
    EXPECT_EQ(connector.Declare("localhost"), -1);
    EXPECT_EQ(connector.GetPort(), port);
}

TEST(QORSocketConnectorTest, SelectRunsOutAndLeavesTheTimeAlone) {
    constexpr int milliseconds = 30;
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    int wait = milliseconds;
    const Stopwatch watch;
    EXPECT_EQ(connector.Select(&wait), 0);
    EXPECT_GE(watch.Elapsed().count(), milliseconds - 1);
    EXPECT_EQ(wait, milliseconds);
    wait = 0;
    EXPECT_EQ(connector.Select(&wait), 0);
}

TEST(QORSocketConnectorTest, SelectTellsOfAConnection) {
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    QORSockets client(-1, nullptr);
    ASSERT_EQ(client.Connect(connector.GetPort(), nullptr), 0);
    EXPECT_GT(SelectFor(connector, 10000), 0);
    EXPECT_GT(SelectFor(connector, -5), 0);
    EXPECT_GT(connector.Select(nullptr), 0);
}

TEST(QORSocketConnectorTest, SelectWithoutALimitWaitsForAConnection) {
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    int negative = -5;
    for (int* const withoutLimit : {static_cast<int*>(nullptr), &negative}) {
        QORSockets client(-1, nullptr);
        std::thread connecting([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            EXPECT_EQ(client.Connect(connector.GetPort(), nullptr), 0);
        });
        EXPECT_GT(connector.Select(withoutLimit), 0);
        connecting.join();
        QORSockets* accepted = nullptr;
        EXPECT_EQ(connector.Accept(&accepted), 0);
        delete accepted;
    }
}

TEST(QORSocketConnectorTest, SelectAndAcceptNeedADeclaredPort) {
    QORSocketConnector connector(0, 10, 0);
    EXPECT_EQ(connector.Select(nullptr), -1);
    EXPECT_EQ(errno, EBADF);
    QORSockets* accepted = nullptr;
    EXPECT_EQ(connector.Accept(&accepted), -1);
    EXPECT_EQ(accepted, nullptr);
}

TEST(QORSocketConnectorTest, ASignalEndsSelect) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    struct sigaction former {};
    ASSERT_EQ(sigaction(SIGUSR1, &action, &former), 0);
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    const pthread_t waiting = pthread_self();
    std::atomic<bool> isOver{false};
    std::thread sender([&] {
        while (!isOver) {
            pthread_kill(waiting, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    errno = 0;
    EXPECT_EQ(SelectFor(connector, 10000), -1);
    EXPECT_EQ(errno, EINTR);
    isOver = true;
    sender.join();
    sigaction(SIGUSR1, &former, nullptr);
}

TEST(QORSocketConnectorTest, AcceptWithoutAConnectionGivesNullAtOnce) {
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    QORSockets* accepted = reinterpret_cast<QORSockets*>(&connector);
    EXPECT_EQ(connector.Accept(&accepted), 0);
    EXPECT_EQ(accepted, nullptr);
    EXPECT_EQ(connector.Accept(nullptr), -1);
}

TEST(QORSocketConnectorTest, AcceptGivesAConnectionThatLivesOnWithoutTheConnector) {
    auto connector = std::make_unique<QORSocketConnector>(0, 10, 0);
    ASSERT_EQ(connector->Declare("localhost"), 0);
    QORSockets client(-1, nullptr);
    ASSERT_EQ(client.Connect(connector->GetPort(), nullptr), 0);
    QORSockets* accepted = nullptr;
    ASSERT_EQ(connector->Accept(&accepted), 0);
    const std::unique_ptr<QORSockets> server(accepted);
    ASSERT_NE(server, nullptr);
    connector.reset();
    char byte = 'x';
    EXPECT_EQ(client.Send(&byte, 1), 0);
    byte = 0;
    EXPECT_EQ(server->Receive(&byte, 1, nullptr), 0);
    EXPECT_EQ(byte, 'x');
}

TEST(QORSocketConnectorTest, AcceptInAShortageOfDescriptorsGivesNull) {
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    QORSockets client(-1, nullptr);
    ASSERT_EQ(client.Connect(connector.GetPort(), nullptr), 0);
    ASSERT_GT(SelectFor(connector, 10000), 0);
    rlimit former{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &former), 0);
    const rlimit none{0, former.rlim_max};
    QORSockets* accepted = nullptr;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const int result = connector.Accept(&accepted);
    setrlimit(RLIMIT_NOFILE, &former);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(accepted, nullptr);
    EXPECT_EQ(connector.Accept(&accepted), 0);
    EXPECT_NE(accepted, nullptr);
    delete accepted;
}

TEST(QORSocketConnectorTest, AcceptInAShortageOfMemoryGivesNullAndClosesTheConnection) {
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    QORSockets client(-1, nullptr);
    ASSERT_EQ(client.Connect(connector.GetPort(), nullptr), 0);
    QORSockets* accepted = nullptr;
    {
        const FailingAllocation shortage(1);
        EXPECT_EQ(connector.Accept(&accepted), 0);
    }
    EXPECT_EQ(accepted, nullptr);
    char byte = 0;
    EXPECT_EQ(client.Receive(&byte, 1, nullptr), -1);
}

TEST(QORSocketConnectorTest, TheLimitOfAcceptedConnectionsIsTheConstructorsThirdArgument) {
    EXPECT_EQ(QORSocketConnector(0, 10, 250).GetWaitLimit(), 250);
    EXPECT_EQ(QORSocketConnector(0, 10, 0).GetWaitLimit(), QORSocketConnector::defaultWaitLimit);
    EXPECT_EQ(QORSocketConnector(0, 10, -1).GetWaitLimit(), 10000);
}

TEST(QORSocketConnectorTest, ABacklogBelowOneStillLetsAConnectionWait) {
    QORSocketConnector connector(0, -3, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    QORSockets client(-1, nullptr);
    EXPECT_EQ(client.Connect(connector.GetPort(), nullptr), 0);
}

/// How many connections wait for a connector that accepts none, counted up to 50.
int CountWaitingConnections(int backlog) {
    QORSocketConnector connector(0, backlog, 0);
    EXPECT_EQ(connector.Declare("localhost"), 0);
    std::vector<std::unique_ptr<QORSockets>> clients;
    while (clients.size() < 50) {
        auto client = std::make_unique<QORSockets>(-1, nullptr);
        client->SetWaitLimit(200);
        if (client->Connect(connector.GetPort(), nullptr) != 0) {
            EXPECT_EQ(errno, ETIMEDOUT);
            break;
        }
        clients.push_back(std::move(client));
    }
    return static_cast<int>(clients.size());
}

TEST(QORSocketConnectorTest, AsManyConnectionsAsTheBacklogSaysWaitAndFewMore) {
    constexpr int fewMore = 4;
    for (int backlog : {1, 5, 10}) {
        const int waiting = CountWaitingConnections(backlog);
        EXPECT_GE(waiting, backlog);
        EXPECT_LE(waiting, backlog + fewMore);
    }
    EXPECT_EQ(CountWaitingConnections(0), CountWaitingConnections(1));
    EXPECT_EQ(CountWaitingConnections(-3), CountWaitingConnections(1));
}

TEST(QORSocketConnectorTest, ServesClientsOfManyThreads) {
    constexpr int clients = 3;
    constexpr int rounds = 30;
    QORSocketConnector connector(0, 10, 0);
    ASSERT_EQ(connector.Declare("localhost"), 0);
    const unsigned short port = connector.GetPort();
    RunAtOnce(clients + 1, [&](int number) {
        if (number < clients) {
            QORSockets client(-1, nullptr);
            for (int round = 0; round < rounds; ++round) {
                int request = number * rounds + round;
                int answer = 0;
                unsigned int received = 0;
                EXPECT_EQ(client.Connect(port, nullptr), 0);
                EXPECT_EQ(client.Send(&request, sizeof request), 0);
                EXPECT_EQ(client.Receive(&answer, sizeof answer, &received), 0);
                EXPECT_EQ(received, sizeof answer);
                EXPECT_EQ(answer, -request);
            }
            return;
        }
        for (int served = 0; served < clients * rounds;) {
            QORSockets* accepted = nullptr;
            ASSERT_GT(SelectFor(connector, 10000), 0);
            ASSERT_EQ(connector.Accept(&accepted), 0);
            const std::unique_ptr<QORSockets> server(accepted);
            if (!server) {
                continue;
            }
            ++served;
            int request = 0;
            EXPECT_EQ(server->SetOptions(QORSocketNoDelay), 0);
            EXPECT_EQ(server->Receive(&request, sizeof request, nullptr), 0);
            request = -request;
            EXPECT_EQ(server->Send(&request, sizeof request), 0);
        }
    });
}

} // namespace
