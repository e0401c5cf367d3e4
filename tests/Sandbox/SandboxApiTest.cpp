#include "Sandbox/JsonLiteral.h"
#include "Sandbox/SandboxClient.h"
#include "sandbox/ApiError.h"
#include "sandbox/Workspace.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo::sandbox;

/// The operations that read, and what the API refuses before it looks at the content.
class SandboxApiTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void usersMeTellsTheBot();
    void aDatabaseHasAllItsMembers();
    void theDatabasesHoldAPropertyOfEveryType();
    void aPageHasAllItsMembers();
    void propertiesComeByIdWithTheTitleLast();
    void anIdMayComeInAnyForm_data();
    void anIdMayComeInAnyForm();
    void anIdThatIsNoUuidIsRefused_data();
    void anIdThatIsNoUuidIsRefused();
    void anUnknownIdIsNotFound();
    void anIdOfTheWrongKindIsToldApart();
    void aDatabaseWithTwoDataSourcesIsRefused();
    void checksComeInTheOrderOfTheApi_data();
    void checksComeInTheOrderOfTheApi();
    void theVersionIsChecked_data();
    void theVersionIsChecked();
    void theKeyCanBeChanged();
    void aBodyThatIsNotDeclaredAsJsonIsNotRead();
    void filterPropertiesLeavesTheOthersOut();
    void oneTimerRunsFromTheStart();
    void totalMinutesAreTheSumOfTheEntries();
    void idsAreTheSameAtEachStart();

private:
    std::unique_ptr<SandboxServer> m_server;
    std::unique_ptr<SandboxClient> m_client;
};

void SandboxApiTest::init()
{
    m_client.reset();
    m_server = std::make_unique<SandboxServer>();
    m_server->setClock([] { return QDateTime(QDate(2026, 11, 21), QTime(15, 30, 42), Qt::OffsetFromUTC, 3600); });
    QVERIFY2(m_server->listen(0, false), qPrintable(m_server->errorString()));
    m_client = std::make_unique<SandboxClient>(*m_server);
}

void SandboxApiTest::usersMeTellsTheBot()
{
    const ClientAnswer answer = m_client->call("GET", "/v1/users/me");
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.json().value(u"object"_s), u"user"_s);
    QCOMPARE(answer.json().value(u"type"_s), u"bot"_s);
    QCOMPARE(answer.json()[u"bot"_s].toObject()[u"owner"_s].toObject()[u"type"_s], u"workspace"_s);
    QCOMPARE(answer.json().value(u"request_id"_s).toString().toLatin1(), answer.header("x-notion-request-id"));
}

void SandboxApiTest::aDatabaseHasAllItsMembers()
{
    const ClientAnswer answer = m_client->call("GET", "/v1/databases/" + m_server->workspace().tasksId().toLatin1());
    QCOMPARE(answer.status, 200);
    QStringList members = answer.json().keys();
    const QStringList expected{u"archived"_s,
                               u"cover"_s,
                               u"created_by"_s,
                               u"created_time"_s,
                               u"description"_s,
                               u"icon"_s,
                               u"id"_s,
                               u"in_trash"_s,
                               u"is_inline"_s,
                               u"last_edited_by"_s,
                               u"last_edited_time"_s,
                               u"object"_s,
                               u"parent"_s,
                               u"properties"_s,
                               u"public_url"_s,
                               u"request_id"_s,
                               u"title"_s,
                               u"url"_s};
    QCOMPARE(members, expected);
    const QJsonValue relation = answer.json()[u"properties"_s][u"Entries"_s][u"relation"_s];
    QCOMPARE(relation[u"database_id"_s], m_server->workspace().timeTrackerId());
    QCOMPARE(relation[u"dual_property"_s][u"synced_property_name"_s], u"Task"_s);
    QCOMPARE(relation[u"dual_property"_s][u"synced_property_id"_s], u"tk%5DW"_s);
    const QJsonValue rollup = answer.json()[u"properties"_s][u"Total minutes"_s][u"rollup"_s];
    QCOMPARE(rollup[u"relation_property_id"_s], u"dDR;"_s); // The one place where ids are not encoded.
    QCOMPARE(rollup[u"rollup_property_name"_s], u"Minutes"_s);
}

