#include "Views/Timeline.h"

#include "Fakes/FakeClock.h"

#include <QSignalSpy>
#include <QTest>
#include <QWidget>

using namespace korvo;

class TimelineTest : public QObject {
    Q_OBJECT
private slots:
    void theFirstTickComesAtOnce();
    void ticksFallOnTheSecondsSinceTheBeginning();
    void aHiddenViewDoesNotTick();
    void aViewThatIsShownAgainIsUpToDateAtOnce();
    void anEndedScheduleStaysSilent();
    void aNewBeginningMovesTheSchedule();
    void aClockThatWasSetBackIsFollowed();
    void theScheduleEndsWithItsView();

private:
    static QDateTime dateOf(const QSignalSpy &ticks) { return ticks.last().first().toDateTime(); }
};

void TimelineTest::theFirstTickComesAtOnce()
{
    FakeClock clock;
    QWidget view;
    view.show();
    Timeline timeline(view, clock);
    const QSignalSpy ticks(&timeline, &Timeline::ticked);
    timeline.begin();
    QCOMPARE(ticks.count(), 1);
    QCOMPARE(dateOf(ticks), clock.now());
    QVERIFY(timeline.isTicking());
}

void TimelineTest::ticksFallOnTheSecondsSinceTheBeginning()
{
    FakeClock clock;
    QWidget view;
    view.show();
    Timeline timeline(view, clock);
    const QSignalSpy ticks(&timeline, &Timeline::ticked);
    const auto beginning = clock.now();
    timeline.begin();
    clock.advance(1.02); // The timer was late.
    QTRY_COMPARE(ticks.count(), 2);
    QCOMPARE(dateOf(ticks), beginning.addSecs(1));
    clock.advance(0.977); // The next was a little early.
    QTRY_COMPARE(ticks.count(), 3);
    QCOMPARE(dateOf(ticks), beginning.addSecs(2));
    clock.advance(3600.5); // The machine slept.
    QTRY_COMPARE(ticks.count(), 4);
    QCOMPARE(dateOf(ticks), beginning.addSecs(3602));
}

void TimelineTest::aHiddenViewDoesNotTick()
{
    FakeClock clock;
    QWidget view;
    Timeline timeline(view, clock);
    timeline.begin();
    QVERIFY(!timeline.isTicking());
    view.show();
    QVERIFY(timeline.isTicking());
    view.hide();
    QVERIFY(!timeline.isTicking());
}

void TimelineTest::aViewThatIsShownAgainIsUpToDateAtOnce()
{
    FakeClock clock;
    QWidget view;
    view.show();
    Timeline timeline(view, clock);
    timeline.begin();
    view.hide();
    clock.advance(60);
    const QSignalSpy ticks(&timeline, &Timeline::ticked);
    view.show();
    QCOMPARE(ticks.count(), 1);
    QCOMPARE(dateOf(ticks), clock.now());
}

void TimelineTest::anEndedScheduleStaysSilent()
{
    FakeClock clock;
    QWidget view;
    view.show();
    Timeline timeline(view, clock);
    timeline.begin();
    timeline.end();
    QVERIFY(!timeline.isTicking());
    const QSignalSpy ticks(&timeline, &Timeline::ticked);
    view.hide();
    view.show();
    QCOMPARE(ticks.count(), 0);
    QVERIFY(!timeline.isTicking());
}

void TimelineTest::aNewBeginningMovesTheSchedule()
{
    FakeClock clock;
    QWidget view;
    view.show();
    Timeline timeline(view, clock);
    timeline.begin();
    clock.advance(0.4);
    const QSignalSpy ticks(&timeline, &Timeline::ticked);
    timeline.begin();
    QCOMPARE(dateOf(ticks), clock.now());
}

void TimelineTest::aClockThatWasSetBackIsFollowed()
{
    FakeClock clock;
    QWidget view;
    view.show();
    Timeline timeline(view, clock);
    timeline.begin();
    clock.setNow(clock.now().addSecs(-3600));
    const QSignalSpy ticks(&timeline, &Timeline::ticked);
    view.hide();
    view.show();
    QCOMPARE(dateOf(ticks), clock.now());
    QVERIFY(timeline.isTicking());
}

void TimelineTest::theScheduleEndsWithItsView()
{
    FakeClock clock;
    auto view = std::make_unique<QWidget>();
    const QPointer timeline = new Timeline(*view, clock);
    view.reset();
    QVERIFY(!timeline);
}

QTEST_MAIN(TimelineTest)
#include "TimelineTest.moc"
