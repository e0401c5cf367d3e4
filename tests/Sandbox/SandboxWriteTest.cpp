#include "Sandbox/JsonLiteral.h"
#include "Sandbox/SandboxClient.h"
#include "sandbox/ApiError.h"
#include "sandbox/Workspace.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo::sandbox;

/// Making and changing pages.
class SandboxWriteTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void aPageNeedsNoProperties();
    void everyWritablePropertyIsReadBack();
    void aKeyMayBeAnId();
    void aTitleKeepsItsRuns();
    void anEmojiIsKeptWhole();
    void datesAreCutToTheMinute_data();
    void datesAreCutToTheMinute();
    void aNewSelectOptionIsMade();
    void aStatusIsWrittenByNameIdOrWhole();
    void aWriteIsRefused_data();
    void aWriteIsRefused();
    void aRefusedWriteChangesNothing();
    void aLongTextIsRefused();
    void unnamedPropertiesStay();
    void aTwoWayRelationFollows();
    void aRelationIsReplaced();
    void aPageShowsTwentyFiveRelations();
    void aPageInTheTrashIsNotEdited();
    void aPageComesBackFromTheTrash();
    void aPageThatIsGoneIsNotFound();
    void theBotIsTheAuthor();
    void aRepeatedCreateMakesTwoPages();
    void timersStartAndStopFromElsewhere();
    void aRenamedColumnChangesItsKey();

private:
    QString task(const QString &name) const;
    QJsonObject propertyOf(const QString &pageId, const QString &name);

    std::unique_ptr<SandboxServer> m_server;
    std::unique_ptr<SandboxClient> m_client;
};

void SandboxWriteTest::init()
{
    m_client.reset();
    m_server = std::make_unique<SandboxServer>();
    m_server->setClock([] { return QDateTime(QDate(2026, 11, 21), QTime(15, 30, 42), Qt::OffsetFromUTC, 3600); });
    QVERIFY2(m_server->listen(0, false), qPrintable(m_server->errorString()));
    m_client = std::make_unique<SandboxClient>(*m_server);
}

QString SandboxWriteTest::task(const QString &name) const
{
    return m_server->workspace().findPage(m_server->workspace().tasksId(), name);
}

QJsonObject SandboxWriteTest::propertyOf(const QString &pageId, const QString &name)
{
    return m_client->getPage(pageId).json()[u"properties"_s][name].toObject();
}

void SandboxWriteTest::aPageNeedsNoProperties()
{
    const ClientAnswer answer = m_client->createPage(m_server->workspace().tasksId(), {});
    QCOMPARE(answer.status, 200);
    const QJsonValue properties = answer.json()[u"properties"_s];
    QCOMPARE(properties[u"Name"_s][u"title"_s], QJsonArray());
    QCOMPARE(properties[u"Date"_s][u"date"_s], QJsonValue());
    QCOMPARE(properties[u"Timer"_s][u"select"_s], QJsonValue());
    QCOMPARE(properties[u"Priority"_s][u"status"_s][u"name"_s], u"Normal"_s); // A status has a default.
    QCOMPARE(properties[u"Total minutes"_s][u"rollup"_s][u"number"_s].toDouble(-1), 0.0);
    QCOMPARE(properties[u"Last tracked"_s][u"rollup"_s][u"date"_s], QJsonValue());
    const QString id = answer.json().value(u"id"_s).toString();
    QCOMPARE(id.mid(14, 2), u"81"_s);
    QCOMPARE(answer.json().value(u"url"_s).toString(), u"https://www.notion.so/"_s + QString(id).remove(u'-'));
}

