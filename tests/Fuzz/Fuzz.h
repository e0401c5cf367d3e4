#pragma once

#include "Fakes/Await.h"
#include "Fakes/FakeClock.h"
#include "Fakes/TestSettings.h"
#include "Services/NotionAPIService.h"

#include <QCoreApplication>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace korvo::fuzz {

/// The input as bytes, without a copy.
inline QByteArray bytesOf(const std::uint8_t *data, std::size_t size)
{
    return QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
}

/// Ends the process, as a sanitizer does, where a promise is broken.
inline void require(bool isKept, const char *promise)
{
    if (isKept)
        return;
    std::fprintf(stderr, "not kept: %s\n", promise);
    std::abort();
}

/// Answers every request at once, with the same response.
class OneAnswer final : public HttpTransport {
public:
    explicit OneAnswer(HttpResponse response) : m_response(std::move(response)) { }

    QCoro::Task<Result<HttpResponse, HttpError>> send(HttpRequest, std::stop_token) override
    {
        ++sends;
        co_return m_response;
    }

    int sends = 0;

private:
    HttpResponse m_response;
};

/// A client of a workspace that answers everything with `response`, and whose waits end at once.
class Client {
public:
    explicit Client(HttpResponse response) : transport(std::move(response))
    {
        clock.isInstant = true;
        TestSettings::configure(settings.settings);
    }

    OneAnswer transport;
    FakeClock clock;
    TestSettings settings;
    std::shared_ptr<NotionAPIService> api = std::make_shared<NotionAPIService>(transport, settings.settings, clock);
};

} // namespace korvo::fuzz
