#include "Services/NotionPropertyMapper.h"

#include "Fakes/LocalZone.h"

#include <QJsonDocument>
#include <QLocale>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

QJsonObject object(const char *json)
{
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        qFatal("%s: %s", json, qPrintable(error.errorString()));
    return document.object();
}

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

void row(const char *name, const char *properties, const QString &expected)
{
    QTest::newRow(name) << QByteArray(properties) << expected;
}

/// "absent", or "present: " and the value.
QString told(const std::optional<QString> &value)
{
    return value ? u"present: "_s + *value : u"absent"_s;
}

const auto absent = u"absent"_s;

} // namespace

class NotionPropertyMapperTest : public QObject {
    Q_OBJECT
private slots:
    void titleIsTheTextOfTheFirstRun_data();
    void titleIsTheTextOfTheFirstRun();
    void dateIsTheStart_data();
    void dateIsTheStart();
    void aDayIsTheBeginningOfThatDayInTheLocalZone();
    void selectIsTheNameOfTheOption_data();
    void selectIsTheNameOfTheOption();
    void relationsAreTheIdentifiersInOrder_data();
    void relationsAreTheIdentifiersInOrder();
    void rollupNumberIsTheNumber_data();
    void rollupNumberIsTheNumber();
    void rollupNumberIsAbsentForAnEmptyKey();
    void otherReadersTakeAnEmptyKeyAsAName();
    void keysAreTakenAsTheyAre();

    void buildDatePropertyGivesUtcToTheSecond_data();
    void buildDatePropertyGivesUtcToTheSecond();
    void buildDatePropertyHasEuropeanDigitsInAnyLocale_data();
    void buildDatePropertyHasEuropeanDigitsInAnyLocale();
    void buildSelectPropertyTakesTheNameAsItIs_data();
    void buildSelectPropertyTakesTheNameAsItIs();
    void buildRelationPropertyKeepsTheOrder_data();
    void buildRelationPropertyKeepsTheOrder();
    void whatIsBuiltReadsBack();
};

void NotionPropertyMapperTest::titleIsTheTextOfTheFirstRun_data()
{
    QTest::addColumn<QByteArray>("properties");
    QTest::addColumn<QString>("expected");
    row("one run", R"({"Name": {"title": [{"plain_text": "Write"}]}})", u"present: Write"_s);
    row("of two runs the first", R"({"Name": {"title": [{"plain_text": "Wri"}, {"plain_text": "te"}]}})",
        u"present: Wri"_s);
    row("an empty text", R"({"Name": {"title": [{"plain_text": ""}]}})", u"present: "_s);
    row("non-ASCII text",
        "{\"Name\": {\"title\": [{\"plain_text\": \"Gr\xC3\xB6\xC3\x9F"
        "e\"}]}}",
        u"present: Größe"_s);
    row("no run", R"({"Name": {"title": []}})", absent);
    row("a first run without a text", R"({"Name": {"title": [{"x": 1}, {"plain_text": "te"}]}})", absent);
    row("a first run whose text is null", R"({"Name": {"title": [{"plain_text": null}]}})", absent);
    row("a first run whose text is a number", R"({"Name": {"title": [{"plain_text": 7}]}})", absent);
    row("a second run that is no object", R"({"Name": {"title": [{"plain_text": "Wri"}, "te"]}})", absent);
    row("a second run without a text", R"({"Name": {"title": [{"plain_text": "Wri"}, {}]}})", u"present: Wri"_s);
    row("a title that is null", R"({"Name": {"title": null}})", absent);
    row("a title that is a text", R"({"Name": {"title": "Write"}})", absent);
    row("a title that is an object", R"({"Name": {"title": {"plain_text": "Write"}}})", absent);
    row("a rich text", R"({"Name": {"rich_text": [{"plain_text": "Write"}]}})", absent);
    row("a property that is an array", R"({"Name": [{"plain_text": "Write"}]})", absent);
    row("a property that is null", R"({"Name": null})", absent);
    row("no property", R"({"name": {"title": [{"plain_text": "Write"}]}})", absent);
}

void NotionPropertyMapperTest::titleIsTheTextOfTheFirstRun()
{
    QFETCH(QByteArray, properties);
    QTEST(told(NotionPropertyMapper::title(object(properties), u"Name"_s)), "expected");
}

