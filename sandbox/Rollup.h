#pragma once

#include <QJsonObject>

namespace korvo::sandbox {

struct Page;
struct PropertySchema;
class Workspace;

/// The value of a rollup over all related pages that are not in the trash: {type, <type>: value, function}.
/// A sum over nothing is 0, a maximum, minimum or average over nothing null.
QJsonObject rollupValue(const Workspace &workspace, const Page &page, const PropertySchema &schema);

} // namespace korvo::sandbox
