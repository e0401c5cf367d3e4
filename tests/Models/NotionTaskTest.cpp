#include "Models/NotionTask.h"

#include <QTest>
#include <QTimeZone>

using namespace korvo;
using namespace Qt::StringLiterals;

class NotionTaskTest : public QObject {
    Q_OBJECT
private slots:
    void equalityGoesOverEveryField_data();
    void equalityGoesOverEveryField();
    void anInstantIsTheSameInEveryZone();
    void aTaskWithoutStatusDiffersFromOneWithStatus();
};

namespace {
NotionTask sample()
{
    return {
        .id = u"1"_s, .name = u"Write"_s, .date = QDateTime({2026, 11, 21}, {9, 30}, Qt::UTC), .timerStatus = u"On"_s};
}
} // namespace

void NotionTaskTest::equalityGoesOverEveryField_data()
{
    QTest::addColumn<NotionTask>("other");
    QTest::addColumn<bool>("isEqual");

    NotionTask other = sample();
    QTest::newRow("all fields the same") << other << true;
    other.id = u"2"_s;
    QTest::newRow("another id") << other << false;
    other = sample();
    other.name = u"write"_s;
    QTest::newRow("the name in another case") << other << false;
    other = sample();
    other.date = other.date->addMSecs(1);
    QTest::newRow("the date a millisecond later") << other << false;
    other.date = std::nullopt;
    QTest::newRow("no date") << other << false;
    other = sample();
    other.timerStatus = u"Off"_s;
    QTest::newRow("another status") << other << false;
    other.timerStatus = u""_s;
    QTest::newRow("an empty status") << other << false;
}

void NotionTaskTest::equalityGoesOverEveryField()
{
    QFETCH(NotionTask, other);
    QTEST(sample() == other, "isEqual");
}

void NotionTaskTest::anInstantIsTheSameInEveryZone()
{
    NotionTask other = sample();
    other.date = other.date->toOffsetFromUtc(3600);
    QCOMPARE(other, sample());
}

void NotionTaskTest::aTaskWithoutStatusDiffersFromOneWithStatus()
{
    const NotionTask without{.id = u"1"_s, .name = u"Write"_s, .date = std::nullopt};
    NotionTask with = without;
    with.timerStatus = u"On"_s;
    QVERIFY(!(without == with));
    QVERIFY(!(with == without));
    QCOMPARE(without, without);
}

QTEST_GUILESS_MAIN(NotionTaskTest)
#include "NotionTaskTest.moc"
