#include "Models/FieldMapping.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

class FieldMappingTest : public QObject {
    Q_OBJECT
private slots:
    void aNewMappingIsEmpty();
    void jsonHasAllKeysInDeclaredOrder();
    void jsonKeepsAMapping_data();
    void jsonKeepsAMapping();
    void aMissingKeyFailsTheWhole_data();
    void aMissingKeyFailsTheWhole();
    void aWrongTypeFailsTheWhole_data();
    void aWrongTypeFailsTheWhole();
    void whatIsNoMappingGivesNone_data();
    void whatIsNoMappingGivesNone();
    void unknownKeysAreIgnored();
    void equalityGoesOverEveryField_data();
    void equalityGoesOverEveryField();
    void theCaseOfANameCounts();
    void oneNameMayStandInSeveralFields();
};

namespace {

const QStringList keys{u"ttTaskRelation"_s,
                       u"ttStartTime"_s,
                       u"ttEndTime"_s,
                       u"ttStatus"_s,
                       u"ttStatusRunning"_s,
                       u"ttStatusStopped"_s,
                       u"taskName"_s,
                       u"taskDate"_s,
                       u"taskTimerStatus"_s,
                       u"taskTimerStatusRunning"_s,
                       u"taskTimerStatusStopped"_s,
                       u"taskProjectRelation"_s,
                       u"projectClientRelation"_s,
                       u"taskTotalTimeRollup"_s};

FieldMapping sample()
{
    return {u"1"_s, u"2"_s, u"3"_s,  u"4"_s,  u"5"_s,  u"6"_s,  u"7"_s,
            u"8"_s, u"9"_s, u"10"_s, u"11"_s, u"12"_s, u"13"_s, u"14"_s};
}

QJsonObject sampleObject()
{
    return QJsonDocument::fromJson(sample().toJson()).object();
}

std::optional<FieldMapping> read(const QJsonObject &object)
{
    return FieldMapping::fromJson(QJsonDocument(object).toJson());
}

} // namespace

void FieldMappingTest::aNewMappingIsEmpty()
{
    const FieldMapping allEmpty{u""_s, u""_s, u""_s, u""_s, u""_s, u""_s, u""_s,
                                u""_s, u""_s, u""_s, u""_s, u""_s, u""_s, u""_s};
    QCOMPARE(FieldMapping(), allEmpty);
}

void FieldMappingTest::jsonHasAllKeysInDeclaredOrder()
{
    QCOMPARE(sample().toJson(),
             R"({"ttTaskRelation":"1","ttStartTime":"2","ttEndTime":"3","ttStatus":"4","ttStatusRunning":"5",)"
             R"("ttStatusStopped":"6","taskName":"7","taskDate":"8","taskTimerStatus":"9",)"
             R"("taskTimerStatusRunning":"10","taskTimerStatusStopped":"11","taskProjectRelation":"12",)"
             R"("projectClientRelation":"13","taskTotalTimeRollup":"14"})"_ba);
    const QByteArray empty = FieldMapping().toJson();
    for (const QString &key : keys)
        QVERIFY2(empty.contains('"' + key.toUtf8() + "\":\"\""), qPrintable(key));
}

void FieldMappingTest::jsonKeepsAMapping_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << u""_s;
    QTest::newRow("quotes") << u"the \"real\" status"_s;
    QTest::newRow("a backslash at the end") << u"C:\\"_s;
    QTest::newRow("a slash") << u"start/end"_s;
    QTest::newRow("non-ASCII") << u"Zeit für Straße 時間"_s;
    QTest::newRow("outside of the basic plane") << u"⏱ 🕐"_s;
    QTest::newRow("leading and trailing spaces") << u"  Status "_s;
    QTest::newRow("line feed, tab and other control characters") << u"a\nb\tc\u0001\u007f"_s;
    QTest::newRow("a NUL character") << QString(u"a\0b"_s);
    QTest::newRow("half a surrogate pair") << u"a"_s + QChar(0xd83d) + u"b"_s;
    QTest::newRow("accents as characters of their own") << u"e\u0301"_s;
}

