#include "Views/NotchContentView.h"

#include "LookUp.h"
#include "UrlCatcher.h"
#include "ViewWorld.h"
#include "Views/CardButton.h"
#include "Views/ClockText.h"
#include "Views/NotchShape.h"
#include "Views/ProgressRing.h"
#include "Views/RoundedBox.h"
#include "Views/StatsRow.h"
#include "Views/SymbolIcon.h"
#include "Views/Theme.h"
#include "Views/Timeline.h"

#include <QGraphicsOpacityEffect>
#include <QImage>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr QSize idleSize(200, 47);
constexpr QSize compactSize(440, 50);
constexpr QSize expandedSize(440, 210);

const QString longName
    = u"Rewrite the quarterly report on the migration of the booking system for the northern branches"_s;

struct Look {
    int size;
    QFont::Weight weight;
    QColor color;
    bool isMonospaced = false;
};

struct Line {
    double radius = 0;
    double width = 0;
};

/// The line of a ring that stands empty, measured to the right of its middle.
Line trackOf(ProgressRing &ring)
{
    constexpr int scale = 16;
    constexpr double opacity = 0.15;
    QImage picture(ring.size() * scale, QImage::Format_ARGB32);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    ring.render(&picture, {}, {}, QWidget::DrawChildren);
    const int middle = picture.width() / 2;
    Line line;
    double sum = 0;
    for (int x = middle; x < picture.width(); ++x) {
        const double share = picture.pixelColor(x, picture.height() / 2).alphaF() / opacity;
        line.width += share / scale;
        line.radius += share * (x + 0.5 - middle) / scale;
        sum += share;
    }
    line.radius /= sum;
    return line;
}

bool hasLook(const QLabel *label, const Look &look)
{
    return label && label->font().pixelSize() == look.size && label->font().weight() == look.weight
        && inkOf(label) == look.color && QFontInfo(label->font()).fixedPitch() == look.isMonospaced;
}

} // namespace

/// What the panel around the notch shows. Run at several scales of the screen.
class NotchContentViewTest : public QObject {
    Q_OBJECT
private slots:
    void init() { m_world = std::make_unique<ViewWorld>(); }
    void cleanup();

    void restingItIsBlackAlone();
    void restingNothingTicks();
    void compactRingAndClockStandAtTheEnds();
    void compactWithoutATimerTheRingStandsEmptyAndGreen();
    void compactTheTimerStopsAndComesBack();
    void clockAndRingTickOnceASecond();
    void ringByElapsedTime_data();
    void ringByElapsedTime();
    void theLineOfTheRing_data();
    void theLineOfTheRing();
    void theHeaderOfTheCard();
    void theStatsRowOfTheCard();
    void theButtonsOfTheCard();
    void theEmptyCard();
    void theHintFollowsTheShortcut();
    void theCardFitsIntoThePanel();
    void longNamesAreCutToOneLineAndTheCellsStayEqual();
    void theTotalOfTheTask_data();
    void theTotalOfTheTask();
    void absentNamesAreDashes();
    void theTimerStopsWhileTheCardIsOpen();
    void theTimerStartsWhileTheCardIsOpen();
    void anotherTimerWhileTheCardIsOpen();
    void aStoppedEntryIsShownLikeAnyOther();
    void theStopButtonStopsAndStaysEnabled();
    void openInNotionOpensThePage();
    void withoutATaskOpenInNotionIsThereAndDoesNothing();
    void theCornersFollowTheState();
    void theOutlineIsToldAtEachChange();
    void growingTheCardSlidesAndFadesIn();
    void theCompactViewIsThereAtOnce();
    void theHoverIsHandedOn();
    void anEqualStateChangesNothing();

private:
    NotchContentView &show(NotchState state, const QSize &size);
    NotchContentView &showCard(const ViewWorld::Timer &timer);
    QRect place(const QWidget *widget) const { return placeIn(*m_view, widget); }
    QRect place(const QString &name) const { return place(childIn(*m_view, name)); }
    QStringList words() const;

