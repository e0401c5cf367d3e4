#include "Sandbox/JsonLiteral.h"
#include "Sandbox/SandboxClient.h"
#include "sandbox/RichText.h"
#include "sandbox/Workspace.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo::sandbox;

/// Filters, sorts and pages of a query.
class SandboxQueryTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void aFilterChoosesRows_data();
    void aFilterChoosesRows();
    void aFilterIsRefused_data();
    void aFilterIsRefused();
    void aFilterMayNameAPropertyByItsId();
    void relationFiltersLookAtTheRelatedPage();
    void peopleFiltersLookAtTheUser();
    void datesCompareByTheMinute_data();
    void datesCompareByTheMinute();
    void compoundsNestTwoDeep();
    void rowsComeNewestFirstWithoutSorts();
    void sortsHavePrecedence_data();
    void sortsHavePrecedence();
    void numbersInTextsSortByTheirValue();
    void aSortIsRefused_data();
    void aSortIsRefused();
    void pagesFollowOneAnotherByCursor();
    void aPageIsRefused_data();
    void aPageIsRefused();
    void rowsInTheTrashAreLeftOut();
    void anEmptyBodyGivesAllRows();
    void theTasksOfTodayFollowTheDay();
    void aTaskWhoseDateWasChangedDoesNotFollowTheDay_data();
    void aTaskWhoseDateWasChangedDoesNotFollowTheDay();

private:
    QStringList names(const QString &databaseId, const QJsonObject &body);
    QString databaseId(const QString &name) const;
    QStringList tasksOf(const QDate &day);
    /// Lets the content be laid out at half past eleven at night, and the time go on by hand.
    void startBeforeMidnight();

    QDateTime m_now;
    std::unique_ptr<SandboxServer> m_server;
    std::unique_ptr<SandboxClient> m_client;
};

void SandboxQueryTest::init()
{
    m_client.reset();
    m_server = std::make_unique<SandboxServer>();
    m_server->setClock([] { return QDateTime(QDate(2026, 11, 21), QTime(15, 30, 42), Qt::OffsetFromUTC, 3600); });
    QVERIFY2(m_server->listen(0, false), qPrintable(m_server->errorString()));
    m_client = std::make_unique<SandboxClient>(*m_server);
}

QString SandboxQueryTest::databaseId(const QString &name) const
{
    const Workspace &workspace = m_server->workspace();
    if (name == "Clients"_L1)
        return workspace.clientsId();
    if (name == "Projects"_L1)
        return workspace.projectsId();
    return name == "Tasks"_L1 ? workspace.tasksId() : workspace.timeTrackerId();
}

/// The titles of the rows of a query, or the message of its error.
QStringList SandboxQueryTest::names(const QString &databaseId, const QJsonObject &body)
{
    const ClientAnswer answer = m_client->query(databaseId, body);
    if (answer.status != 200)
        return {answer.message()};
    QStringList names;
    for (const QJsonValue &row : answer.results())
        names.append(row[u"properties"_s][u"Name"_s][u"title"_s][0][u"plain_text"_s].toString());
    return names;
}

/// The titles of that day's tasks, as the API answers them.
QStringList SandboxQueryTest::tasksOf(const QDate &day)
{
    const QJsonObject filter{{u"property"_s, u"Date"_s},
                             {u"date"_s, QJsonObject{{u"equals"_s, day.toString(Qt::ISODate)}}}};
    return names(databaseId(u"Tasks"_s), {{u"filter"_s, filter}});
}

void SandboxQueryTest::startBeforeMidnight()
{
    m_now = QDateTime(QDate(2026, 12, 31), QTime(23, 30), Qt::OffsetFromUTC, 3600);
    m_server->setClock([this] { return m_now; });
}

