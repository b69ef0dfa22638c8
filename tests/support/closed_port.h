#pragma once

#include <QTcpSocket>
#include <stdexcept>
#include <string>

namespace mirelo::testing {

// A port on 127.0.0.1 where nothing listens: the socket is bound but never listens, so every
// connection is refused, and no other test's service can be given the port meanwhile.
class ClosedPort {
  public:
    ClosedPort() {
        if (!socket_.bind(QHostAddress::LocalHost)) {
            throw std::runtime_error("no port to keep closed");
        }
    }
    std::string baseUrl() const {
        return "http://127.0.0.1:" + std::to_string(socket_.localPort());
    }

  private:
    QTcpSocket socket_;
};

} // namespace mirelo::testing
