#include "sandbox/SampleRows.h"

#include "sandbox/RichText.h"
#include "sandbox/Workspace.h"

#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

QJsonObject titleValue(const QString &text)
{
    return {{u"title"_s, richText(text)}};
}

QJsonObject textValue(const QString &text)
{
    return {{u"rich_text"_s, richText(text)}};
}

QJsonObject option(const QString &type, const QString &name)
{
    return {{type, QJsonObject{{u"name"_s, name}}}};
}

QJsonObject related(const QString &id)
{
    return {{u"relation"_s, QJsonArray{QJsonObject{{u"id"_s, id}}}}};
}

QJsonObject plain(const QString &type, const QJsonValue &value)
{
    return {{type, value}};
}

QJsonObject day(const QDate &date)
{
    return {{u"date"_s, QJsonObject{{u"start"_s, date.toString(Qt::ISODate)}}}};
}

QJsonObject minute(const QDateTime &time)
{
    return {{u"date"_s, QJsonObject{{u"start"_s, time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate)}}}};
}

struct Client {
    QString name, email, phone, website, notes;
    int rate;
    bool isRetainer;
};

void addClients(Workspace &workspace)
{
    const QList<Client> clients{
        {u"Café Lindenhof"_s, u"hello@lindenhof.example"_s, u"+49 30 5550 1420"_s, u"https://lindenhof.example/"_s,
         u"Invoices at the end of the month."_s, 85, true},
        {u"Nordlicht Verlag"_s, u"herstellung@nordlicht.example"_s, u"+49 40 5550 2277"_s,
         u"https://nordlicht.example/"_s, u"Ask for Jule in production."_s, 90, false},
        {u"Harbour & Pine"_s,
         u"studio@harbourpine.example"_s,
         u"+44 20 5550 0318"_s,
         u"https://harbourpine.example/"_s,
         {},
         95,
         true},
        {u"Vélo Atelier"_s, u"contact@velo-atelier.example"_s, u"+33 1 55 50 04 21"_s,
         u"https://velo-atelier.example/"_s, u"Prefers calls in the morning."_s, 80, false},
    };
    for (const Client &client : clients) {
        const QString id = workspace.createPage(workspace.clientsId(),
                                                {{u"Name"_s, titleValue(client.name)},
                                                 {u"Email"_s, plain(u"email"_s, client.email)},
                                                 {u"Phone"_s, plain(u"phone_number"_s, client.phone)},
                                                 {u"Website"_s, plain(u"url"_s, client.website)},
                                                 {u"Notes"_s, textValue(client.notes)},
                                                 {u"Hourly rate"_s, plain(u"number"_s, client.rate)},
                                                 {u"Retainer"_s, plain(u"checkbox"_s, client.isRetainer)}});
        if (client.isRetainer) {
            const QJsonObject file{{u"name"_s, u"Contract.pdf"_s},
                                   {u"external"_s, QJsonObject{{u"url"_s, client.website + u"contract.pdf"_s}}}};
            workspace.setProperty(id, u"Contract"_s, plain(u"files"_s, QJsonArray{file}));
        }
        workspace.setCreatedTime(id, workspace.now().addMonths(-11));
    }
}

struct Project {
    QString name, client;
    QStringList tags;
    int daysToDeadline;
};

void addProjects(Workspace &workspace)
{
    const QList<Project> projects{
        {u"Website relaunch"_s, u"Café Lindenhof"_s, {u"Design"_s, u"Development"_s}, 24},
        {u"Menu and signage"_s, u"Café Lindenhof"_s, {u"Design"_s, u"Print"_s}, 11},
        {u"Autumn catalogue"_s, u"Nordlicht Verlag"_s, {u"Print"_s}, 6},
        {u"Shop front end"_s, u"Harbour & Pine"_s, {u"Development"_s}, 45},
        {u"Brand refresh"_s, u"Harbour & Pine"_s, {u"Design"_s}, 60},
        {u"Booking app"_s, u"Vélo Atelier"_s, {u"Design"_s, u"Development"_s}, 33},
    };
    for (const Project &project : projects) {
        QJsonArray tags;
        for (const QString &tag : project.tags)
            tags.append(QJsonObject{{u"name"_s, tag}});
        const QJsonArray lead{QJsonObject{{u"id"_s, workspace.personId()}}};
        const QString id
            = workspace.createPage(workspace.projectsId(),
                                   {{u"Name"_s, titleValue(project.name)},
                                    {u"Client"_s, related(workspace.findPage(workspace.clientsId(), project.client))},
                                    {u"Tags"_s, plain(u"multi_select"_s, tags)},
                                    {u"Lead"_s, plain(u"people"_s, lead)},
                                    {u"Deadline"_s, day(workspace.now().date().addDays(project.daysToDeadline))}});
        workspace.setCreatedTime(id, workspace.now().addMonths(-4));
    }
}

