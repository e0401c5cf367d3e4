#include "sandbox/SampleSchema.h"

#include "sandbox/Database.h"
#include "sandbox/DateText.h"
#include "sandbox/Uuid.h"
#include "sandbox/Workspace.h"

using namespace Qt::StringLiterals;

namespace korvo::sandbox {

// Short ids with characters that need percent-encoding, as the API makes them.
const QString sampleproperty::entryTask = u"tk]W"_s;
const QString sampleproperty::entryStart = u"?B:s"_s;
const QString sampleproperty::entryEnd = u"~aE@"_s;
const QString sampleproperty::entryStatus = u"hlY="_s;
const QString sampleproperty::taskDate = u"AtP]"_s;
const QString sampleproperty::taskTimer = u"gY{P"_s;

namespace {

const QString parentPage = u"5c1d7f28-94ab-4e60-b3d2-7a1f08c6e95b"_s;

const QString clientProjects = u"Ur]X"_s;
const QString projectClient = u"v_]<"_s;
const QString projectTasks = u"iywx"_s;
const QString taskProject = u"rulX"_s;
const QString taskEntries = u"dDR;"_s;
const QString entryMinutes = u"jeun"_s;
const QString noId = u"00000000-0000-0000-0000-000000000000"_s;

PropertySchema property(const QString &id, const QString &name, PropertyType type)
{
    PropertySchema schema;
    schema.id = id;
    schema.name = name;
    schema.type = type;
    return schema;
}

PropertySchema title(const QString &name)
{
    return property(u"title"_s, name, PropertyType::title);
}

PropertySchema number(const QString &id, const QString &name, const QString &format)
{
    PropertySchema schema = property(id, name, PropertyType::number);
    schema.numberFormat = format;
    return schema;
}

PropertySchema options(Workspace &workspace, PropertySchema schema, const QList<std::pair<QString, QString>> &items)
{
    for (const auto &[name, color] : items)
        schema.options.append({.id = newRandomId(workspace.random()), .name = name, .color = color});
    return schema;
}

PropertySchema relation(const QString &id, const QString &name, const QString &databaseId, const QString &syncedId)
{
    PropertySchema schema = property(id, name, PropertyType::relation);
    schema.relatedDatabaseId = databaseId;
    schema.syncedPropertyId = syncedId;
    return schema;
}

PropertySchema rollup(const QString &id, const QString &name, const QString &relationId, const QString &sourceId,
                      const QString &function)
{
    PropertySchema schema = property(id, name, PropertyType::rollup);
    schema.relationPropertyId = relationId;
    schema.rolledUpPropertyId = sourceId;
    schema.function = function;
    return schema;
}

QString formulaReference(const QString &propertyId, const QString &dataSourceId)
{
    return u"{{notion:block_property:%1:%2:%3}}"_s.arg(encodedPropertyId(propertyId), noId, dataSourceId);
}

/// Whole minutes from Start to End; null while either is missing.
QJsonObject minutesOf(const Page &page)
{
    const auto start = parseDateText(page.values.value(sampleproperty::entryStart)[u"start"_s].toString());
    const auto end = parseDateText(page.values.value(sampleproperty::entryEnd)[u"start"_s].toString());
    QJsonValue minutes;
    if (start && end)
        minutes = start->instant().secsTo(end->instant()) / 60;
    return {{u"type"_s, u"number"_s}, {u"number"_s, minutes}};
}

Database database(Workspace &workspace, const QString &id, const QString &name, const QString &icon,
                  const QString &description)
{
    Database database;
    database.id = id;
    database.dataSourceId = newPageId(workspace.random());
    database.title = name;
    database.description = description;
    database.icon = icon;
    database.parentPageId = parentPage;
    database.createdTime = workspace.now().addMonths(-14);
    database.lastEditedTime = workspace.now().addDays(-9);
    return database;
}

Database clients(Workspace &workspace)
{
    Database clients = database(workspace, workspace.clientsId(), u"Clients"_s, u"🤝"_s, {});
    clients.properties = {
        property(u"wua?"_s, u"Email"_s, PropertyType::email),
        property(u"?~\\w"_s, u"Phone"_s, PropertyType::phoneNumber),
        property(u"CWCZ"_s, u"Website"_s, PropertyType::url),
        property(u"?B:W"_s, u"Notes"_s, PropertyType::richText),
        number(u"N|gI"_s, u"Hourly rate"_s, u"euro"_s),
        property(u"LGzq"_s, u"Retainer"_s, PropertyType::checkbox),
        property(u"?bAF"_s, u"Contract"_s, PropertyType::files),
        relation(clientProjects, u"Projects"_s, workspace.projectsId(), projectClient),
        title(u"Name"_s),
    };
    return clients;
}

Database projects(Workspace &workspace)
{
    Database projects = database(workspace, workspace.projectsId(), u"Projects"_s, u"📁"_s, {});
    PropertySchema id = property(u"wQ>y"_s, u"ID"_s, PropertyType::uniqueId);
    id.uniqueIdPrefix = u"PRJ"_s;
    projects.properties = {
        relation(projectClient, u"Client"_s, workspace.clientsId(), clientProjects),
        relation(projectTasks, u"Tasks"_s, workspace.tasksId(), taskProject),
        rollup(u"WYH:"_s, u"Task count"_s, projectTasks, u"title"_s, u"count"_s),
        options(workspace, property(u"RIfI"_s, u"Tags"_s, PropertyType::multiSelect),
                {{u"Design"_s, u"purple"_s}, {u"Development"_s, u"blue"_s}, {u"Print"_s, u"yellow"_s}}),
        property(u"uUxQ"_s, u"Deadline"_s, PropertyType::date),
        property(u"~ak@"_s, u"Lead"_s, PropertyType::people),
        property(u"Bx^y"_s, u"Created by"_s, PropertyType::createdBy),
        id,
        title(u"Name"_s),
    };
    return projects;
}

Database tasks(Workspace &workspace)
{
    Database tasks = database(workspace, workspace.tasksId(), u"Tasks"_s, u"✅"_s, u"What is to be done, by day."_s);
    PropertySchema priority = options(workspace, property(u"MNV~"_s, u"Priority"_s, PropertyType::status),
                                      {{u"Normal"_s, u"default"_s}, {u"High"_s, u"red"_s}, {u"Done"_s, u"green"_s}});
    const QStringList groups{u"To-do"_s, u"In progress"_s, u"Complete"_s};
    const QStringList colors{u"gray"_s, u"blue"_s, u"green"_s};
    for (qsizetype i = 0; i < groups.size(); ++i) {
        priority.groups.append({.id = newRandomId(workspace.random()),
                                .name = groups[i],
                                .color = colors[i],
                                .optionIds = {priority.options[i].id}});
    }
    tasks.properties = {
        property(sampleproperty::taskDate, u"Date"_s, PropertyType::date),
        options(workspace, property(sampleproperty::taskTimer, u"Timer"_s, PropertyType::select),
                {{u"Running"_s, u"green"_s}, {u"Stopped"_s, u"gray"_s}}),
        priority,
        relation(taskProject, u"Project"_s, workspace.projectsId(), projectTasks),
        relation(taskEntries, u"Entries"_s, workspace.timeTrackerId(), sampleproperty::entryTask),
        rollup(u"f{~?"_s, u"Total minutes"_s, taskEntries, entryMinutes, u"sum"_s),
        rollup(u"ts\\a"_s, u"Last tracked"_s, taskEntries, sampleproperty::entryStart, u"latest_date"_s),
        number(u"dqam"_s, u"Estimate (h)"_s, u"number"_s),
        property(u"Z~ZY"_s, u"Notes"_s, PropertyType::richText),
        property(u"ImzP"_s, u"Start now"_s, PropertyType::button),
        property(u"MU];"_s, u"Where"_s, PropertyType::place),
        property(u"~e?^"_s, u"Last edited by"_s, PropertyType::lastEditedBy),
        title(u"Name"_s),
    };
    return tasks;
}

Database timeTracker(Workspace &workspace)
{
    Database timeTracker = database(workspace, workspace.timeTrackerId(), u"Time Tracker"_s, u"⏱️"_s, {});
    PropertySchema minutes = property(entryMinutes, u"Minutes"_s, PropertyType::formula);
    minutes.expression = u"dateBetween(%1, %2, \"minutes\")"_s.arg(
        formulaReference(sampleproperty::entryEnd, timeTracker.dataSourceId),
        formulaReference(sampleproperty::entryStart, timeTracker.dataSourceId));
    minutes.formula = [](const Workspace &, const Page &page) { return minutesOf(page); };
    timeTracker.properties = {
        relation(sampleproperty::entryTask, u"Task"_s, workspace.tasksId(), taskEntries),
        property(sampleproperty::entryStart, u"Start"_s, PropertyType::date),
        property(sampleproperty::entryEnd, u"End"_s, PropertyType::date),
        options(workspace, property(sampleproperty::entryStatus, u"Status"_s, PropertyType::select),
                {{u"Running"_s, u"green"_s}, {u"Stopped"_s, u"gray"_s}}),
        minutes,
        rollup(u"Ss\\W"_s, u"Task name"_s, sampleproperty::entryTask, u"title"_s, u"show_original"_s),
        property(u"kRv{"_s, u"Created"_s, PropertyType::createdTime),
        property(u"kX?w"_s, u"Edited"_s, PropertyType::lastEditedTime),
        title(u"Name"_s),
    };
    return timeTracker;
}

} // namespace

void addSampleDatabases(Workspace &workspace)
{
    for (auto *make : {&clients, &projects, &tasks, &timeTracker})
        workspace.addDatabase(make(workspace));
}

} // namespace korvo::sandbox