void SandboxApiTest::theDatabasesHoldAPropertyOfEveryType()
{
    const Workspace &workspace = m_server->workspace();
    QStringList missing;
    for (const PropertyType type : allPropertyTypes())
        missing.append(typeName(type));
    for (const QString &id :
         {workspace.clientsId(), workspace.projectsId(), workspace.tasksId(), workspace.timeTrackerId()}) {
        const ClientAnswer answer = m_client->call("GET", "/v1/databases/" + id.toLatin1());
        const QJsonObject properties = answer.json().value(u"properties"_s).toObject();
        for (const QJsonValue &property : properties)
            missing.removeAll(property[u"type"_s].toString());
    }
    QCOMPARE(missing, QStringList());
}

void SandboxApiTest::aPageHasAllItsMembers()
{
    const Workspace &workspace = m_server->workspace();
    const QString id = workspace.findPage(workspace.tasksId(), u"Home page layout"_s);
    const QJsonObject page = m_client->getPage(id).json();
    const QStringList expected{u"archived"_s,
                               u"cover"_s,
                               u"created_by"_s,
                               u"created_time"_s,
                               u"icon"_s,
                               u"id"_s,
                               u"in_trash"_s,
                               u"is_archived"_s,
                               u"is_locked"_s,
                               u"last_edited_by"_s,
                               u"last_edited_time"_s,
                               u"object"_s,
                               u"parent"_s,
                               u"properties"_s,
                               u"public_url"_s,
                               u"request_id"_s,
                               u"url"_s};
    QCOMPARE(page.keys(), expected);
    QCOMPARE(page[u"parent"_s][u"database_id"_s], workspace.tasksId());
    QCOMPARE(page.value(u"url"_s).toString(), u"https://www.notion.so/Home-page-layout-"_s + QString(id).remove(u'-'));
    const QJsonObject relation = page[u"properties"_s][u"Project"_s].toObject();
    QCOMPARE(relation.keys(), QStringList({u"has_more"_s, u"id"_s, u"relation"_s, u"type"_s}));
    QCOMPARE(page[u"properties"_s][u"Where"_s][u"place"_s], QJsonValue());
    QCOMPARE(page[u"properties"_s][u"Start now"_s][u"button"_s], QJsonObject());
}

void SandboxApiTest::propertiesComeByIdWithTheTitleLast()
{
    const Workspace &workspace = m_server->workspace();
    const QByteArray body = m_client->call("GET", "/v1/databases/" + workspace.timeTrackerId().toLatin1()).body;
    QVERIFY(body.indexOf("\"Start\":{") < body.indexOf("\"Status\":{"));
    QVERIFY(body.indexOf("\"Status\":{") < body.indexOf("\"Minutes\":{"));
    QVERIFY(body.indexOf("\"End\":{") < body.indexOf("\"Name\":{"));
}

void SandboxApiTest::anIdMayComeInAnyForm_data()
{
    QTest::addColumn<QString>("id");
    const QString id = Workspace().tasksId();
    QTest::newRow("with dashes") << id;
    QTest::newRow("without dashes") << QString(id).remove(u'-');
    QTest::newRow("in capitals") << id.toUpper();
    QTest::newRow("in capitals without dashes") << QString(id).remove(u'-').toUpper();
}

void SandboxApiTest::anIdMayComeInAnyForm()
{
    QFETCH(QString, id);
    const ClientAnswer answer = m_client->call("GET", "/v1/databases/" + id.toLatin1());
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.json().value(u"id"_s), m_server->workspace().tasksId());
}

void SandboxApiTest::anIdThatIsNoUuidIsRefused_data()
{
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QString>("message");
    QTest::newRow("a word for a page")
        << "/v1/pages/AAA"_ba
        << u"path failed validation: path.page_id should be a valid uuid, instead was `\"AAA\"`."_s;
    QTest::newRow("a version 1 uuid for a database")
        << "/v1/databases/f3f2e850-b5d4-11ef-ac7e-96584d5248b2"_ba
        << u"path failed validation: path.database_id should be a valid uuid, instead was "
           "`\"f3f2e850-b5d4-11ef-ac7e-96584d5248b2\"`."_s;
    QTest::newRow("digits in a row") << "/v1/pages/12345678-1234-1234-1234-123456789abc"_ba
                                     << u"path failed validation: path.page_id should be a valid uuid, instead was "
                                        "`\"12345678-1234-1234-1234-123456789abc\"`."_s;
}

void SandboxApiTest::anIdThatIsNoUuidIsRefused()
{
    QFETCH(QByteArray, target);
    const ClientAnswer answer = m_client->call("GET", target);
    QCOMPARE(answer.status, 400);
    QCOMPARE(answer.code(), u"validation_error"_s);
    QTEST(answer.message(), "message");
}

