#include "Views/MenuBarView.h"

#include "LookUp.h"
#include "ViewWorld.h"
#include "Views/CardButton.h"
#include "Views/ClockText.h"
#include "Views/DarkTaskRow.h"
#include "Views/ProgressRing.h"
#include "Views/RoundedBox.h"
#include "Views/StatsRow.h"
#include "Views/SymbolIcon.h"
#include "Views/TaskColumn.h"
#include "Views/Theme.h"

#include <QScrollBar>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int viewWidth = 340;
constexpr int panelHeight = 420;

const QString longName
    = u"Rewrite the quarterly report on the migration of the booking system for the northern branches"_s;

/// How a text is set.
struct Look {
    int size;
    QFont::Weight weight;
    QColor color;
    bool isMonospaced = false;
};

bool hasLook(const QLabel *label, const Look &look)
{
    return label && label->font().pixelSize() == look.size && label->font().weight() == look.weight
        && inkOf(label) == look.color && QFontInfo(label->font()).fixedPitch() == look.isMonospaced;
}

int right(const QRect &rect)
{
    return rect.x() + rect.width();
}

int bottom(const QRect &rect)
{
    return rect.y() + rect.height();
}

} // namespace

/// The measures of the panel, in points. Run at several scales of the screen.
class MenuBarLayoutTest : public QObject {
    Q_OBJECT
private slots:
    void init() { m_world = std::make_unique<ViewWorld>(); }
    void cleanup();

    void theViewIsDarkAndOfFixedWidth();
    void theHeaderOfTheCard();
    void theStatsRowOfTheCard();
    void theButtonsOfTheCard();
    void theIdleCard();
    void anEmptyShortcutLeavesAPaddedBox();
    void theBanner();
    void theSetupView();
    void theTasksSection();
    void theWordsOfAnEmptyList();
    void aTaskRow();
    void theRowOfTheRunningTask();
    void theFooter();
    void aLongNameOfTheTaskTakesTwoLines();
    void longNamesLeaveTheCellsEqual();
    void fewTasksMakeAListAsShortAsItsRows();
    void moreTasksThanFitScrollAndTheFooterStays();
    void inAPanelThatIsTooLowTheListGivesWay();
    void aThousandTasksMakeNoMoreRowsThanAreInSight();
    void roomBeyondTheContentIsLeftAtTheBottom();
    void noTextIsClipped_data();
    void noTextIsClipped();

private:
    MenuBarView &show(int height = 0);
    QRect place(const QWidget *widget) const { return placeIn(*m_view, widget); }
    QRect place(const QString &name) const { return place(childIn(*m_view, name)); }

    std::unique_ptr<ViewWorld> m_world;
    std::unique_ptr<MenuBarView> m_view;
};

void MenuBarLayoutTest::cleanup()
{
    m_view.reset();
    m_world.reset();
}

MenuBarView &MenuBarLayoutTest::show(int height)
{
    m_view = std::make_unique<MenuBarView>(
        *m_world->viewModel, [] {}, m_world->settings.settings, m_world->clock);
    if (height > 0)
        m_view->setMaximumRoom(height);
    m_view->resize(m_view->sizeHint());
    m_view->show();
    settleLayout();
    return *m_view;
}

void MenuBarLayoutTest::theViewIsDarkAndOfFixedWidth()
{
    show();
    QCOMPARE(m_view->size(), m_view->sizeHint());
    QCOMPARE(m_view->width(), viewWidth);
    const auto picture = m_view->grab().toImage();
    QCOMPARE(picture.pixelColor(0, 0), QColor(20, 20, 20));
    QCOMPARE(picture.pixelColor(picture.width() - 1, picture.height() - 1), QColor(20, 20, 20));
}

