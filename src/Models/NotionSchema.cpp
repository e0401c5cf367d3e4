#include "Models/NotionSchema.h"

#include <QLatin1StringView>

#include <algorithm>
#include <array>
#include <cstddef>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

// In the order of the enumerators, by which it is indexed.
constexpr std::array rawValues{
    "title"_L1,        "rich_text"_L1,      "number"_L1,    "select"_L1,   "multi_select"_L1, "status"_L1,
    "date"_L1,         "people"_L1,         "files"_L1,     "checkbox"_L1, "url"_L1,          "email"_L1,
    "phone_number"_L1, "formula"_L1,        "relation"_L1,  "rollup"_L1,   "created_time"_L1, "last_edited_time"_L1,
    "created_by"_L1,   "last_edited_by"_L1, "unique_id"_L1, "unknown"_L1,
};
static_assert(rawValues.size() == std::size_t(NotionProperty::PropertyType::unknown) + 1);

} // namespace

NotionProperty::PropertyType NotionProperty::propertyTypeFromRawValue(QStringView rawValue)
{
    const auto found = std::find(rawValues.begin(), rawValues.end(), rawValue);
    return found == rawValues.end() ? PropertyType::unknown : PropertyType(found - rawValues.begin());
}

QString NotionProperty::rawValue(PropertyType type)
{
    return rawValues[std::size_t(type)];
}

} // namespace korvo