void SandboxApiTest::anUnknownIdIsNotFound()
{
    const ClientAnswer page = m_client->call("GET", "/v1/pages/7855b161f63e4683b7c78ca6e97ee266");
    QCOMPARE(page.status, 404);
    QCOMPARE(page.code(), u"object_not_found"_s);
    QVERIFY(page.message().startsWith(u"Could not find page with ID: 7855b161-f63e-4683-b7c7-8ca6e97ee266. Make sure "
                                      "the relevant pages and databases are shared with your integration"_s));
    const ClientAnswer zero = m_client->query(u"00000000-0000-0000-0000-000000000000"_s);
    QCOMPARE(zero.status, 404);
    QVERIFY(zero.message().startsWith(u"Could not find database with ID: "_s));
}

void SandboxApiTest::anIdOfTheWrongKindIsToldApart()
{
    const Workspace &workspace = m_server->workspace();
    const ClientAnswer page = m_client->getPage(workspace.tasksId());
    QCOMPARE(page.status, 400);
    QCOMPARE(
        page.message(),
        u"Provided ID %1 is a database, not a page. Use the retrieve database API instead."_s.arg(workspace.tasksId()));
    const QString row = workspace.findPage(workspace.clientsId(), u"Vélo Atelier"_s);
    const ClientAnswer database = m_client->call("GET", "/v1/databases/" + row.toLatin1());
    QCOMPARE(database.status, 400);
    QCOMPARE(database.message(),
             u"Provided database_id %1 is a page, not a database. Use the pages API instead, or pass the ID of the "
             "database itself."_s.arg(row));
}

void SandboxApiTest::aDatabaseWithTwoDataSourcesIsRefused()
{
    m_server->workspace().setManyDataSources(m_server->workspace().tasksId(), true);
    const ClientAnswer answer = m_client->query(m_server->workspace().tasksId());
    QCOMPARE(answer.status, 400);
    QCOMPARE(answer.code(), u"validation_error"_s);
    QCOMPARE(answer.message(), u"Databases with multiple data sources are not supported in this API version."_s);
    QCOMPARE(answer.json()[u"additional_data"_s][u"error_type"_s], u"multiple_data_sources_for_database"_s);
}

void SandboxApiTest::checksComeInTheOrderOfTheApi_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("authorization");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("code");
    QTest::newRow("an unknown path before a wrong key") << "GET"_ba
                                                        << "/v1/invalid"_ba
                                                        << ""_ba
                                                        << "Bearer wrong"_ba << 400 << u"invalid_request_url"_s;
    QTest::newRow("an unknown method before a wrong key") << "DELETE"_ba
                                                          << "/v1/users/me"_ba
                                                          << ""_ba
                                                          << "Bearer wrong"_ba << 400 << u"invalid_request_url"_s;
    QTest::newRow("broken JSON before a wrong key") << "POST"_ba
                                                    << "/v1/pages"_ba
                                                    << "{"_ba
                                                    << "Bearer wrong"_ba << 400 << u"invalid_json"_s;
    QTest::newRow("a wrong key before a wrong id") << "GET"_ba
                                                   << "/v1/pages/AAA"_ba
                                                   << ""_ba
                                                   << "Bearer wrong"_ba << 401 << u"unauthorized"_s;
    QTest::newRow("a key without Bearer") << "GET"_ba
                                          << "/v1/users/me"_ba
                                          << ""_ba
                                          << "ntn_sandbox"_ba << 401 << u"unauthorized"_s;
    QTest::newRow("a wrong id before a wrong body") << "PATCH"_ba
                                                    << "/v1/pages/AAA"_ba
                                                    << "{\"colour\":1}"_ba
                                                    << "Bearer ntn_sandbox"_ba << 400 << u"validation_error"_s;
}

void SandboxApiTest::checksComeInTheOrderOfTheApi()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, authorization);
    m_client->headers[0].second = authorization;
    const ClientAnswer answer
        = body.isEmpty() ? m_client->call(method, target) : m_client->callRaw(method, target, body);
    QTEST(answer.status, "status");
    QTEST(answer.code(), "code");
    QCOMPARE(answer.json().value(u"object"_s), u"error"_s);
    QCOMPARE(answer.json().value(u"status"_s).toInt(), answer.status);
}