void MenuBarLayoutTest::theHeaderOfTheCard()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    const auto *name = childIn<ElidedLabel>(*m_view, u"taskName"_s);
    QCOMPARE(place(name).topLeft(), QPoint(16, 14));
    QVERIFY(hasLook(name, {15, QFont::DemiBold, Qt::white}));

    const auto *running = textIn(*m_view, u"Running"_s);
    const auto *started = childIn<ElidedLabel>(*m_view, u"started"_s);
    QCOMPARE(place(running).top(), bottom(place(name)) + 4);
    QVERIFY(hasLook(running, {11, QFont::Normal, theme::white(0.55)}));
    QVERIFY(hasLook(started, {11, QFont::Normal, theme::white(0.55)}));
    const auto dots = visibleIn<RoundedBox>(*childIn(*m_view, u"header"_s));
    QCOMPARE(dots.size(), 2);
    QCOMPARE(dots.at(0)->size(), QSize(6, 6));
    QCOMPARE(dots.at(0)->color(), QColor(theme::systemGreen));
    QCOMPARE(dots.at(1)->size(), QSize(3, 3));
    QCOMPARE(dots.at(1)->color(), theme::white(0.3));
    QCOMPARE(place(dots.at(0)).left(), 16);
    QCOMPARE(place(running).left(), 16 + 6 + 6);
    QCOMPARE(place(dots.at(1)).left(), right(place(running)) + 6);
    QCOMPARE(place(started).left(), right(place(dots.at(1))) + 6);

    const auto *ring = visibleIn<ProgressRing>(*m_view).first();
    const int overflow = ring->overflow();
    const QRect circle = place(ring).adjusted(overflow, overflow, -overflow, -overflow);
    const auto *clock = visibleIn<ClockText>(*m_view).first();
    QCOMPARE(circle.size(), QSize(32, 32));
    QCOMPARE(circle.top(), 14);
    QCOMPARE(place(clock).left(), right(circle) + 8);
    QCOMPARE(right(place(clock)), viewWidth - 16);
    QVERIFY(hasLook(clock, {20, QFont::DemiBold, Qt::white, true}));
    QVERIFY(qAbs(place(clock).center().y() - circle.center().y()) <= 1);
    QCOMPARE(place(u"header"_s).height(), 14 + std::max(32, bottom(place(started)) - 14) + 12);
}

void MenuBarLayoutTest::theStatsRowOfTheCard()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    const QRect row = place(u"statsRow"_s);
    QCOMPARE(childIn<StatsRow>(*m_view, u"statsRow"_s)->radius(), 8.0);
    QCOMPARE(row.left(), 16);
    QCOMPARE(row.width(), viewWidth - 32);
    QCOMPARE(row.top(), bottom(place(u"header"_s)));
    QCOMPARE(place(u"buttons"_s).top(), bottom(row) + 12);
    const auto cells = visibleIn<StatItem>(*m_view);
    QCOMPARE(cells.size(), 3);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(place(cells.at(i)), QRect(16 + i * 103, row.top(), 102, row.height())); // Gaps of 1.
        const auto labels = visibleIn<ElidedLabel>(*cells.at(i));
        const QRect label = placeIn(*cells.at(i), labels.at(0));
        QCOMPARE(label.topLeft(), QPoint(12, 8));
        QVERIFY(hasLook(labels.at(0), {9, QFont::DemiBold, theme::white(0.3)}));
        QVERIFY(qAbs(labels.at(0)->font().letterSpacing() - 0.8) < 0.01);
        QCOMPARE(placeIn(*cells.at(i), labels.at(1)).topLeft(), QPoint(12, bottom(label) + 2));
    }
    QVERIFY(hasLook(childIn<QLabel>(*cells.at(0), u"value"_s), {12, QFont::Medium, theme::white(0.55)}));
    QVERIFY(hasLook(childIn<QLabel>(*cells.at(1), u"value"_s), {12, QFont::Medium, theme::white(0.55)}));
    QVERIFY(hasLook(childIn<QLabel>(*cells.at(2), u"value"_s), {11, QFont::DemiBold, Qt::white, true}));
    const QRect first = placeIn(*cells.at(0), childIn(*cells.at(0), u"value"_s));
    QCOMPARE(row.height(), bottom(first) + 8);

    const auto picture = m_view->grab().toImage();
    const double ratio = picture.devicePixelRatio();
    const auto colorAt = [&](double x, double y) { return picture.pixelColor(int(x * ratio), int(y * ratio)); };
    QCOMPARE(colorAt(60, row.center().y() - 1).rgb(), theme::gray(0.1).rgb());
    const QColor gap = colorAt(16 + 102 + 0.5, row.center().y());
    QCOMPARE(gap.red(), qRound(20 + 0.06 * (255 - 20)));  // The row's own background.
    QCOMPARE(colorAt(16, row.top()), QColor(20, 20, 20)); // A corner is rounded off.
}

