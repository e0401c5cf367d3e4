#include "Views/TaskColumn.h"

#include "LookUp.h"
#include "Views/CardButton.h"
#include "Views/SlimScrollBar.h"
#include "Views/Stack.h"

#include <QApplication>
#include <QScrollBar>
#include <QSet>
#include <QTest>
#include <QWheelEvent>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int rowHeight = 30;
constexpr int maximumHeight = 200;

NotionTask task(int number)
{
    return {.id = u"t%1"_s.arg(number), .name = u"Task %1"_s.arg(number), .date = std::nullopt};
}

QList<NotionTask> tasks(int count)
{
    QList<NotionTask> list;
    for (int i = 0; i < count; ++i)
        list.append(task(i));
    return list;
}

} // namespace

class TaskColumnTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aFewRowsAreAllTheHeight();
    void moreRowsThanFitScroll();
    void aThousandTasksMakeOnlyTheRowsInSight();
    void rowsComeAndGoAsTheListScrolls();
    void theWheelScrollsByTwoRows();
    void theSlimBarScrolls();
    void theSlimBarIsAbsentWhileAllIsInSight();
    void equalTasksKeepTheirRows();
    void aTaskOfAnotherNameGetsANewRow();
    void aShorterListScrollsBack();
    void tabAndArrowsWalkThroughTheRows();
    void theKeyboardReachesRowsOutOfSight();
    void backwardsTheKeyboardEntersAtTheLastRow();
    void lockedRowsArePassedOver();
    void theKeyboardStaysNearARowThatIsLockedAndReturns();
    void spaceAndReturnPressARow();
    void withAllRowsLockedTheKeysScroll();

private:
    void show(const QList<NotionTask> &list);
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(qApp->focusWidget(), key, modifiers);
    }
    QString focused() const { return qApp->focusWidget() ? qApp->focusWidget()->accessibleName() : QString(); }

    std::unique_ptr<QWidget> m_window;
    TaskColumn *m_column = nullptr;
    QSet<QString> m_locked; ///< Ids.
    QStringList m_pressed;
    int m_madeCount = 0;
};

void TaskColumnTest::init()
{
    m_locked.clear();
    m_pressed.clear();
    m_madeCount = 0;
    m_window = std::make_unique<QWidget>();
    m_column = new TaskColumn(
        maximumHeight,
        {.make =
             [this](const NotionTask &shown, QWidget *parent) {
                 ++m_madeCount;
                 auto *row = new PlainButton(shown.name, hstack({.spacing = 0}), {}, parent);
                 row->setMinimumHeight(rowHeight);
                 row->setEnabled(!m_locked.contains(shown.id));
                 connect(row, &PlainButton::clicked, this, [this, shown] { m_pressed.append(shown.id); });
                 return row;
             },
         .canBePressed = [this](const NotionTask &shown) { return !m_locked.contains(shown.id); }});
    m_column->useSlimScrollBar();
    auto *before = makeTextButton(u"Before"_s, {.size = 12}, Qt::black);
    auto *after = makeTextButton(u"After"_s, {.size = 12}, Qt::black);
    m_window->setLayout(vstack({.spacing = 0}, before, m_column, after, Spacer()));
    m_window->resize(340, 400);
}

void TaskColumnTest::cleanup()
{
    m_window.reset();
}

void TaskColumnTest::show(const QList<NotionTask> &list)
{
    m_column->setTasks(list);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    settleLayout();
}

void TaskColumnTest::aFewRowsAreAllTheHeight()
{
    show(tasks(3));
    QCOMPARE(m_column->height(), 3 * rowHeight);
    QCOMPARE(m_column->verticalScrollBar()->maximum(), 0);
    QCOMPARE(m_column->rowCount(), 3);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(m_column->rowAt(i)->geometry(), QRect(0, i * rowHeight, 340, rowHeight));
}

void TaskColumnTest::moreRowsThanFitScroll()
{
    show(tasks(7));
    QCOMPARE(m_column->height(), maximumHeight);
    QCOMPARE(m_column->verticalScrollBar()->maximum(), 7 * rowHeight - maximumHeight);
}

