#include "Services/NotionSchemaService.h"
#include "Fakes/Await.h"
#include "Fakes/FakeClock.h"
#include "Fakes/FakeHttpTransport.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/NotionDatabases.h"
#include "Fakes/TestSettings.h"

#include <QJsonDocument>
#include <QLocale>
#include <QScopeGuard>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;
using namespace korvo::databases;
using PropertyType = NotionProperty::PropertyType;

namespace {

QStringList namesOf(const QList<NotionProperty> &properties)
{
    QStringList names;
    for (const auto &property : properties)
        names.append(property.name);
    return names;
}

QByteArray bytes(const QJsonObject &json)
{
    return QJsonDocument(json).toJson();
}

} // namespace

class NotionSchemaServiceTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aLoadAsksForTheDatabaseByItsIdentifierAsItIs();
    void propertiesNamedBAndAAndCComeAsAAndBAndC_data();
    void propertiesNamedBAndAAndCComeAsAAndBAndC();
    void namesAreInTheOrderOfTheUsersLanguage_data();
    void namesAreInTheOrderOfTheUsersLanguage();
    void theNameIsTheKeyAndNotTheMember();
    void aMissingIdIsTheEmptyText_data();
    void aMissingIdIsTheEmptyText();
    void aPropertyWithoutReadableTypeIsUnknownAndStays_data();
    void aPropertyWithoutReadableTypeIsUnknownAndStays();
    void selectOptionsKeepNotionsOrder_data();
    void selectOptionsKeepNotionsOrder();
    void aStatusOptionWithoutANameIsLeftOut();
    void malformedOptionsAreNoOptions_data();
    void malformedOptionsAreNoOptions();
    void optionsAreReadUnderTheTypesOwnKeyAndOfTwoTypesAlone();
    void aRelationPointsToItsDatabase();
    void aRelationWithoutDatabaseIdStaysARelation_data();
    void aRelationWithoutDatabaseIdStaysARelation();
    void onlyARelationPointsToADatabase();
    void aTypeNewToTheProgramIsUnknownAndFoundUnderUnknownOnly();
    void anAnswerOfAnotherShapeIsAnEmptySchema_data();
    void anAnswerOfAnotherShapeIsAnEmptySchema();
    void oneMalformedPropertyEmptiesTheWholeSchema_data();
    void oneMalformedPropertyEmptiesTheWholeSchema();
    void aFailureIsPassedOnAsItIs_data();
    void aFailureIsPassedOnAsItIs();
    void twoLoadsInFlightEachHaveTheirOwnResult();
    void nothingIsKeptBetweenLoads();
    void aLoadOutlivesItsService();
    void aStopEndsTheLoad();
    void propertiesOfSelectAndStatusComeInterleavedByName();
    void noTypesGiveNoProperties();

private:
    using Loaded = NotionAPIService::Result<NotionDatabaseSchema>;

    struct World {
        FakeHttpTransport transport;
        FakeClock clock;
        TestSettings settings;
        FakeSystemLog log;
        NotionSchemaService service{transport, settings.settings, clock};
    };

    Loaded load(const QByteArray &answer);
    NotionDatabaseSchema loadProperties(const QJsonObject &properties);
    NotionProperty loadProperty(const QJsonObject &json);

    std::unique_ptr<World> m_world;
};

void NotionSchemaServiceTest::init()
{
    m_world = std::make_unique<World>();
    m_world->settings.settings.setApiKey(u"ntn_test"_s);
}

void NotionSchemaServiceTest::cleanup()
{
    m_world.reset();
    QCoreApplication::processEvents();
}

NotionSchemaServiceTest::Loaded NotionSchemaServiceTest::load(const QByteArray &answer)
{
    m_world->transport.answer(200, answer);
    return await(m_world->service.loadSchema(u"database"_s));
}

NotionDatabaseSchema NotionSchemaServiceTest::loadProperties(const QJsonObject &properties)
{
    const auto schema = load(bytes(database(properties)));
    return schema ? *schema : NotionDatabaseSchema();
}

/// What a property reads as that is the only one; one without a name if it was lost.
NotionProperty NotionSchemaServiceTest::loadProperty(const QJsonObject &json)
{
    return loadProperties({{u"Only"_s, json}}).properties.value(0);
}