void SandboxWriteTest::everyWritablePropertyIsReadBack()
{
    const Workspace &workspace = m_server->workspace();
    const ClientAnswer client = m_client->createPage(
        workspace.clientsId(),
        json("{'Name':{'type':'title','title':[{'type':'text','text':{'content':'Ada'}}]},"
             "'Email':{'email':'ada@example.org'},'Phone':{'phone_number':'123'},"
             "'Website':{'url':'https://ada.example/'},'Notes':{'rich_text':[{'text':{'content':'x','link':"
             "{'url':'https://x.example/'}}}]},'Hourly rate':{'number':12.5},'Retainer':{'checkbox':true},"
             "'Contract':{'files':[{'name':'F','type':'external','external':{'url':'https://f.example/'}}]}}"));
    QCOMPARE(client.status, 200);
    const QJsonValue properties = client.json()[u"properties"_s];
    QCOMPARE(properties[u"Email"_s][u"email"_s], u"ada@example.org"_s);
    QCOMPARE(properties[u"Phone"_s][u"phone_number"_s], u"123"_s);
    QCOMPARE(properties[u"Website"_s][u"url"_s], u"https://ada.example/"_s);
    QCOMPARE(properties[u"Notes"_s][u"rich_text"_s][0][u"href"_s], u"https://x.example/"_s);
    QCOMPARE(properties[u"Hourly rate"_s][u"number"_s].toDouble(), 12.5);
    QCOMPARE(properties[u"Retainer"_s][u"checkbox"_s], true);
    QCOMPARE(properties[u"Contract"_s][u"files"_s][0][u"name"_s], u"F"_s);

    const QJsonObject people{{u"people"_s, QJsonArray{QJsonObject{{u"id"_s, workspace.personId()}}}}};
    const ClientAnswer project = m_client->createPage(
        workspace.projectsId(),
        {{u"Lead"_s, people}, {u"Tags"_s, json("{'multi_select':[{'name':'Print'},{'name':'Sound'}]}")}});
    QCOMPARE(project.status, 200);
    QCOMPARE(project.json()[u"properties"_s][u"Lead"_s][u"people"_s][0][u"type"_s], u"person"_s);
    QCOMPARE(project.json()[u"properties"_s][u"Tags"_s][u"multi_select"_s][1][u"name"_s], u"Sound"_s);
    QCOMPARE(project.json()[u"properties"_s][u"ID"_s][u"unique_id"_s], json("{'prefix':'PRJ','number':7}"));
}

void SandboxWriteTest::aKeyMayBeAnId()
{
    const QString id = task(u"Answer the printer"_s);
    QCOMPARE(m_client
                 ->updatePage(id,
                              json("{'gY%7BP':{'select':{'name':'Running'}},"
                                   "'title':[{'text':{'content':'Bare'}}]}"))
                 .status,
             200);
    QCOMPARE(propertyOf(id, u"Timer"_s)[u"select"_s][u"name"_s], u"Running"_s);
    QCOMPARE(propertyOf(id, u"Name"_s)[u"title"_s][0][u"plain_text"_s], u"Bare"_s);
}

void SandboxWriteTest::aTitleKeepsItsRuns()
{
    const QString id = task(u"Answer the printer"_s);
    m_client->updatePage(id,
                         json("{'Name':{'title':[{'text':{'content':'One '}},"
                              "{'text':{'content':'two'},'annotations':{'bold':true}}]}}"));
    const QJsonArray runs = propertyOf(id, u"Name"_s).value(u"title"_s).toArray();
    QCOMPARE(runs.size(), 2);
    QCOMPARE(runs[1][u"annotations"_s][u"bold"_s], true);
    QCOMPARE(runs[1][u"annotations"_s][u"color"_s], u"default"_s);
    QCOMPARE(task(u"One two"_s), id);
}

void SandboxWriteTest::anEmojiIsKeptWhole()
{
    const QString text = u"Ship it 🚀 \"now\" \\ \n"_s;
    const QJsonObject run{{u"text"_s, QJsonObject{{u"content"_s, text}}}};
    const ClientAnswer answer = m_client->createPage(m_server->workspace().tasksId(),
                                                     {{u"Name"_s, QJsonObject{{u"title"_s, QJsonArray{run}}}}});
    QCOMPARE(answer.json()[u"properties"_s][u"Name"_s][u"title"_s][0][u"plain_text"_s].toString(), text);
}

