#include "Services/CurlSockets.h"

#include <array>
#include <ctime>

#include <sys/socket.h>
#include <unistd.h>

namespace korvo {

namespace {

constexpr std::chrono::seconds shortestSuspension{1}; // Far more than lies between the readings of two clocks.

std::chrono::nanoseconds reading(clockid_t clock)
{
    timespec now{};
    ::clock_gettime(clock, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

/// How long the machine has been suspended since it was started. Source: clock_gettime(2).
std::chrono::nanoseconds suspendedTime()
{
    return reading(CLOCK_BOOTTIME) - reading(CLOCK_MONOTONIC);
}

} // namespace

void CurlSockets::observe(CURL *easy)
{
    curl_easy_setopt(easy, CURLOPT_SOCKOPTFUNCTION, &CurlSockets::opened);
    curl_easy_setopt(easy, CURLOPT_SOCKOPTDATA, this);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, &CurlSockets::closed);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, this);
}

void CurlSockets::retireDeparted(const std::function<bool(curl_socket_t)> &isInUse) const
{
    for (const auto &[socket, suspended] : m_open) {
        std::array<char, 1024> rest{};
        if (isInUse(socket) || ::recv(socket, rest.data(), rest.size(), MSG_PEEK | MSG_DONTWAIT) < 0)
            continue; // In use, or nothing there.
        // With nothing left to read and no more to come, it is closed to libcurl too.
        while (::recv(socket, rest.data(), rest.size(), MSG_DONTWAIT) > 0) { }
        ::shutdown(socket, SHUT_RD);
    }
}

void CurlSockets::retireSlept(const std::function<bool(curl_socket_t)> &isInUse) const
{
    const auto now = suspendedTime();
    for (const auto &[socket, suspended] : m_open) {
        if (now - suspended >= shortestSuspension && !isInUse(socket))
            ::shutdown(socket, SHUT_RDWR); // To libcurl it is closed, and nothing can go into it any more.
    }
}

int CurlSockets::opened(void *self, curl_socket_t socket, curlsocktype)
{
    static_cast<CurlSockets *>(self)->m_open.insert_or_assign(socket, suspendedTime());
    return CURL_SOCKOPT_OK;
}

int CurlSockets::closed(void *self, curl_socket_t socket)
{
    static_cast<CurlSockets *>(self)->m_open.erase(socket);
    return ::close(socket);
}

} // namespace korvo
