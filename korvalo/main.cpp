// The stand-in Korvalo service: plays the web service on 127.0.0.1 so that Mirelo can be run
// and tested end to end on one machine. Nothing it serves leaves the machine.

#include "handover_route.h"
#include "login_route.h"
#include "options.h"
#include "platform/xml_document.h"
#include "prescribe_route.h"
#include "sample_messages.h"
#include "service_state.h"
#include "vnr_route.h"

#include <atomic>
#include <csignal>
#include <httplib.h>
#include <iostream>
#include <pthread.h>
#include <thread>

namespace {

// Requests by method, path and status only: bodies carry passwords and patients.
void logRequest(const httplib::Request &request, const httplib::Response &response) {
    std::cerr << request.method << ' ' << request.path << ' ' << response.status << '\n';
}

int bindLoopback(httplib::Server &server, int port) {
    if (port == 0) {
        return server.bind_to_any_port("127.0.0.1");
    }
    return server.bind_to_port("127.0.0.1", port) ? port : -1;
}

int serve(const korvalo::Options &options) {
    korvalo::ServiceState state;
    state.users =
        options.usersFile.empty() ? korvalo::DemoUsers() : korvalo::LoadUsers(options.usersFile);
    state.inbox = options.inbox;

    // SIGTERM and SIGINT are taken by one thread that stops the server, so the listening
    // loop ends on its own and the process leaves through main.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGTERM);
    sigaddset(&stopSignals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    httplib::Server server;
    server.set_logger(logRequest);
    korvalo::AddLoginRoute(server, state.users);
    korvalo::AddVnrRoute(server, options.vnrFails);
    korvalo::AddHandoverRoutes(server, state);
    korvalo::AddPrescribeRoute(server, state);

    const int port = bindLoopback(server, options.port);
    if (port <= 0) {
        std::cerr << "korvalo: kan inte lyssna på 127.0.0.1:" << options.port << '\n';
        return 1;
    }
    std::cout << port << std::endl;

    std::atomic<bool> listenReturned{false};
    std::thread stopper([&server, &stopSignals, &listenReturned] {
        int signal = 0;
        sigwait(&stopSignals, &signal);
        // A stop asked for before the listening loop has begun would be lost: wait for it.
        while (!server.is_running() && !listenReturned) {
            std::this_thread::yield();
        }
        server.stop();
    });
    const bool listened = server.listen_after_bind();
    listenReturned = true;
    if (!listened) {
        // Wakes the stopper so that it can be joined.
        kill(getpid(), SIGTERM);
    }
    stopper.join();
    return listened ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    try {
        const korvalo::Options options = korvalo::ParseOptions(argc, argv);
        mirelo::platform::initialiseXml();
        if (options.samples) {
            std::cout << korvalo::WriteSampleMessages(options.inbox, *options.samples)
                      << std::flush;
            return 0;
        }
        return serve(options);
    } catch (const std::invalid_argument &error) {
        std::cerr << "korvalo: " << error.what() << '\n' << korvalo::Usage;
        return 2;
    } catch (const std::exception &error) {
        std::cerr << "korvalo: " << error.what() << '\n';
        return 1;
    }
}