void SandboxWriteTest::datesAreCutToTheMinute_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QString>("start");
    QTest::newRow("seconds in UTC are cut off, Z becomes an offset")
        << "{'start':'2024-05-01T07:30:59Z'}"_ba << u"2024-05-01T07:30:00.000+00:00"_s;
    QTest::newRow("the offset stays") << "{'start':'2024-01-28T17:32:57.479545+01:00'}"_ba
                                      << u"2024-01-28T17:32:00.000+01:00"_s;
    QTest::newRow("a negative half-hour offset")
        << "{'start':'2024-01-28T17:32:57-03:30'}"_ba << u"2024-01-28T17:32:00.000-03:30"_s;
    QTest::newRow("no offset is UTC") << "{'start':'2023-12-27T14:10:02.929833'}"_ba
                                      << u"2023-12-27T14:10:00.000+00:00"_s;
    QTest::newRow("a space for T") << "{'start':'2023-12-27 14:10:02'}"_ba << u"2023-12-27T14:10:00.000+00:00"_s;
    QTest::newRow("a time zone becomes the offset of that day")
        << "{'start':'2023-08-22T09:09:39.747337','time_zone':'Europe/Warsaw'}"_ba
        << u"2023-08-22T09:09:00.000+02:00"_s;
    QTest::newRow("Z with UTC") << "{'start':'2024-01-08T12:00:00Z','time_zone':'UTC'}"_ba
                                << u"2024-01-08T12:00:00.000+00:00"_s;
    QTest::newRow("a day stays a day") << "{'start':'2024-01-01'}"_ba << u"2024-01-01"_s;
}

void SandboxWriteTest::datesAreCutToTheMinute()
{
    QFETCH(QByteArray, written);
    const ClientAnswer answer = m_client->createPage(
        m_server->workspace().timeTrackerId(), {{u"Start"_s, QJsonObject{{u"date"_s, json(written.constData())}}}});
    QCOMPARE(answer.status, 200);
    const QJsonValue date = answer.json()[u"properties"_s][u"Start"_s][u"date"_s];
    QTEST(date[u"start"_s].toString(), "start");
    QVERIFY(date[u"end"_s].isNull());
    QVERIFY(date[u"time_zone"_s].isNull());
    QCOMPARE(answer.json().value(u"created_time"_s), u"2026-11-21T14:30:00.000Z"_s);
}

void SandboxWriteTest::aNewSelectOptionIsMade()
{
    const QString id = task(u"Answer the printer"_s);
    QCOMPARE(m_client->updatePage(id, json("{'Timer':{'select':{'name':'Paused'}}}")).status, 200);
    const QJsonObject select = propertyOf(id, u"Timer"_s).value(u"select"_s).toObject();
    QCOMPARE(select.value(u"name"_s), u"Paused"_s);
    const ClientAnswer database = m_client->call("GET", "/v1/databases/" + m_server->workspace().tasksId().toLatin1());
    const QJsonArray options = database.json()[u"properties"_s][u"Timer"_s][u"select"_s][u"options"_s].toArray();
    QCOMPARE(options.size(), 3);
    QCOMPARE(options[2][u"id"_s], select.value(u"id"_s));
}

void SandboxWriteTest::aStatusIsWrittenByNameIdOrWhole()
{
    const QString id = task(u"Answer the printer"_s);
    const QJsonObject before = propertyOf(id, u"Priority"_s).value(u"status"_s).toObject();
    QCOMPARE(m_client->updatePage(id, json("{'Priority':{'status':{'name':'Done'}}}")).status, 200);
    QCOMPARE(propertyOf(id, u"Priority"_s)[u"status"_s][u"color"_s], u"green"_s);
    const QJsonObject byId{{u"status"_s, QJsonObject{{u"id"_s, before.value(u"id"_s)}}}};
    QCOMPARE(m_client->updatePage(id, {{u"Priority"_s, byId}}).status, 200);
    QCOMPARE(propertyOf(id, u"Priority"_s).value(u"status"_s).toObject(), before);
    QCOMPARE(m_client->updatePage(id, {{u"Priority"_s, QJsonObject{{u"status"_s, before}}}}).status, 200);
}

