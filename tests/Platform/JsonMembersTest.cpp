#include "Platform/Linux/JsonMembers.h"

#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

class JsonMembersTest : public QObject {
    Q_OBJECT
private slots:
    void eachValueKeepsItsText_data();
    void eachValueKeepsItsText();
    void membersKeepTheirOrder();
    void ofTheSameKeyTheLastCounts();
    void aChangedMemberStaysInItsPlace();
    void keysMayHoldAnything();
    void aByteOrderMarkIsNoFault();
    void anEmptyObjectHasNoMembers();
    void whatIsNoObjectGivesNone_data();
    void whatIsNoObjectGivesNone();
};

void JsonMembersTest::eachValueKeepsItsText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("text") << R"("plain")"_ba;
    QTest::newRow("text with a quote and a backslash") << R"("a\"b\\")"_ba;
    QTest::newRow("text with brackets and commas") << R"("}],{[:")"_ba;
    QTest::newRow("text with escapes") << R"("\u00e9\ud83d\/")"_ba;
    QTest::newRow("an integer of 64 bits") << "9223372036854775807"_ba;
    QTest::newRow("an integer that no type holds") << "123456789012345678901234567890"_ba;
    QTest::newRow("a fraction with more digits than a double") << "0.12345678901234567890123"_ba;
    QTest::newRow("a whole number with a fraction of zero") << "30.0"_ba;
    QTest::newRow("minus zero") << "-0.0"_ba;
    QTest::newRow("an exponent") << "1E+2"_ba;
    QTest::newRow("true") << "true"_ba;
    QTest::newRow("null") << "null"_ba;
    QTest::newRow("an empty array") << "[]"_ba;
    QTest::newRow("an empty object") << "{}"_ba;
    QTest::newRow("nested") << R"({"a": [1, {"b": "]}"}, []], "c" : null })"_ba;
    QTest::newRow("over several lines") << "[\n\t1,\r\n 2 ]"_ba;
}

void JsonMembersTest::eachValueKeepsItsText()
{
    QFETCH(QByteArray, text);
    for (const QByteArray &json :
         {"{\"key\":" + text + '}', " {\n\"a\" : 1 ,\t\"key\" :\r\n " + text + " , \"z\":[]} \n"}) {
        const auto members = JsonMembers::parse(json);
        QVERIFY(members);
        QCOMPARE(members->text(u"key"_s), text);
        const auto again = JsonMembers::parse(members->toJson());
        QVERIFY(again);
        QVERIFY(*again == *members);
        QCOMPARE(again->keys(), members->keys());
    }
}

void JsonMembersTest::membersKeepTheirOrder()
{
    const auto members = JsonMembers::parse(R"({"z": 1, "a": 2, "M": 3})");
    QVERIFY(members);
    QCOMPARE(members->keys(), (QStringList{u"z"_s, u"a"_s, u"M"_s}));
    QCOMPARE(members->toJson(), "{\n  \"z\": 1,\n  \"a\": 2,\n  \"M\": 3\n}\n"_ba);
}

void JsonMembersTest::ofTheSameKeyTheLastCounts()
{
    const auto members = JsonMembers::parse(R"({"a": 1, "b": 2, "a": 3})");
    QVERIFY(members);
    QCOMPARE(members->keys(), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(members->text(u"a"_s), "3"_ba);
}

void JsonMembersTest::aChangedMemberStaysInItsPlace()
{
    auto members = JsonMembers::parse(R"({"a": 1, "b": 2})");
    QVERIFY(members);
    members->set(u"a"_s, "\"x\"");
    members->set(u"c"_s, "null");
    QCOMPARE(members->toJson(), "{\n  \"a\": \"x\",\n  \"b\": 2,\n  \"c\": null\n}\n"_ba);
    QCOMPARE(members->value(u"a"_s), QJsonValue(u"x"_s));
    QVERIFY(members->value(u"c"_s).isNull());
    QVERIFY(members->value(u"d"_s).isUndefined());
}

void JsonMembersTest::keysMayHoldAnything()
{
    for (const QString &key : {u""_s, u"a\"b\\"_s, u"{,:}"_s, QString(u"a\0b"_s), u"ä 時"_s, QString(QChar(0xd83d))}) {
        JsonMembers members;
        members.set(key, "1");
        const auto again = JsonMembers::parse(members.toJson());
        QVERIFY2(again, qPrintable(key));
        QCOMPARE(again->keys(), QStringList{key});
        QCOMPARE(again->text(key), "1"_ba);
    }
}

void JsonMembersTest::aByteOrderMarkIsNoFault()
{
    const auto members = JsonMembers::parse("\xef\xbb\xbf{\"a\": 1}");
    QVERIFY(members);
    QCOMPARE(members->text(u"a"_s), "1"_ba);
}

void JsonMembersTest::anEmptyObjectHasNoMembers()
{
    const auto members = JsonMembers::parse(" { } ");
    QVERIFY(members);
    QVERIFY(members->keys().isEmpty());
    QCOMPARE(members->toJson(), "{}\n"_ba);
}

void JsonMembersTest::whatIsNoObjectGivesNone_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("nothing") << ""_ba;
    QTest::newRow("white space") << " \n"_ba;
    QTest::newRow("no JSON") << "apiKey=ntn"_ba;
    QTest::newRow("an array") << "[1]"_ba;
    QTest::newRow("a number") << "1"_ba;
    QTest::newRow("cut short") << R"({"a": 1, "b)"_ba;
    QTest::newRow("garbage behind it") << R"({"a": 1} x)"_ba;
    QTest::newRow("a NUL behind it") << "{}\0"_ba;
    QTest::newRow("a comma behind the last member") << R"({"a": 1,})"_ba;
    QTest::newRow("no quotes around a key") << R"({a: 1})"_ba;
    QTest::newRow("not a number") << R"({"a": NaN})"_ba;
    QTest::newRow("a number beyond all doubles") << R"({"a": 1e400})"_ba;
    QTest::newRow("invalid UTF-8 in a value") << "{\"a\": \"\xff\"}"_ba;
    QTest::newRow("invalid UTF-8 in a key") << "{\"\xc3\": 1}"_ba;
    QTest::newRow("a surrogate in UTF-8") << "{\"a\": \"\xed\xa0\x80\"}"_ba;
    QTest::newRow("nested too deeply") << R"({"a": )" + QByteArray(100000, '[') + QByteArray(100000, ']') + '}';
}

void JsonMembersTest::whatIsNoObjectGivesNone()
{
    QFETCH(QByteArray, json);
    QVERIFY(!JsonMembers::parse(json));
}

QTEST_GUILESS_MAIN(JsonMembersTest)
#include "JsonMembersTest.moc"
