// Retry-After headers of an answer that says "too many requests".

#include "Fuzz.h"

#include <cmath>

using namespace korvo;
using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    HttpResponse response;
    response.status = 429;
    response.headers = {{"Retry-After"_ba, fuzz::bytesOf(data, size)}};
    fuzz::Client client(response);
    const auto answer = await(client.api->getMe());
    fuzz::require(!answer, "an answer that says no is an error");
    fuzz::require(client.transport.sends == 3, "a request is sent three times");
    fuzz::require(!client.clock.waits.isEmpty(), "there is a pause between two sends");
    for (const auto &wait : client.clock.waits)
        fuzz::require(std::isfinite(wait.seconds), "a pause has an end");
    return 0;
}
