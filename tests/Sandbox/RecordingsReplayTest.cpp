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
