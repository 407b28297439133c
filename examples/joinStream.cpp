/// \file
/// Joins a trace that is being sent: reads a socket from wherever the sender is just now, prints
/// every message as soon as it is whole, and tells of bytes that belong to none.
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <iostream>

#include "libvexstream/TraceReader.h"

using namespace vextrace;

// -1 where nobody answers.
int connectTo(const char* host, const char* port) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(host, port, &wanted, &found) != 0) {
        return -1;
    }
    int connection = socket(found->ai_family, found->ai_socktype, found->ai_protocol);
    if (connection >= 0 && connect(connection, found->ai_addr, found->ai_addrlen) != 0) {
        close(connection);
        connection = -1;
    }
    freeaddrinfo(found);
    return connection;
}

void printWhatIsThere(TraceReader& trace) {
    for (TraceItem item = trace.next(); item.kind != TraceItem::Kind::END; item = trace.next()) {
        if (item.kind == TraceItem::Kind::GPS) {
            std::cout << item.gps->message() << std::endl;
        } else if (item.kind == TraceItem::Kind::DAMAGE) {
            std::cerr << item.length << " bytes at " << item.offset << ": " << item.reason << '\n';
        }
    }
}

int main(int argc, char* argv[]) {
    const int connection = argc == 3 ? connectTo(argv[1], argv[2]) : -1;
    if (connection < 0) {
        std::cerr << (argc == 3 ? "Nobody answers there.\n" : "Usage: joinStream HOST PORT\n");
        return argc == 3 ? 1 : 2;
    }
    FedSource source;
    TraceReader trace(source);
    trace.setGrowing(true);
    std::array<uint8_t, 4096> bytes{};
    for (ssize_t n = 0; (n = read(connection, bytes.data(), bytes.size())) > 0;) {
        source.feed({bytes.data(), static_cast<size_t>(n)});
        printWhatIsThere(trace);
    }
    trace.setGrowing(false);  // what is left is all that there is
    printWhatIsThere(trace);
    close(connection);
}