void MenuBarLayoutTest::theButtonsOfTheCard()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    const QRect section = place(u"buttons"_s);
    const QRect stop = place(u"stop"_s);
    QCOMPARE(stop, QRect(16, section.top(), 150, 30));
    QCOMPARE(place(u"openInNotion"_s), QRect(16 + 150 + 8, section.top(), 150, 30));
    QCOMPARE(section.height(), 30 + 14);
    const auto *words = textIn(*m_view, u"Stop"_s);
    const auto *open = textIn(*m_view, u"Open in Notion"_s);
    QVERIFY(hasLook(words, {12, QFont::DemiBold, theme::stopRed}));
    QVERIFY(hasLook(open, {12, QFont::DemiBold, theme::white(0.55)}));
    const auto *icon = visibleIn<SymbolIcon>(*childIn(*m_view, u"stop"_s)).first();
    QCOMPARE(place(words).left(), right(place(icon)) + 5);
    const int before = place(icon).left() - stop.left(); // The label stands in the middle.
    const int after = right(stop) - right(place(words));
    QVERIFY(qAbs(before - after) <= 1);
    const auto *arrow = visibleIn<SymbolIcon>(*childIn(*m_view, u"openInNotion"_s)).first();
    QCOMPARE(icon->symbol(), Symbol::stopFill);
    QCOMPARE(icon->textSize(), 10);
    QCOMPARE(arrow->symbol(), Symbol::arrowUpRightSquare);
    QCOMPARE(arrow->textSize(), 10);

    const auto &red = childIn<CardButton>(*m_view, u"stop"_s)->look();
    QCOMPARE(red.background, theme::faded(theme::systemRed, 0.15));
    QCOMPARE(red.stroke, theme::faded(theme::systemRed, 0.2));
    QCOMPARE(red.radius, 7.0);
    const auto &plain = childIn<CardButton>(*m_view, u"openInNotion"_s)->look();
    QCOMPARE(plain.background, theme::white(0.06));
    QCOMPARE(plain.stroke, theme::white(0.08));
    QCOMPARE(plain.radius, 7.0);

    const auto picture = m_view->grab().toImage();
    const double ratio = picture.devicePixelRatio();
    const auto ground = picture.pixelColor(int((stop.left() + 20) * ratio), int(stop.center().y() * ratio));
    const auto mixed = [](int over, int under, double alpha) { return qRound(under + alpha * (over - under)); };
    QVERIFY(qAbs(ground.red() - mixed(255, 20, 0.15)) <= 1);
    QVERIFY(qAbs(ground.green() - mixed(69, 20, 0.15)) <= 1);
}

void MenuBarLayoutTest::theIdleCard()
{
    show();
    const QRect card = place(u"idleCard"_s);
    const auto *words = textIn(*m_view, u"No active timer"_s);
    QVERIFY(hasLook(words, {13, QFont::Medium, theme::white(0.5)}));
    const auto *dot = visibleIn<RoundedBox>(*childIn(*m_view, u"idleCard"_s)).first();
    QCOMPARE(dot->size(), QSize(8, 8));
    QCOMPARE(dot->color(), theme::white(0.2));
    QCOMPARE(place(dot).left(), 16);
    QCOMPARE(place(words).left(), 16 + 8 + 6);

    auto *chip = childIn<RoundedBox>(*m_view, u"hotkeyChip"_s);
    QCOMPARE(right(place(chip)), viewWidth - 16);
    QCOMPARE(chip->color(), theme::white(0.06));
    QCOMPARE(chip->radius(), 4.0);
    const auto *keys = visibleIn<ElidedLabel>(*chip).first();
    QVERIFY(hasLook(keys, {11, QFont::Medium, theme::white(0.25), true}));
    QCOMPARE(placeIn(*chip, keys), chip->rect().adjusted(6, 2, -6, -2));
    QCOMPARE(card.height(), 14 + std::max(words->height(), chip->height()) + 14);
}

void MenuBarLayoutTest::anEmptyShortcutLeavesAPaddedBox()
{
    show();
    auto *chip = childIn(*m_view, u"hotkeyChip"_s);
    const int height = chip->height();
    chip->findChild<ElidedLabel *>()->setText({});
    settleLayout();
    QCOMPARE(chip->size(), QSize(6 + 6, height));
    QVERIFY(chip->isVisible());
    QCOMPARE(right(place(chip)), viewWidth - 16);
}

