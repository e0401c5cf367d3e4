#pragma once

#include "sandbox/Database.h"
#include "sandbox/Page.h"
#include "sandbox/PropertyWrite.h"

#include <QDateTime>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QRandomGenerator>
#include <QString>
#include <QStringList>

#include <functional>
#include <list>

namespace korvo::sandbox {

/// What the sample workspace holds: four databases of a freelancer's work, their rows and two users. Ids are the same
/// at each start. Tests may look at it and change it behind the API's back.
class Workspace {
public:
    /// Lays out the sample content around the time that `clock` gives, in its zone.
    explicit Workspace(std::function<QDateTime()> clock = &QDateTime::currentDateTime);

    QString clientsId() const;
    QString projectsId() const;
    QString tasksId() const;
    QString timeTrackerId() const;
    QString personId() const; ///< The user who made the content.
    QString botId() const;    ///< The user as which the API key acts.

    /// The fourteen names that a time tracker needs, keyed as Korvo keeps them.
    static QJsonObject fieldMapping();

    QDateTime now() const { return m_clock(); }

    const Database *database(const QString &id) const;         ///< Null if there is none of that id.
    const Page *page(const QString &id) const;                 ///< Null if there is none; pages in the trash are there.
    QList<const Page *> rows(const QString &databaseId) const; ///< Not in the trash, the newest first.
    QStringList relatedIds(const Page &page, const PropertySchema &relation) const; ///< Those not in the trash.
    QString titleOf(const Page &page) const;
    QJsonObject userJson(const QString &userId) const; ///< Full, or {object, id} for a stranger.
    QJsonObject meJson() const;                        ///< The answer of users/me, without request_id.

    /// The page object of a row, as an answer shows it; empty if there is no such page.
    QJsonObject pageById(const QString &id) const;
    /// The page objects of a database's rows, the newest first.
    QList<QJsonObject> pages(const QString &databaseId) const;
    /// The newest row with that title that is not in the trash; empty if there is none.
    QString findPage(const QString &databaseId, const QString &title) const;
    /// The Time Tracker rows whose Status is Running, the newest first.
    QStringList runningEntries() const;

    /// Adds a row with the written property values. Throws ApiError for values that the API refuses.
    QString createPage(const QString &databaseId, const QJsonObject &properties, bool isByApi = false);
    /// Writes one property in its written form, {"select": {"name": "Stopped"}}. Throws ApiError as the API refuses.
    void setProperty(const QString &pageId, const QString &property, const QJsonValue &value);
    /// Writes the properties, all or none. Throws ApiError as the API refuses.
    void updatePage(const QString &pageId, const QJsonObject &properties, bool isByApi = false);
    void setInTrash(const QString &pageId, bool isInTrash);
    void setIconAndCover(const QString &pageId, const QJsonValue &icon, const QJsonValue &cover);
    /// Takes the page away for good.
    void removePage(const QString &pageId);

    /// Starts a timer as from another device: a running entry from now on and the task marked running.
    /// Gives the entry's id, empty if no task has that name.
    QString startTimer(const QString &taskName);
    /// Stops all running timers as from another device.
    void stopTimers();

    /// Once the clock shows another day, moves the sample's tasks of today there, so that a demonstration that goes on
    /// past midnight still has some. Those that somebody has given another date stay. To be called before each request.
    void followTheDay();

    /// Gives a column another name, as a user may at any time. False if there is no such column.
    bool renameProperty(const QString &databaseId, const QString &from, const QString &to);
    /// Lets every call about the database fail as after a second data source was added to it.
    void setManyDataSources(const QString &databaseId, bool hasMany);

    /// For laying out content: adds a database as it is.
    void addDatabase(Database database);
    /// For laying out content: makes a page look as if made then.
    void setCreatedTime(const QString &pageId, const QDateTime &time);
    /// For laying out content: makes a task one of those that follow the day.
    void keepOnToday(const QString &taskId) { m_keptOnToday.append(taskId); }
    QRandomGenerator &random() { return m_random; }

private:
    Page *mutablePage(const QString &id);
    Database *mutableDatabase(const QString &id);
    void apply(Page &page, const QList<PropertyChange> &changes, bool isByApi);
    void setRelation(Page &page, const PropertySchema &relation, const QStringList &ids);

    std::function<QDateTime()> m_clock;
    QRandomGenerator m_random;
    std::list<Database> m_databases; ///< A list, so that addresses stay.
    QHash<QString, Page> m_pages;
    qint64 m_nextSequence = 1;
    QDate m_today; ///< On which the tasks below are.
    QStringList m_keptOnToday;
};

} // namespace korvo::sandbox
