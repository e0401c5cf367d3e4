#include "Models/NotionSchema.h"

#include <QSet>
#include <QTest>

#include <concepts>

using namespace Qt::StringLiterals;
using namespace korvo;
using PropertyType = NotionProperty::PropertyType;

namespace {

struct NamedType {
    PropertyType type;
    const char *rawValue;
};

constexpr NamedType everyType[]{
    {PropertyType::title, "title"},
    {PropertyType::richText, "rich_text"},
    {PropertyType::number, "number"},
    {PropertyType::select, "select"},
    {PropertyType::multiSelect, "multi_select"},
    {PropertyType::status, "status"},
    {PropertyType::date, "date"},
    {PropertyType::people, "people"},
    {PropertyType::files, "files"},
    {PropertyType::checkbox, "checkbox"},
    {PropertyType::url, "url"},
    {PropertyType::email, "email"},
    {PropertyType::phone, "phone_number"},
    {PropertyType::formula, "formula"},
    {PropertyType::relation, "relation"},
    {PropertyType::rollup, "rollup"},
    {PropertyType::createdTime, "created_time"},
    {PropertyType::lastEditedTime, "last_edited_time"},
    {PropertyType::createdBy, "created_by"},
    {PropertyType::lastEditedBy, "last_edited_by"},
    {PropertyType::uniqueId, "unique_id"},
    {PropertyType::unknown, "unknown"},
};

} // namespace

// Each load of a schema counts as a change for its observers, an equal one too.
static_assert(!std::equality_comparable<NotionProperty>);
static_assert(!std::equality_comparable<NotionDatabaseSchema>);

class NotionSchemaTest : public QObject {
    Q_OBJECT
private slots:
    void everyTypeTurnsIntoItsRawValueAndBack_data();
    void everyTypeTurnsIntoItsRawValueAndBack();
    void anyOtherTextIsAnUnknownType_data();
    void anyOtherTextIsAnUnknownType();
    void anUnknownTypeForgetsTheTextThatItCameFrom();
    void theTwentyTwoTypesAreDistinctMembersOfASet();
    void aPropertyPointsToNoDatabaseUnlessTold();
};

void NotionSchemaTest::everyTypeTurnsIntoItsRawValueAndBack_data()
{
    QTest::addColumn<PropertyType>("type");
    QTest::addColumn<QString>("rawValue");
    for (const auto &[type, rawValue] : everyType)
        QTest::newRow(rawValue) << type << QString::fromLatin1(rawValue);
}

void NotionSchemaTest::everyTypeTurnsIntoItsRawValueAndBack()
{
    QFETCH(PropertyType, type);
    QFETCH(QString, rawValue);
    QCOMPARE(NotionProperty::rawValue(type), rawValue);
    QCOMPARE(NotionProperty::propertyTypeFromRawValue(rawValue), type);
}

void NotionSchemaTest::anyOtherTextIsAnUnknownType_data()
{
    QTest::addColumn<QString>("rawValue");
    QTest::newRow("a type in upper case") << u"Title"_s;
    QTest::newRow("the name of a case that Notion calls otherwise") << u"phone"_s;
    QTest::newRow("the name of a case in camel case") << u"richText"_s;
    QTest::newRow("a type with a space behind") << u"title "_s;
    QTest::newRow("a type cut short") << u"selec"_s;
    QTest::newRow("a type that Notion introduced later") << u"button"_s;
    QTest::newRow("the empty text") << u""_s;
    QTest::newRow("no text") << QString();
}

void NotionSchemaTest::anyOtherTextIsAnUnknownType()
{
    QFETCH(QString, rawValue);
    QCOMPARE(NotionProperty::propertyTypeFromRawValue(rawValue), PropertyType::unknown);
}

void NotionSchemaTest::anUnknownTypeForgetsTheTextThatItCameFrom()
{
    QCOMPARE(NotionProperty::rawValue(NotionProperty::propertyTypeFromRawValue(u"button")), u"unknown"_s);
}

void NotionSchemaTest::theTwentyTwoTypesAreDistinctMembersOfASet()
{
    QSet<PropertyType> types;
    for (const auto &named : everyType)
        types.insert(named.type);
    QCOMPARE(types.size(), 22);
}

void NotionSchemaTest::aPropertyPointsToNoDatabaseUnlessTold()
{
    const NotionProperty property{.id = u"a"_s, .name = u"Task"_s, .type = PropertyType::relation, .selectOptions = {}};
    QVERIFY(!property.relationDatabaseId);
}

QTEST_GUILESS_MAIN(NotionSchemaTest)

#include "NotionSchemaTest.moc"
