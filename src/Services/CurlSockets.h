#pragma once

#include <curl/curl.h>

#include <chrono>
#include <functional>
#include <map>

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

    /// Has libcurl give up the idle connections from before a suspension of the machine. Meanwhile server, router or
    /// network may have dropped them without a word, and a request into one would wait for its time-out. libcurl's own
    /// limit of age goes by a clock that stands still in suspension.
    void retireSlept(const std::function<bool(curl_socket_t)> &isInUse) const;

private:
    using Duration = std::chrono::nanoseconds;

    static int opened(void *self, curl_socket_t socket, curlsocktype);
    static int closed(void *self, curl_socket_t socket);

    std::map<curl_socket_t, Duration> m_open; ///< With how long the machine had been suspended when it was opened.
};

} // namespace korvo
