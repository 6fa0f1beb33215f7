#include "tests/support/local_server.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>

#if defined(_WIN32)
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace KAV::Tests {

namespace {

constexpr int StepMs = 20; // between two checks whether the test has ended

#if defined(_WIN32)
using Length = int;
constexpr int NoSignal = 0;
SOCKET Native(std::intptr_t socket) {
    return static_cast<SOCKET>(socket);
}
void Close(std::intptr_t socket) {
    closesocket(Native(socket));
}
void BeginSockets() {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
}
void NeverWait(std::intptr_t socket) {
    u_long on = 1;
    ioctlsocket(Native(socket), static_cast<long>(FIONBIO), &on);
}
bool WouldWait() {
    return WSAGetLastError() == WSAEWOULDBLOCK;
}
int Poll(std::intptr_t socket, short what) {
    WSAPOLLFD one{Native(socket), what, 0};
    return WSAPoll(&one, 1, StepMs);
}
#else
using Length = std::size_t;
constexpr int NoSignal = MSG_NOSIGNAL;
int Native(std::intptr_t socket) {
    return static_cast<int>(socket);
}
void Close(std::intptr_t socket) {
    close(Native(socket));
}
void BeginSockets() {}
void NeverWait(std::intptr_t socket) {
    fcntl(Native(socket), F_SETFL, O_NONBLOCK);
}
bool WouldWait() {
    return errno == EAGAIN;
}
int Poll(std::intptr_t socket, short what) {
    pollfd one{Native(socket), what, 0};
    return poll(&one, 1, StepMs);
}
#endif

std::intptr_t Listen(std::uint16_t& port) {
    BeginSockets();
    const auto listener = static_cast<std::intptr_t>(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    if (bind(Native(listener), reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        listen(Native(listener), 8) != 0 ||
        getsockname(Native(listener), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        throw std::runtime_error("no port to listen at");
    }
    port = ntohs(address.sin_port);
    return listener;
}

std::size_t BodyLength(const std::string& head) {
    const auto place = head.find("Content-Length: ");
    return place == std::string::npos ? 0 : std::stoul(head.substr(place + 16));
}

} // namespace

CConnection::CConnection(std::intptr_t socket, const std::atomic<bool>& serving)
    : _socket(socket), _serving(serving) {
    NeverWait(socket); // so that the end of the test is noticed whatever the client does
}

CConnection::~CConnection() {
    if (_socket >= 0) Close(_socket);
}

std::string CConnection::ReadRequest() {
    std::string request;
    std::array<char, 65536> block{};
    while (_serving) {
        const auto end = request.find("\r\n\r\n");
        if (end != std::string::npos && request.size() >= end + 4 + BodyLength(request)) break;
        if (Poll(_socket, POLLIN) == 0) continue;
        const auto got = recv(Native(_socket), block.data(), static_cast<Length>(block.size()), 0);
        if (got < 0 && WouldWait()) continue;
        if (got <= 0) break;
        request.append(block.data(), static_cast<std::size_t>(got));
    }
    return request;
}

bool CConnection::Send(std::string_view bytes) {
    while (!bytes.empty()) {
        if (!_serving) return false;
        if (Poll(_socket, POLLOUT) == 0) continue;
        const auto piece = std::min<std::size_t>(bytes.size(), 1u << 20);
        const auto sent = send(Native(_socket), bytes.data(), static_cast<Length>(piece), NoSignal);
        if (sent < 0 && WouldWait()) continue;
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

void CConnection::Answer(int status, std::string_view body, std::string_view head) {
    // The server closes the connection and says so: a client that reused it would run into its end.
    Send("HTTP/1.1 " + std::to_string(status) + " As the test says\r\nConnection: close\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n" + std::string(head) + "\r\n" + std::string(body));
}

void CConnection::Reset() {
    const linger now{1, 0};
    setsockopt(Native(_socket), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&now), sizeof(now));
    Close(_socket);
    _socket = -1;
}

bool CConnection::AwaitItsEnd() {
    std::array<char, 4096> block{};
    while (_serving) {
        if (Poll(_socket, POLLIN) == 0) continue;
        const auto got = recv(Native(_socket), block.data(), static_cast<Length>(block.size()), 0);
        if (got == 0 || (got < 0 && !WouldWait())) return true;
    }
    return false;
}

void CConnection::Pause(int ms) const {
    for (int spent = 0; spent < ms && _serving; spent += StepMs)
        std::this_thread::sleep_for(std::chrono::milliseconds(std::min(StepMs, ms)));
}

CLocalServer::CLocalServer(Behaviour behaviour, bool readsFirst)
    : _behaviour(std::move(behaviour)), _readsFirst(readsFirst), _listener(Listen(_port)),
      _thread([this] { Serve(); }) {}

CLocalServer::~CLocalServer() {
    _serving = false;
    _thread.join();
    Close(_listener);
}

std::u16string CLocalServer::Origin() const {
    const auto port = std::to_string(_port);
    return u"http://127.0.0.1:" + std::u16string(port.begin(), port.end());
}

std::vector<std::string> CLocalServer::Requests() const {
    const std::scoped_lock lock(_mutex);
    return _requests;
}

std::vector<std::string> CLocalServer::AwaitRequests(std::size_t count) const {
    for (int i = 0; i < 3000 && Requests().size() < count; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(StepMs));
    return Requests();
}

void CLocalServer::Serve() {
    while (_serving) {
        if (Poll(_listener, POLLIN) == 0) continue;
        const auto socket = static_cast<std::intptr_t>(accept(Native(_listener), nullptr, nullptr));
        if (socket < 0) continue;
        CConnection connection(socket, _serving);
        std::string request;
        if (_readsFirst) {
            request = connection.ReadRequest();
            const std::scoped_lock lock(_mutex);
            _requests.push_back(request);
        }
        _behaviour(connection, request);
    }
}

std::uint16_t FreePort() {
    std::uint16_t port = 0;
    Close(Listen(port));
    return port;
}

} // namespace KAV::Tests
