#include "Sandbox/RecordedContent.h"
#include "Sandbox/SandboxClient.h"
#include "Sandbox/Shape.h"
#include "sandbox/ApiError.h"
#include "sandbox/Workspace.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace korvo::sandbox;

namespace {

/// The recordings that are not sent again, and why.
const QHash<QString, QString> notSentAgain{
    {u"01-users-me-bot-workspace.json"_s, u"users/me: one of its kind is compared by kind"_s},
    {u"02-users-me-bot-2022.json"_s, u"users/me: one of its kind is compared by kind"_s},
    {u"03-users-me-bot-2026.json"_s, u"users/me: compared by kind"_s},
    {u"04-database-get-23-property-types.json"_s, u"a database: compared by kind and by type of property"_s},
    {u"05-database-get-22-property-types-2025.json"_s, u"a database: compared by type of property"_s},
    {u"06-database-get-minimal.json"_s, u"a database: compared by type of property"_s},
    {u"07-database-get-relations-rollups.json"_s, u"a database: compared by type of property"_s},
    {u"41-error-401-unauthorized.json"_s, u"lists users, none of the six operations: its words are compared"_s},
    {u"43-error-404-user.json"_s, u"gets another user, none of the six operations"_s},
    {u"44-error-400-user-uuid.json"_s, u"gets another user, none of the six operations"_s},
    {u"45-error-400-no-data-sources.json"_s, u"the sample workspace has no database without a data source"_s},
    {u"46-error-400-body-validation-fix-one.json"_s, u"appends blocks, none of the six operations"_s},
    {u"47-users-me-bot-no-workspace-name.json"_s, u"users/me, older than the sample workspace"_s},
    {u"48-database-get-all-types-hkob.json"_s, u"a database, older than the sample workspace"_s},
    {u"49-database-get-status-hkob.json"_s, u"a database, older than the sample workspace"_s},
    {u"62-error-400-text-length-takassh.json"_s, u"changes a block, none of the six operations"_s},
};

/// An answer, a page or a property without the members that came or went with time within the version of the API.
QJsonObject withoutMembersOfTime(QJsonObject object)
{
    const bool isList = object.value(u"object"_s) == "list"_L1;
    for (const QString &name : {u"request_id"_s, u"public_url"_s, u"in_trash"_s, u"is_archived"_s, u"is_locked"_s,
                                u"archived"_s, u"developer_survey"_s})
        object.remove(name);
    if (object.value(u"type"_s) == "relation"_L1)
        object.remove(u"has_more"_s);
    if (isList) {
        // "page" until 2023, "page_or_database" since.
        object.remove(object.take(u"type"_s).toString());
    }
    return object;
}

/// What the answers differ in, empty if nothing: members and types of the frame and of each property.
QString difference(const QJsonObject &given, const QJsonObject &recorded)
{
    QJsonObject frame = withoutMembersOfTime(given);
    QJsonObject model = withoutMembersOfTime(recorded);
    for (QJsonObject *object : {&frame, &model}) {
        for (const QString &key : {u"properties"_s, u"results"_s}) {
            if (object->contains(key))
                object->insert(key, QJsonValue());
        }
    }
    // In the sample workspace all pages are rows of a database.
    if (model.value(u"parent"_s)[u"type"_s] == "page_id"_L1)
        model.insert(u"parent"_s, frame.value(u"parent"_s));
    if (frame.keys() != model.keys())
        return u"members %1 but recorded %2"_s.arg(frame.keys().join(u' '), model.keys().join(u' '));
    for (const QString &key : frame.keys()) {
        if (!isShapedLike(frame.value(key), model.value(key)))
            return u"the member "_s + key;
    }
    const QJsonObject properties = given.value(u"properties"_s).toObject();
    const QJsonObject models = recorded.value(u"properties"_s).toObject();
    if (properties.keys() != models.keys())
        return u"properties %1 but recorded %2"_s.arg(properties.keys().join(u' '), models.keys().join(u' '));
    for (const QString &name : properties.keys()) {
        const QString type = properties[name][u"type"_s].toString();
        if (properties[name][type].isNull() != models[name][type].isNull())
            return u"the property %1: only one is null"_s.arg(name);
        if (!isShapedLike(withoutMembersOfTime(properties.value(name).toObject()),
                          withoutMembersOfTime(models.value(name).toObject())))
            return u"the property %1: %2"_s.arg(name,
                                                QString::fromUtf8(QJsonDocument(properties[name].toObject()).toJson()));
    }
    return {};
}

QStringList titlesIn(const QJsonValue &answer)
{
    QStringList titles;
    for (const QJsonValue &page : answer[u"results"_s].toArray())
        titles.append(titleIn(page));
    return titles;
}

} // namespace