void TaskColumnTest::aThousandTasksMakeOnlyTheRowsInSight()
{
    show(tasks(1000));
    QCOMPARE(m_column->rowCount(), 7);
    QCOMPARE(m_madeCount, 7);
    QCOMPARE(m_column->verticalScrollBar()->maximum(), 1000 * rowHeight - maximumHeight);
}

void TaskColumnTest::rowsComeAndGoAsTheListScrolls()
{
    show(tasks(1000));
    m_column->verticalScrollBar()->setValue(500 * rowHeight);
    settleLayout();
    QVERIFY(!m_column->rowAt(0));
    QCOMPARE(m_column->rowAt(500)->accessibleName(), u"Task 500"_s);
    QCOMPARE(m_column->rowAt(500)->y(), 0);
    QCOMPARE(m_column->rowCount(), 7);
    QCOMPARE(m_column->findChildren<PlainButton *>().size(), 7);
    m_column->verticalScrollBar()->setValue(m_column->verticalScrollBar()->maximum());
    settleLayout();
    QCOMPARE(m_column->rowAt(999)->geometry().bottom(), maximumHeight - 1);
}

void TaskColumnTest::theWheelScrollsByTwoRows()
{
    show(tasks(50));
    const QPointF place(100, 100);
    QWheelEvent event(place, m_column->mapToGlobal(place), {}, {0, -120}, {}, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(m_column->rowAt(3), &event);
    QVERIFY(!event.isAccepted()); // Left to the list.
    QCoreApplication::sendEvent(m_column->viewport(), &event);
    QCOMPARE(m_column->verticalScrollBar()->value(), 2 * rowHeight);
}

void TaskColumnTest::theSlimBarScrolls()
{
    show(tasks(50));
    auto *bar = m_column->findChild<SlimScrollBar *>();
    QCOMPARE(bar->geometry(), QRect(340 - SlimScrollBar::width, 0, SlimScrollBar::width, maximumHeight));
    QTest::mouseClick(bar, Qt::LeftButton, {}, {4, maximumHeight - 5}); // Below the thumb: a page.
    QCOMPARE(m_column->verticalScrollBar()->value(), maximumHeight);
    m_column->verticalScrollBar()->setValue(0);
    QTest::mousePress(bar, Qt::LeftButton, {}, {4, 10});
    QTest::mouseMove(bar, {4, maximumHeight + 50}); // The thumb follows as far as it goes.
    QTest::mouseRelease(bar, Qt::LeftButton, {}, {4, maximumHeight + 50});
    QCOMPARE(m_column->verticalScrollBar()->value(), m_column->verticalScrollBar()->maximum());
}

void TaskColumnTest::theSlimBarIsAbsentWhileAllIsInSight()
{
    show(tasks(3));
    QVERIFY(!m_column->findChild<SlimScrollBar *>()->isVisible());
    m_column->setTasks(tasks(30));
    settleLayout();
    QVERIFY(m_column->findChild<SlimScrollBar *>()->isVisible());
}

void TaskColumnTest::equalTasksKeepTheirRows()
{
    show(tasks(4));
    auto *second = m_column->rowAt(1);
    auto list = tasks(4);
    list.move(1, 3);
    m_column->setTasks(list);
    QCOMPARE(m_column->rowAt(3), second);
    QCOMPARE(second->y(), 3 * rowHeight);
    QCOMPARE(m_madeCount, 4);
}

void TaskColumnTest::aTaskOfAnotherNameGetsANewRow()
{
    show(tasks(4));
    auto list = tasks(4);
    list[1].name = u"Another name"_s;
    m_column->setTasks(list);
    QCOMPARE(m_column->rowAt(1)->accessibleName(), u"Another name"_s);
    QVERIFY(m_column->rowAt(1)->isVisible());
    QCOMPARE(m_madeCount, 5);
}

void TaskColumnTest::aShorterListScrollsBack()
{
    show(tasks(50));
    m_column->verticalScrollBar()->setValue(40 * rowHeight);
    m_column->setTasks(tasks(3));
    settleLayout();
    QCOMPARE(m_column->height(), 3 * rowHeight);
    QCOMPARE(m_column->verticalScrollBar()->value(), 0);
    QCOMPARE(m_column->rowAt(0)->y(), 0);
}

void TaskColumnTest::tabAndArrowsWalkThroughTheRows()
{
    show(tasks(3));
    m_window->findChild<PlainButton *>()->setFocus(Qt::TabFocusReason);
    QCOMPARE(focused(), u"Before"_s);
    press(Qt::Key_Tab);
    QCOMPARE(focused(), u"Task 0"_s);
    press(Qt::Key_Tab);
    QCOMPARE(focused(), u"Task 1"_s);
    press(Qt::Key_Down);
    QCOMPARE(focused(), u"Task 2"_s);
    press(Qt::Key_Down);
    QCOMPARE(focused(), u"Task 2"_s); // Arrows stay in the list.
    press(Qt::Key_Up);
    QCOMPARE(focused(), u"Task 1"_s);
    press(Qt::Key_End);
    press(Qt::Key_Tab);
    QCOMPARE(focused(), u"After"_s);
}

void TaskColumnTest::theKeyboardReachesRowsOutOfSight()
{
    show(tasks(1000));
    m_window->findChild<PlainButton *>()->setFocus(Qt::TabFocusReason);
    for (int i = 0; i <= 20; ++i)
        press(Qt::Key_Tab);
    QCOMPARE(focused(), u"Task 20"_s);
    QVERIFY(m_column->viewport()->rect().contains(m_column->rowAt(20)->geometry()));
    press(Qt::Key_End);
    QCOMPARE(focused(), u"Task 999"_s);
    QVERIFY(m_column->viewport()->rect().contains(m_column->rowAt(999)->geometry()));
    press(Qt::Key_Home);
    QCOMPARE(focused(), u"Task 0"_s);
    settleLayout();
    QCOMPARE(m_column->rowCount(), 7);
}

void TaskColumnTest::backwardsTheKeyboardEntersAtTheLastRow()
{
    show(tasks(20));
    m_window->findChildren<PlainButton *>(QString(), Qt::FindDirectChildrenOnly).last()->setFocus(Qt::TabFocusReason);
    QCOMPARE(focused(), u"After"_s);
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(focused(), u"Task 19"_s);
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(focused(), u"Task 18"_s);
    press(Qt::Key_Home);
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(focused(), u"Before"_s);
}

void TaskColumnTest::lockedRowsArePassedOver()
{
    for (int i = 0; i < 100; ++i) {
        if (i != 40)
            m_locked.insert(task(i).id);
    }
    show(tasks(100));
    m_window->findChild<PlainButton *>()->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Tab);
    QCOMPARE(focused(), u"Task 40"_s); // It was not even made before.
    press(Qt::Key_Tab);
    QCOMPARE(focused(), u"After"_s);
}

