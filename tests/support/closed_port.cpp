#include "closed_port.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace mirelo::testing {

ClosedPort::ClosedPort() : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (socket_ < 0 || ::bind(socket_, reinterpret_cast<sockaddr *>(&address), length) != 0 ||
        ::getsockname(socket_, reinterpret_cast<sockaddr *>(&address), &length) != 0) {
        throw std::runtime_error("no port to keep closed");
    }
    port_ = ntohs(address.sin_port);
}

ClosedPort::~ClosedPort() {
    ::close(socket_);
}

std::string ClosedPort::baseUrl() const {
    return "http://127.0.0.1:" + std::to_string(port_);
}

} // namespace mirelo::testing
