#include "Views/ActiveTimerView.h"

#include "LookUp.h"
#include "ViewWorld.h"
#include "Views/BusyIndicator.h"
#include "Views/CardButton.h"
#include "Views/ClockText.h"
#include "Views/RoundedBox.h"
#include "Views/Stack.h"
#include "Views/SymbolIcon.h"
#include "Views/Theme.h"
#include "Views/Timeline.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QString longName
    = u"Rewrite the quarterly report on the migration of the booking system for the northern branches"_s;

} // namespace

class ActiveTimerViewTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void withoutATimerItTakesNoRoomAndDrawsNothing();
    void anyEntryIsShownAsRunning_data();
    void anyEntryIsShownAsRunning();
    void aStartAheadOfTheClockShowsZero();
    void theClockTicks();
    void aThirdLineOfALongNameIsCutOff();
    void whileLoadingTheButtonIsBusyAndLocked();
    void aFailedStopGivesTheButtonBackWithoutAMessage();
    void aStoppedTimerLeavesItEmpty();
    void anotherEntryIsShownInPlace();
    void itsPartsStandWhereTheyShould();
    void itFollowsTheDesktopsColours();
    void noTextIsClipped();

private:
    void show();
    int width() const { return m_view->width(); }
    QRect place(const QWidget *widget) const { return placeIn(*m_view, widget); }
    CardButton *stop() const { return childIn<CardButton>(*m_view, u"stop"_s); }

    std::unique_ptr<ViewWorld> m_world;
    std::unique_ptr<QWidget> m_host;
    ActiveTimerView *m_view = nullptr;
};

void ActiveTimerViewTest::init()
{
    m_world = std::make_unique<ViewWorld>();
}

void ActiveTimerViewTest::cleanup()
{
    m_host.reset();
    m_world->viewModel.reset();
    m_world->notion.release();
    m_world.reset();
}

void ActiveTimerViewTest::show()
{
    m_host = std::make_unique<QWidget>();
    m_view = new ActiveTimerView(*m_world->viewModel, m_world->clock);
    m_host->setLayout(vstack({.spacing = 0}, m_view, Spacer()));
    m_host->resize(280, 300);
    m_host->show();
    settleLayout();
}

void ActiveTimerViewTest::withoutATimerItTakesNoRoomAndDrawsNothing()
{
    show();
    QCOMPARE(m_view->height(), 0);
    QCOMPARE(m_view->sizeHint(), QSize(0, 0));
    QVERIFY(visibleIn<QWidget>(*m_view).isEmpty());
    QVERIFY(!m_view->findChild<Timeline *>()->isTicking());
}

void ActiveTimerViewTest::anyEntryIsShownAsRunning_data()
{
    QTest::addColumn<QString>("status");
    QTest::newRow("one that runs") << u"Running"_s;
    QTest::newRow("one of another status") << u"Paused"_s;
}

void ActiveTimerViewTest::anyEntryIsShownAsRunning()
{
    QFETCH(QString, status);
    m_world->showTimer({.elapsed = 5025, .status = status});
    m_world->poll();
    show();
    QVERIFY(textIn(*m_view, u"Running"_s));
    QVERIFY(textIn(*m_view, u"Home page layout"_s));
    QVERIFY(textIn(*m_view, u"Started 08:06"_s));
    QVERIFY(textIn(*m_view, u"Stop Timer"_s));
    QCOMPARE(visibleIn<ClockText>(*m_view).first()->time(), u"1:23:45"_s);
    QVERIFY(stop()->isEnabled());
    QCOMPARE(visibleIn<SymbolIcon>(*stop()).first()->symbol(), Symbol::stopCircleFill);
}

void ActiveTimerViewTest::aStartAheadOfTheClockShowsZero()
{
    m_world->showTimer({.elapsed = -30});
    m_world->poll();
    show();
    QCOMPARE(visibleIn<ClockText>(*m_view).first()->time(), u"0:00:00"_s);
}

void ActiveTimerViewTest::theClockTicks()
{
    m_world->showTimer({.elapsed = 59});
    m_world->poll();
    show();
    const auto *clock = visibleIn<ClockText>(*m_view).first();
    QCOMPARE(clock->time(), u"0:00:59"_s);
    m_world->clock.setNow(m_world->clock.now().addSecs(1));
    QTRY_COMPARE(clock->time(), u"0:01:00"_s);
}

void ActiveTimerViewTest::aThirdLineOfALongNameIsCutOff()
{
    m_world->showTimer({.taskName = longName + u' ' + longName});
    m_world->poll();
    show();
    const auto *name = childIn<ElidedLabel>(*m_view, u"taskName"_s);
    QCOMPARE(name->shownLines().size(), 2);
    QVERIFY(name->shownLines().last().endsWith(u'…'));
    QCOMPARE(name->height(), 2 * name->sizeHint().height());
}

void ActiveTimerViewTest::whileLoadingTheButtonIsBusyAndLocked()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    m_world->notion.isHolding = true;
    QTest::mouseClick(stop(), Qt::LeftButton);
    QCOMPARE(m_world->notion.calls().last(), u"PATCH /pages/e1"_s);
    QVERIFY(!stop()->isEnabled());
    QVERIFY(visibleIn<BusyIndicator>(*stop()).first()->isTurning());
    QVERIFY(visibleIn<SymbolIcon>(*stop()).isEmpty());
    QVERIFY(textIn(*stop(), u"Stop Timer"_s));
    QVERIFY(textIn(*m_view, u"Home page layout"_s));
}