void TaskColumnTest::theKeyboardStaysNearARowThatIsLockedAndReturns()
{
    show(tasks(3));
    m_window->findChild<PlainButton *>()->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Tab);
    press(Qt::Key_Down);
    m_locked = {u"t0"_s, u"t1"_s, u"t2"_s};
    for (int i = 0; i < 3; ++i)
        m_column->rowAt(i)->setEnabled(false);
    m_column->pressabilityChanged();
    QCOMPARE(qApp->focusWidget(), m_column);
    m_locked.clear();
    for (int i = 0; i < 3; ++i)
        m_column->rowAt(i)->setEnabled(true);
    m_column->pressabilityChanged();
    QCOMPARE(focused(), u"Task 1"_s);
}

void TaskColumnTest::spaceAndReturnPressARow()
{
    show(tasks(3));
    m_window->findChild<PlainButton *>()->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    press(Qt::Key_Down);
    press(Qt::Key_Enter);
    QCOMPARE(m_pressed, QStringList({u"t0"_s, u"t1"_s, u"t2"_s}));
}

void TaskColumnTest::withAllRowsLockedTheKeysScroll()
{
    for (int i = 0; i < 50; ++i)
        m_locked.insert(task(i).id);
    show(tasks(50));
    m_window->findChild<PlainButton *>()->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Tab);
    QCOMPARE(qApp->focusWidget(), m_column);
    press(Qt::Key_Down);
    QVERIFY(m_column->verticalScrollBar()->value() > 0);
    press(Qt::Key_PageDown);
    QVERIFY(m_column->verticalScrollBar()->value() > maximumHeight - rowHeight);
    press(Qt::Key_Tab);
    QCOMPARE(focused(), u"After"_s);
}

QTEST_MAIN(TaskColumnTest)
#include "TaskColumnTest.moc"
