#include "Views/TodayTasksView.h"

#include "LookUp.h"
#include "ViewWorld.h"
#include "Views/CardButton.h"
#include "Views/Stack.h"
#include "Views/SymbolIcon.h"
#include "Views/TaskColumn.h"
#include "Views/TaskRowView.h"
#include "Views/Theme.h"

#include <QApplication>
#include <QScrollBar>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QStringList sampleTasks{u"Home page layout"_s, u"Answer the printer"_s, u"Invoice for October"_s};

} // namespace

class TodayTasksViewTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void anEmptyListShowsTheHeadingAndItsWords();
    void tasksKeepTheOrderOfTheList();
    void rowsBeyondTheHeightScrollAndTheHeadingStays();
    void aFewRowsAreAllTheHeight();
    void aThousandTasksMakeOnlyTheRowsInSight();
    void aLongNameIsCutToOneLineAndTheIconStaysAtTheEdge();
    void theTimedTaskHasASignAndNoButton();
    void aTimerOfATaskThatIsNotInTheListLocksAllButtons();
    void anEntryWithoutATaskIsThatOfNoRow();
    void onlyThePlayButtonReacts();
    void whileAStartIsUnderWayNothingCanBePressed();
    void theListFollowsThePolls();
    void partsOfARowStandWhereTheyShould();
    void theKeyboardReachesEveryButton();
    void itFollowsTheDesktopsColours();
    void noTextIsClipped();

private:
    void show();
    QRect place(const QWidget *widget) const { return placeIn(*m_view, widget); }
    TaskColumn *column() const { return visibleIn<TaskColumn>(*m_view).first(); }
    QList<TaskRowView *> rows() const { return visibleIn<TaskRowView>(*m_view); }
    static PlainButton *play(const QWidget *row) { return visibleIn<PlainButton>(*row).value(0); }

    std::unique_ptr<ViewWorld> m_world;
    std::unique_ptr<QWidget> m_host;
    TodayTasksView *m_view = nullptr;
};

void TodayTasksViewTest::init()
{
    m_world = std::make_unique<ViewWorld>();
}

void TodayTasksViewTest::cleanup()
{
    m_host.reset();
    m_world->viewModel.reset();
    m_world->notion.release();
    m_world.reset();
}

void TodayTasksViewTest::show()
{
    m_host = std::make_unique<QWidget>();
    m_view = new TodayTasksView(*m_world->viewModel);
    m_host->setLayout(vstack({.spacing = 0}, m_view, Spacer()));
    m_host->resize(300, 350);
    m_host->show();
    settleLayout();
}

void TodayTasksViewTest::anEmptyListShowsTheHeadingAndItsWords()
{
    m_world->poll();
    show();
    const auto *heading = textIn(*m_view, u"Today's Tasks"_s); // As written, shown in capitals.
    const auto *words = textIn(*m_view, u"No tasks for today"_s);
    QCOMPARE(heading->font().capitalization(), QFont::AllUppercase);
    QCOMPARE(heading->font().weight(), QFont::DemiBold);
    QCOMPARE(place(heading).topLeft(), QPoint(16, 0));
    QCOMPARE(place(words).topLeft(), QPoint(16, place(heading).bottom() + 1 + 4 + 12));
    QCOMPARE(words->font().pixelSize(), heading->font().pixelSize());
    QCOMPARE(m_view->height(), place(words).bottom() + 1 + 12);
}

void TodayTasksViewTest::tasksKeepTheOrderOfTheList()
{
    m_world->showTasks({u"zebra"_s, u"Apple"_s, u"10"_s, u"9"_s});
    m_world->poll();
    show();
    QStringList names;
    for (int i = 0; i < 4; ++i)
        names.append(column()->rowAt(i)->accessibleName());
    QCOMPARE(names, QStringList({u"zebra"_s, u"Apple"_s, u"10"_s, u"9"_s}));
}