void SandboxQueryTest::aFilterChoosesRows_data()
{
    QTest::addColumn<QString>("database");
    QTest::addColumn<QByteArray>("filter");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *tag, const QString &database, const char *filter, const QString &expected) {
        QTest::newRow(tag) << database << QByteArray(filter)
                           << (expected.isEmpty() ? QStringList() : expected.split(u"; "_s));
    };
    const QString clients = u"Clients"_s;
    const QString projects = u"Projects"_s;
    const QString tasks = u"Tasks"_s;
    const QString entries = u"Time Tracker"_s;
    row("title equals, in any case", clients, "{'property':'Name','title':{'equals':'café LINDENHOF'}}",
        u"Café Lindenhof"_s);
    row("title does not equal", clients, "{'property':'Name','title':{'does_not_equal':'Café Lindenhof'}}",
        u"Vélo Atelier; Harbour & Pine; Nordlicht Verlag"_s);
    row("title as rich text contains", clients, "{'property':'Name','rich_text':{'contains':'licht'}}",
        u"Nordlicht Verlag"_s);
    row("title does not contain", clients, "{'property':'Name','title':{'does_not_contain':'e'}}", QString());
    row("title starts with", clients, "{'property':'Name','title':{'starts_with':'harb'}}", u"Harbour & Pine"_s);
    row("title ends with", clients, "{'property':'Name','title':{'ends_with':'VERLAG'}}", u"Nordlicht Verlag"_s);
    row("rich text is empty", clients, "{'property':'Notes','rich_text':{'is_empty':true}}", u"Harbour & Pine"_s);
    row("rich text is not empty", clients, "{'property':'Notes','rich_text':{'is_not_empty':true}}",
        u"Vélo Atelier; Nordlicht Verlag; Café Lindenhof"_s);
    row("rich text does not contain keeps rows without text", clients,
        "{'property':'Notes','rich_text':{'does_not_contain':'Jule'}}",
        u"Vélo Atelier; Harbour & Pine; Café Lindenhof"_s);
    row("email contains", clients, "{'property':'Email','email':{'contains':'velo'}}", u"Vélo Atelier"_s);
    row("url as rich text contains", clients, "{'property':'Website','rich_text':{'contains':'pine'}}",
        u"Harbour & Pine"_s);
    row("phone number starts with", clients, "{'property':'Phone','phone_number':{'starts_with':'+33'}}",
        u"Vélo Atelier"_s);
    row("number equals", clients, "{'property':'Hourly rate','number':{'equals':90}}", u"Nordlicht Verlag"_s);
    row("number does not equal", clients, "{'property':'Hourly rate','number':{'does_not_equal':90}}",
        u"Vélo Atelier; Harbour & Pine; Café Lindenhof"_s);
    row("number greater than", clients, "{'property':'Hourly rate','number':{'greater_than':90}}", u"Harbour & Pine"_s);
    row("number less than or equal", clients, "{'property':'Hourly rate','number':{'less_than_or_equal_to':85}}",
        u"Vélo Atelier; Café Lindenhof"_s);
    row("number is empty", clients, "{'property':'Hourly rate','number':{'is_empty':true}}", QString());
    row("checkbox equals", clients, "{'property':'Retainer','checkbox':{'equals':true}}",
        u"Harbour & Pine; Café Lindenhof"_s);
    row("checkbox does not equal", clients, "{'property':'Retainer','checkbox':{'does_not_equal':true}}",
        u"Vélo Atelier; Nordlicht Verlag"_s);
    row("files is not empty", clients, "{'property':'Contract','files':{'is_not_empty':true}}",
        u"Harbour & Pine; Café Lindenhof"_s);
    row("select equals", entries, "{'property':'Status','select':{'equals':'Running'}}", u"Home page layout"_s);
    row("select is empty", tasks,
        "{'and':[{'property':'Timer','select':{'is_empty':true}},"
        "{'property':'Date','date':{'equals':'2026-11-21'}}]}",
        u"Invoices for the month; Colour proofs for the cover; Menu board, second draft; Review product texts"_s);
    row("select is not empty", tasks,
        "{'and':[{'property':'Timer','select':{'is_not_empty':true}},"
        "{'property':'Date','date':{'before':'2026-11-18'}}]}",
        u"Archive the old photos"_s);
    row("select does not equal keeps rows without a value", tasks,
        "{'and':[{'property':'Date','date':{'equals':'2026-11-21'}},"
        "{'property':'Timer','select':{'does_not_equal':'Running'}}]}",
        u"Invoices for the month; Colour proofs for the cover; Menu board, second draft; Review product texts; "
        "Fix the basket on small screens; Draw the booking calendar; Answer the printer"_s);
    row("status equals", tasks, "{'property':'Priority','status':{'equals':'Done'}}",
        u"Kick-off notes; Archive the old photos"_s);
    row("status does not equal", tasks,
        "{'and':[{'property':'Priority','status':{'does_not_equal':'Normal'}},"
        "{'property':'Date','date':{'on_or_after':'2026-11-21'}}]}",
        u"Home page layout; Colour proofs for the cover; Fix the basket on small screens; Draw the booking calendar"_s);
    row("multi-select contains", projects, "{'property':'Tags','multi_select':{'contains':'Print'}}",
        u"Autumn catalogue; Menu and signage"_s);
    row("multi-select does not contain", projects, "{'property':'Tags','multi_select':{'does_not_contain':'Design'}}",
        u"Shop front end; Autumn catalogue"_s);
    row("date equals", tasks, "{'property':'Date','date':{'equals':'2026-11-22'}}", u"Pick paper samples"_s);
    row("date before", tasks, "{'property':'Date','date':{'before':'2026-11-18'}}", u"Archive the old photos"_s);
    row("date after", tasks, "{'property':'Date','date':{'after':'2026-11-22'}}", u"Prepare the workshop"_s);
    row("date on or before", tasks, "{'property':'Date','date':{'on_or_before':'2026-11-18'}}",
        u"Kick-off notes; Archive the old photos"_s);
    row("date on or after", tasks, "{'property':'Date','date':{'on_or_after':'2026-11-22'}}",
        u"Prepare the workshop; Pick paper samples"_s);
    row("date in the next week", projects, "{'property':'Deadline','date':{'next_week':{}}}", u"Autumn catalogue"_s);
    row("date in the past week", tasks,
        "{'and':[{'property':'Date','date':{'past_week':{}}},{'property':'Date','date':{'before':'2026-11-21'}}]}",
        u"Kick-off notes; Archive the old photos"_s);
    row("date is empty", tasks, "{'property':'Date','date':{'is_empty':true}}", QString());
    row("a date-time equals a day", entries,
        "{'and':[{'property':'Start','date':{'equals':'2026-11-21'}},"
        "{'property':'Status','select':{'equals':'Stopped'}}]}",
        u"Answer the printer; Fix the basket on small screens"_s);
    row("end date is empty", entries, "{'property':'End','date':{'is_empty':true}}", u"Home page layout"_s);
    row("relation is empty", tasks, "{'property':'Project','relation':{'is_empty':true}}", u"Invoices for the month"_s);
    row("rollup number greater than", tasks, "{'property':'Total minutes','rollup':{'number':{'greater_than':100}}}",
        u"Home page layout"_s);
    row("rollup date before", tasks, "{'property':'Last tracked','rollup':{'date':{'before':'2026-11-17'}}}",
        u"Archive the old photos"_s);
    row("rollup any", entries, "{'property':'Task name','rollup':{'any':{'rich_text':{'contains':'printer'}}}}",
        u"Answer the printer"_s);
    row("formula number", entries, "{'property':'Minutes','formula':{'number':{'greater_than':90}}}",
        u"Home page layout; Home page layout"_s);
    row("unique id", projects, "{'property':'ID','unique_id':{'equals':3}}", u"Autumn catalogue"_s);
    row("created time of the page", tasks,
        "{'timestamp':'created_time','created_time':{'after':'2026-11-14T14:15:00+01:00'}}",
        u"Home page layout; Invoices for the month; Colour proofs for the cover; Menu board, second draft; "
        "Review product texts; Fix the basket on small screens; Draw the booking calendar"_s);
    row("created time property as date", entries,
        "{'property':'Created','date':{'on_or_after':'2026-11-21T14:48:00+01:00'}}", u"Home page layout"_s);
}

