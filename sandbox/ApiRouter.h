#pragma once

#include "sandbox/HttpMessage.h"

#include <QString>

namespace korvo::sandbox {

class Workspace;

/// Answers requests as the Notion REST API of version 2022-06-28 does, for six operations: users/me, and getting and
/// querying a database, getting, making and changing a page.
class ApiRouter {
public:
    explicit ApiRouter(Workspace &workspace) : m_workspace(workspace) { } ///< It must outlive the router.

    void setApiKey(const QString &key) { m_apiKey = key; }
    QString apiKey() const { return m_apiKey; }

    /// Does what the request asks for and gives the answer to it.
    Reply handle(const Request &request);

private:
    Workspace &m_workspace;
    QString m_apiKey = QStringLiteral("ntn_sandbox");
};

} // namespace korvo::sandbox
