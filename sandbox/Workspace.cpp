#include "sandbox/Workspace.h"

#include "sandbox/ApiError.h"
#include "sandbox/PropertyJson.h"
#include "sandbox/RichText.h"
#include "sandbox/SampleRows.h"
#include "sandbox/SampleSchema.h"
#include "sandbox/Uuid.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

constexpr quint32 idSeed = 20220628; ///< A fixed one, so that ids are the same at each start.

QJsonObject optionValue(const QString &type, const QString &name)
{
    return {{type, QJsonObject{{u"name"_s, name}}}};
}

QJsonObject dateValue(const QDateTime &time)
{
    return {{u"date"_s, QJsonObject{{u"start"_s, time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate)}}}};
}

} // namespace

Workspace::Workspace(std::function<QDateTime()> clock) :
    m_clock(std::move(clock)),
    m_random(idSeed),
    m_today(now().date())
{
    addSampleDatabases(*this);
    addSampleRows(*this);
}

const Database *Workspace::database(const QString &id) const
{
    const auto it = std::ranges::find(m_databases, id, &Database::id);
    return it == m_databases.end() ? nullptr : &*it;
}

Database *Workspace::mutableDatabase(const QString &id)
{
    const auto it = std::ranges::find(m_databases, id, &Database::id);
    return it == m_databases.end() ? nullptr : &*it;
}

const Page *Workspace::page(const QString &id) const
{
    const auto it = m_pages.constFind(id);
    return it == m_pages.constEnd() ? nullptr : &*it;
}

Page *Workspace::mutablePage(const QString &id)
{
    const auto it = m_pages.find(id);
    return it == m_pages.end() ? nullptr : &*it;
}

QList<const Page *> Workspace::rows(const QString &databaseId) const
{
    QList<const Page *> rows;
    for (const Page &page : m_pages) {
        if (page.databaseId == databaseId && !page.isInTrash)
            rows.append(&page);
    }
    std::ranges::sort(rows, [](const Page *a, const Page *b) {
        return std::pair(a->createdTime, a->sequence) > std::pair(b->createdTime, b->sequence);
    });
    return rows;
}

QStringList Workspace::relatedIds(const Page &page, const PropertySchema &relation) const
{
    QStringList ids;
    for (const QJsonValue &id : page.values.value(relation.id).toArray()) {
        const Page *related = this->page(id.toString());
        if (related && !related->isInTrash)
            ids.append(related->id);
    }
    return ids;
}

QString Workspace::titleOf(const Page &page) const
{
    const Database *database = this->database(page.databaseId);
    const PropertySchema *title = database ? database->titleProperty() : nullptr;
    return title ? plainText(page.values.value(title->id).toArray()) : QString();
}

QJsonObject Workspace::pageById(const QString &id) const
{
    const Page *page = this->page(id);
    return page ? pageJson(*this, *page) : QJsonObject();
}

QList<QJsonObject> Workspace::pages(const QString &databaseId) const
{
    QList<QJsonObject> pages;
    for (const Page *page : rows(databaseId))
        pages.append(pageJson(*this, *page));
    return pages;
}

QString Workspace::findPage(const QString &databaseId, const QString &title) const
{
    for (const Page *page : rows(databaseId)) {
        if (titleOf(*page) == title)
            return page->id;
    }
    return {};
}

QString Workspace::createPage(const QString &databaseId, const QJsonObject &properties, bool isByApi)
{
    Database *database = mutableDatabase(databaseId);
    if (!database)
        throw notFoundError(u"database"_s, databaseId);
    const QList<PropertyChange> changes = readProperties(*this, *database, properties);
    Page page;
    page.id = newPageId(m_random);
    page.databaseId = databaseId;
    page.createdTime = now();
    page.createdById = isByApi ? botId() : personId();
    page.sequence = m_nextSequence++;
    for (const Page &other : std::as_const(m_pages)) {
        if (other.databaseId == databaseId)
            page.number = std::max(page.number, other.number);
    }
    ++page.number;
    for (const PropertySchema &schema : database->properties) {
        // A status has a value from the start, the first of its options.
        if (schema.type == PropertyType::status && !schema.options.isEmpty())
            page.values.insert(schema.id, schema.options.first().id);
    }
    const QString id = page.id;
    m_pages.insert(id, page);
    apply(*mutablePage(id), changes, isByApi);
    return id;
}

void Workspace::setProperty(const QString &pageId, const QString &property, const QJsonValue &value)
{
    updatePage(pageId, QJsonObject{{property, value}});
}

void Workspace::updatePage(const QString &pageId, const QJsonObject &properties, bool isByApi)
{
    Page *page = mutablePage(pageId);
    if (!page)
        throw notFoundError(u"page"_s, pageId);
    const QList<PropertyChange> changes = readProperties(*this, *database(page->databaseId), properties);
    apply(*page, changes, isByApi);
}

void Workspace::apply(Page &page, const QList<PropertyChange> &changes, bool isByApi)
{
    Database *database = mutableDatabase(page.databaseId);
    for (const PropertyChange &change : changes) {
        const auto schema = std::ranges::find(database->properties, change.propertyId, &PropertySchema::id);
        schema->options += change.newOptions;
        if (schema->type == PropertyType::relation) {
            QStringList ids;
            for (const QJsonValue &id : change.stored.toArray())
                ids.append(id.toString());
            setRelation(page, *schema, ids);
        } else {
            page.values.insert(change.propertyId, change.stored);
        }
    }
    page.lastEditedTime = now();
    page.lastEditedById = isByApi ? botId() : personId();
}

