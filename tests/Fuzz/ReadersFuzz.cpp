// Bodies of answers, in every reader of rows and pages.

#include "Fuzz.h"
#include "Services/NotionPropertyMapper.h"
#include "ViewModels/NotionRows.h"

#include <QJsonDocument>

using namespace korvo;
using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    HttpResponse response;
    response.status = 200;
    response.body = fuzz::bytesOf(data, size);
    fuzz::Client client(response);
    const auto mapping = client.settings.settings.fieldMapping();

    const auto rows = await(client.api->queryDatabase(u"tasks"_s));
    const auto page = await(client.api->getPage(u"page"_s));
    await(client.api->getMe());
    fuzz::require(client.transport.sends <= 9, "a request is sent three times at most");
    QList<QJsonObject> objects;
    if (rows)
        objects = *rows;
    if (page)
        objects.append(*page);
    for (const auto &object : objects) {
        if (const auto task = NotionRows::parseTodayTask(object, mapping))
            fuzz::require(!task->name.isEmpty() || object.contains(u"properties"_s), "a task has a name");
        await(NotionRows::parseTimerEntry(object, mapping, client.api, client.clock, {}));
        const auto properties = object[u"properties"_s].toObject();
        for (const auto &key : properties.keys()) {
            NotionPropertyMapper::title(properties, key);
            NotionPropertyMapper::date(properties, key);
            NotionPropertyMapper::select(properties, key);
            NotionPropertyMapper::relations(properties, key);
            NotionPropertyMapper::rollupNumber(properties, key);
        }
    }
    return 0;
}