    std::unique_ptr<ViewWorld> m_world;
    std::unique_ptr<NotchContentView> m_view;
    int m_enterCount = 0;
    int m_exitCount = 0;
};

void NotchContentViewTest::cleanup()
{
    m_view.reset();
    m_world.reset();
}

NotchContentView &NotchContentViewTest::show(NotchState state, const QSize &size)
{
    m_enterCount = m_exitCount = 0;
    m_world->poll();
    m_view = std::make_unique<NotchContentView>(
        *m_world->viewModel, state, [this] { ++m_enterCount; }, [this] { ++m_exitCount; }, m_world->settings.settings,
        m_world->clock);
    m_view->resize(size);
    m_view->show();
    settleLayout();
    return *m_view;
}

NotchContentView &NotchContentViewTest::showCard(const ViewWorld::Timer &timer)
{
    m_world->showTimer(timer);
    return show(NotchState::expanded, expandedSize);
}

QStringList NotchContentViewTest::words() const
{
    QStringList words;
    for (const auto *label : visibleIn<ElidedLabel>(*m_view))
        words.append(label->text());
    return words;
}

void NotchContentViewTest::restingItIsBlackAlone()
{
    m_world->showTimer({});
    show(NotchState::idle, idleSize);
    QVERIFY(visibleIn<QWidget>(*m_view).isEmpty());
    const auto picture = m_view->grab().toImage();
    for (const auto &point : {QPoint(0, 0), QPoint(100, 20), QPoint(150, 46)})
        QCOMPARE(picture.pixelColor(point * picture.devicePixelRatio()), QColor(Qt::black));
}

void NotchContentViewTest::restingNothingTicks()
{
    m_world->showTimer({});
    show(NotchState::idle, idleSize);
    QVERIFY(!m_view->findChild<Timeline *>()->isTicking());
    m_view->setState(NotchState::expanded);
    QVERIFY(m_view->findChild<Timeline *>()->isTicking());
    m_view->setState(NotchState::idle);
    QVERIFY(!m_view->findChild<Timeline *>()->isTicking());
}

void NotchContentViewTest::compactRingAndClockStandAtTheEnds()
{
    m_world->showTimer({.elapsed = 5025});
    show(NotchState::compact, compactSize);
    auto *ring = visibleIn<ProgressRing>(*m_view).value(0);
    QVERIFY(ring);
    QCOMPARE(place(ring).center().x(), QRect(20, 15, 20, 20).center().x()); // 20 points wide, 20 from the edge.
    QCOMPARE(place(ring).center().y(), QRect(20, 15, 20, 20).center().y()); // In the middle of the whole height.
    QCOMPARE(place(ring).width() - 2 * ring->overflow(), 20);
    auto *clock = visibleIn<ClockText>(*m_view).value(0);
    QVERIFY(clock);
    QCOMPARE(clock->time(), u"1:23:45"_s);
    QVERIFY(hasLook(clock, {13, QFont::DemiBold, Qt::white, true}));
    QCOMPARE(place(clock).x() + place(clock).width(), 420);
    QVERIFY(qAbs(2 * place(clock).y() + place(clock).height() - 50) <= 1);
    QVERIFY(words().isEmpty());
}

void NotchContentViewTest::compactWithoutATimerTheRingStandsEmptyAndGreen()
{
    show(NotchState::compact, compactSize);
    auto *ring = visibleIn<ProgressRing>(*m_view).value(0);
    QVERIFY(ring);
    QCOMPARE(ring->progress(), 0.0);
    QCOMPARE(ring->color(), theme::systemGreen);
    QCOMPARE(place(ring).x() + ring->overflow(), 20);
    QVERIFY(visibleIn<ClockText>(*m_view).isEmpty());
}