/// Compares the shapes of answers with recordings of the real API, which stand in the folder KORVO_RECORDINGS and are
/// not part of this project.
class RecordingsReplayTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void answersOfTheSameKindHaveTheSameMembers_data();
    void answersOfTheSameKindHaveTheSameMembers();
    void everyRecordedPropertyTypeHasTheSameMembers_data();
    void everyRecordedPropertyTypeHasTheSameMembers();
    void refusalsHaveTheRecordedWords_data();
    void refusalsHaveTheRecordedWords();
    void recordedRequestsAreAnsweredAlike_data();
    void recordedRequestsAreAnsweredAlike();
    void datesAreReadBackAsRecorded_data();
    void datesAreReadBackAsRecorded();

private:
    QList<QJsonObject> recordings() const;
    QJsonObject recording(const QString &prefix) const;

    SandboxServer m_server;
    std::unique_ptr<SandboxClient> m_client;
};

QList<QJsonObject> RecordingsReplayTest::recordings() const
{
    const QDir folder(qEnvironmentVariable("KORVO_RECORDINGS"));
    QList<QJsonObject> all;
    for (const QString &name : folder.entryList({u"*.json"_s}, QDir::Files, QDir::Name)) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        QJsonObject json = QJsonDocument::fromJson(file.readAll()).object();
        json.insert(u"file"_s, name);
        all.append(json);
    }
    return all;
}

QJsonObject RecordingsReplayTest::recording(const QString &prefix) const
{
    for (const QJsonObject &json : recordings()) {
        if (json.value(u"file"_s).toString().startsWith(prefix))
            return json;
    }
    return {};
}

void RecordingsReplayTest::initTestCase()
{
    QVERIFY2(recordings().size() > 50, "KORVO_RECORDINGS names no folder with the recordings");
    for (const QString &name : notSentAgain.keys())
        QVERIFY2(!recording(name).isEmpty(), qPrintable(name));
    QVERIFY2(m_server.listen(0, false), qPrintable(m_server.errorString()));
    m_client = std::make_unique<SandboxClient>(m_server);
}

void RecordingsReplayTest::answersOfTheSameKindHaveTheSameMembers_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QString>("kind");
    QTest::newRow("users/me") << u"03"_s << u"me"_s;
    QTest::newRow("a database") << u"04"_s << u"database"_s;
    QTest::newRow("a page") << u"25"_s << u"page"_s;
    QTest::newRow("a page without properties") << u"26"_s << u"page"_s;
    QTest::newRow("a changed page") << u"35"_s << u"page"_s;
    QTest::newRow("a list with more") << u"17"_s << u"more"_s;
    QTest::newRow("an empty list") << u"16"_s << u"empty"_s;
    QTest::newRow("an error") << u"31"_s << u"error"_s;
    QTest::newRow("a wrong path") << u"40"_s << u"path"_s;
}