void NotionPropertyMapperTest::dateIsTheStart_data()
{
    QTest::addColumn<QByteArray>("properties");
    QTest::addColumn<QString>("expected");
    row("with a fraction", R"({"D": {"date": {"start": "2024-05-01T09:30:00.123Z"}}})",
        u"present: 2024-05-01T09:30:00.123Z"_s);
    row("with an offset", R"({"D": {"date": {"start": "2024-05-01T09:30:00+02:00"}}})",
        u"present: 2024-05-01T07:30:00.000Z"_s);
    row("of a range the start",
        R"({"D": {"date": {"start": "2024-05-01T09:30:00Z", "end": "2024-05-02T09:30:00Z", "time_zone": null}}})",
        u"present: 2024-05-01T09:30:00.000Z"_s);
    row("an end alone", R"({"D": {"date": {"end": "2024-05-02T09:30:00Z"}}})", absent);
    row("not set", R"({"D": {"date": null}})", absent);
    row("a word", R"({"D": {"date": {"start": "tomorrow"}}})", absent);
    row("a number", R"({"D": {"date": {"start": 1714555800}}})", absent);
    row("a start that is null", R"({"D": {"date": {"start": null}}})", absent);
    row("a date that is a text", R"({"D": {"date": "2024-05-01T09:30:00Z"}})", absent);
    row("a date that is an array", R"({"D": {"date": ["2024-05-01T09:30:00Z"]}})", absent);
    row("a time of creation", R"({"D": {"created_time": "2024-05-01T09:30:00.000Z"}})", absent);
    row("a property that is null", R"({"D": null})", absent);
    row("no property", R"({})", absent);
}

void NotionPropertyMapperTest::dateIsTheStart()
{
    QFETCH(QByteArray, properties);
    const auto date = NotionPropertyMapper::date(object(properties), u"D"_s);
    QTEST(told(date ? std::optional(date->toUTC().toString(Qt::ISODateWithMs)) : std::nullopt), "expected");
}

void NotionPropertyMapperTest::aDayIsTheBeginningOfThatDayInTheLocalZone()
{
    const LocalZone zone("Europe/Berlin");
    const auto date = NotionPropertyMapper::date(object(R"({"D": {"date": {"start": "2024-05-01"}}})"), u"D"_s);
    QVERIFY(date);
    QCOMPARE(*date, QDateTime(QDate(2024, 4, 30), QTime(22, 0), Qt::UTC));
}

void NotionPropertyMapperTest::selectIsTheNameOfTheOption_data()
{
    QTest::addColumn<QByteArray>("properties");
    QTest::addColumn<QString>("expected");
    row("an option", R"({"S": {"select": {"id": "1", "name": "Done", "color": "green"}}})", u"present: Done"_s);
    row("an empty name", R"({"S": {"select": {"name": ""}}})", u"present: "_s);
    row("not set", R"({"S": {"select": null}})", absent);
    row("a status", R"({"S": {"status": {"name": "Done"}}})", absent);
    row("several options", R"({"S": {"multi_select": [{"name": "Done"}]}})", absent);
    row("an option that is a text", R"({"S": {"select": "Done"}})", absent);
    row("an option without a name", R"({"S": {"select": {"id": "1"}}})", absent);
    row("a name that is a number", R"({"S": {"select": {"name": 1}}})", absent);
    row("a name that is null", R"({"S": {"select": {"name": null}}})", absent);
    row("a property that is a text", R"({"S": "Done"})", absent);
    row("no property", R"({})", absent);
}

void NotionPropertyMapperTest::selectIsTheNameOfTheOption()
{
    QFETCH(QByteArray, properties);
    QTEST(told(NotionPropertyMapper::select(object(properties), u"S"_s)), "expected");
}

void NotionPropertyMapperTest::relationsAreTheIdentifiersInOrder_data()
{
    QTest::addColumn<QByteArray>("properties");
    QTest::addColumn<QStringList>("expected");
    const auto list = [](const char *name, const char *properties, const QStringList &expected) {
        QTest::newRow(name) << QByteArray(properties) << expected;
    };
    list("in order", R"({"R": {"relation": [{"id": "b"}, {"id": "a"}], "has_more": false}})", {u"b"_s, u"a"_s});
    list("twice the same", R"({"R": {"relation": [{"id": "a"}, {"id": "a"}]}})", {u"a"_s, u"a"_s});
    list("an element without an identifier is left out", R"({"R": {"relation": [{"id": "a"}, {"x": 1}, {"id": "b"}]}})",
         {u"a"_s, u"b"_s});
    list("an identifier that is no text is left out", R"({"R": {"relation": [{"id": 1}, {"id": null}, {"id": "b"}]}})",
         {u"b"_s});
    list("an empty identifier stays", R"({"R": {"relation": [{"id": ""}]}})", {QString()});
    list("none", R"({"R": {"relation": []}})", {});
    list("an element that is no object", R"({"R": {"relation": ["a"]}})", {});
    list("one element among others that is no object", R"({"R": {"relation": [{"id": "a"}, null]}})", {});
    list("a relation that is null", R"({"R": {"relation": null}})", {});
    list("a relation that is an object", R"({"R": {"relation": {"id": "a"}}})", {});
    list("a property that is an array", R"({"R": [{"id": "a"}]})", {});
    list("no property", R"({})", {});
}