void NotchContentViewTest::compactTheTimerStopsAndComesBack()
{
    m_world->showTimer({.elapsed = 8000});
    show(NotchState::compact, compactSize);
    m_world->showNothing();
    m_world->poll();
    settleLayout();
    QVERIFY(visibleIn<ClockText>(*m_view).isEmpty());
    QCOMPARE(visibleIn<ProgressRing>(*m_view).size(), 1);
    QCOMPARE(visibleIn<ProgressRing>(*m_view).first()->progress(), 0.0);
    QCOMPARE(visibleIn<ProgressRing>(*m_view).first()->color(), theme::systemGreen);
    m_world->showTimer({.elapsed = 60});
    m_world->poll();
    settleLayout();
    QCOMPARE(visibleIn<ClockText>(*m_view).value(0)->time(), u"0:01:00"_s);
}

void NotchContentViewTest::clockAndRingTickOnceASecond()
{
    m_world->showTimer({.elapsed = 5025});
    show(NotchState::compact, compactSize);
    auto *clock = visibleIn<ClockText>(*m_view).value(0);
    m_world->clock.setNow(m_world->clock.now().addSecs(1));
    QTRY_COMPARE(clock->time(), u"1:23:46"_s);
}

void NotchContentViewTest::ringByElapsedTime_data()
{
    QTest::addColumn<double>("elapsed");
    QTest::addColumn<double>("progress");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<QString>("clock");
    QTest::newRow("3599 seconds are almost full") << 3599.0 << 3599 / 3600.0 << theme::systemGreen << u"0:59:59"_s;
    QTest::newRow("3600 seconds are empty") << 3600.0 << 0.0 << theme::systemCyan << u"1:00:00"_s;
    QTest::newRow("7200 seconds") << 7200.0 << 0.0 << theme::systemOrange << u"2:00:00"_s;
    QTest::newRow("14400 seconds") << 14400.0 << 0.0 << theme::systemRed << u"4:00:00"_s;
    QTest::newRow("red for good") << 90000.0 + 1800 << 0.5 << theme::systemRed << u"25:30:00"_s;
    QTest::newRow("a start in the future") << -90.0 << 0.0 << theme::systemGreen << u"0:00:00"_s;
}

void NotchContentViewTest::ringByElapsedTime()
{
    QFETCH(const double, elapsed);
    m_world->showTimer({.elapsed = elapsed});
    for (const auto state : {NotchState::compact, NotchState::expanded}) {
        show(state, expandedSize);
        QTEST(visibleIn<ProgressRing>(*m_view).value(0)->progress(), "progress");
        QTEST(visibleIn<ProgressRing>(*m_view).value(0)->color(), "color");
        QTEST(visibleIn<ClockText>(*m_view).value(0)->time(), "clock");
    }
}

void NotchContentViewTest::theLineOfTheRing_data()
{
    QTest::addColumn<NotchState>("state");
    QTest::addColumn<double>("diameter");
    QTest::addColumn<double>("width");
    QTest::newRow("of the strip") << NotchState::compact << 20.0 << 2.5;
    QTest::newRow("of the card") << NotchState::expanded << 36.0 << 3.0;
}

void NotchContentViewTest::theLineOfTheRing()
{
    QFETCH(const NotchState, state);
    QFETCH(const double, diameter);
    QFETCH(const double, width);
    m_world->showTimer({.elapsed = 3600});
    show(state, state == NotchState::compact ? compactSize : expandedSize);
    auto *const ring = visibleIn<ProgressRing>(*m_view).value(0);
    QVERIFY(ring);
    const auto line = trackOf(*ring);
    QVERIFY2(qAbs(line.width - width) < 0.1, qPrintable(QString::number(line.width)));
    QVERIFY2(qAbs(2 * line.radius - diameter) < 0.2, qPrintable(QString::number(2 * line.radius)));
}