void SandboxWriteTest::aWriteIsRefused_data()
{
    QTest::addColumn<QByteArray>("properties");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown property") << "{'Nope':{'number':1}}"_ba << u"Nope is not a property that exists."_s;
    QTest::newRow("a select written as status")
        << "{'Timer':{'status':{'name':'Running'}}}"_ba << u"Timer is expected to be select."_s;
    QTest::newRow("a status written as select")
        << "{'Priority':{'select':{'name':'Done'}}}"_ba << u"Priority is expected to be status."_s;
    QTest::newRow("an unknown status option") << "{'Priority':{'status':{'name':'Low'}}}"_ba
                                              << u"Invalid status option. Status option \"Low\" does not exist\"."_s;
    QTest::newRow("a select option with a comma")
        << "{'Timer':{'select':{'name':'a, b'}}}"_ba << u"Invalid select option, commas not allowed: a, b"_s;
    QTest::newRow("null for the title")
        << "{'Name':null}"_ba << u"Body Validation Failed. Fix the following:\nInvalid property value for: \"Name\"."_s;
    QTest::newRow("a rollup written as a number")
        << "{'Total minutes':{'number':5}}"_ba << u"Total minutes is expected to be rollup."_s;
    QTest::newRow("a date in another form")
        << "{'Date':{'date':{'start':'2022/01/02'}}}"_ba
        << u"body failed validation: body.properties.Date.date.start should be a valid ISO 8601 date string, instead "
           "was `\"2022/01/02\"`."_s;
    QTest::newRow("a number as text")
        << "{'Estimate (h)':{'number':'5'}}"_ba
        << u"body failed validation: body.properties.Estimate (h).number should be a number or `null`, instead was "
           "`\"5\"`."_s;
    QTest::newRow("a relation that is no uuid")
        << "{'Project':{'relation':[{'id':'x'}]}}"_ba
        << u"body failed validation: body.properties.Project.relation[0].id should be a valid uuid, instead was "
           "`\"x\"`."_s;
    QTest::newRow("a run without text")
        << "{'Name':{'title':[{'plain_text':'x'}]}}"_ba
        << u"body failed validation: body.properties.Name.title[0].text should be defined, instead was `undefined`."_s;
    QTest::newRow("an unknown member of a date")
        << "{'Date':{'date':{'start':'2024-01-01','colour':1}}}"_ba
        << u"body failed validation: body.properties.Date.date.colour should be not present, instead was `1`."_s;
    QTest::newRow("an unknown member beside the value")
        << "{'Date':{'date':null,'colour':1}}"_ba
        << u"body failed validation: body.properties.Date.colour should be not present, instead was `1`."_s;
}

void SandboxWriteTest::aWriteIsRefused()
{
    QFETCH(QByteArray, properties);
    const ClientAnswer answer = m_client->updatePage(task(u"Answer the printer"_s), json(properties.constData()));
    QCOMPARE(answer.status, 400);
    QCOMPARE(answer.code(), u"validation_error"_s);
    QTEST(answer.message(), "message");
    // A formula as it was read names all the forms that would do.
    const ClientAnswer formula = m_client->createPage(m_server->workspace().timeTrackerId(),
                                                      json("{'Minutes':{'formula':{'type':'number','number':1}}}"));
    QVERIFY(formula.message().startsWith(u"body failed validation. Fix one:\nbody.properties.Minutes.title should be "
                                         "defined, instead was `undefined`.\n"_s));
    QCOMPARE(m_client->call("PATCH", "/v1/pages/" + task(u"Answer the printer"_s).toLatin1(), json("{'colour':1}"))
                 .message(),
             u"body failed validation: body.colour should be not present, instead was `1`."_s);
}

void SandboxWriteTest::aRefusedWriteChangesNothing()
{
    const QString id = task(u"Answer the printer"_s);
    const QJsonObject before = m_server->workspace().pageById(id);
    QCOMPARE(m_client
                 ->updatePage(id,
                              json("{'Date':{'date':null},'Timer':{'select':{'name':'New'}},"
                                   "'Total minutes':{'number':1}}"))
                 .status,
             400);
    QCOMPARE(m_server->workspace().pageById(id), before);
    const auto *timer = m_server->workspace().database(m_server->workspace().tasksId())->property(u"Timer"_s);
    QCOMPARE(timer->options.size(), 2);
}

void SandboxWriteTest::aLongTextIsRefused()
{
    const auto title = [](int length) {
        const QJsonObject run{{u"text"_s, QJsonObject{{u"content"_s, QString(length, u'x')}}}};
        return QJsonObject{{u"Name"_s, QJsonObject{{u"title"_s, QJsonArray{run}}}}};
    };
    QCOMPARE(m_client->createPage(m_server->workspace().tasksId(), title(2000)).status, 200);
    const ClientAnswer answer = m_client->createPage(m_server->workspace().tasksId(), title(2001));
    QCOMPARE(answer.status, 400);
    QCOMPARE(answer.message(),
             u"body failed validation: body.properties.Name.title[0].text.content.length should be ≤ `2000`, instead "
             "was `2001`."_s);
}