void NotionSchemaServiceTest::aLoadAsksForTheDatabaseByItsIdentifierAsItIs()
{
    m_world->transport.answer(200);
    await(m_world->service.loadSchema(u"1D6B-1040"_s));
    QCOMPARE(m_world->transport.requests.size(), 1);
    const auto &request = m_world->transport.requests.first();
    QCOMPARE(request.method, "GET"_ba);
    QCOMPARE(request.url.path(), u"/v1/databases/1D6B-1040"_s);
    QVERIFY(!request.body);
    QVERIFY(m_world->log.lines.isEmpty());
}

void NotionSchemaServiceTest::propertiesNamedBAndAAndCComeAsAAndBAndC_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::newRow("in the locale of this process") << QLocale();
    QTest::newRow("in the locale of the system") << QLocale::system();
    QTest::newRow("in the locale C") << QLocale::c();
    QTest::newRow("in English") << QLocale(u"en_US"_s);
    QTest::newRow("in German") << QLocale(u"de_DE"_s);
    QTest::newRow("in Danish, where capitals go first") << QLocale(u"da_DK"_s);
    QTest::newRow("in Turkish") << QLocale(u"tr_TR"_s);
}

void NotionSchemaServiceTest::propertiesNamedBAndAAndCComeAsAAndBAndC()
{
    QFETCH(QLocale, locale);
    const auto back = qScopeGuard([before = QLocale()] { QLocale::setDefault(before); });
    QLocale::setDefault(locale);
    const auto number = column(u"number"_s);
    const auto schema = loadProperties({{u"b"_s, number}, {u"A"_s, number}, {u"c"_s, number}});
    QCOMPARE(namesOf(schema.properties), QStringList({u"A"_s, u"b"_s, u"c"_s}));

    const auto swapped = loadProperties({{u"B"_s, number}, {u"a"_s, number}, {u"C"_s, number}});
    QCOMPARE(namesOf(swapped.properties), QStringList({u"a"_s, u"B"_s, u"C"_s}));
}

void NotionSchemaServiceTest::namesAreInTheOrderOfTheUsersLanguage_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("a German has Ä with the A") << u"de_DE"_s << QStringList({u"ab"_s, u"Äc"_s, u"ad"_s, u"Z"_s});
    QTest::newRow("a Swede has Ä after the Z") << u"sv_SE"_s << QStringList({u"ab"_s, u"ad"_s, u"Z"_s, u"Äc"_s});
}

void NotionSchemaServiceTest::namesAreInTheOrderOfTheUsersLanguage()
{
    QFETCH(QString, locale);
    QFETCH(QStringList, names);
    const auto back = qScopeGuard([before = QLocale()] { QLocale::setDefault(before); });
    QLocale::setDefault(QLocale(locale));
    QJsonObject properties;
    for (const auto &name : names)
        properties.insert(name, column(u"number"_s));
    QCOMPARE(namesOf(loadProperties(properties).properties), names);
}

void NotionSchemaServiceTest::theNameIsTheKeyAndNotTheMember()
{
    auto json = column(u"title"_s);
    json.insert("name"_L1, u"Other"_s);
    const auto loaded = loadProperty(json);
    QCOMPARE(loaded.name, u"Only"_s);
    QCOMPARE(loaded.id, u"%3FB%3AW"_s);
    QCOMPARE(loaded.type, PropertyType::title);
}

void NotionSchemaServiceTest::aMissingIdIsTheEmptyText_data()
{
    QTest::addColumn<QJsonValue>("id");
    QTest::newRow("no such member") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("null") << QJsonValue();
    QTest::newRow("a number") << QJsonValue(7);
}

void NotionSchemaServiceTest::aMissingIdIsTheEmptyText()
{
    QFETCH(QJsonValue, id);
    auto json = column(u"date"_s);
    json.insert("id"_L1, id);
    const auto loaded = loadProperty(json);
    QCOMPARE(loaded.name, u"Only"_s);
    QCOMPARE(loaded.id, QString());
    QCOMPARE(loaded.type, PropertyType::date);
}