void NotchContentViewTest::theHeaderOfTheCard()
{
    showCard({.taskName = u"Home page layout"_s, .elapsed = 5025});
    auto *name = textIn(*m_view, u"Home page layout"_s);
    QVERIFY(hasLook(name, {15, QFont::DemiBold, Qt::white}));
    QCOMPARE(place(name).topLeft(), QPoint(24, 50));
    auto *running = textIn(*m_view, u"Running"_s);
    QVERIFY(hasLook(running, {11, QFont::Normal, theme::white(0.55)}));
    auto *started = textIn(*m_view, u"Started 08:06"_s);
    QVERIFY(hasLook(started, {11, QFont::Normal, theme::white(0.55)}));
    QCOMPARE(place(running).top(), place(name).bottom() + 1 + 4);
    const auto dots = visibleIn<RoundedBox>(*m_view);
    QCOMPARE(dots.size(), 2);
    QCOMPARE(dots.at(0)->size(), QSize(6, 6));
    QCOMPARE(dots.at(0)->color(), theme::systemGreen);
    QCOMPARE(place(dots.at(0)).x(), 24);
    QCOMPARE(place(running).x(), 24 + 6 + 6);
    QCOMPARE(dots.at(1)->size(), QSize(3, 3));
    QCOMPARE(dots.at(1)->color(), theme::white(0.3));
    QCOMPARE(place(dots.at(1)).x(), place(running).right() + 1 + 6);
    QCOMPARE(place(started).x(), place(dots.at(1)).right() + 1 + 6);

    auto *clock = visibleIn<ClockText>(*m_view).value(0);
    QVERIFY(hasLook(clock, {22, QFont::DemiBold, Qt::white, true}));
    QCOMPARE(place(clock).right() + 1, 440 - 24);
    auto *ring = visibleIn<ProgressRing>(*m_view).value(0);
    QCOMPARE(place(ring).width() - 2 * ring->overflow(), 36);
    QCOMPARE(place(ring).right() + 1 - ring->overflow() + 10, place(clock).x());
    QCOMPARE(place(ring).top() + ring->overflow(), 50);
}

void NotchContentViewTest::theStatsRowOfTheCard()
{
    showCard({.project = u"Website"_s, .client = u"Northwind"_s, .totalMinutes = 755});
    const QRect row = place(u"statsRow"_s);
    const auto *ring = visibleIn<ProgressRing>(*m_view).value(0);
    const int headerBottom
        = std::max(place(ring).bottom() + 1 - ring->overflow(), place(childIn(*m_view, u"started"_s)).bottom() + 1);
    QCOMPARE(row.top(), headerBottom + 16);
    QCOMPARE(row.left(), 24);
    QCOMPARE(row.width(), 440 - 48);
    const auto cells = visibleIn<StatItem>(*m_view);
    QCOMPARE(cells.size(), 3);
    for (int i = 0; i < 3; ++i)
        QVERIFY(qAbs(cells.at(i)->width() - (row.width() - 2) / 3.0) < 1);
    QCOMPARE(place(cells.at(1)).x(), place(cells.at(0)).right() + 1 + 1);
    QVERIFY(hasLook(textIn(*m_view, u"PROJECT"_s), {9, QFont::DemiBold, theme::white(0.3)}));
    QVERIFY(hasLook(textIn(*m_view, u"CLIENT"_s), {9, QFont::DemiBold, theme::white(0.3)}));
    QVERIFY(hasLook(textIn(*m_view, u"TOTAL"_s), {9, QFont::DemiBold, theme::white(0.3)}));
    QVERIFY(hasLook(textIn(*m_view, u"Website"_s), {12, QFont::Medium, theme::white(0.55)}));
    QVERIFY(hasLook(textIn(*m_view, u"Northwind"_s), {12, QFont::Medium, theme::white(0.55)}));
    QVERIFY(hasLook(textIn(*m_view, u"12h 35m"_s), {11, QFont::DemiBold, Qt::white, true}));
    const QRect label = place(textIn(*m_view, u"PROJECT"_s));
    QCOMPARE(label.topLeft(), row.topLeft() + QPoint(12, 8));
    QVERIFY(qAbs(textIn(*m_view, u"PROJECT"_s)->font().letterSpacing() - 0.8) < 0.01);
    QCOMPARE(place(textIn(*m_view, u"Website"_s)).topLeft(), label.bottomLeft() + QPoint(0, 1 + 2));
    QCOMPARE(place(textIn(*m_view, u"Website"_s)).bottom() + 1 + 8, row.bottom() + 1);
    QCOMPARE(childIn<StatsRow>(*m_view, u"statsRow"_s)->radius(), 10.0);

    const auto picture = m_view->grab().toImage();
    const auto colorAt = [&](const QPointF &point) {
        const QPointF pixel = point * picture.devicePixelRatio();
        return picture.pixelColor(int(pixel.x()), int(pixel.y()));
    };
    QCOMPARE(colorAt(row.topLeft() + QPointF(60, 4)).rgb(), theme::gray(0.1).rgb());
    // Between the cells the row's own background, white on black.
    QCOMPARE(colorAt(QPointF(place(cells.at(0)).right() + 1.5, row.center().y())).red(), qRound(0.08 * 255));
    QCOMPARE(colorAt(row.topLeft()), QColor(Qt::black)); // The corner is round.
}