void TodayTasksViewTest::rowsBeyondTheHeightScrollAndTheHeadingStays()
{
    m_world->showTasks(30);
    m_world->poll();
    show();
    QCOMPARE(column()->height(), 220);
    const QRect heading = place(textIn(*m_view, u"Today's Tasks"_s));
    auto *bar = column()->verticalScrollBar();
    QVERIFY(bar->isVisible());
    bar->setValue(bar->maximum());
    settleLayout();
    QCOMPARE(place(textIn(*m_view, u"Today's Tasks"_s)), heading);
    QCOMPARE(column()->rowAt(29)->geometry().bottom(), 219);
}

void TodayTasksViewTest::aFewRowsAreAllTheHeight()
{
    m_world->showTimer({.taskId = u"t1"_s}); // The first row is that without the larger button.
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    const int rowHeight = column()->rowAt(1)->height();
    QCOMPARE(column()->height(), 3 * rowHeight);
    QCOMPARE(column()->rowAt(0)->height(), rowHeight);
    QVERIFY(!column()->verticalScrollBar()->isVisible());
}

void TodayTasksViewTest::aThousandTasksMakeOnlyTheRowsInSight()
{
    m_world->showTasks(1000);
    m_world->poll();
    show();
    QVERIFY(m_view->findChildren<TaskRowView *>().size() <= 10);
}

void TodayTasksViewTest::aLongNameIsCutToOneLineAndTheIconStaysAtTheEdge()
{
    m_world->showTasks({u"Rewrite the quarterly report on the migration of the booking system"_s, u"Short"_s});
    m_world->poll();
    show();
    const auto *name = visibleIn<ElidedLabel>(*column()->rowAt(0)).first();
    QVERIFY(name->isElided());
    QCOMPARE(name->shownLines().size(), 1);
    QCOMPARE(play(column()->rowAt(0))->geometry(), play(column()->rowAt(1))->geometry());
}

void TodayTasksViewTest::theTimedTaskHasASignAndNoButton()
{
    m_world->showTimer({.taskId = u"t2"_s});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    for (int i = 0; i < 3; ++i) {
        const auto *row = column()->rowAt(i);
        if (i == 1) {
            QVERIFY(!play(row));
            const auto *sign = visibleIn<SymbolIcon>(*row).first();
            QCOMPARE(sign->symbol(), Symbol::timer);
            QCOMPARE(inkOf(sign), theme::systemGreenOn(m_view->palette()));
        } else {
            QVERIFY(!play(row)->isEnabled());
            QCOMPARE(visibleIn<SymbolIcon>(*row).first()->symbol(), Symbol::playCircle);
        }
    }
}

void TodayTasksViewTest::aTimerOfATaskThatIsNotInTheListLocksAllButtons()
{
    m_world->showTimer({.taskId = u"t9"_s});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    for (const auto *row : rows())
        QVERIFY(play(row) && !play(row)->isEnabled());
}

void TodayTasksViewTest::anEntryWithoutATaskIsThatOfNoRow()
{
    m_world->showTimer({.taskId = std::nullopt});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    for (const auto *row : rows())
        QVERIFY(play(row) && !play(row)->isEnabled());
}

void TodayTasksViewTest::onlyThePlayButtonReacts()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    m_world->notion.isHolding = true;
    auto *row = column()->rowAt(2);
    for (const auto &tap : {QPoint(20, 10), row->rect().center(), QPoint(row->width() - 50, 10)}) {
        auto *hit = row->childAt(tap);
        QTest::mouseClick(hit ? hit : row, Qt::LeftButton);
    }
    QVERIFY(!m_world->viewModel->isLoading());
    QTest::mouseClick(play(row), Qt::LeftButton);
    QVERIFY(m_world->viewModel->isLoading());
    QCOMPARE(m_world->notion.calls().last(), u"POST /pages"_s);
    const auto task = m_world->notion.asked.last().body[u"properties"_s][u"Task"_s][u"relation"_s][0][u"id"_s];
    QCOMPARE(task.toString(), u"t3"_s);
}

