#include "Services/CurlSockets.h"

#include <array>

#include <sys/socket.h>
#include <unistd.h>

namespace korvo {

void CurlSockets::observe(CURL *easy)
{
    curl_easy_setopt(easy, CURLOPT_SOCKOPTFUNCTION, &CurlSockets::opened);
    curl_easy_setopt(easy, CURLOPT_SOCKOPTDATA, this);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, &CurlSockets::closed);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, this);
}

void CurlSockets::retireDeparted(const std::function<bool(curl_socket_t)> &isInUse) const
{
    for (const auto socket : m_open) {
        std::array<char, 1024> rest{};
        if (isInUse(socket) || ::recv(socket, rest.data(), rest.size(), MSG_PEEK | MSG_DONTWAIT) < 0)
            continue; // In use, or nothing there.
        // With nothing left to read and no more to come, it is closed to libcurl too.
        while (::recv(socket, rest.data(), rest.size(), MSG_DONTWAIT) > 0) { }
        ::shutdown(socket, SHUT_RD);
    }
}

int CurlSockets::opened(void *self, curl_socket_t socket, curlsocktype)
{
    static_cast<CurlSockets *>(self)->m_open.insert(socket);
    return CURL_SOCKOPT_OK;
}

int CurlSockets::closed(void *self, curl_socket_t socket)
{
    static_cast<CurlSockets *>(self)->m_open.erase(socket);
    return ::close(socket);
}

} // namespace korvo