void NotchContentViewTest::theButtonsOfTheCard()
{
    showCard({});
    auto *stop = childIn<CardButton>(*m_view, u"stop"_s);
    auto *open = childIn<CardButton>(*m_view, u"openInNotion"_s);
    QVERIFY(stop && open);
    QCOMPARE(place(stop).top(), place(u"statsRow"_s).bottom() + 1 + 16);
    QCOMPARE(place(stop).left(), 24);
    QCOMPARE(place(open).left(), place(stop).right() + 1 + 8);
    QCOMPARE(place(open).right() + 1, 440 - 24);
    QVERIFY(qAbs(stop->width() - open->width()) <= 1);
    QCOMPARE(stop->height(), 32);
    QCOMPARE(open->height(), 32);
    QVERIFY(hasLook(textIn(*m_view, u"Stop"_s), {12, QFont::DemiBold, QColor(255, 69, 59)}));
    QVERIFY(hasLook(textIn(*m_view, u"Open in Notion"_s), {12, QFont::DemiBold, theme::white(0.55)}));
    QVERIFY(stop->isEnabled() && open->isEnabled());
    QCOMPARE(stop->look().background, theme::faded(theme::systemRed, 0.15));
    QCOMPARE(stop->look().stroke, theme::faded(theme::systemRed, 0.2));
    QCOMPARE(open->look().background, theme::white(0.06));
    QCOMPARE(open->look().stroke, theme::white(0.08));
    const auto expectLabel = [this](const CardButton &button, Symbol symbol, const QString &text) {
        const auto *icon = visibleIn<SymbolIcon>(button).value(0);
        QVERIFY(icon);
        QCOMPARE(button.look().radius, 8.0);
        QCOMPARE(icon->symbol(), symbol);
        QCOMPARE(icon->textSize(), 10);
        QCOMPARE(place(textIn(button, text)).left(), place(icon).right() + 1 + 5);
    };
    expectLabel(*stop, Symbol::stopFill, u"Stop"_s);
    expectLabel(*open, Symbol::arrowUpRightSquare, u"Open in Notion"_s);
}