void NotionPropertyMapperTest::relationsAreTheIdentifiersInOrder()
{
    QFETCH(QByteArray, properties);
    QTEST(NotionPropertyMapper::relations(object(properties), u"R"_s), "expected");
}

void NotionPropertyMapperTest::rollupNumberIsTheNumber_data()
{
    QTest::addColumn<QByteArray>("properties");
    QTest::addColumn<double>("expected"); // Not a number where the result is absent.
    const auto number = [](const char *name, const char *properties, double expected) {
        QTest::newRow(name) << QByteArray(properties) << expected;
    };
    number("a whole number", R"({"T": {"rollup": {"type": "number", "number": 90, "function": "sum"}}})", 90);
    number("a fraction", R"({"T": {"rollup": {"number": 12.5}}})", 12.5);
    number("a negative number", R"({"T": {"rollup": {"number": -3}}})", -3);
    number("zero is a number", R"({"T": {"rollup": {"number": 0}}})", 0);
    number("beyond 32 bits", R"({"T": {"rollup": {"number": 9007199254740993}}})", 9007199254740992.0);
    number("null", R"({"T": {"rollup": {"number": null}}})", qQNaN());
    number("true", R"({"T": {"rollup": {"number": true}}})", qQNaN());
    number("a text", R"({"T": {"rollup": {"number": "90"}}})", qQNaN());
    number("an array", R"({"T": {"rollup": {"type": "array", "array": [{"number": 1}]}}})", qQNaN());
    number("a date", R"({"T": {"rollup": {"type": "date", "date": {"start": "2024-05-01"}}}})", qQNaN());
    number("a rollup that is a number", R"({"T": {"rollup": 90}})", qQNaN());
    number("a number property", R"({"T": {"number": 90}})", qQNaN());
    number("a formula", R"({"T": {"formula": {"type": "number", "number": 90}}})", qQNaN());
    number("no property", R"({})", qQNaN());
}

void NotionPropertyMapperTest::rollupNumberIsTheNumber()
{
    QFETCH(QByteArray, properties);
    QFETCH(double, expected);
    const auto number = NotionPropertyMapper::rollupNumber(object(properties), u"T"_s);
    QCOMPARE(number.has_value(), !std::isnan(expected));
    QVERIFY(!number || *number == expected);
}

void NotionPropertyMapperTest::rollupNumberIsAbsentForAnEmptyKey()
{
    QVERIFY(!NotionPropertyMapper::rollupNumber(object(R"({"": {"rollup": {"number": 90}}})"), QString()));
}

void NotionPropertyMapperTest::otherReadersTakeAnEmptyKeyAsAName()
{
    const auto properties = object(R"({"": {"select": {"name": "a"}, "title": [{"plain_text": "b"}]}})");
    QCOMPARE(NotionPropertyMapper::select(properties, QString()), u"a"_s);
    QCOMPARE(NotionPropertyMapper::title(properties, QString()), u"b"_s);
}

void NotionPropertyMapperTest::keysAreTakenAsTheyAre()
{
    const auto properties = object(R"({"A.b / \"c\" ": {"select": {"name": "a"}}})");
    QCOMPARE(NotionPropertyMapper::select(properties, u"A.b / \"c\" "_s), u"a"_s);
    QVERIFY(!NotionPropertyMapper::select(properties, u"A.b / \"c\""_s));
    QVERIFY(!NotionPropertyMapper::select(properties, u"a.b / \"c\" "_s));
}