void SandboxApiTest::theVersionIsChecked_data()
{
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("messageEnd");
    QTest::newRow("absent") << QByteArray() << u"missing_version"_s << u"should be defined, instead was `undefined`."_s;
    QTest::newRow("empty") << ""_ba << u"missing_version"_s << u"instead was `\"\"`."_s;
    QTest::newRow("invented") << "2022-06-29"_ba << u"missing_version"_s << u"instead was `\"2022-06-29\"`."_s;
    QTest::newRow("another that exists") << "2025-09-03"_ba << u"validation_error"_s << u"2022-06-28 only."_s;
}

void SandboxApiTest::theVersionIsChecked()
{
    QFETCH(QByteArray, version);
    QFETCH(QString, messageEnd);
    if (version.isNull())
        m_client->headers.removeAt(1);
    else
        m_client->headers[1].second = version;
    const ClientAnswer answer = m_client->call("GET", "/v1/users/me");
    QCOMPARE(answer.status, 400);
    QTEST(answer.code(), "code");
    QVERIFY2(answer.message().endsWith(messageEnd), qPrintable(answer.message()));
}

void SandboxApiTest::theKeyCanBeChanged()
{
    m_server->setApiKey(u"secret_other"_s);
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 401);
    m_client->headers[0].second = "Bearer secret_other";
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200);
}

void SandboxApiTest::aBodyThatIsNotDeclaredAsJsonIsNotRead()
{
    m_client->headers[2].second = "text/plain";
    const ClientAnswer answer = m_client->createPage(m_server->workspace().tasksId(), {});
    QCOMPARE(answer.status, 400);
    QCOMPARE(answer.message(), u"body failed validation: body.parent should be defined, instead was `undefined`."_s);
}

void SandboxApiTest::filterPropertiesLeavesTheOthersOut()
{
    const QByteArray id = m_server->workspace().timeTrackerId().toLatin1();
    const ClientAnswer answer = m_client->call(
        "POST", "/v1/databases/" + id + "/query?filter_properties=title&filter_properties=hlY%3D", QJsonObject());
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.results().first()[u"properties"_s].toObject().keys(), QStringList({u"Name"_s, u"Status"_s}));
}

void SandboxApiTest::oneTimerRunsFromTheStart()
{
    const Workspace &workspace = m_server->workspace();
    const QStringList running = workspace.runningEntries();
    QCOMPARE(running.size(), 1);
    const QJsonObject properties = m_client->getPage(running.first()).json().value(u"properties"_s).toObject();
    // 42 minutes before 15:30:42, cut to the minute and in the clock's offset.
    QCOMPARE(properties[u"Start"_s][u"date"_s][u"start"_s], u"2026-11-21T14:48:00.000+01:00"_s);
    QCOMPARE(properties[u"End"_s][u"date"_s], QJsonValue());
    const QString task = properties[u"Task"_s][u"relation"_s][0][u"id"_s].toString();
    const QJsonObject taskProperties = m_client->getPage(task).json().value(u"properties"_s).toObject();
    QCOMPARE(taskProperties[u"Timer"_s][u"select"_s][u"name"_s], u"Running"_s);
    const QString project = taskProperties[u"Project"_s][u"relation"_s][0][u"id"_s].toString();
    const QJsonObject projectPage = m_client->getPage(project).json();
    const QString client = projectPage[u"properties"_s][u"Client"_s][u"relation"_s][0][u"id"_s].toString();
    QCOMPARE(m_client->getPage(client).json()[u"properties"_s][u"Name"_s][u"title"_s][0][u"plain_text"_s],
             u"Café Lindenhof"_s);
}

void SandboxApiTest::totalMinutesAreTheSumOfTheEntries()
{
    const Workspace &workspace = m_server->workspace();
    const QString id = workspace.findPage(workspace.tasksId(), u"Home page layout"_s);
    const QJsonValue rollup = m_client->getPage(id).json()[u"properties"_s][u"Total minutes"_s][u"rollup"_s];
    QCOMPARE(rollup[u"number"_s].toDouble(), 95.0 + 120.0 + 80.0);
    QCOMPARE(rollup[u"function"_s], u"sum"_s);
    QCOMPARE(rollup[u"type"_s], u"number"_s);
}

void SandboxApiTest::idsAreTheSameAtEachStart()
{
    const Workspace other;
    const Workspace &workspace = m_server->workspace();
    QCOMPARE(other.findPage(other.tasksId(), u"Home page layout"_s),
             workspace.findPage(workspace.tasksId(), u"Home page layout"_s));
}

QTEST_GUILESS_MAIN(SandboxApiTest)
#include "SandboxApiTest.moc"