void SandboxQueryTest::aFilterChoosesRows()
{
    QFETCH(QString, database);
    QFETCH(QByteArray, filter);
    QTEST(names(databaseId(database), {{u"filter"_s, json(filter.constData())}}), "expected");
}

void SandboxQueryTest::aFilterIsRefused_data()
{
    QTest::addColumn<QByteArray>("filter");
    QTest::addColumn<QString>("message");
    const QString mismatch = u"The property type in the database does not match the property type of the filter "
                             "provided: database property %1 does not match filter %2"_s;
    QTest::newRow("status filter on a select column")
        << "{'property':'Timer','status':{'equals':'Running'}}"_ba << mismatch.arg(u"select"_s, u"status"_s);
    QTest::newRow("select filter on a status column")
        << "{'property':'Priority','select':{'equals':'Done'}}"_ba << mismatch.arg(u"status"_s, u"select"_s);
    QTest::newRow("unknown property") << "{'property':'Nope','select':{'equals':'Running'}}"_ba
                                      << u"Could not find property with name or id: Nope"_s;
    QTest::newRow("unknown option")
        << "{'property':'Timer','select':{'equals':'running'}}"_ba
        << u"select option \"running\" not found for property \"Timer\". Available options: \"Running\", \"Stopped\"."_s;
    QTest::newRow("unknown status option")
        << "{'property':'Priority','status':{'does_not_equal':'Low'}}"_ba
        << u"status option \"Low\" not found for property \"Priority\". Available options: \"Normal\", \"High\", "
           "\"Done\"."_s;
    QTest::newRow("unknown operator") << "{'property':'Timer','select':{'is':'Running'}}"_ba
                                      << u"body failed validation: body.filter.select.is should be not present, "
                                         "instead was `\"Running\"`."_s;
    QTest::newRow("value of a wrong type")
        << "{'property':'Estimate (h)','number':{'equals':'2'}}"_ba
        << u"body failed validation: body.filter.number.equals should be a number, instead was `\"2\"`."_s;
    QTest::newRow("a date that is none")
        << "{'property':'Date','date':{'equals':'2022/01/02'}}"_ba
        << u"body failed validation: body.filter.date.equals should be a valid ISO 8601 date string, instead was "
           "`\"2022/01/02\"`."_s;
    QTest::newRow("a relation that is no uuid")
        << "{'property':'Project','relation':{'contains':'x'}}"_ba
        << u"body failed validation: body.filter.relation.contains should be a valid uuid, instead was `\"x\"`."_s;
    QTest::newRow("unknown member")
        << "{'property':'Timer','select':{'equals':'Running'},'colour':1}"_ba
        << u"body failed validation: body.filter.colour should be not present, instead was `1`."_s;
    QTest::newRow("three deep")
        << "{'and':[{'or':[{'and':[{'property':'Timer','select':{'equals':'Running'}}]}]}]}"_ba
        << u"body failed validation: body.filter.and[0].or[0].and should be not present, instead was "
           "`[{\"property\":\"Timer\",\"select\":{\"equals\":\"Running\"}}]`."_s;
}