void MenuBarLayoutTest::theBanner()
{
    m_world->notion.isOffline = true;
    m_world->poll();
    show();
    auto *banner = childIn<RoundedBox>(*m_view, u"networkErrorBanner"_s);
    QCOMPARE(place(banner).topLeft(), QPoint(16, 12));
    QCOMPARE(place(banner).width(), viewWidth - 32);
    QCOMPARE(banner->color(), theme::faded(theme::systemOrange, 0.1));
    QCOMPARE(banner->radius(), 6.0);
    const auto *icon = visibleIn<SymbolIcon>(*banner).first();
    const auto *words = textIn(*banner, u"Connection issue"_s);
    const auto *retry = textIn(*banner, u"Retry"_s);
    QCOMPARE(icon->symbol(), Symbol::wifiExclamationmark);
    QCOMPARE(icon->textSize(), 11);
    QCOMPARE(inkOf(icon), QColor(theme::systemOrange));
    QVERIFY(hasLook(words, {11, QFont::Normal, theme::systemOrange}));
    QVERIFY(hasLook(retry, {11, QFont::Normal, theme::systemOrange}));
    QCOMPARE(placeIn(*banner, icon).left(), 8);
    QCOMPARE(placeIn(*banner, words).left(), right(placeIn(*banner, icon)) + 6);
    QCOMPARE(right(placeIn(*banner, retry)), banner->width() - 8);
    QCOMPARE(banner->height(), 8 + std::max(icon->height(), words->height()) + 8);
    QCOMPARE(place(u"idleCard"_s).top(), bottom(place(banner)));
}

void MenuBarLayoutTest::theSetupView()
{
    m_world->settings.settings.setApiKey({});
    show();
    const auto *section = childIn(*m_view, u"setupRequiredView"_s);
    const auto *icon = visibleIn<SymbolIcon>(*section).first();
    const auto *title = textIn(*section, u"Setup Required"_s);
    const auto *words = textIn(*section, u"Open Settings to connect to Notion"_s);
    const auto *open = childIn(*section, u"openSettings"_s);
    QCOMPARE(icon->symbol(), Symbol::gearBadge);
    QCOMPARE(icon->textSize(), 28);
    QCOMPARE(inkOf(icon), theme::white(0.4));
    QVERIFY(hasLook(title, {14, QFont::DemiBold, Qt::white}));
    QVERIFY(hasLook(words, {12, QFont::Normal, theme::white(0.4)}));
    QVERIFY(textIn(*open, u"Open Settings"_s));
    const QList<const QWidget *> column{icon, title, words, open};
    int top = 24;
    for (const auto *part : column) {
        QCOMPARE(place(part).top(), top);
        QVERIFY(qAbs(2 * place(part).left() + part->width() - viewWidth) <= 1); // Centred.
        top += part->height() + 12;
    }
    QCOMPARE(section->width(), viewWidth);
    QCOMPARE(section->height(), top - 12 + 24);
}

void MenuBarLayoutTest::theTasksSection()
{
    m_world->showTasks(2);
    m_world->poll();
    show();
    const QRect section = place(u"todayTasksSection"_s);
    const auto *rule = visibleIn<RoundedBox>(*childIn(*m_view, u"todayTasksSection"_s)).first();
    QCOMPARE(place(rule), QRect(12, section.top(), viewWidth - 24, 1));
    QCOMPARE(rule->color(), theme::white(0.06));
    const auto *heading = textIn(*m_view, u"TODAY'S TASKS"_s);
    QVERIFY(hasLook(heading, {9, QFont::DemiBold, theme::white(0.3)}));
    QVERIFY(qAbs(heading->font().letterSpacing() - 0.8) < 0.01);
    QCOMPARE(place(heading).topLeft(), QPoint(16, section.top() + 1 + 4 + 10));
    const auto *column = visibleIn<TaskColumn>(*m_view).first();
    QCOMPARE(place(column).topLeft(), QPoint(0, bottom(place(heading)) + 4));
    QCOMPARE(column->width(), viewWidth);
    QCOMPARE(bottom(section), bottom(place(column)));
}

void MenuBarLayoutTest::theWordsOfAnEmptyList()
{
    show();
    const auto *heading = textIn(*m_view, u"TODAY'S TASKS"_s);
    const auto *words = textIn(*m_view, u"No tasks for today"_s);
    QVERIFY(hasLook(words, {12, QFont::Normal, theme::white(0.3)}));
    QCOMPARE(place(words).topLeft(), QPoint(16, bottom(place(heading)) + 4 + 12));
    QCOMPARE(bottom(place(u"todayTasksSection"_s)), bottom(place(words)) + 12);
}

