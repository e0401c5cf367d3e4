#include "sandbox/Workspace.h"

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

const QString personUserId = u"3f0c5e1a-7d24-4b86-9a51-c2e8d90b7f13"_s;
const QString botUserId = u"b7a2d4c8-1e93-4f57-8c06-5d3e9fa1b260"_s;
const QString workspaceUuid = u"e4d19b70-62fa-4c3d-9b85-08a7c1f5d2e6"_s;

const QString clientsUuid = u"1f4c9a70-3e5b-81d2-9a06-c84b7d21f0e3"_s;
const QString projectsUuid = u"2b8e61d4-70af-813c-8d59-1e6fa3c07b92"_s;
const QString tasksUuid = u"3d07f5b2-c41e-81a9-b7f8-95d20c6e4a1b"_s;
const QString timeTrackerUuid = u"4e92ac16-8d7f-8150-a3c4-6b0f1d8e72c5"_s;

} // namespace

QString Workspace::clientsId() const
{
    return clientsUuid;
}

QString Workspace::projectsId() const
{
    return projectsUuid;
}

QString Workspace::tasksId() const
{
    return tasksUuid;
}

QString Workspace::timeTrackerId() const
{
    return timeTrackerUuid;
}

QJsonObject Workspace::fieldMapping()
{
    return {{u"ttTaskRelation"_s, u"Task"_s},
            {u"ttStartTime"_s, u"Start"_s},
            {u"ttEndTime"_s, u"End"_s},
            {u"ttStatus"_s, u"Status"_s},
            {u"ttStatusRunning"_s, u"Running"_s},
            {u"ttStatusStopped"_s, u"Stopped"_s},
            {u"taskName"_s, u"Name"_s},
            {u"taskDate"_s, u"Date"_s},
            {u"taskTimerStatus"_s, u"Timer"_s},
            {u"taskTimerStatusRunning"_s, u"Running"_s},
            {u"taskTimerStatusStopped"_s, u"Stopped"_s},
            {u"taskProjectRelation"_s, u"Project"_s},
            {u"projectClientRelation"_s, u"Client"_s},
            {u"taskTotalTimeRollup"_s, u"Total minutes"_s}};
}

QString Workspace::personId() const
{
    return personUserId;
}

QString Workspace::botId() const
{
    return botUserId;
}

QJsonObject Workspace::userJson(const QString &userId) const
{
    QJsonObject user{{u"object"_s, u"user"_s}, {u"id"_s, userId}};
    if (userId == personUserId) {
        user.insert(u"name"_s, u"Robin Vale"_s);
        user.insert(u"avatar_url"_s, QJsonValue());
        user.insert(u"type"_s, u"person"_s);
        user.insert(u"person"_s, QJsonObject{{u"email"_s, u"robin@example.com"_s}});
    } else if (userId == botUserId) {
        user.insert(u"name"_s, u"Korvo"_s);
        user.insert(u"avatar_url"_s, QJsonValue());
        user.insert(u"type"_s, u"bot"_s);
        user.insert(u"bot"_s, QJsonObject());
    }
    return user;
}

QJsonObject Workspace::meJson() const
{
    QJsonObject me = userJson(botUserId);
    me.insert(u"bot"_s,
              QJsonObject{{u"owner"_s, QJsonObject{{u"type"_s, u"workspace"_s}, {u"workspace"_s, true}}},
                          {u"workspace_name"_s, u"Vale Studio"_s},
                          {u"workspace_id"_s, workspaceUuid},
                          {u"workspace_limits"_s, QJsonObject{{u"max_file_upload_size_in_bytes"_s, 5242880}}}});
    return me;
}

} // namespace korvo::sandbox