void SandboxQueryTest::aFilterIsRefused()
{
    QFETCH(QByteArray, filter);
    const ClientAnswer answer
        = m_client->query(m_server->workspace().tasksId(), {{u"filter"_s, json(filter.constData())}});
    QCOMPARE(answer.status, 400);
    QCOMPARE(answer.code(), u"validation_error"_s);
    QTEST(answer.message(), "message");
    const ClientAnswer empty = m_client->query(m_server->workspace().tasksId(), {{u"filter"_s, QJsonObject()}});
    QVERIFY(empty.message().startsWith(
        u"body failed validation. Fix one:\nbody.filter.or should be defined, instead was `undefined`.\n"_s));
}

void SandboxQueryTest::aFilterMayNameAPropertyByItsId()
{
    for (const QString &id : {u"gY%7BP"_s, u"gY{P"_s}) {
        const QJsonObject filter{{u"property"_s, id}, {u"select"_s, QJsonObject{{u"equals"_s, u"Running"_s}}}};
        QCOMPARE(names(m_server->workspace().tasksId(), {{u"filter"_s, filter}}), QStringList(u"Home page layout"_s));
    }
}

void SandboxQueryTest::relationFiltersLookAtTheRelatedPage()
{
    const Workspace &workspace = m_server->workspace();
    const QString task = workspace.findPage(workspace.tasksId(), u"Answer the printer"_s);
    const QJsonObject filter{{u"property"_s, u"Task"_s}, {u"relation"_s, QJsonObject{{u"contains"_s, task}}}};
    QCOMPARE(names(workspace.timeTrackerId(), {{u"filter"_s, filter}}), QStringList(u"Answer the printer"_s));
}