void RecordingsReplayTest::answersOfTheSameKindHaveTheSameMembers()
{
    QFETCH(QString, prefix);
    QFETCH(QString, kind);
    const QJsonObject recorded = recording(prefix);
    const Workspace &workspace = m_server.workspace();
    const QString tasks = workspace.tasksId();
    ClientAnswer answer;
    if (kind == "me"_L1)
        answer = m_client->call("GET", "/v1/users/me");
    else if (kind == "database"_L1)
        answer = m_client->call("GET", "/v1/databases/" + tasks.toLatin1());
    else if (kind == "page"_L1)
        answer = m_client->getPage(workspace.findPage(tasks, u"Home page layout"_s));
    else if (kind == "more"_L1)
        answer = m_client->query(tasks, {{u"page_size"_s, 1}});
    else if (kind == "empty"_L1)
        answer = m_client->query(
            tasks,
            {{u"filter"_s,
              QJsonObject{{u"property"_s, u"Name"_s}, {u"title"_s, QJsonObject{{u"equals"_s, u"none such"_s}}}}}});
    else if (kind == "error"_L1)
        answer = m_client->createPage(tasks, {{u"Name"_s, QJsonValue()}});
    else
        answer = m_client->call("GET", "/v1/invalid");
    QCOMPARE(answer.status, recorded.value(u"status"_s).toInt());
    const QJsonValue given = frameOf(answer.json());
    const QJsonValue model = frameOf(recorded.value(u"body"_s));
    QCOMPARE(given.toObject().keys(), model.toObject().keys());
    QVERIFY(isShapedLike(given, model));
}

void RecordingsReplayTest::everyRecordedPropertyTypeHasTheSameMembers_data()
{
    QTest::addColumn<QString>("type");
    for (const PropertyType type : allPropertyTypes())
        QTest::newRow(typeName(type).toLatin1().constData()) << typeName(type);
}

/// Whatever shape a property of the sample workspace has, the recordings hold it, in a database and in pages.
void RecordingsReplayTest::everyRecordedPropertyTypeHasTheSameMembers()
{
    QFETCH(QString, type);
    PropertyCollection recorded;
    for (const QJsonObject &json : recordings()) {
        // Members grow within the version of the API: only what is as new as the sample workspace is compared.
        if (json.value(u"recorded"_s).toString() >= "2025-06"_L1)
            recorded.add(json.value(u"body"_s));
    }
    PropertyCollection given;
    const Workspace &workspace = m_server.workspace();
    for (const QString &id :
         {workspace.clientsId(), workspace.projectsId(), workspace.tasksId(), workspace.timeTrackerId()}) {
        given.add(m_client->call("GET", "/v1/databases/" + id.toLatin1()).json());
        given.add(m_client->query(id).json());
    }
    QVERIFY(!given.ofType(type).isEmpty());
    const QList<QJsonValue> models = recorded.ofType(type);
    for (const QJsonValue &property : given.ofType(type)) {
        const bool isKnown
            = std::ranges::any_of(models, [&](const QJsonValue &model) { return isShapedLike(property, model); });
        QVERIFY2(isKnown, QJsonDocument(property.toObject()).toJson().constData());
    }
}

void RecordingsReplayTest::refusalsHaveTheRecordedWords_data()
{
    QTest::addColumn<QString>("prefix");
    for (const QString &prefix : {u"40"_s, u"41"_s, u"42"_s, u"55"_s, u"56"_s, u"57"_s, u"58"_s})
        QTest::newRow(prefix.toLatin1().constData()) << prefix;
}

void RecordingsReplayTest::refusalsHaveTheRecordedWords()
{
    QFETCH(QString, prefix);
    const QJsonObject recorded = recording(prefix);
    SandboxClient client(m_server);
    QByteArray target = recorded[u"request"_s].toObject()[u"path"_s].toString().toLatin1();
    if (prefix == "41"_L1) {
        client.headers[0].second = "Bearer wrong";
        target = "/v1/users/me"; // The recorded path is none of the six operations.
    }
    const ClientAnswer answer = client.call("GET", target);
    const QJsonValue body = recorded.value(u"body"_s);
    QCOMPARE(answer.status, recorded.value(u"status"_s).toInt());
    QCOMPARE(answer.code(), body[u"code"_s].toString());
    // Since 2026 the words end with the name of the integration.
    QString expected = body[u"message"_s].toString();
    if (answer.status == 404)
        expected.replace(u"integration."_s, u"integration \"Korvo\"."_s);
    QCOMPARE(answer.message(), expected);
}

