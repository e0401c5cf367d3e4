#include "Fakes/Await.h"
#include "Fakes/FakeClock.h"
#include "Fakes/FakeHttpTransport.h"
#include "Fakes/TestSettings.h"
#include "Services/NotionSchemaService.h"

#include <QDir>
#include <QJsonDocument>
#include <QLocale>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

/// The types that the program has a name for, written down a second time.
const QStringList knownTypes{u"title"_s,
                             u"rich_text"_s,
                             u"number"_s,
                             u"select"_s,
                             u"multi_select"_s,
                             u"status"_s,
                             u"date"_s,
                             u"people"_s,
                             u"files"_s,
                             u"checkbox"_s,
                             u"url"_s,
                             u"email"_s,
                             u"phone_number"_s,
                             u"formula"_s,
                             u"relation"_s,
                             u"rollup"_s,
                             u"created_time"_s,
                             u"created_by"_s,
                             u"last_edited_time"_s,
                             u"last_edited_by"_s,
                             u"unique_id"_s};

} // namespace

/// Reads the layouts of databases that the real API answered, if its answers are at hand.
class NotionSchemaRecordingsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void everyPropertyOfADatabaseIsRead_data();
    void everyPropertyOfADatabaseIsRead();
    void everyTypeOccurs();

private:
    QMap<QString, QJsonObject> m_databases; ///< By the name of the file.
    QSet<QString> m_types;                  ///< That have been read.
};

void NotionSchemaRecordingsTest::initTestCase()
{
    QLocale::setDefault(QLocale::c()); // In which the order of names is plain to work out.
    const QDir folder(qEnvironmentVariable("KORVO_RECORDINGS"));
    const auto names = folder.entryList({u"*.json"_s}, QDir::Files, QDir::Name);
    for (const auto &name : names) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto recording = QJsonDocument::fromJson(file.readAll());
        QVERIFY2(recording.isObject(), qPrintable(name));
        const auto answer = recording[u"body"].toObject();
        if (answer[u"object"] == u"database"_s)
            m_databases.insert(name, answer);
    }
    QVERIFY(!m_databases.isEmpty());
}

void NotionSchemaRecordingsTest::everyPropertyOfADatabaseIsRead_data()
{
    QTest::addColumn<QJsonObject>("database");
    for (auto database = m_databases.constBegin(); database != m_databases.constEnd(); ++database)
        QTest::newRow(qPrintable(database.key())) << database.value();
}

void NotionSchemaRecordingsTest::everyPropertyOfADatabaseIsRead()
{
    QFETCH(QJsonObject, database);
    FakeHttpTransport transport;
    FakeClock clock;
    TestSettings settings;
    settings.settings.setApiKey(u"ntn_test"_s);
    NotionSchemaService service(transport, settings.settings, clock);
    transport.answer(200, QJsonDocument(database).toJson());
    const auto schema = await(service.loadSchema(u"database"_s));
    QVERIFY(schema);

    const auto properties = database[u"properties"].toObject();
    QStringList names;
    for (const auto &property : schema->properties) {
        names.append(property.name);
        const auto json = properties[property.name].toObject();
        const auto type = json[u"type"].toString();
        QCOMPARE(property.id, json[u"id"].toString());
        QVERIFY(!property.id.isEmpty());
        QCOMPARE(NotionProperty::rawValue(property.type), knownTypes.contains(type) ? type : u"unknown"_s);
        m_types.insert(NotionProperty::rawValue(property.type));

        QStringList options;
        if (type == u"select"_s || type == u"status"_s) {
            for (const auto &option : json[type][u"options"].toArray())
                options.append(option[u"name"].toString());
            QVERIFY(!options.isEmpty());
        }
        QCOMPARE(property.selectOptions, options);

        QCOMPARE(property.relationDatabaseId.has_value(), type == u"relation"_s);
        if (property.relationDatabaseId) {
            QVERIFY(!property.relationDatabaseId->isEmpty());
            QCOMPARE(*property.relationDatabaseId, json[u"relation"][u"database_id"].toString());
        }
    }

    auto sorted = properties.keys();
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const QString &left, const QString &right) { return left.toLower() < right.toLower(); });
    QCOMPARE(names, sorted);
}

void NotionSchemaRecordingsTest::everyTypeOccurs()
{
    for (const auto &type : knownTypes)
        QVERIFY2(m_types.contains(type), qPrintable(type));
    QVERIFY(m_types.contains(u"unknown"_s));
}

QTEST_GUILESS_MAIN(NotionSchemaRecordingsTest)

#include "NotionSchemaRecordingsTest.moc"