void NotionSchemaServiceTest::aPropertyWithoutReadableTypeIsUnknownAndStays_data()
{
    QTest::addColumn<QJsonValue>("type");
    QTest::newRow("no such member") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("null") << QJsonValue();
    QTest::newRow("an object") << QJsonValue(QJsonObject{{u"name"_s, u"select"_s}});
    QTest::newRow("upper case") << QJsonValue(u"Select"_s);
}

void NotionSchemaServiceTest::aPropertyWithoutReadableTypeIsUnknownAndStays()
{
    QFETCH(QJsonValue, type);
    auto json = choice(u"select"_s, {u"Running"_s});
    json.insert("type"_L1, type);
    const auto loaded = loadProperty(json);
    QCOMPARE(loaded.name, u"Only"_s);
    QCOMPARE(loaded.type, PropertyType::unknown);
    QVERIFY(loaded.selectOptions.isEmpty());
}

void NotionSchemaServiceTest::selectOptionsKeepNotionsOrder_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("as they happen to sort") << QStringList({u"Running"_s, u"Stopped"_s});
    QTest::newRow("against the alphabet") << QStringList({u"Stopped"_s, u"Running"_s, u"paused"_s});
    QTest::newRow("one twice") << QStringList({u"a"_s, u"b"_s, u"a"_s});
}

void NotionSchemaServiceTest::selectOptionsKeepNotionsOrder()
{
    QFETCH(QStringList, options);
    QCOMPARE(loadProperty(choice(u"select"_s, options)).selectOptions, options);
    QCOMPARE(loadProperty(choice(u"status"_s, options)).selectOptions, options);
}

void NotionSchemaServiceTest::aStatusOptionWithoutANameIsLeftOut()
{
    const QJsonArray options{QJsonObject{{u"name"_s, u"Running"_s}}, QJsonObject{{u"id"_s, u"x"_s}},
                             QJsonObject{{u"name"_s, QJsonValue::Null}}, QJsonObject{{u"name"_s, 5}},
                             QJsonObject{{u"name"_s, u"Stopped"_s}}};
    const auto loaded = loadProperty(column(u"status"_s, QJsonObject{{u"options"_s, options}}));
    QCOMPARE(loaded.type, PropertyType::status);
    QCOMPARE(loaded.selectOptions, QStringList({u"Running"_s, u"Stopped"_s}));
}

void NotionSchemaServiceTest::malformedOptionsAreNoOptions_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QJsonValue>("configuration");
    const QJsonObject good{{u"name"_s, u"Running"_s}};
    for (const auto &type : {u"select"_s, u"status"_s}) {
        const auto row = [&type](const char *what) -> QTestData & {
            return QTest::addRow("a %s with %s", qPrintable(type), what) << type;
        };
        row("no configuration") << QJsonValue(QJsonValue::Undefined);
        row("null") << QJsonValue();
        row("an array in place of its configuration") << QJsonValue(QJsonArray{good});
        row("no options") << QJsonValue(QJsonObject());
        row("an object in place of its options") << QJsonValue(QJsonObject{{u"options"_s, good}});
        row("a text among its options") << QJsonValue(QJsonObject{{u"options"_s, QJsonArray{good, u"Stopped"_s}}});
        row("null among its options") << QJsonValue(QJsonObject{{u"options"_s, QJsonArray{QJsonValue(), good}}});
    }
}

void NotionSchemaServiceTest::malformedOptionsAreNoOptions()
{
    QFETCH(QString, type);
    QFETCH(QJsonValue, configuration);
    const auto loaded = loadProperty(column(type, configuration));
    QCOMPARE(NotionProperty::rawValue(loaded.type), type);
    QCOMPARE(loaded.selectOptions, QStringList());
}

void NotionSchemaServiceTest::optionsAreReadUnderTheTypesOwnKeyAndOfTwoTypesAlone()
{
    QCOMPARE(loadProperty(choice(u"multi_select"_s, {u"a"_s})).selectOptions, QStringList());

    auto statusWithSelect = choice(u"select"_s, {u"a"_s});
    statusWithSelect.insert("type"_L1, u"status"_s);
    QCOMPARE(loadProperty(statusWithSelect).selectOptions, QStringList());

    auto selectWithStatus = choice(u"status"_s, {u"a"_s});
    selectWithStatus.insert("type"_L1, u"select"_s);
    QCOMPARE(loadProperty(selectWithStatus).selectOptions, QStringList());
}