void SandboxQueryTest::peopleFiltersLookAtTheUser()
{
    const Workspace &workspace = m_server->workspace();
    const QJsonObject contains{{u"contains"_s, workspace.botId()}};
    QCOMPARE(names(workspace.projectsId(),
                   {{u"filter"_s, QJsonObject{{u"property"_s, u"Lead"_s}, {u"people"_s, contains}}}}),
             QStringList());
    const QJsonObject byPerson{{u"property"_s, u"Created by"_s},
                               {u"created_by"_s, QJsonObject{{u"contains"_s, workspace.personId()}}}};
    QCOMPARE(names(workspace.projectsId(), {{u"filter"_s, byPerson}}).size(), 6);
}

void SandboxQueryTest::datesCompareByTheMinute_data()
{
    QTest::addColumn<QByteArray>("condition");
    QTest::addColumn<bool>("isFound");
    // The running entry starts at 14:48 +01:00.
    QTest::newRow("equals with seconds") << "{'equals':'2026-11-21T14:48:38.600150+01:00'}"_ba << true;
    QTest::newRow("equals in another offset") << "{'equals':'2026-11-21T13:48:00Z'}"_ba << true;
    QTest::newRow("after the same minute") << "{'after':'2026-11-21T14:48:00+01:00'}"_ba << false;
    QTest::newRow("before the same minute with seconds") << "{'before':'2026-11-21T14:48:59+01:00'}"_ba << false;
    QTest::newRow("after the minute before") << "{'after':'2026-11-21T14:47:59+01:00'}"_ba << true;
}

void SandboxQueryTest::datesCompareByTheMinute()
{
    QFETCH(QByteArray, condition);
    QFETCH(bool, isFound);
    const QJsonObject isRunning = json("{'property':'Status','select':{'equals':'Running'}}");
    const QJsonObject start{{u"property"_s, u"Start"_s}, {u"date"_s, json(condition.constData())}};
    const QJsonObject filter{{u"and"_s, QJsonArray{isRunning, start}}};
    QCOMPARE(names(m_server->workspace().timeTrackerId(), {{u"filter"_s, filter}}).size(), isFound ? 1 : 0);
}

void SandboxQueryTest::compoundsNestTwoDeep()
{
    const QJsonObject filter = json("{'and':[{'property':'Date','date':{'equals':'2026-11-21'}},"
                                    "{'or':[{'property':'Timer','select':{'equals':'Running'}},"
                                    "{'property':'Name','title':{'contains':'printer'}}]}]}");
    QCOMPARE(names(m_server->workspace().tasksId(), {{u"filter"_s, filter}}),
             QStringList({u"Home page layout"_s, u"Answer the printer"_s}));
}

void SandboxQueryTest::rowsComeNewestFirstWithoutSorts()
{
    const Workspace &workspace = m_server->workspace();
    QCOMPARE(names(workspace.tasksId(), {}).first(), u"Home page layout"_s);
    m_client->createPage(workspace.tasksId(), json("{'Name':{'title':[{'text':{'content':'New'}}]}}"));
    m_client->createPage(workspace.tasksId(), json("{'Name':{'title':[{'text':{'content':'Newer'}}]}}"));
    QCOMPARE(names(workspace.tasksId(), {}).mid(0, 2), QStringList({u"Newer"_s, u"New"_s}));
}

void SandboxQueryTest::sortsHavePrecedence_data()
{
    QTest::addColumn<QString>("database");
    QTest::addColumn<QByteArray>("sorts");
    QTest::addColumn<QStringList>("first");
    QTest::newRow("by date, the latest first")
        << u"Tasks"_s << "{'sorts':[{'property':'Date','direction':'descending'}]}"_ba
        << QStringList{u"Prepare the workshop"_s, u"Pick paper samples"_s};
    QTest::newRow("by status in the order of the options, then by name")
        << u"Tasks"_s
        << "{'sorts':[{'property':'Priority','direction':'descending'},{'property':'Name','direction':'ascending'}]}"_ba
        << QStringList{u"Archive the old photos"_s, u"Kick-off notes"_s, u"Colour proofs for the cover"_s};
    QTest::newRow("rows without a value last, upwards")
        << u"Time Tracker"_s << "{'sorts':[{'property':'End','direction':'ascending'}]}"_ba
        << QStringList{u"Archive the old photos"_s};
    QTest::newRow("rows without a value last, downwards")
        << u"Time Tracker"_s << "{'sorts':[{'property':'End','direction':'descending'}]}"_ba
        << QStringList{u"Answer the printer"_s};
    QTest::newRow("by rollup") << u"Tasks"_s << "{'sorts':[{'property':'Total minutes','direction':'descending'}]}"_ba
                               << QStringList{u"Home page layout"_s, u"Draw the booking calendar"_s};
    QTest::newRow("by time stamp") << u"Tasks"_s
                                   << "{'sorts':[{'timestamp':'created_time','direction':'ascending'}]}"_ba
                                   << QStringList{u"Archive the old photos"_s, u"Kick-off notes"_s};
    QTest::newRow("by number") << u"Clients"_s << "{'sorts':[{'property':'Hourly rate','direction':'ascending'}]}"_ba
                               << QStringList{u"Vélo Atelier"_s, u"Café Lindenhof"_s};
}

