#pragma once

#include <string>

namespace mirelo::testing {

// A port on 127.0.0.1 where nothing listens: the socket is bound but never listens, so every
// connection is refused, and no other test's service can be given the port meanwhile.
class ClosedPort {
  public:
    ClosedPort();
    ~ClosedPort();
    ClosedPort(const ClosedPort &) = delete;
    ClosedPort &operator=(const ClosedPort &) = delete;

    std::string baseUrl() const;

  private:
    int socket_ = -1;
    int port_ = 0;
};

} // namespace mirelo::testing