void NotionPropertyMapperTest::buildDatePropertyGivesUtcToTheSecond_data()
{
    QTest::addColumn<QDateTime>("date");
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("UTC") << QDateTime(QDate(2024, 5, 1), QTime(7, 30), Qt::UTC) << "2024-05-01T07:30:00Z"_ba;
    QTest::newRow("an offset, and a fraction that is dropped")
        << QDateTime(QDate(2024, 5, 1), QTime(9, 30, 0, 750), Qt::OffsetFromUTC, 2 * 3600) << "2024-05-01T07:30:00Z"_ba;
    QTest::newRow("a fraction is not rounded up")
        << QDateTime(QDate(2024, 12, 31), QTime(23, 59, 59, 999), Qt::UTC) << "2024-12-31T23:59:59Z"_ba;
    QTest::newRow("local time") << QDateTime(QDate(2024, 5, 1), QTime(1, 0)) << "2024-04-30T23:00:00Z"_ba;
    QTest::newRow("before 1970 a fraction goes back in time")
        << QDateTime(QDate(1969, 12, 31), QTime(23, 59, 58, 250), Qt::UTC) << "1969-12-31T23:59:58Z"_ba;
    QTest::newRow("an early year has four digits")
        << QDateTime(QDate(33, 4, 3), QTime(15, 0), Qt::UTC) << "0033-04-03T15:00:00Z"_ba;
}

void NotionPropertyMapperTest::buildDatePropertyGivesUtcToTheSecond()
{
    QFETCH(QDateTime, date);
    QFETCH(QByteArray, start);
    const LocalZone zone("Europe/Berlin");
    QCOMPARE(compact(NotionPropertyMapper::buildDateProperty(date)), R"({"date":{"start":")" + start + R"("}})");
}

void NotionPropertyMapperTest::buildDatePropertyHasEuropeanDigitsInAnyLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::newRow("Persian") << u"fa_IR"_s;
    QTest::newRow("Egyptian Arabic") << u"ar_EG"_s;
}

void NotionPropertyMapperTest::buildDatePropertyHasEuropeanDigitsInAnyLocale()
{
    QFETCH(QString, locale);
    const QLocale before;
    QLocale::setDefault(QLocale(locale));
    const auto property = NotionPropertyMapper::buildDateProperty(QDateTime(QDate(2024, 5, 1), QTime(7, 30), Qt::UTC));
    QLocale::setDefault(before);
    QCOMPARE(compact(property), R"({"date":{"start":"2024-05-01T07:30:00Z"}})"_ba);
}

void NotionPropertyMapperTest::buildSelectPropertyTakesTheNameAsItIs_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("a word") << u"Running"_s << R"({"select":{"name":"Running"}})"_ba;
    QTest::newRow("blanks stay") << u" Running "_s << R"({"select":{"name":" Running "}})"_ba;
    QTest::newRow("empty stays empty") << QString() << R"({"select":{"name":""}})"_ba;
    QTest::newRow("quotes and commas") << u"a, \"b\""_s << R"({"select":{"name":"a, \"b\""}})"_ba;
}

void NotionPropertyMapperTest::buildSelectPropertyTakesTheNameAsItIs()
{
    QFETCH(QString, name);
    QTEST(compact(NotionPropertyMapper::buildSelectProperty(name)), "json");
}

void NotionPropertyMapperTest::buildRelationPropertyKeepsTheOrder_data()
{
    QTest::addColumn<QStringList>("pageIds");
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("none") << QStringList() << R"({"relation":[]})"_ba;
    QTest::newRow("one") << QStringList{u"a"_s} << R"({"relation":[{"id":"a"}]})"_ba;
    QTest::newRow("two in order") << QStringList{u"b"_s, u"a"_s} << R"({"relation":[{"id":"b"},{"id":"a"}]})"_ba;
}

void NotionPropertyMapperTest::buildRelationPropertyKeepsTheOrder()
{
    QFETCH(QStringList, pageIds);
    QTEST(compact(NotionPropertyMapper::buildRelationProperty(pageIds)), "json");
}

void NotionPropertyMapperTest::whatIsBuiltReadsBack()
{
    const QDateTime date(QDate(2024, 5, 1), QTime(7, 30), Qt::UTC);
    const QStringList ids{u"b"_s, u"a"_s};
    const QJsonObject properties{{u"D"_s, NotionPropertyMapper::buildDateProperty(date)},
                                 {u"S"_s, NotionPropertyMapper::buildSelectProperty(u"Running"_s)},
                                 {u"R"_s, NotionPropertyMapper::buildRelationProperty(ids)}};
    QCOMPARE(NotionPropertyMapper::date(properties, u"D"_s), date);
    QCOMPARE(NotionPropertyMapper::select(properties, u"S"_s), u"Running"_s);
    QCOMPARE(NotionPropertyMapper::relations(properties, u"R"_s), ids);
}

QTEST_GUILESS_MAIN(NotionPropertyMapperTest)

#include "NotionPropertyMapperTest.moc"
