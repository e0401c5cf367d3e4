#pragma once

#include <curl/curl.h>

#include <functional>
#include <set>

namespace korvo {

/// The sockets that libcurl has open. It outlives the multi handle.
class CurlSockets {
public:
    /// Keeps count of the sockets of the connections that this handle will make.
    void observe(CURL *easy);

    /// Has libcurl give up the idle connections on which the server has said something: that can only be its farewell.
    /// libcurl's own test overlooks one that came over TLS, would send a request into it, and could not know what
    /// became of that.
    void retireDeparted(const std::function<bool(curl_socket_t)> &isInUse) const;

private:
    static int opened(void *self, curl_socket_t socket, curlsocktype);
    static int closed(void *self, curl_socket_t socket);

    std::set<curl_socket_t> m_open;
};

} // namespace korvo
