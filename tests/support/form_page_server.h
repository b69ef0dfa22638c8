#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace httplib {
class Server;
}

namespace mirelo::testing {

// A few fixed pages on 127.0.0.1 and a free port, served from a thread of the test itself,
// for driving the real browser against pages whose forms the test decides:
// - /handover: a first form with txtXml posting to /received, and a second one that must
//   not be used;
// - /without-field: a first form without txtXml;
// - /login: a first form that isn't the one, then the form named Login with txtUsername,
//   txtPassword, txtPath, txtVersion and txtPatientPnr, posting to /received.
// Every post to /received is kept: the fields of the last one by name, and a count. The page
// answering a post calls /alive a few times a second while a browser shows it; those calls
// are counted.
class FormPageServer {
  public:
    using Fields = std::map<std::string, std::string>;

    FormPageServer();
    ~FormPageServer();

    std::string baseUrl() const;
    Fields lastPost() const;

    std::atomic<int> postsReceived = 0, wrongFormPosts = 0, alivePings = 0;

  private:
    std::unique_ptr<httplib::Server> server_;
    std::thread thread_;
    int port_ = 0;
    mutable std::mutex mutex_;
    Fields lastPost_;
};

} // namespace mirelo::testing