struct Task {
    QString name, project, priority;
    int daysFromToday;
    double estimate;
};

void addTasks(Workspace &workspace)
{
    const QList<Task> tasks{
        {u"Archive the old photos"_s, u"Website relaunch"_s, u"Done"_s, -6, 1},
        {u"Kick-off notes"_s, u"Booking app"_s, u"Done"_s, -3, 0.5},
        {u"Pick paper samples"_s, u"Menu and signage"_s, u"Normal"_s, 1, 1},
        {u"Prepare the workshop"_s, u"Brand refresh"_s, u"Normal"_s, 3, 4},
        {u"Answer the printer"_s, u"Autumn catalogue"_s, u"Normal"_s, 0, 0.5},
        {u"Draw the booking calendar"_s, u"Booking app"_s, u"High"_s, 0, 3},
        {u"Fix the basket on small screens"_s, u"Shop front end"_s, u"High"_s, 0, 2},
        {u"Review product texts"_s, u"Shop front end"_s, u"Normal"_s, 0, 1.5},
        {u"Menu board, second draft"_s, u"Menu and signage"_s, u"Normal"_s, 0, 2},
        {u"Colour proofs for the cover"_s, u"Autumn catalogue"_s, u"High"_s, 0, 1},
        {u"Invoices for the month"_s, {}, u"Normal"_s, 0, 1},
        {u"Home page layout"_s, u"Website relaunch"_s, u"High"_s, 0, 6},
    };
    const QDateTime now = workspace.now();
    int age = static_cast<int>(tasks.size());
    for (const Task &task : tasks) {
        QJsonObject properties{{u"Name"_s, titleValue(task.name)},
                               {u"Date"_s, day(now.date().addDays(task.daysFromToday))},
                               {u"Priority"_s, option(u"status"_s, task.priority)},
                               {u"Estimate (h)"_s, plain(u"number"_s, task.estimate)}};
        if (!task.project.isEmpty())
            properties.insert(u"Project"_s, related(workspace.findPage(workspace.projectsId(), task.project)));
        const QString id = workspace.createPage(workspace.tasksId(), properties);
        workspace.setCreatedTime(id, now.addDays(-7).addSecs(-600 * age--));
        if (task.daysFromToday == 0)
            workspace.keepOnToday(id);
    }
}

struct Entry {
    QString task;
    int minutesAgo, minutes;
};

/// Marks the task as the program leaves it after a stop, or as running.
void addEntry(Workspace &workspace, const QString &taskName, const QDateTime &start,
              const std::optional<QDateTime> &end)
{
    const QString task = workspace.findPage(workspace.tasksId(), taskName);
    const QString status = end ? u"Stopped"_s : u"Running"_s;
    QJsonObject properties{{u"Name"_s, titleValue(taskName)},
                           {u"Task"_s, related(task)},
                           {u"Start"_s, minute(start)},
                           {u"Status"_s, option(u"select"_s, status)}};
    if (end)
        properties.insert(u"End"_s, minute(*end));
    const QString id = workspace.createPage(workspace.timeTrackerId(), properties);
    const QDateTime taskCreated = workspace.page(task)->createdTime;
    workspace.setProperty(task, u"Timer"_s, option(u"select"_s, status));
    workspace.setCreatedTime(task, taskCreated);
    workspace.setCreatedTime(id, start);
}

void addEntries(Workspace &workspace)
{
    constexpr int dayMinutes = 24 * 60;
    const QList<Entry> entries{
        {u"Archive the old photos"_s, 6 * dayMinutes, 55},      {u"Home page layout"_s, 3 * dayMinutes + 130, 95},
        {u"Kick-off notes"_s, 3 * dayMinutes - 60, 35},         {u"Home page layout"_s, 2 * dayMinutes + 45, 120},
        {u"Draw the booking calendar"_s, dayMinutes + 200, 70}, {u"Home page layout"_s, dayMinutes + 60, 80},
        {u"Fix the basket on small screens"_s, 185, 48},        {u"Answer the printer"_s, 110, 25},
    };
    // Notion keeps whole minutes, so the start of the running timer is cut to the minute when it is written.
    const QDateTime now = workspace.now();
    for (const Entry &entry : entries) {
        const QDateTime start = now.addSecs(-60 * entry.minutesAgo);
        addEntry(workspace, entry.task, start, start.addSecs(60 * entry.minutes));
    }
    addEntry(workspace, u"Home page layout"_s, now.addSecs(-60 * 42), std::nullopt);
}

} // namespace

void addSampleRows(Workspace &workspace)
{
    addClients(workspace);
    addProjects(workspace);
    addTasks(workspace);
    addEntries(workspace);
}

} // namespace korvo::sandbox
