#include "tests/support/silent_display.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace KAV::Tests {

namespace {

constexpr int StepMs = 20; // between two checks whether the test has ended

/// The abstract name that the client library tries first; it leaves no file behind. The numbers begin where
/// no server searches for a free one.
int Listen() {
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    for (int number = 20000; number < 21000; ++number) {
        const auto name = "/tmp/.X11-unix/X" + std::to_string(number);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        name.copy(address.sun_path + 1, sizeof(address.sun_path) - 2);
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
        if (bind(listener, reinterpret_cast<const sockaddr*>(&address), size) != 0)
            continue; // used by another test
        EXPECT_EQ(listen(listener, 8), 0);
        setenv("DISPLAY", (":" + std::to_string(number)).c_str(), 1);
        return listener;
    }
    ADD_FAILURE() << "no number is free";
    return listener;
}

} // namespace

CSilentDisplay::CSilentDisplay(ESays says) : _says(says), _listener(Listen()), _thread([this] { Serve(); }) {}

CSilentDisplay::~CSilentDisplay() {
    _serving = false;
    _thread.join();
    close(_listener);
}

void CSilentDisplay::Serve() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (_serving) {
        pollfd wait{_listener, POLLIN, 0};
        if (poll(&wait, 1, StepMs) > 0) {
            _open.push_back(accept4(_listener, nullptr, nullptr, SOCK_CLOEXEC));
            if (_says == ESays::AGreeting) Greet(_open.back());
            ++_clients;
        }
        if (std::chrono::steady_clock::now() > end) _hungUp = true;
        if (_hungUp || _hangUp.exchange(false)) {
            for (const int client : _open) close(client);
            _open.clear();
        }
    }
    for (const int client : _open) close(client);
}

/// The least that the protocol requires: no vendor, no formats, one screen without depths.
void CSilentDisplay::Greet(int client) const {
    std::array<char, 12> hello{};
    if (recv(client, hello.data(), hello.size(), MSG_WAITALL) != static_cast<ssize_t>(hello.size())) return;
    xcb_setup_t setup{};
    xcb_screen_t screen{};
    setup.status = 1;
    setup.protocol_major_version = 11;
    setup.length = (sizeof(setup) - 8 + sizeof(screen)) / 4;
    setup.resource_id_mask = 0xFFFF;
    setup.maximum_request_length = 0xFFFF;
    setup.roots_len = 1;
    screen.width_in_pixels = 640;
    screen.height_in_pixels = 480;
    std::array<char, sizeof(setup) + sizeof(screen)> greeting{};
    std::memcpy(greeting.data(), &setup, sizeof(setup));
    std::memcpy(greeting.data() + sizeof(setup), &screen, sizeof(screen));
    send(client, greeting.data(), greeting.size(), MSG_NOSIGNAL);
}

} // namespace KAV::Tests
