// Bodies of answers, in the reader of a database's layout.

#include "Fuzz.h"
#include "Services/NotionSchemaService.h"

#include <QJsonDocument>

using namespace korvo;
using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    HttpResponse response;
    response.status = 200;
    response.body = fuzz::bytesOf(data, size);
    fuzz::Client client(response);
    NotionSchemaService service(client.transport, client.settings.settings, client.clock);
    const auto schema = await(service.loadSchema(u"tasks"_s));
    if (!schema)
        return 0;
    const auto properties = QJsonDocument::fromJson(response.body).object()[u"properties"_s].toObject();
    for (const auto &property : schema->properties)
        fuzz::require(properties.contains(property.name), "every property stands in the answer");
    return 0;
}