void TodayTasksViewTest::whileAStartIsUnderWayNothingCanBePressed()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    m_world->notion.isHolding = true;
    QTest::mouseClick(play(rows().first()), Qt::LeftButton);
    const auto asked = m_world->notion.asked.size();
    for (const auto *row : rows()) {
        QVERIFY(!play(row)->isEnabled());
        QTest::mouseClick(play(row), Qt::LeftButton);
    }
    QCOMPARE(m_world->notion.asked.size(), asked);
    m_world->notion.isHolding = false;
    m_world->notion.release(); // The workspace refuses the entry.
    QTRY_VERIFY(play(rows().first())->isEnabled());
}

void TodayTasksViewTest::theListFollowsThePolls()
{
    m_world->poll();
    show();
    m_world->showTasks(sampleTasks);
    m_world->poll();
    settleLayout();
    QCOMPARE(rows().size(), 3);
    QVERIFY(!textIn(*m_view, u"No tasks for today"_s));
    m_world->showTasks({u"Another task"_s});
    m_world->poll();
    settleLayout();
    QCOMPARE(rows().size(), 1);
    m_world->showTasks(QStringList());
    m_world->poll();
    settleLayout();
    QCOMPARE(rows().size(), 0);
    QVERIFY(textIn(*m_view, u"No tasks for today"_s));
}

void TodayTasksViewTest::partsOfARowStandWhereTheyShould()
{
    m_world->showTimer({.taskId = u"t2"_s});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    const auto *heading = textIn(*m_view, u"Today's Tasks"_s);
    QCOMPARE(place(column()).topLeft(), QPoint(0, place(heading).bottom() + 1 + 4));
    for (const auto *row : rows()) {
        const auto *name = visibleIn<ElidedLabel>(*row).first();
        const auto *icon = visibleIn<SymbolIcon>(*row).first();
        QCOMPARE(placeIn(*row, name).left(), 16);
        QCOMPARE(placeIn(*row, icon).right() + 1, row->width() - 16);
        QVERIFY(qAbs(placeIn(*row, icon).center().y() - row->rect().center().y()) <= 1);
    }
    const auto *icon = visibleIn<SymbolIcon>(*column()->rowAt(0)).first();
    QCOMPARE(column()->rowAt(0)->height(), 6 + icon->height() + 6);
}

void TodayTasksViewTest::theKeyboardReachesEveryButton()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    m_host->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_host.get()));
    QCOMPARE(qApp->focusWidget(), column()); // As the window's first.
    QTest::keyClick(column(), Qt::Key_Tab);
    QStringList names;
    for (int i = 0; i < 3; ++i) {
        auto *focused = qobject_cast<PlainButton *>(qApp->focusWidget());
        QVERIFY(focused);
        QCOMPARE(focused->accessibleName(), u"Start timer"_s);
        names.append(focused->parentWidget()->accessibleName());
        QTest::keyClick(focused, Qt::Key_Down);
    }
    QCOMPARE(names, sampleTasks);
    m_world->notion.isHolding = true;
    QTest::keyClick(qApp->focusWidget(), Qt::Key_Return);
    QVERIFY(m_world->viewModel->isLoading());
}

void TodayTasksViewTest::itFollowsTheDesktopsColours()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    for (const bool isDark : {true, false}) {
        m_host->setPalette(isDark ? QPalette(QColor(40, 40, 40)) : QPalette(QColor(240, 240, 240)));
        settleLayout();
        const auto text = m_host->palette().color(QPalette::WindowText);
        QCOMPARE(inkOf(textIn(*m_view, u"Today's Tasks"_s)), theme::faded(text, 0.55));
        QCOMPARE(rows().size(), 3);
        for (const auto *row : rows())
            QCOMPARE(inkOf(visibleIn<ElidedLabel>(*row).first()), text);
    }
}

void TodayTasksViewTest::noTextIsClipped()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    for (const auto *label : visibleIn<ElidedLabel>(*m_view)) {
        QVERIFY2(!label->isElided(), qPrintable(label->text()));
        QVERIFY2(label->height() >= QFontMetrics(label->font()).height(), qPrintable(label->text()));
    }
}

QTEST_MAIN(TodayTasksViewTest)
#include "TodayTasksViewTest.moc"