void Workspace::setRelation(Page &page, const PropertySchema &relation, const QStringList &ids)
{
    const QJsonArray before = page.values.value(relation.id).toArray();
    const QJsonArray after = QJsonArray::fromStringList(ids);
    page.values.insert(relation.id, after);
    if (relation.syncedPropertyId.isEmpty())
        return;
    const auto changeOtherSide = [&](const QJsonValue &id, bool isRelated) {
        Page *other = mutablePage(id.toString());
        if (!other)
            return;
        QJsonArray back = other->values.value(relation.syncedPropertyId).toArray();
        const auto it = std::find(back.begin(), back.end(), QJsonValue(page.id));
        if (isRelated && it == back.end())
            back.append(page.id);
        else if (!isRelated && it != back.end())
            back.erase(it);
        other->values.insert(relation.syncedPropertyId, back);
    };
    for (const QJsonValue &id : before) {
        if (!after.contains(id))
            changeOtherSide(id, false);
    }
    for (const QJsonValue &id : after)
        changeOtherSide(id, true);
}

void Workspace::setInTrash(const QString &pageId, bool isInTrash)
{
    if (Page *page = mutablePage(pageId)) {
        page->isInTrash = isInTrash;
        page->lastEditedTime = now();
    }
}

void Workspace::setIconAndCover(const QString &pageId, const QJsonValue &icon, const QJsonValue &cover)
{
    if (Page *page = mutablePage(pageId)) {
        page->icon = icon;
        page->cover = cover;
        page->lastEditedTime = now();
    }
}

void Workspace::removePage(const QString &pageId)
{
    m_pages.remove(pageId);
}

QStringList Workspace::runningEntries() const
{
    const PropertySchema *status = database(timeTrackerId())->propertyById(sampleproperty::entryStatus);
    QStringList ids;
    for (const Page *page : rows(timeTrackerId())) {
        if (propertyValue(*this, *page, *status)[u"name"_s] == "Running"_L1)
            ids.append(page->id);
    }
    return ids;
}

QString Workspace::startTimer(const QString &taskName)
{
    const QString taskId = findPage(tasksId(), taskName);
    if (taskId.isEmpty())
        return {};
    updatePage(taskId, {{sampleproperty::taskTimer, optionValue(u"select"_s, u"Running"_s)}});
    return createPage(
        timeTrackerId(),
        {{u"title"_s, QJsonObject{{u"title"_s, QJsonArray{textRun(taskName)}}}},
         {sampleproperty::entryTask, QJsonObject{{u"relation"_s, QJsonArray{QJsonObject{{u"id"_s, taskId}}}}}},
         {sampleproperty::entryStart, dateValue(now())},
         {sampleproperty::entryStatus, optionValue(u"select"_s, u"Running"_s)}});
}

void Workspace::stopTimers()
{
    const PropertySchema *task = database(timeTrackerId())->propertyById(sampleproperty::entryTask);
    for (const QString &id : runningEntries()) {
        updatePage(id,
                   {{sampleproperty::entryEnd, dateValue(now())},
                    {sampleproperty::entryStatus, optionValue(u"select"_s, u"Stopped"_s)}});
        for (const QString &taskId : relatedIds(*page(id), *task))
            updatePage(taskId, {{sampleproperty::taskTimer, optionValue(u"select"_s, u"Stopped"_s)}});
    }
}

void Workspace::followTheDay()
{
    const QDate today = now().date();
    if (today == m_today)
        return;
    const QString before = m_today.toString(Qt::ISODate);
    m_keptOnToday.removeIf([&](const QString &id) {
        Page *task = mutablePage(id);
        QJsonObject date = task ? task->values.value(sampleproperty::taskDate).toObject() : QJsonObject();
        if (date[u"start"_s] != before || !date[u"end"_s].isNull())
            return true; // It has a date that somebody chose, or is gone.
        date[u"start"_s] = today.toString(Qt::ISODate);
        task->values.insert(sampleproperty::taskDate, date);
        return false;
    });
    m_today = today;
}

bool Workspace::renameProperty(const QString &databaseId, const QString &from, const QString &to)
{
    Database *database = mutableDatabase(databaseId);
    if (!database)
        return false;
    const auto schema = std::ranges::find(database->properties, from, &PropertySchema::name);
    if (schema == database->properties.end())
        return false;
    schema->name = to;
    return true;
}

void Workspace::setManyDataSources(const QString &databaseId, bool hasMany)
{
    if (Database *database = mutableDatabase(databaseId))
        database->hasManyDataSources = hasMany;
}

void Workspace::addDatabase(Database database)
{
    m_databases.push_back(std::move(database));
}

void Workspace::setCreatedTime(const QString &pageId, const QDateTime &time)
{
    if (Page *page = mutablePage(pageId)) {
        page->createdTime = time;
        page->lastEditedTime = time;
    }
}

} // namespace korvo::sandbox
