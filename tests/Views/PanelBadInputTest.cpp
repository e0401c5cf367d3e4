#include "LookUp.h"
#include "ViewWorld.h"
#include "Views/ActiveTimerView.h"
#include "Views/CardButton.h"
#include "Views/ClockText.h"
#include "Views/DarkTaskRow.h"
#include "Views/MenuBarView.h"
#include "Views/Stack.h"
#include "Views/StatsRow.h"
#include "Views/TaskColumn.h"
#include "Views/TaskRowView.h"
#include "Views/TodayTasksView.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int panelHeight = 420;
constexpr double day = 86400;

void addNameRows()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("elapsed");
    QTest::newRow("a line break") << u"a\r\nb"_s << 5025.0;
    QTest::newRow("2000 letters without a blank") << QString(2000, u'm') << 5025.0;
    QTest::newRow("Hebrew") << u"לכתוב מחדש את הדוח הרבעוני על מערכת ההזמנות של הסניפים הצפוניים"_s << 5025.0;
    QTest::newRow("Hebrew and Latin mixed") << u"דוח Quarterly report לסניפים North & (South) 2026"_s << 5025.0;
    QTest::newRow("emoji joined into one")
        << u"👨‍👩‍👧‍👦 🏳️‍🌈 👩🏽‍💻"_s.repeated(20) << 5025.0;
    QTest::newRow("no name at all") << QString() << 5025.0;
    QTest::newRow("a thousand hours") << u"Home page layout"_s << 3600000.0;
    QTest::newRow("a thousand hours and a long name") << QString(2000, u'm') << 3600000.0;
    QTest::newRow("no time at all") << u"Home page layout"_s << 0.0;
    QTest::newRow("a start a day ahead") << u"Home page layout"_s << -day;
}

/// Everything to be read stands whole inside the view, and the clock has all the room that it wants.
void verifyWithinView(const QWidget &view)
{
    for (const auto *label : visibleIn<ElidedLabel>(view)) {
        if (label->text().isEmpty())
            continue;
        const auto *row = label->parentWidget();
        const bool isListed = qobject_cast<const DarkTaskRow *>(row) || qobject_cast<const TaskRowView *>(row);
        const QRect place = placeIn(view, label);
        QVERIFY2(place.left() >= 0 && place.right() < view.width(), qPrintable(label->text()));
        // A row may scroll out of its list.
        QVERIFY2(isListed || view.rect().contains(place), qPrintable(label->text()));
        const auto lines = label->shownLines();
        QVERIFY2(label->height() >= lines.size() * QFontMetrics(label->font()).height(), qPrintable(label->text()));
        for (const auto &line : lines) {
            QVERIFY(!line.contains(u'\n') && !line.contains(u'\r'));
            QVERIFY2(QFontMetrics(label->font()).horizontalAdvance(line) <= label->width(), qPrintable(line));
        }
    }
    for (const auto *clock : visibleIn<ClockText>(view)) {
        QCOMPARE(clock->size(), clock->sizeHint());
        QVERIFY(view.rect().contains(placeIn(view, clock)));
    }
}

} // namespace

/// Names and times that no one foresaw, wherever they are shown.
class PanelBadInputTest : public QObject {
    Q_OBJECT
private slots:
    void init() { m_world = std::make_unique<ViewWorld>(); }
    void cleanup() { m_world.reset(); }

    void thePanelKeepsItsShape_data() { addNameRows(); }
    void thePanelKeepsItsShape();
    void theSystemViewsKeepTheirShape_data() { addNameRows(); }
    void theSystemViewsKeepTheirShape();

private:
    void showEverywhere(const QString &name, double elapsed);

    std::unique_ptr<ViewWorld> m_world;
};

/// A timer, its project, its client and the first of two tasks of that name; the second is "x".
void PanelBadInputTest::showEverywhere(const QString &name, double elapsed)
{
    m_world->showTimer({.taskName = name, .elapsed = elapsed, .project = name, .client = name});
    m_world->showTasks({name, u"x"_s});
    m_world->poll();
    QVERIFY(m_world->viewModel->activeTimer());
}

void PanelBadInputTest::thePanelKeepsItsShape()
{
    QFETCH(QString, name);
    QFETCH(double, elapsed);
    showEverywhere(name, elapsed);
    MenuBarView view(
        *m_world->viewModel, [] {}, m_world->settings.settings, m_world->clock);
    view.setMaximumRoom(panelHeight);
    view.resize(view.sizeHint());
    view.show();
    settleLayout();

    QVERIFY(view.height() < panelHeight); // Two rows need no more.
    verifyWithinView(view);
    QVERIFY(childIn<ElidedLabel>(view, u"taskName"_s)->shownLines().size() <= 2);
    const auto rows = visibleIn<DarkTaskRow>(view);
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows.at(0)->height(), rows.at(1)->height());
    for (const auto *row : rows)
        QCOMPARE(visibleIn<ElidedLabel>(*row).first()->shownLines().size(), 1);
    for (const auto *cell : visibleIn<StatItem>(view)) {
        QCOMPARE(cell->width(), 102);
        QCOMPARE(childIn<ElidedLabel>(*cell, u"value"_s)->shownLines().size(), 1);
    }
    QCOMPARE(placeIn(view, childIn(view, u"stop"_s)).height(), 30);
    QCOMPARE(placeIn(view, childIn(view, u"footerView"_s)).bottom(), view.height() - 1);
}

void PanelBadInputTest::theSystemViewsKeepTheirShape()
{
    QFETCH(QString, name);
    QFETCH(double, elapsed);
    showEverywhere(name, elapsed);
    QWidget host;
    auto *timer = new ActiveTimerView(*m_world->viewModel, m_world->clock);
    auto *tasks = new TodayTasksView(*m_world->viewModel);
    host.setLayout(vstack({.spacing = 0}, timer, tasks, Spacer()));
    host.resize(300, panelHeight);
    host.show();
    settleLayout();

    QCOMPARE(host.width(), 300);
    verifyWithinView(host);
    QVERIFY(childIn<ElidedLabel>(*timer, u"taskName"_s)->shownLines().size() <= 2);
    QCOMPARE(placeIn(host, childIn(*timer, u"stop"_s)).width(), 300);
    const auto rows = visibleIn<TaskRowView>(*tasks);
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows.at(0)->height(), rows.at(1)->height());
    for (const auto *row : rows)
        QCOMPARE(visibleIn<ElidedLabel>(*row).first()->shownLines().size(), 1);
}

QTEST_MAIN(PanelBadInputTest)
#include "PanelBadInputTest.moc"