void NotchContentViewTest::theEmptyCard()
{
    show(NotchState::expanded, expandedSize);
    QCOMPARE(words(), (QStringList{u"No active timer"_s, u"⇧⌘N to quick add a task"_s}));
    auto *headline = textIn(*m_view, u"No active timer"_s);
    auto *hint = textIn(*m_view, u"⇧⌘N to quick add a task"_s);
    QVERIFY(hasLook(headline, {14, QFont::Medium, theme::white(0.5)}));
    QVERIFY(hasLook(hint, {11, QFont::Normal, theme::white(0.25)}));
    auto *dot = visibleIn<RoundedBox>(*m_view).value(0);
    QVERIFY(dot);
    QCOMPARE(dot->size(), QSize(8, 8));
    QCOMPARE(dot->color(), theme::white(0.2));
    QCOMPARE(place(headline).x(), place(dot).right() + 1 + 6);
    QCOMPARE(place(hint).top(), place(headline).bottom() + 1 + 12);
    // In the middle of what is below the notch, 50 to 210.
    QVERIFY(qAbs(place(headline).top() + place(hint).bottom() + 1 - 260) <= 1);
    QVERIFY(qAbs(place(dot).left() + place(headline).right() + 1 - 440) <= 1);
    QVERIFY(qAbs(place(hint).left() + place(hint).right() + 1 - 440) <= 1);
    QVERIFY(visibleIn<ProgressRing>(*m_view).isEmpty());
    QVERIFY(visibleIn<CardButton>(*m_view).isEmpty());
    QVERIFY(!m_view->findChild<Timeline *>()->isTicking());
}

void NotchContentViewTest::theHintFollowsTheShortcut()
{
    show(NotchState::expanded, expandedSize);
    auto *hint = childIn<ElidedLabel>(*m_view, u"hint"_s);
    m_world->settings.settings.setQuickAddModifiers(0x1000);
    QCOMPARE(hint->text(), u"⌃N to quick add a task"_s);
    m_world->settings.settings.setQuickAddModifiers(0);
    m_world->settings.settings.setQuickAddKeyCode(0);
    QCOMPARE(hint->text(), u"Not set to quick add a task"_s);
}

void NotchContentViewTest::theCardFitsIntoThePanel()
{
    showCard({});
    QVERIFY(place(u"buttons"_s).bottom() < 210);
    for (const auto *label : visibleIn<ElidedLabel>(*m_view)) {
        QVERIFY2(!label->isElided(), qPrintable(label->text()));
        QVERIFY2(label->height() >= label->sizeHint().height(), qPrintable(label->text()));
    }
}

void NotchContentViewTest::longNamesAreCutToOneLineAndTheCellsStayEqual()
{
    showCard({.taskName = longName, .project = longName, .client = longName});
    int cutCount = 0;
    for (const auto *label : visibleIn<ElidedLabel>(*m_view)) {
        if (label->text() != longName)
            continue;
        QCOMPARE(label->shownLines().size(), 1);
        QVERIFY(label->shownLines().first().endsWith(u'…'));
        ++cutCount;
    }
    QCOMPARE(cutCount, 3);
    const auto cells = visibleIn<StatItem>(*m_view);
    QVERIFY(qAbs(cells.at(0)->width() - cells.at(2)->width()) <= 1);
    QVERIFY(qAbs(cells.at(0)->width() - cells.at(1)->width()) <= 1);
    QCOMPARE(place(visibleIn<ClockText>(*m_view).value(0)).right() + 1, 416);
}

void NotchContentViewTest::theTotalOfTheTask_data()
{
    QTest::addColumn<double>("minutes");
    QTest::addColumn<QString>("text");
    QTest::newRow("59 seconds") << 59 / 60.0 << u"0m"_s;
    QTest::newRow("an hour") << 60.0 << u"1h 0m"_s;
    QTest::newRow("an hour and a half") << 90.0 << u"1h 30m"_s;
    QTest::newRow("none") << -1.0 << u"—"_s;
}

void NotchContentViewTest::theTotalOfTheTask()
{
    QFETCH(const double, minutes);
    showCard({.totalMinutes = minutes < 0 ? std::nullopt : std::optional(minutes)});
    QTEST(visibleIn<StatItem>(*m_view).at(2)->findChild<ElidedLabel *>(u"value"_s)->text(), "text");
}