void MenuBarLayoutTest::aTaskRow()
{
    m_world->showTasks(2);
    m_world->poll();
    show();
    const auto *row = visibleIn<DarkTaskRow>(*m_view).first();
    const auto *dot = visibleIn<RoundedBox>(*row).first();
    const auto *name = visibleIn<ElidedLabel>(*row).first();
    const auto *icon = visibleIn<SymbolIcon>(*row).first();
    QCOMPARE(row->width(), viewWidth);
    QCOMPARE(row->height(), 8 + name->height() + 8);
    QCOMPARE(dot->size(), QSize(6, 6));
    QCOMPARE(placeIn(*row, dot).left(), 16);
    QCOMPARE(placeIn(*row, name).topLeft(), QPoint(16 + 6 + 10, 8));
    QVERIFY(hasLook(name, {12, QFont::Medium, theme::white(0.8)}));
    QCOMPARE(right(placeIn(*row, icon)), viewWidth - 16);
    QCOMPARE(icon->symbol(), Symbol::playFill);
    QCOMPARE(icon->textSize(), 8);
}

void MenuBarLayoutTest::theRowOfTheRunningTask()
{
    m_world->showTimer({});
    m_world->showTasks(2);
    m_world->poll();
    show();
    const auto *row = visibleIn<DarkTaskRow>(*m_view).first();
    const auto *icon = visibleIn<SymbolIcon>(*row).first();
    QCOMPARE(icon->symbol(), Symbol::timer);
    QCOMPARE(icon->textSize(), 10);
    QCOMPARE(inkOf(icon), QColor(theme::systemGreen));
    QCOMPARE(right(placeIn(*row, icon)), viewWidth - 16);
}

void MenuBarLayoutTest::theFooter()
{
    show();
    const QRect footer = place(u"footerView"_s);
    const auto *rule = visibleIn<RoundedBox>(*childIn(*m_view, u"footerView"_s)).first();
    QCOMPARE(place(rule), QRect(12, footer.top(), viewWidth - 24, 1));
    const auto icons = visibleIn<SymbolIcon>(*childIn(*m_view, u"footerView"_s));
    QCOMPARE(icons.size(), 2);
    QCOMPARE(icons.at(0)->symbol(), Symbol::gear);
    QCOMPARE(icons.at(1)->symbol(), Symbol::power);
    for (const auto *icon : icons) {
        QCOMPARE(inkOf(icon), theme::white(0.4));
        QCOMPARE(icon->textSize(), 12);
        QCOMPARE(place(icon).top(), footer.top() + 1 + 10);
    }
    QCOMPARE(place(icons.at(0)).left(), 16);
    QCOMPARE(right(place(icons.at(1))), viewWidth - 16);
    const auto *site = textIn(*m_view, u"korvo.app"_s);
    QVERIFY(hasLook(site, {10, QFont::Medium, theme::white(0.25)}));
    QVERIFY(qAbs(2 * place(site).left() + site->width() - viewWidth) <= 1);
    QCOMPARE(footer.height(), 1 + 10 + icons.at(0)->height() + 10);
    QCOMPARE(bottom(footer), m_view->height());
}

void MenuBarLayoutTest::aLongNameOfTheTaskTakesTwoLines()
{
    m_world->showTimer({.taskName = longName, .elapsed = 359999 + 1});
    m_world->poll();
    show();
    const auto *name = childIn<ElidedLabel>(*m_view, u"taskName"_s);
    QCOMPARE(name->shownLines().size(), 2);
    QVERIFY(name->shownLines().last().endsWith(u'…'));
    QCOMPARE(name->height(), 2 * name->sizeHint().height());
    QCOMPARE(name->text(), longName);
    const auto *clock = visibleIn<ClockText>(*m_view).first();
    QCOMPARE(clock->time(), u"100:00:00"_s);
    QCOMPARE(clock->width(), clock->sizeHint().width()); // The name gives way, not the clock.
    QCOMPARE(right(place(clock)), viewWidth - 16);
}

void MenuBarLayoutTest::longNamesLeaveTheCellsEqual()
{
    m_world->showTimer({.project = longName, .client = u"C"_s});
    m_world->poll();
    show();
    const auto cells = visibleIn<StatItem>(*m_view);
    for (const auto *cell : cells)
        QCOMPARE(cell->width(), 102);
    const auto *project = childIn<ElidedLabel>(*cells.first(), u"value"_s);
    QCOMPARE(project->shownLines().size(), 1);
    QVERIFY(project->isElided());
}

