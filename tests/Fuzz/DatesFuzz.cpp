// Texts as they stand in date properties.

#include "Fuzz.h"
#include "Services/NotionDate.h"
#include "Services/NotionPropertyMapper.h"

using namespace korvo;
using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto date = parseNotionDate(QString::fromUtf8(fuzz::bytesOf(data, size)));
    if (!date)
        return 0;
    fuzz::require(date->isValid(), "what is read as a date is one");
    const QJsonObject properties{{u"Start"_s, NotionPropertyMapper::buildDateProperty(*date)}};
    const auto back = NotionPropertyMapper::date(properties, u"Start"_s);
    fuzz::require(!back || qAbs(back->secsTo(*date)) <= 60, "a date that is written and read again is the same minute");
    return 0;
}