void NotchContentViewTest::absentNamesAreDashes()
{
    showCard({.project = std::nullopt, .client = std::nullopt});
    const auto cells = visibleIn<StatItem>(*m_view);
    QCOMPARE(cells.at(0)->findChild<ElidedLabel *>(u"value"_s)->text(), u"—"_s);
    QCOMPARE(cells.at(1)->findChild<ElidedLabel *>(u"value"_s)->text(), u"—"_s);
}

void NotchContentViewTest::theTimerStopsWhileTheCardIsOpen()
{
    showCard({});
    m_world->showNothing();
    m_world->poll();
    settleLayout();
    QCOMPARE(words().value(0), u"No active timer"_s);
    QVERIFY(visibleIn<CardButton>(*m_view).isEmpty());
    QCOMPARE(m_view->state(), NotchState::expanded);
    QCOMPARE(m_view->size(), expandedSize);
    QVERIFY(!m_view->findChild<Timeline *>()->isTicking());
}

void NotchContentViewTest::theTimerStartsWhileTheCardIsOpen()
{
    show(NotchState::expanded, expandedSize);
    m_world->showTimer({.taskName = u"Letter"_s});
    m_world->poll();
    settleLayout();
    QVERIFY(textIn(*m_view, u"Letter"_s));
    QVERIFY(!textIn(*m_view, u"No active timer"_s));
    QVERIFY(m_view->findChild<Timeline *>()->isTicking());
}

void NotchContentViewTest::anotherTimerWhileTheCardIsOpen()
{
    showCard({.taskName = u"Letter"_s});
    auto *const card = childIn(*m_view, u"timerCard"_s);
    m_world->showTimer({.taskName = u"Another"_s, .elapsed = 60});
    m_world->poll();
    settleLayout();
    QVERIFY(textIn(*m_view, u"Another"_s));
    QCOMPARE(visibleIn<ClockText>(*m_view).value(0)->time(), u"0:01:00"_s);
    QCOMPARE(childIn(*m_view, u"timerCard"_s), card);
}

void NotchContentViewTest::aStoppedEntryIsShownLikeAnyOther()
{
    showCard({.taskName = u"Letter"_s, .status = u"Stopped"_s});
    QVERIFY(!m_world->viewModel->isTimerRunning());
    QVERIFY(textIn(*m_view, u"Letter"_s));
}

void NotchContentViewTest::theStopButtonStopsAndStaysEnabled()
{
    showCard({});
    m_world->notion.isHolding = true;
    m_world->notion.asked.clear();
    auto *stop = childIn<CardButton>(*m_view, u"stop"_s);
    QTest::mouseClick(stop, Qt::LeftButton);
    QTRY_COMPARE(m_world->notion.asked.size(), 1);
    QVERIFY(m_world->viewModel->isLoading());
    QVERIFY(stop->isEnabled());
    QCOMPARE(visibleIn<SymbolIcon>(*m_view).size(), 2); // No busy indicator in its place.
    QTest::mouseClick(stop, Qt::LeftButton);
    settleLayout();
    QCOMPARE(m_world->notion.asked.size(), 1); // Dropped.
    m_world->notion.isHolding = false;
    m_world->notion.release();
}

void NotchContentViewTest::openInNotionOpensThePage()
{
    const UrlCatcher catcher;
    showCard({.taskId = u"0a1b-2c3d"_s});
    QTest::mouseClick(childIn<CardButton>(*m_view, u"openInNotion"_s), Qt::LeftButton);
    QCOMPARE(catcher.opened, QList<QUrl>{QUrl(u"https://www.notion.so/0a1b2c3d"_s)});
}

void NotchContentViewTest::withoutATaskOpenInNotionIsThereAndDoesNothing()
{
    const UrlCatcher catcher;
    showCard({.taskId = std::nullopt});
    auto *open = childIn<CardButton>(*m_view, u"openInNotion"_s);
    QVERIFY(open && open->isEnabled());
    QTest::mouseClick(open, Qt::LeftButton);
    QVERIFY(catcher.opened.isEmpty());
}