void SandboxWriteTest::unnamedPropertiesStay()
{
    const QString id = task(u"Answer the printer"_s);
    const QJsonObject before = m_client->getPage(id).json()[u"properties"_s].toObject();
    QCOMPARE(m_client->updatePage(id, json("{'Timer':{'select':null}}")).status, 200);
    QJsonObject after = m_client->getPage(id).json()[u"properties"_s].toObject();
    QCOMPARE(after[u"Timer"_s].toObject().value(u"select"_s), QJsonValue());
    after.insert(u"Timer"_s, before.value(u"Timer"_s));
    after.insert(u"Last edited by"_s, before.value(u"Last edited by"_s));
    QCOMPARE(after, before);
}

void SandboxWriteTest::aTwoWayRelationFollows()
{
    const QString id = task(u"Review product texts"_s);
    const QJsonObject related{{u"relation"_s, QJsonArray{QJsonObject{{u"id"_s, id}}}}};
    const ClientAnswer entry = m_client->createPage(m_server->workspace().timeTrackerId(),
                                                    {{u"Task"_s, related},
                                                     {u"Start"_s, json("{'date':{'start':'2026-11-21T10:00:50Z'}}")},
                                                     {u"End"_s, json("{'date':{'start':'2026-11-21T10:25:10Z'}}")}});
    QCOMPARE(entry.status, 200);
    QCOMPARE(propertyOf(id, u"Entries"_s)[u"relation"_s][0][u"id"_s], entry.json().value(u"id"_s));
    QCOMPARE(propertyOf(id, u"Total minutes"_s)[u"rollup"_s][u"number"_s].toDouble(), 25.0);
    const QString entryId = entry.json().value(u"id"_s).toString();
    QCOMPARE(m_client->updatePage(entryId, json("{'Task':{'relation':[],'has_more':false}}")).status, 200);
    QCOMPARE(propertyOf(id, u"Entries"_s).value(u"relation"_s), QJsonArray());
    QCOMPARE(propertyOf(id, u"Total minutes"_s)[u"rollup"_s][u"number"_s].toDouble(-1), 0.0);
}

void SandboxWriteTest::aRelationIsReplaced()
{
    const Workspace &workspace = m_server->workspace();
    const QString id = task(u"Home page layout"_s);
    const QString other = workspace.findPage(workspace.projectsId(), u"Booking app"_s);
    const QJsonObject related{{u"relation"_s, QJsonArray{QJsonObject{{u"id"_s, QString(other).remove(u'-')}}}}};
    QCOMPARE(m_client->updatePage(id, {{u"Project"_s, related}}).status, 200);
    QCOMPARE(propertyOf(id, u"Project"_s).value(u"relation"_s), QJsonArray{QJsonObject({{u"id"_s, other}})});
    const QString old = workspace.findPage(workspace.projectsId(), u"Website relaunch"_s);
    QCOMPARE(propertyOf(old, u"Task count"_s)[u"rollup"_s][u"number"_s].toInt(), 1);
    const QJsonObject wrong{{u"relation"_s, QJsonArray{QJsonObject{{u"id"_s, id}}}}};
    QCOMPARE(m_client->updatePage(id, {{u"Project"_s, wrong}}).status, 400);
    const QJsonObject unknown = json("{'relation':[{'id':'7855b161-f63e-4683-b7c7-8ca6e97ee266'}]}");
    QCOMPARE(m_client->updatePage(id, {{u"Project"_s, unknown}}).status, 404);
}

void SandboxWriteTest::aPageShowsTwentyFiveRelations()
{
    Workspace &workspace = m_server->workspace();
    const QString id = task(u"Review product texts"_s);
    const QJsonObject related{{u"relation"_s, QJsonArray{QJsonObject{{u"id"_s, id}}}}};
    for (int i = 0; i < 27; ++i) {
        workspace.createPage(workspace.timeTrackerId(),
                             {{u"Task"_s, related},
                              {u"Start"_s, json("{'date':{'start':'2026-11-21T10:00:00Z'}}")},
                              {u"End"_s, json("{'date':{'start':'2026-11-21T10:02:00Z'}}")}});
    }
    const QJsonObject entries = propertyOf(id, u"Entries"_s);
    QCOMPARE(entries.value(u"relation"_s).toArray().size(), 25);
    QCOMPARE(entries.value(u"has_more"_s), true);
    QCOMPARE(propertyOf(id, u"Total minutes"_s)[u"rollup"_s][u"number"_s].toDouble(), 54.0);
}