void NotionSchemaServiceTest::aRelationPointsToItsDatabase()
{
    const auto loaded = loadProperty(relation(u"tasks"_s));
    QCOMPARE(loaded.type, PropertyType::relation);
    QCOMPARE(loaded.relationDatabaseId, u"tasks"_s);
    QVERIFY(loaded.selectOptions.isEmpty());
}

void NotionSchemaServiceTest::aRelationWithoutDatabaseIdStaysARelation_data()
{
    QTest::addColumn<QJsonValue>("configuration");
    QTest::newRow("no configuration") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("null") << QJsonValue();
    QTest::newRow("no such member") << QJsonValue(QJsonObject());
    QTest::newRow("null in place of the id") << QJsonValue(QJsonObject{{u"database_id"_s, QJsonValue::Null}});
    QTest::newRow("a number in place of the id") << QJsonValue(QJsonObject{{u"database_id"_s, 5}});
    QTest::newRow("an array") << QJsonValue(QJsonArray{u"tasks"_s});
}

void NotionSchemaServiceTest::aRelationWithoutDatabaseIdStaysARelation()
{
    QFETCH(QJsonValue, configuration);
    const auto schema = loadProperties({{u"Only"_s, column(u"relation"_s, configuration)}});
    const auto relations = NotionSchemaService::propertiesOfType({PropertyType::relation}, schema);
    QCOMPARE(namesOf(relations), QStringList(u"Only"_s));
    QVERIFY(!relations.first().relationDatabaseId);
}

void NotionSchemaServiceTest::onlyARelationPointsToADatabase()
{
    auto rollup = relation(u"tasks"_s);
    rollup.insert("type"_L1, u"rollup"_s);
    const auto loaded = loadProperty(rollup);
    QCOMPARE(loaded.type, PropertyType::rollup);
    QVERIFY(!loaded.relationDatabaseId);
}

void NotionSchemaServiceTest::aTypeNewToTheProgramIsUnknownAndFoundUnderUnknownOnly()
{
    const auto schema = loadProperties({{u"New"_s, column(u"hologram"_s)}, {u"Old"_s, column(u"title"_s)}});
    QCOMPARE(namesOf(schema.properties), QStringList({u"New"_s, u"Old"_s}));
    for (int type = 0; type < int(PropertyType::unknown); ++type)
        QVERIFY(!namesOf(NotionSchemaService::propertiesOfType({PropertyType(type)}, schema)).contains(u"New"_s));
    QCOMPARE(namesOf(NotionSchemaService::propertiesOfType({PropertyType::unknown}, schema)), QStringList(u"New"_s));
}

void NotionSchemaServiceTest::anAnswerOfAnotherShapeIsAnEmptySchema_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("no properties") << R"({"object": "database"})"_ba;
    QTest::newRow("an empty object of properties") << R"({"properties": {}})"_ba;
    QTest::newRow("null in place of the properties") << R"({"properties": null})"_ba;
    QTest::newRow("an array in place of the properties") << R"({"properties": [{"type": "title"}]})"_ba;
    QTest::newRow("a text in place of the properties") << R"({"properties": "Name"})"_ba;
}

void NotionSchemaServiceTest::anAnswerOfAnotherShapeIsAnEmptySchema()
{
    QFETCH(QByteArray, answer);
    const auto schema = load(answer);
    QVERIFY(schema);
    QVERIFY(schema->properties.isEmpty());
    QCOMPARE(m_world->transport.requests.size(), 1);
    QVERIFY(m_world->log.lines.isEmpty());
}

void NotionSchemaServiceTest::oneMalformedPropertyEmptiesTheWholeSchema_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("null before the others") << u"A"_s << QJsonValue();
    QTest::newRow("null behind the others") << u"Z"_s << QJsonValue();
    QTest::newRow("a text") << u"Z"_s << QJsonValue(u"title"_s);
    QTest::newRow("an array") << u"Z"_s << QJsonValue(QJsonArray{column(u"title"_s)});
    QTest::newRow("a number") << u"Z"_s << QJsonValue(1);
}