void NotchContentViewTest::theCornersFollowTheState()
{
    show(NotchState::idle, idleSize);
    QCOMPARE(m_view->outline(), NotchShape{.cornerRadius = 14}.path({0, 0, 200, 47}));
    m_view->setState(NotchState::compact);
    QCOMPARE(m_view->outline(), NotchShape{.cornerRadius = 14}.path({0, 0, 200, 47}));
    m_view->setState(NotchState::expanded);
    QCOMPARE(m_view->outline(), NotchShape{.cornerRadius = 20}.path({0, 0, 200, 47}));
    m_view->resize(expandedSize);
    QCOMPARE(m_view->outline(), NotchShape{.cornerRadius = 20}.path({0, 0, 440, 210}));
}

void NotchContentViewTest::theOutlineIsToldAtEachChange()
{
    show(NotchState::idle, idleSize);
    QPainterPath told;
    connect(m_view.get(), &NotchContentView::outlineChanged, this, [&](const QPainterPath &path) { told = path; });
    m_view->setState(NotchState::expanded);
    QCOMPARE(told, m_view->outline());
    m_view->resize(300, 120);
    QCOMPARE(told, NotchShape{.cornerRadius = 20}.path({0, 0, 300, 120}));
}

void NotchContentViewTest::growingTheCardSlidesAndFadesIn()
{
    m_world->showTimer({});
    show(NotchState::idle, idleSize);
    m_view->setState(NotchState::expanded);
    auto *card = childIn(*m_view, u"expandedView"_s);
    QVERIFY(card);
    const auto opacity = [card] {
        auto *effect = qobject_cast<QGraphicsOpacityEffect *>(card->graphicsEffect());
        return effect ? effect->opacity() : 1.0;
    };
    QCOMPARE(card->geometry(), QRect(-120, -163, 440, 210)); // Only its lower end is in the panel.
    QCOMPARE(opacity(), 0.0);
    m_view->resize(340, 130);
    QCOMPARE(card->geometry(), QRect(-50, -80, 440, 210));
    QCOMPARE(opacity(), 0.5);
    m_view->resize(expandedSize);
    QCOMPARE(card->geometry(), QRect(0, 0, 440, 210));
    QVERIFY(!card->graphicsEffect());
}

void NotchContentViewTest::theCompactViewIsThereAtOnce()
{
    showCard({});
    m_view->setState(NotchState::compact);
    settleLayout();
    QVERIFY(!childIn(*m_view, u"expandedView"_s));
    auto *compact = childIn(*m_view, u"compactView"_s);
    QVERIFY(compact && !compact->graphicsEffect());
    QCOMPARE(compact->geometry(), m_view->rect()); // In the middle of the height that is left.
}

void NotchContentViewTest::theHoverIsHandedOn()
{
    for (const auto state : {NotchState::idle, NotchState::compact, NotchState::expanded}) {
        show(state, expandedSize);
        m_view->setHovered(true);
        QCOMPARE(m_enterCount, 1);
        QCOMPARE(m_exitCount, 0);
        m_view->setHovered(false);
        QCOMPARE(m_enterCount, 1);
        QCOMPARE(m_exitCount, 1);
    }
}

void NotchContentViewTest::anEqualStateChangesNothing()
{
    m_world->showTimer({});
    show(NotchState::compact, compactSize);
    auto *const before = childIn(*m_view, u"compactView"_s);
    QSignalSpy told(m_view.get(), &NotchContentView::outlineChanged);
    m_view->setState(NotchState::compact);
    QCOMPARE(childIn(*m_view, u"compactView"_s), before);
    QVERIFY(told.isEmpty());
}

QTEST_MAIN(NotchContentViewTest)
#include "NotchContentViewTest.moc"