void FieldMappingTest::jsonKeepsAMapping()
{
    QFETCH(QString, name);
    const FieldMapping mapping{.ttTaskRelation = name, .ttStatusRunning = name, .taskTotalTimeRollup = name};
    const auto again = FieldMapping::fromJson(mapping.toJson());
    QVERIFY(again);
    QCOMPARE(*again, mapping);
    QCOMPARE(again->ttStatusRunning, name);
}

void FieldMappingTest::aMissingKeyFailsTheWhole_data()
{
    QTest::addColumn<QString>("key");
    for (const QString &key : keys)
        QTest::addRow("without %s", qPrintable(key)) << key;
}

void FieldMappingTest::aMissingKeyFailsTheWhole()
{
    QFETCH(QString, key);
    QJsonObject object = sampleObject();
    QVERIFY(read(object));
    object.remove(key);
    QVERIFY(!read(object));
}

void FieldMappingTest::aWrongTypeFailsTheWhole_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("null") << QJsonValue(QJsonValue::Null);
    QTest::newRow("a number") << QJsonValue(4);
    QTest::newRow("a boolean") << QJsonValue(true);
    QTest::newRow("an array") << QJsonValue(QJsonArray{u"Status"_s});
    QTest::newRow("an object") << QJsonValue(QJsonObject{{u"name"_s, u"Status"_s}});
}

void FieldMappingTest::aWrongTypeFailsTheWhole()
{
    QFETCH(QJsonValue, value);
    for (const QString &key : keys) {
        QJsonObject object = sampleObject();
        object.insert(key, value);
        QVERIFY2(!read(object), qPrintable(key));
    }
}

void FieldMappingTest::whatIsNoMappingGivesNone_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("nothing") << ""_ba;
    QTest::newRow("no JSON") << "ttStatus = Status"_ba;
    QTest::newRow("an empty object") << "{}"_ba;
    QTest::newRow("an array") << '[' + sample().toJson() + ']';
    QTest::newRow("a bare string") << R"("ttStatus")"_ba;
    QTest::newRow("cut short") << sample().toJson().chopped(1);
    QTest::newRow("garbage behind it") << sample().toJson() + "x";
    QTest::newRow("invalid UTF-8") << sample().toJson().replace("\"1\"", "\"\xff\"");
    QTest::newRow("nested too deeply") << QByteArray(100000, '[');
    QTest::newRow("keys in another case") << sample().toJson().toLower();
}

void FieldMappingTest::whatIsNoMappingGivesNone()
{
    QFETCH(QByteArray, json);
    QVERIFY(!FieldMapping::fromJson(json));
}

void FieldMappingTest::unknownKeysAreIgnored()
{
    QJsonObject object = sampleObject();
    object.insert(u"version"_s, 2);
    object.insert(u"taskColour"_s, QJsonValue::Null);
    const auto mapping = read(object);
    QVERIFY(mapping);
    QCOMPARE(*mapping, sample());
}

void FieldMappingTest::equalityGoesOverEveryField_data()
{
    aMissingKeyFailsTheWhole_data();
}

void FieldMappingTest::equalityGoesOverEveryField()
{
    QFETCH(QString, key);
    QJsonObject object = sampleObject();
    object.insert(key, u"other"_s);
    const auto other = read(object);
    QVERIFY(other);
    QVERIFY(!(*other == sample()));
}

void FieldMappingTest::theCaseOfANameCounts()
{
    const FieldMapping upper{.ttStatus = u"Status"_s};
    const FieldMapping lower{.ttStatus = u"status"_s};
    QVERIFY(!(upper == lower));
}

void FieldMappingTest::oneNameMayStandInSeveralFields()
{
    const FieldMapping mapping{.ttStartTime = u"Time"_s, .ttEndTime = u"Time"_s, .taskDate = u"Time"_s};
    const auto again = FieldMapping::fromJson(mapping.toJson());
    QVERIFY(again);
    QCOMPARE(*again, mapping);
}

QTEST_GUILESS_MAIN(FieldMappingTest)
#include "FieldMappingTest.moc"