void NotionSchemaServiceTest::oneMalformedPropertyEmptiesTheWholeSchema()
{
    QFETCH(QString, name);
    QFETCH(QJsonValue, value);
    const auto schema = load(bytes(database({{u"Good"_s, column(u"title"_s)}, {name, value}})));
    QVERIFY(schema);
    QVERIFY(schema->properties.isEmpty());
}

void NotionSchemaServiceTest::aFailureIsPassedOnAsItIs_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("description");
    QTest::newRow("a wrong identifier") << 404 << "{}"_ba << u"Resource not found"_s;
    QTest::newRow("a bad key") << 401 << "{}"_ba << u"Invalid API key"_s;
    QTest::newRow("an answer that is no object") << 200 << "[]"_ba << u"Invalid response from Notion"_s;
}

void NotionSchemaServiceTest::aFailureIsPassedOnAsItIs()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    m_world->transport.answer(status, body);
    const auto schema = await(m_world->service.loadSchema(u"database"_s));
    QVERIFY(!schema);
    QTEST(schema.error().errorDescription(), "description");
    QVERIFY(m_world->log.lines.isEmpty());
}

void NotionSchemaServiceTest::twoLoadsInFlightEachHaveTheirOwnResult()
{
    const auto first = follow(m_world->service.loadSchema(u"first"_s));
    const auto second = follow(m_world->service.loadSchema(u"second"_s));
    QCOMPARE(m_world->transport.requests.size(), 2);
    m_world->transport.answer(200, bytes(database({{u"First"_s, column(u"title"_s)}})));
    m_world->transport.answer(200, bytes(database({{u"Second"_s, column(u"title"_s)}})));
    QTRY_VERIFY(*first && *second);
    QCOMPARE(namesOf((*first)->operator*().properties), QStringList(u"First"_s));
    QCOMPARE(namesOf((*second)->operator*().properties), QStringList(u"Second"_s));
}

void NotionSchemaServiceTest::nothingIsKeptBetweenLoads()
{
    QCOMPARE(loadProperties({{u"Old"_s, column(u"title"_s)}}).properties.size(), 1);
    QVERIFY(loadProperties({}).properties.isEmpty());
    QCOMPARE(m_world->transport.requests.size(), 2);
}

void NotionSchemaServiceTest::aLoadOutlivesItsService()
{
    auto service
        = std::make_unique<NotionSchemaService>(m_world->transport, m_world->settings.settings, m_world->clock);
    const auto schema = follow(service->loadSchema(u"database"_s));
    service.reset();
    m_world->transport.answer(200, bytes(database({{u"Name"_s, column(u"title"_s)}})));
    QTRY_VERIFY(*schema);
    QCOMPARE(namesOf((*schema)->operator*().properties), QStringList(u"Name"_s));
}

void NotionSchemaServiceTest::aStopEndsTheLoad()
{
    std::stop_source stop;
    const auto schema = follow(m_world->service.loadSchema(u"database"_s, stop.get_token()));
    QCOMPARE(m_world->transport.waitingCount(), 1);
    stop.request_stop();
    QTRY_VERIFY(*schema);
    QVERIFY(!**schema);
}

void NotionSchemaServiceTest::propertiesOfSelectAndStatusComeInterleavedByName()
{
    const auto schema = loadProperties({{u"d"_s, choice(u"status"_s, {})},
                                        {u"C"_s, choice(u"select"_s, {})},
                                        {u"b"_s, choice(u"status"_s, {})},
                                        {u"bb"_s, choice(u"multi_select"_s, {})},
                                        {u"A"_s, choice(u"select"_s, {})}});
    const QStringList both({u"A"_s, u"b"_s, u"C"_s, u"d"_s});
    QCOMPARE(namesOf(NotionSchemaService::propertiesOfType({PropertyType::select, PropertyType::status}, schema)),
             both);
    QCOMPARE(namesOf(NotionSchemaService::propertiesOfType({PropertyType::status, PropertyType::select}, schema)),
             both);
}

void NotionSchemaServiceTest::noTypesGiveNoProperties()
{
    const auto schema = loadProperties({{u"Name"_s, column(u"title"_s)}});
    QCOMPARE(schema.properties.size(), 1);
    QVERIFY(NotionSchemaService::propertiesOfType({}, schema).isEmpty());
}

QTEST_GUILESS_MAIN(NotionSchemaServiceTest)

#include "NotionSchemaServiceTest.moc"
