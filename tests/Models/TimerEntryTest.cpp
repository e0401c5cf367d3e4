#include "Models/TimerEntry.h"

#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;
using TimerStatus = TimerEntry::TimerStatus;

class TimerEntryTest : public QObject {
    Q_OBJECT
private slots:
    void onlyTheRawValuesThemselvesMakeAStatus_data();
    void onlyTheRawValuesThemselvesMakeAStatus();
    void aStatusGivesItsRawValue();
    void equalityGoesOverEveryField_data();
    void equalityGoesOverEveryField();
    void anotherTotalTimeIsAnotherValueOfTheSameItem();
    void whatIsOptionalIsAbsentAtFirst();
};

namespace {
TimerEntry sample()
{
    return {.id = u"1"_s,
            .startTime = QDateTime({2026, 11, 21}, {9, 30}, Qt::UTC),
            .endTime = QDateTime({2026, 11, 21}, {10, 0}, Qt::UTC),
            .taskId = u"task"_s,
            .taskName = u"Write"_s,
            .status = TimerStatus::running,
            .projectName = u"Book"_s,
            .clientName = u"House"_s,
            .totalTime = 90.0};
}
} // namespace

void TimerEntryTest::onlyTheRawValuesThemselvesMakeAStatus_data()
{
    QTest::addColumn<QString>("rawValue");
    QTest::addColumn<std::optional<TimerStatus>>("status");
    QTest::newRow("running") << u"running"_s << std::optional(TimerStatus::running);
    QTest::newRow("stopped") << u"stopped"_s << std::optional(TimerStatus::stopped);
    QTest::newRow("an upper-case letter makes another text") << u"Running"_s << std::optional<TimerStatus>();
    QTest::newRow("all in upper case") << u"STOPPED"_s << std::optional<TimerStatus>();
    QTest::newRow("a space behind") << u"running "_s << std::optional<TimerStatus>();
    QTest::newRow("empty") << u""_s << std::optional<TimerStatus>();
    QTest::newRow("another word") << u"paused"_s << std::optional<TimerStatus>();
}

void TimerEntryTest::onlyTheRawValuesThemselvesMakeAStatus()
{
    QFETCH(QString, rawValue);
    QFETCH(std::optional<TimerStatus>, status);
    QVERIFY(TimerEntry::timerStatusFromRawValue(rawValue) == status);
}

void TimerEntryTest::aStatusGivesItsRawValue()
{
    QCOMPARE(TimerEntry::rawValue(TimerStatus::running), u"running"_s);
    QCOMPARE(TimerEntry::rawValue(TimerStatus::stopped), u"stopped"_s);
}

void TimerEntryTest::equalityGoesOverEveryField_data()
{
    QTest::addColumn<TimerEntry>("other");
    QTest::addColumn<bool>("isEqual");

    const auto addRow = [](const char *name, bool isEqual, void (*change)(TimerEntry &)) {
        TimerEntry other = sample();
        change(other);
        QTest::newRow(name) << other << isEqual;
    };
    addRow("all fields the same", true, [](TimerEntry &) {});
    addRow("the same instants in another zone", true, [](TimerEntry &entry) {
        entry.startTime = entry.startTime.toOffsetFromUtc(-7200);
        entry.endTime = entry.endTime->toOffsetFromUtc(3600);
    });
    addRow("another id", false, [](TimerEntry &entry) { entry.id = u"2"_s; });
    addRow("a later start", false, [](TimerEntry &entry) { entry.startTime = entry.startTime.addMSecs(1); });
    addRow("a later end", false, [](TimerEntry &entry) { entry.endTime = entry.endTime->addMSecs(1); });
    addRow("no end", false, [](TimerEntry &entry) { entry.endTime = std::nullopt; });
    addRow("another task", false, [](TimerEntry &entry) { entry.taskId = u"other"_s; });
    addRow("no task", false, [](TimerEntry &entry) { entry.taskId = std::nullopt; });
    addRow("another task name", false, [](TimerEntry &entry) { entry.taskName = u"Read"_s; });
    addRow("another status", false, [](TimerEntry &entry) { entry.status = TimerStatus::stopped; });
    addRow("another project", false, [](TimerEntry &entry) { entry.projectName = u"Film"_s; });
    addRow("no project", false, [](TimerEntry &entry) { entry.projectName = std::nullopt; });
    addRow("another client", false, [](TimerEntry &entry) { entry.clientName = u"Home"_s; });
    addRow("an empty client is not none", false, [](TimerEntry &entry) { entry.clientName = u""_s; });
    addRow("another total time", false, [](TimerEntry &entry) { entry.totalTime = 90.5; });
    addRow("no total time", false, [](TimerEntry &entry) { entry.totalTime = std::nullopt; });
}

void TimerEntryTest::equalityGoesOverEveryField()
{
    QFETCH(TimerEntry, other);
    QTEST(sample() == other, "isEqual");
}

void TimerEntryTest::anotherTotalTimeIsAnotherValueOfTheSameItem()
{
    TimerEntry later = sample();
    later.totalTime = 120.0;
    QVERIFY(!(later == sample()));
    QCOMPARE(later.id, sample().id);
}

void TimerEntryTest::whatIsOptionalIsAbsentAtFirst()
{
    const TimerEntry entry{.id = u"1"_s,
                           .startTime = QDateTime({2026, 11, 21}, {9, 30}, Qt::UTC),
                           .taskId = std::nullopt,
                           .taskName = u"Write"_s,
                           .status = TimerStatus::running};
    QVERIFY(!entry.endTime);
    QVERIFY(!entry.projectName);
    QVERIFY(!entry.clientName);
    QVERIFY(!entry.totalTime);
    QCOMPARE(entry, entry);
}

QTEST_GUILESS_MAIN(TimerEntryTest)
#include "TimerEntryTest.moc"
