#include "Services/HttpTransport.h"

#include "Services/CurlTransport.h"

namespace korvo {

std::optional<QByteArray> HttpResponse::header(const QByteArray &name) const
{
    for (const auto &[headerName, value] : headers) {
        if (headerName.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return std::nullopt;
}

HttpTransport &HttpTransport::shared()
{
    return CurlTransport::shared();
}

} // namespace korvo