void ActiveTimerViewTest::aFailedStopGivesTheButtonBackWithoutAMessage()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    QStringList before;
    for (const auto *label : visibleIn<ElidedLabel>(*m_view))
        before.append(label->text());
    QTest::mouseClick(stop(), Qt::LeftButton); // The workspace knows no such entry.
    QTRY_VERIFY(m_world->viewModel->errorMessage());
    QTRY_VERIFY(stop()->isEnabled());
    QVERIFY(visibleIn<BusyIndicator>(*m_view).isEmpty());
    QStringList after;
    for (const auto *label : visibleIn<ElidedLabel>(*m_view))
        after.append(label->text());
    QCOMPARE(after, before);
}

void ActiveTimerViewTest::aStoppedTimerLeavesItEmpty()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    QVERIFY(m_view->height() > 0);
    m_world->notion.answer(u"PATCH /pages/e1"_s, {});
    m_world->notion.answer(u"PATCH /pages/t1"_s, {});
    m_world->notion.answerRows(ViewWorld::trackerQuery(), {});
    QTest::mouseClick(stop(), Qt::LeftButton);
    QTRY_VERIFY(!m_world->viewModel->isLoading());
    settleLayout();
    QCOMPARE(m_view->height(), 0);
    QVERIFY(visibleIn<QWidget>(*m_view).isEmpty());
}

void ActiveTimerViewTest::anotherEntryIsShownInPlace()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    const auto *button = stop();
    m_world->showTimer({.taskName = u"Another name"_s, .elapsed = 60});
    m_world->poll();
    QVERIFY(textIn(*m_view, u"Another name"_s));
    QCOMPARE(visibleIn<ClockText>(*m_view).first()->time(), u"0:01:00"_s);
    QCOMPARE(stop(), button);
}

void ActiveTimerViewTest::itsPartsStandWhereTheyShould()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    const auto *dot = visibleIn<RoundedBox>(*m_view).first();
    const auto *running = textIn(*m_view, u"Running"_s);
    const auto *clock = visibleIn<ClockText>(*m_view).first();
    const auto *name = childIn(*m_view, u"taskName"_s);
    const auto *started = childIn(*m_view, u"started"_s);
    QCOMPARE(dot->size(), QSize(8, 8));
    QCOMPARE(place(dot).left(), 0); // No padding of its own.
    QCOMPARE(place(running).left(), 8 + 6);
    QCOMPARE(place(clock).topLeft(), QPoint(width() - clock->width(), 0));
    QCOMPARE(place(name).topLeft(), QPoint(0, place(clock).bottom() + 1 + 10));
    QCOMPARE(place(started).topLeft(), QPoint(0, place(name).bottom() + 1 + 3));
    QCOMPARE(place(stop()).topLeft(), QPoint(0, place(started).bottom() + 1 + 10));
    QCOMPARE(stop()->width(), width()); // It fills the row.
    QCOMPARE(place(stop()).bottom() + 1, m_view->height());
    QVERIFY(QFontInfo(clock->font()).fixedPitch());
    QVERIFY(clock->font().pixelSize() > name->font().pixelSize());
    QVERIFY(name->font().pixelSize() > started->font().pixelSize());
    QCOMPARE(name->font().weight(), QFont::Medium);
}

void ActiveTimerViewTest::itFollowsTheDesktopsColours()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    for (const bool isDark : {true, false}) {
        m_host->setPalette(isDark ? QPalette(QColor(40, 40, 40)) : QPalette(QColor(240, 240, 240)));
        settleLayout();
        const auto text = m_host->palette().color(QPalette::WindowText);
        QCOMPARE(theme::isDark(m_host->palette()), isDark);
        QCOMPARE(inkOf(childIn(*m_view, u"taskName"_s)), text);
        QCOMPARE(inkOf(childIn(*m_view, u"started"_s)), theme::faded(text, 0.55));
        QCOMPARE(inkOf(textIn(*m_view, u"Running"_s)), theme::systemGreenOn(m_host->palette()));
        QCOMPARE(visibleIn<RoundedBox>(*m_view).first()->color(), theme::systemGreenOn(m_host->palette()));
        QCOMPARE(stop()->look().background, theme::systemRedOn(m_host->palette()));
        QCOMPARE(inkOf(textIn(*stop(), u"Stop Timer"_s)), QColor(Qt::white));
        QCOMPARE(visibleIn<ClockText>(*m_view).size(), 1);
        QCOMPARE(visibleIn<ClockText>(*m_view).first()->time(), u"1:23:45"_s);
        QCOMPARE(inkOf(visibleIn<ClockText>(*m_view).first()), theme::systemGreenOn(m_host->palette()));
    }
}

void ActiveTimerViewTest::noTextIsClipped()
{
    m_world->showTimer({.elapsed = 45296});
    m_world->poll();
    show();
    for (const auto *label : visibleIn<ElidedLabel>(*m_view)) {
        QVERIFY2(!label->isElided(), qPrintable(label->text()));
        QVERIFY2(label->height() >= QFontMetrics(label->font()).height(), qPrintable(label->text()));
    }
    QCOMPARE(visibleIn<ClockText>(*m_view).first()->size(), visibleIn<ClockText>(*m_view).first()->sizeHint());
}

QTEST_MAIN(ActiveTimerViewTest)
#include "ActiveTimerViewTest.moc"