void MenuBarLayoutTest::fewTasksMakeAListAsShortAsItsRows()
{
    m_world->showTasks(3);
    m_world->poll();
    show(panelHeight);
    const auto *column = visibleIn<TaskColumn>(*m_view).first();
    QCOMPARE(column->height(), 3 * visibleIn<DarkTaskRow>(*m_view).first()->height());
    QVERIFY(column->height() < 200);
    QCOMPARE(place(u"footerView"_s).top(), bottom(place(column)));
}

void MenuBarLayoutTest::moreTasksThanFitScrollAndTheFooterStays()
{
    m_world->showTasks(20);
    m_world->poll();
    show();
    const auto *column = visibleIn<TaskColumn>(*m_view).first();
    QCOMPARE(column->height(), 200);
    QVERIFY(column->verticalScrollBar()->maximum() > 0);
    const QRect footer = place(u"footerView"_s);
    QCOMPARE(footer.top(), bottom(place(column)));
    column->verticalScrollBar()->setValue(column->verticalScrollBar()->maximum());
    settleLayout();
    QCOMPARE(place(u"footerView"_s), footer);
    QCOMPARE(column->rowAt(19)->accessibleName(), u"Task number 20"_s);
    QCOMPARE(bottom(placeIn(*column, column->rowAt(19))), 200);
}

void MenuBarLayoutTest::inAPanelThatIsTooLowTheListGivesWay()
{
    m_world->showTimer({.taskName = longName});
    m_world->showTasks(20);
    m_world->poll();
    m_world->notion.isOffline = true;
    m_world->poll();
    show(panelHeight);
    QCOMPARE(m_view->height(), panelHeight);
    const auto *column = visibleIn<TaskColumn>(*m_view).first();
    QVERIFY(column->height() < 200);
    QVERIFY(column->height() > 60);
    QCOMPARE(bottom(place(u"footerView"_s)), panelHeight);
    QCOMPARE(place(u"footerView"_s).top(), bottom(place(column)));
    QCOMPARE(place(u"stop"_s).height(), 30);
    column->verticalScrollBar()->setValue(column->verticalScrollBar()->maximum());
    settleLayout();
    QCOMPARE(bottom(placeIn(*column, column->rowAt(19))), column->height());
}

void MenuBarLayoutTest::aThousandTasksMakeNoMoreRowsThanAreInSight()
{
    m_world->showTasks(1000);
    m_world->poll();
    QCOMPARE(m_world->viewModel->todayTasks().size(), 1000);
    show(panelHeight);
    const auto count = m_view->findChildren<DarkTaskRow *>().size();
    QVERIFY(count >= 6 && count <= 10);
}

void MenuBarLayoutTest::roomBeyondTheContentIsLeftAtTheBottom()
{
    show();
    const QRect footer = place(u"footerView"_s);
    m_view->resize(viewWidth, panelHeight);
    settleLayout();
    QCOMPARE(place(u"footerView"_s), footer);
}

void MenuBarLayoutTest::noTextIsClipped_data()
{
    QTest::addColumn<bool>("isConfigured");
    QTest::addColumn<bool>("hasTimer");
    QTest::addColumn<bool>("isOffline");
    QTest::newRow("setup") << false << false << false;
    QTest::newRow("idle") << true << false << false;
    QTest::newRow("running") << true << true << false;
    QTest::newRow("running with the banner") << true << true << true;
}

void MenuBarLayoutTest::noTextIsClipped()
{
    QFETCH(bool, isConfigured);
    QFETCH(bool, hasTimer);
    QFETCH(bool, isOffline);
    if (hasTimer)
        m_world->showTimer({.taskName = u"Answer the printer"_s, .elapsed = 45296});
    m_world->showTasks(3);
    m_world->poll();
    if (isOffline) {
        m_world->notion.isOffline = true;
        m_world->poll();
    }
    if (!isConfigured)
        m_world->settings.settings.setApiKey({});
    show(panelHeight);
    const auto labels = visibleIn<ElidedLabel>(*m_view);
    QVERIFY(labels.size() > 3);
    for (const auto *label : labels) {
        QVERIFY2(!label->isElided(), qPrintable(label->text()));
        QVERIFY2(label->height() >= QFontMetrics(label->font()).height(), qPrintable(label->text()));
        const QRect inParent(label->mapTo(m_view.get(), QPoint()), label->size());
        QVERIFY2(m_view->rect().contains(inParent), qPrintable(label->text()));
    }
    for (const auto *clock : visibleIn<ClockText>(*m_view))
        QCOMPARE(clock->size(), clock->sizeHint());
}

QTEST_MAIN(MenuBarLayoutTest)
#include "MenuBarLayoutTest.moc"