void SandboxQueryTest::sortsHavePrecedence()
{
    QFETCH(QString, database);
    QFETCH(QByteArray, sorts);
    QFETCH(QStringList, first);
    QCOMPARE(names(databaseId(database), json(sorts.constData())).mid(0, first.size()), first);
}

void SandboxQueryTest::numbersInTextsSortByTheirValue()
{
    const QString id = m_server->workspace().clientsId();
    for (const QString &name : {u"article 10"_s, u"Article 4"_s, u"Article 13b"_s, u"Article"_s})
        m_server->workspace().createPage(id, {{u"Name"_s, QJsonObject{{u"title"_s, richText(name)}}}});
    const QJsonObject body = json("{'filter':{'property':'Name','title':{'starts_with':'article'}},"
                                  "'sorts':[{'property':'Name','direction':'ascending'}]}");
    QCOMPARE(names(id, body), QStringList({u"Article"_s, u"Article 4"_s, u"article 10"_s, u"Article 13b"_s}));
}

void SandboxQueryTest::aSortIsRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown property") << "{'sorts':[{'property':'Nope','direction':'ascending'}]}"_ba
                                      << u"Could not find sort property with name or id: Nope"_s;
    QTest::newRow("unknown direction") << "{'sorts':[{'property':'Date','direction':'up'}]}"_ba
                                       << u"body failed validation: body.sorts[0].direction should be `\"ascending\"` "
                                          u"or `\"descending\"`, instead was "
                                          "`\"up\"`."_s;
    QTest::newRow("no array") << "{'sorts':{}}"_ba
                              << u"body failed validation: body.sorts should be an array or `undefined`, instead was "
                                 "`{}`."_s;
}

void SandboxQueryTest::aSortIsRefused()
{
    QFETCH(QByteArray, body);
    const ClientAnswer answer = m_client->query(m_server->workspace().tasksId(), json(body.constData()));
    QCOMPARE(answer.status, 400);
    QTEST(answer.message(), "message");
}

void SandboxQueryTest::pagesFollowOneAnotherByCursor()
{
    const QString id = m_server->workspace().tasksId();
    const QStringList all = names(id, {});
    QStringList collected;
    QJsonObject body{{u"page_size"_s, 5}};
    QList<qsizetype> sizes;
    for (;;) {
        const ClientAnswer answer = m_client->query(id, body);
        QCOMPARE(answer.status, 200);
        sizes.append(answer.results().size());
        for (const QJsonValue &row : answer.results())
            collected.append(row[u"properties"_s][u"Name"_s][u"title"_s][0][u"plain_text"_s].toString());
        if (!answer.json().value(u"has_more"_s).toBool()) {
            QVERIFY(answer.json().value(u"next_cursor"_s).isNull());
            break;
        }
        body.insert(u"start_cursor"_s, answer.json().value(u"next_cursor"_s));
    }
    QCOMPARE(sizes, QList<qsizetype>({5, 5, 2}));
    QCOMPARE(collected, all);
}

