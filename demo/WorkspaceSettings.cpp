#include "WorkspaceSettings.h"

#include "Models/FieldMapping.h"
#include "Platform/UserDefaults.h"
#include "Services/CurlTransport.h"

#include <QJsonDocument>

namespace korvo::demo {

using namespace Qt::StringLiterals;

void storeSettings(UserDefaults &defaults, const QJsonObject &workspace, double pollSeconds)
{
    const auto mapping = QJsonDocument(workspace["fieldMapping"_L1].toObject()).toJson(QJsonDocument::Compact);
    defaults.set({{u"apiKey"_s, workspace["apiKey"_L1].toString()},
                  {u"timeTrackerDBId"_s, workspace["timeTrackerDBId"_L1].toString()},
                  {u"tasksDBId"_s, workspace["tasksDBId"_L1].toString()},
                  {u"pollIntervalActive"_s, pollSeconds},
                  {u"pollIntervalIdle"_s, pollSeconds},
                  {u"fieldMapping"_s, mapping}});
}

void redirectRequests(const QJsonObject &workspace)
{
    CurlTransport::shared().redirectHost(u"api.notion.com"_s, u"127.0.0.1"_s, quint16(workspace["port"_L1].toInt()),
                                         workspace["caFile"_L1].toString());
}

} // namespace korvo::demo
