#pragma once

#include "sandbox/HttpMessage.h"

#include <QJsonObject>

namespace korvo::sandbox {

class SandboxServer;

/// True for a request that is for the server itself and not for the API: its path begins with /sandbox/.
bool isControlRequest(const Request &request);

/// Answers a control request, for which no key is needed. What there is tells `controlHelp`.
Reply handleControl(SandboxServer &server, const Request &request);

/// The control paths and the members of a fault, for a person.
const char *controlHelp();

/// What a client needs to know: port, file of the authority, key, ids of the databases and the field mapping.
QJsonObject serverInfo(SandboxServer &server);

} // namespace korvo::sandbox