void SandboxQueryTest::aPageIsRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("message");
    QTest::newRow("a size as text")
        << "{'page_size':'50'}"_ba
        << u"body failed validation: body.page_size should be a number or `undefined`, instead was `\"50\"`."_s;
    QTest::newRow("a size above 100")
        << "{'page_size':101}"_ba
        << u"body failed validation: body.page_size should be ≤ `100` or `undefined`, instead was `101`."_s;
    QTest::newRow("a size of no rows")
        << "{'page_size':0}"_ba
        << u"body failed validation: body.page_size should be ≥ `1` or `undefined`, instead was `0`."_s;
    QTest::newRow("a size that is no whole number")
        << "{'page_size':1.5}"_ba
        << u"body failed validation: body.page_size should be an integer or `undefined`, instead was `1.5`."_s;
    QTest::newRow("a wrong cursor") << "{'start_cursor':'x'}"_ba << u"The start_cursor provided is invalid: x"_s;
    QTest::newRow("an unknown member")
        << "{'filter_properties':[]}"_ba
        << u"body failed validation: body.filter_properties should be not present, instead was `[]`."_s;
}

void SandboxQueryTest::aPageIsRefused()
{
    QFETCH(QByteArray, body);
    const ClientAnswer answer = m_client->query(m_server->workspace().tasksId(), json(body.constData()));
    QCOMPARE(answer.status, 400);
    QTEST(answer.message(), "message");
}

void SandboxQueryTest::rowsInTheTrashAreLeftOut()
{
    Workspace &workspace = m_server->workspace();
    const QString task = workspace.findPage(workspace.tasksId(), u"Home page layout"_s);
    workspace.setInTrash(task, true);
    QVERIFY(!names(workspace.tasksId(), {}).contains(u"Home page layout"_s));
    QCOMPARE(m_client->getPage(task).status, 200);
    QCOMPARE(m_client->getPage(task).json().value(u"archived"_s), true);
}

void SandboxQueryTest::anEmptyBodyGivesAllRows()
{
    const ClientAnswer answer
        = m_client->call("POST", "/v1/databases/" + m_server->workspace().tasksId().toLatin1() + "/query");
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.results().size(), 12);
    QCOMPARE(answer.json().value(u"type"_s), u"page_or_database"_s);
    QCOMPARE(answer.json().value(u"page_or_database"_s), QJsonObject());
}

void SandboxQueryTest::theTasksOfTodayFollowTheDay()
{
    startBeforeMidnight();
    const QDate eve(2026, 12, 31);
    const QStringList tasks = tasksOf(eve);
    QCOMPARE(tasks.size(), 8);
    const QStringList later = tasksOf(eve.addDays(1));
    m_now = m_now.addSecs(29 * 60);
    QCOMPARE(tasksOf(eve), tasks);
    m_now = m_now.addSecs(60); // Midnight, while it is eleven in UTC.
    QCOMPARE(tasksOf(eve.addDays(1)), tasks + later);
    QCOMPARE(tasksOf(eve), QStringList());
    m_now = m_now.addDays(3);
    QCOMPARE(tasksOf(eve.addDays(4)), tasks);
    QCOMPARE(tasksOf(eve.addDays(1)), later);
}

void SandboxQueryTest::aTaskWhoseDateWasChangedDoesNotFollowTheDay_data()
{
    QTest::addColumn<QJsonObject>("date");
    QTest::addColumn<QDate>("day"); // On which it stays.
    const QDate eve(2026, 12, 31);
    QTest::newRow("to tomorrow") << QJsonObject{{u"start"_s, u"2027-01-01"_s}} << eve.addDays(1);
    QTest::newRow("to the span of two days")
        << QJsonObject{{u"start"_s, u"2026-12-31"_s}, {u"end"_s, u"2027-01-01"_s}} << eve;
    QTest::newRow("to a time of today") << QJsonObject{{u"start"_s, u"2026-12-31T12:00:00+01:00"_s}} << eve;
}

void SandboxQueryTest::aTaskWhoseDateWasChangedDoesNotFollowTheDay()
{
    QFETCH(QJsonObject, date);
    QFETCH(QDate, day);
    startBeforeMidnight();
    const QString name = u"Answer the printer"_s;
    const QString id = m_server->workspace().findPage(databaseId(u"Tasks"_s), name);
    QCOMPARE(m_client->updatePage(id, {{u"Date"_s, QJsonObject{{u"date"_s, date}}}}).status, 200);
    for (int turn = 0; turn < 3; ++turn) {
        m_now = m_now.addDays(1);
        QVERIFY(tasksOf(day).contains(name));
        QVERIFY(tasksOf(m_now.date()).contains(u"Home page layout"_s));
    }
}

QTEST_GUILESS_MAIN(SandboxQueryTest)
#include "SandboxQueryTest.moc"
