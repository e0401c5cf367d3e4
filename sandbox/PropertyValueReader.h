#pragma once

#include "sandbox/PropertyWrite.h"

namespace korvo::sandbox {

/// Reads the value of one writable property, given as what stands under the type's key. `path` names it in errors,
/// "body.properties.Name.title". Throws ApiError for a value that the API refuses.
PropertyChange readPropertyValue(Workspace &workspace, const PropertySchema &schema, const QJsonValue &value,
                                 const QString &path);

} // namespace korvo::sandbox