void SandboxWriteTest::aPageInTheTrashIsNotEdited()
{
    const QString id = task(u"Answer the printer"_s);
    m_server->workspace().setInTrash(id, true);
    const ClientAnswer answer = m_client->updatePage(id, json("{'Timer':{'select':null}}"));
    QCOMPARE(answer.status, 400);
    QCOMPARE(answer.message(), u"Can't edit block that is archived. You must unarchive the block before editing."_s);
}

void SandboxWriteTest::aPageComesBackFromTheTrash()
{
    const QByteArray target = "/v1/pages/" + task(u"Answer the printer"_s).toLatin1();
    QCOMPARE(m_client->call("PATCH", target, json("{'archived':true}")).json().value(u"in_trash"_s), true);
    QCOMPARE(task(u"Answer the printer"_s), QString());
    QCOMPARE(m_client->call("PATCH", target, json("{'in_trash':false}")).json().value(u"archived"_s), false);
    QVERIFY(!task(u"Answer the printer"_s).isEmpty());
}

void SandboxWriteTest::aPageThatIsGoneIsNotFound()
{
    const QString id = task(u"Answer the printer"_s);
    m_server->workspace().removePage(id);
    QCOMPARE(m_client->getPage(id).status, 404);
    QCOMPARE(m_client->updatePage(id, {}).status, 404);
}

void SandboxWriteTest::theBotIsTheAuthor()
{
    const Workspace &workspace = m_server->workspace();
    const ClientAnswer made = m_client->createPage(workspace.tasksId(), {});
    QCOMPARE(made.json()[u"created_by"_s][u"id"_s], workspace.botId());
    QCOMPARE(made.json()[u"created_by"_s].toObject().size(), 2);
    QCOMPARE(made.json()[u"properties"_s][u"Last edited by"_s][u"last_edited_by"_s][u"bot"_s], QJsonObject());
    const QString id = task(u"Answer the printer"_s);
    const ClientAnswer changed = m_client->updatePage(id, json("{'Timer':{'select':null}}"));
    QCOMPARE(changed.json()[u"created_by"_s][u"id"_s], workspace.personId());
    QCOMPARE(changed.json()[u"last_edited_by"_s][u"id"_s], workspace.botId());
}

void SandboxWriteTest::aRepeatedCreateMakesTwoPages()
{
    const QString database = m_server->workspace().tasksId();
    const QJsonObject properties = json("{'Name':{'title':[{'text':{'content':'Twice'}}]}}");
    const auto first = m_client->createPage(database, properties).json().value(u"id"_s);
    const auto second = m_client->createPage(database, properties).json().value(u"id"_s);
    QVERIFY(first != second);
    QCOMPARE(m_server->workspace().pages(database).size(), 14);
}

void SandboxWriteTest::timersStartAndStopFromElsewhere()
{
    Workspace &workspace = m_server->workspace();
    workspace.stopTimers();
    QCOMPARE(workspace.runningEntries(), QStringList());
    QCOMPARE(propertyOf(task(u"Home page layout"_s), u"Timer"_s)[u"select"_s][u"name"_s], u"Stopped"_s);
    QCOMPARE(propertyOf(task(u"Home page layout"_s), u"Total minutes"_s)[u"rollup"_s][u"number"_s].toDouble(),
             295.0 + 42.0);
    const QString entry = workspace.startTimer(u"Review product texts"_s);
    QCOMPARE(workspace.runningEntries(), QStringList(entry));
    QCOMPARE(propertyOf(entry, u"Start"_s)[u"date"_s][u"start"_s], u"2026-11-21T15:30:00.000+01:00"_s);
    QCOMPARE(propertyOf(task(u"Review product texts"_s), u"Timer"_s)[u"select"_s][u"name"_s], u"Running"_s);
    QCOMPARE(workspace.startTimer(u"No such task"_s), QString());
}

void SandboxWriteTest::aRenamedColumnChangesItsKey()
{
    Workspace &workspace = m_server->workspace();
    QVERIFY(workspace.renameProperty(workspace.timeTrackerId(), u"Status"_s, u"State"_s));
    const ClientAnswer answer = m_client->query(workspace.timeTrackerId(),
                                                json("{'filter':{'property':'Status','select':{'equals':'Running'}}}"));
    QCOMPARE(answer.message(), u"Could not find property with name or id: Status"_s);
    QCOMPARE(workspace.runningEntries().size(), 1);
}

QTEST_GUILESS_MAIN(SandboxWriteTest)
#include "SandboxWriteTest.moc"