void RecordingsReplayTest::recordedRequestsAreAnsweredAlike_data()
{
    QTest::addColumn<QJsonObject>("recorded");
    for (const QJsonObject &json : recordings()) {
        const QString name = json.value(u"file"_s).toString();
        if (!notSentAgain.contains(name))
            QTest::newRow(name.toLatin1().constData()) << json;
    }
}

/// Sends each recorded request again, to a workspace with the recorded content.
void RecordingsReplayTest::recordedRequestsAreAnsweredAlike()
{
    QFETCH(QJsonObject, recorded);
    SandboxServer server;
    // Filters such as this_week mean the day of the recording.
    const QDateTime day = QDate::fromString(recorded.value(u"recorded"_s).toString(), Qt::ISODate).startOfDay(Qt::UTC);
    server.setClock([day] { return day; });
    QVERIFY2(server.listen(0, false), qPrintable(server.errorString()));
    std::optional<RecordedContent> content;
    try {
        content.emplace(server.workspace(), recorded, recordings());
    } catch (const ApiError &error) {
        QFAIL(qPrintable(error.message));
    }
    SandboxClient client(server);
    const QJsonObject model = recorded.value(u"body"_s).toObject();
    if (model.value(u"code"_s) == "missing_version"_L1)
        client.headers[1].second = "";

    const ClientAnswer answer = client.call(content->method(), content->target(), content->body());
    QVERIFY2(answer.status == recorded.value(u"status"_s).toInt(), answer.body.constData());
    const QJsonObject given = answer.json();
    QCOMPARE(difference(given, model), QString());
    QCOMPARE(given.value(u"code"_s), model.value(u"code"_s));
    // What is not found is told in more words since 2026; the list of versions has grown.
    if (answer.status == 400 && answer.code() != "missing_version"_L1)
        QCOMPARE(answer.message(), model.value(u"message"_s).toString());
    QCOMPARE(given.value(u"has_more"_s), model.value(u"has_more"_s));

    QStringList titles = titlesIn(given);
    QStringList recordedTitles = titlesIn(model);
    if (!content->body() || !content->body()->contains(u"sorts"_s)) {
        // Rows made in the same minute come in any order.
        titles.sort();
        recordedTitles.sort();
    }
    QCOMPARE(titles, recordedTitles);
    const QJsonArray pages = given.value(u"results"_s).toArray();
    const QJsonArray models = model.value(u"results"_s).toArray();
    for (const QJsonValue &page : pages) {
        const auto twin
            = std::ranges::find_if(models, [&](const QJsonValue &other) { return titleIn(other) == titleIn(page); });
        QCOMPARE(difference(page.toObject(), twin->toObject()), QString());
    }
}

void RecordingsReplayTest::datesAreReadBackAsRecorded_data()
{
    QTest::addColumn<QJsonObject>("written");
    QTest::addColumn<QJsonObject>("readBack");
    for (const QJsonObject &json : recordings()) {
        const QJsonObject request = json.value(u"request"_s).toObject();
        const QJsonObject written = request[u"body"_s].toObject()[u"properties"_s].toObject();
        const QJsonObject readBack = json[u"body"_s].toObject()[u"properties"_s].toObject();
        for (auto it = written.begin(); it != written.end(); ++it) {
            const QJsonValue date = it.value()[u"date"_s];
            if (date.isObject() && readBack[it.key()][u"date"_s].isObject())
                QTest::newRow(json.value(u"file"_s).toString().toLatin1().constData())
                    << date.toObject() << readBack[it.key()][u"date"_s].toObject();
        }
    }
}

void RecordingsReplayTest::datesAreReadBackAsRecorded()
{
    QFETCH(QJsonObject, written);
    const ClientAnswer answer
        = m_client->createPage(m_server.workspace().tasksId(), {{u"Date"_s, QJsonObject{{u"date"_s, written}}}});
    QTEST(answer.json()[u"properties"_s][u"Date"_s][u"date"_s].toObject(), "readBack");
}

QTEST_GUILESS_MAIN(RecordingsReplayTest)
#include "RecordingsReplayTest.moc"
