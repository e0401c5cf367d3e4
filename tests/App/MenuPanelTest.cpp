#include "LaunchedApp.h"

#include "Views/MenuBarView.h"

#include <QAbstractButton>

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace korvo;

class MenuPanelTest : public QObject {
    Q_OBJECT
private slots:
    void init() { m_app = std::make_unique<LaunchedApp>(); }
    void cleanup() { m_app.reset(); }

    void aClickOpensThePanelUnderTheItem();
    void thePanelIsSetUpBeforeItIsShown();
    void aSecondClickClosesAndTheNextOneOpensANewPanel();
    void aMouseDownInAnotherProgramClosesIt();
    void theMonitorLivesOnlyWhileThePanelIsOpen();
    void theGearClosesIt();
    void theEndClosesIt();
    void anotherStartOfTheProgramOpensIt();
    void anotherStartLeavesAnOpenPanelAlone();
    void aPanelOnAMonitorThatHasGoneIsReplaced_data();
    void aPanelOnAMonitorThatHasGoneIsReplaced();
    void aPanelIsClosedByAClickWhileNoScreenIsKnown();
    void contentStandsAtTheUpperEdge();
    void contentStandsAtTheLowerEdgeWhereThePanelOpensUpwards();
    void shapeFollowsTheHeightOfTheContent();
    void contentIsNeverHigherThanThePanel();
    void theMenuReachesAllThatAClickDoes();
    void theMenuStopsTheTimer();
    void theMenuCannotStopWhatDoesNotRun();

private:
    LaunchedApp &app() { return *m_app; }
    FakePanel &panel() { return *app().platform.panel; }
    MenuBarView &view() { return *panel().window.findChild<MenuBarView *>(); }

    std::unique_ptr<LaunchedApp> m_app;
};

void MenuPanelTest::aClickOpensThePanelUnderTheItem()
{
    app().launch();
    app().item().place = QRect(700, 0, 24, 24);
    app().item().click();
    QVERIFY(panel().isVisible());
    QCOMPARE(panel().frame, QRect(542, 28, 340, 420));
    QVERIFY(panel().style.hasShadow);
    QVERIFY(!panel().style.isAboveEverything);
}

void MenuPanelTest::thePanelIsSetUpBeforeItIsShown()
{
    app().launch();
    app().item().click();
    QCOMPARE(panel().calls, (QStringList{u"setFrame"_s, u"setShape"_s, u"setContent"_s, u"orderFront"_s}));
}

void MenuPanelTest::aSecondClickClosesAndTheNextOneOpensANewPanel()
{
    app().launch();
    app().item().click();
    const QPointer<FakePanel> first = &panel();
    app().item().click();
    QTRY_VERIFY(first.isNull());
    app().item().click();
    QVERIFY(panel().isVisible());
}

void MenuPanelTest::aMouseDownInAnotherProgramClosesIt()
{
    app().launch();
    app().item().click();
    app().platform.mouseMonitor->press();
    QTRY_VERIFY(app().platform.panel.isNull());
}

void MenuPanelTest::theMonitorLivesOnlyWhileThePanelIsOpen()
{
    app().launch();
    QVERIFY(app().platform.mouseMonitor.isNull());
    app().item().click();
    QVERIFY(app().platform.mouseMonitor);
    app().item().click();
    QTRY_VERIFY(app().platform.mouseMonitor.isNull());
}

void MenuPanelTest::theGearClosesIt()
{
    app().launch();
    app().item().click();
    for (auto *button : view().findChildren<QAbstractButton *>()) {
        if (button->accessibleName() == u"Settings"_s)
            button->click();
    }
    QTRY_VERIFY(app().platform.panel.isNull());
}

void MenuPanelTest::theEndClosesIt()
{
    app().launch();
    app().item().click();
    app().delegate->applicationWillTerminate();
    QTRY_VERIFY(app().platform.panel.isNull());
    QTRY_VERIFY(app().platform.mouseMonitor.isNull());
}

void MenuPanelTest::anotherStartOfTheProgramOpensIt()
{
    app().launch();
    app().platform.fakeSingleInstance.startAgain();
    QVERIFY(panel().isVisible());
}

void MenuPanelTest::anotherStartLeavesAnOpenPanelAlone()
{
    app().launch();
    app().item().click();
    const QPointer<FakePanel> first = &panel();
    app().platform.fakeSingleInstance.startAgain();
    QVERIFY(first && first->isVisible());
    QCOMPARE(app().platform.panel, first);
}

void MenuPanelTest::aPanelOnAMonitorThatHasGoneIsReplaced_data()
{
    QTest::addColumn<bool>("isByClick");
    QTest::newRow("by one click") << true;
    QTest::newRow("by another start") << false;
}

void MenuPanelTest::aPanelOnAMonitorThatHasGoneIsReplaced()
{
    QFETCH(const bool, isByClick);
    app().launch();
    auto &screens = app().platform.fakeScreens.all;
    screens.append({QRectF(1280, 0, 1920, 1080), 0, QRectF(1280, 24, 1920, 1056)});
    app().item().place = QRect(2800, 0, 24, 24);
    app().item().click();
    const QPointer<FakePanel> first = &panel();
    const QPointer<FakeMouseMonitor> monitor = app().platform.mouseMonitor;
    QVERIFY(screens.last().geometry.contains(QRectF(first->frame)));

    screens.removeLast();
    app().item().place = QRect(700, 0, 24, 24);
    if (isByClick)
        app().item().click();
    else
        app().platform.fakeSingleInstance.startAgain();
    QVERIFY(&panel() != first);
    QVERIFY(panel().isVisible());
    QVERIFY(screens.first().geometry.contains(QRectF(panel().frame)));
    QTRY_VERIFY(first.isNull() && monitor.isNull());
    app().item().click();
    QTRY_VERIFY(app().platform.panel.isNull());
}

void MenuPanelTest::aPanelIsClosedByAClickWhileNoScreenIsKnown()
{
    app().launch();
    app().item().click();
    app().platform.fakeScreens.all.clear();
    app().item().click();
    QTRY_VERIFY(app().platform.panel.isNull());
    QCOMPARE(app().platform.panelCount, 1);
}

void MenuPanelTest::contentStandsAtTheUpperEdge()
{
    app().launch();
    app().item().click();
    QCOMPARE(view().pos(), QPoint(0, 0));
    QCOMPARE(view().height(), view().sizeHint().height());
    QVERIFY(view().height() < 420);
    QCOMPARE(panel().shape.boundingRect(), QRectF(0, 0, 340, view().height()));
    // Its corners are rounded: an arc of radius 12 crosses the diagonal 3.51 from the corner.
    QVERIFY(!panel().shape.contains(QPointF(3.4, 3.4)));
    QVERIFY(panel().shape.contains(QPointF(3.6, 3.6)));
}

void MenuPanelTest::contentStandsAtTheLowerEdgeWhereThePanelOpensUpwards()
{
    app().launch();
    app().item().place = QRect(700, 776, 24, 24);
    app().platform.fakeScreens.all.first().available = QRectF(0, 0, 1280, 776);
    app().item().click();
    QCOMPARE(panel().frame, QRect(542, 352, 340, 420));
    QCOMPARE(view().geometry().bottom(), 419);
    QCOMPARE(panel().shape.boundingRect(), QRectF(view().geometry()));
}

void MenuPanelTest::shapeFollowsTheHeightOfTheContent()
{
    app().launch();
    app().item().click();
    const int before = view().height();
    app().setEntry(60, u"Running"_s);
    app().pass(60);
    QTRY_VERIFY(view().height() > before);
    QTRY_COMPARE(panel().shape.boundingRect(), QRectF(0, 0, 340, view().height()));
}

void MenuPanelTest::contentIsNeverHigherThanThePanel()
{
    QList<QJsonObject> tasks;
    for (int i = 0; i < 40; ++i)
        tasks.append(pages::task(u"t%1"_s.arg(i), u"Task %1"_s.arg(i)));
    app().notion.answerRows(app().tasksQuery, tasks);
    app().launchWithTimer(60);
    app().item().click();
    QVERIFY2(view().height() <= 420, qPrintable(QString::number(view().height())));
    QCOMPARE(panel().shape.boundingRect().height(), double(view().height()));
}

void MenuPanelTest::theMenuReachesAllThatAClickDoes()
{
    app().launch();
    QStringList labels;
    for (const auto &entry : app().item().menu)
        labels.append(entry.label);
    QCOMPARE(labels,
             (QStringList{u"Open"_s, u""_s, u"No timer running"_s, u"Stop"_s, u""_s, u"Settings"_s, u"Quit"_s}));
    QVERIFY(app().item().choose(u"Open"_s));
    QVERIFY(panel().isVisible());
    QVERIFY(app().item().choose(u"Settings"_s));
    QTRY_VERIFY(app().platform.panel.isNull());
}

void MenuPanelTest::theMenuStopsTheTimer()
{
    app().launchWithTimer(60);
    app().notion.answer(u"PATCH /pages/e1"_s, {});
    app().notion.asked.clear();
    app().notion.isHolding = true;
    QVERIFY(app().item().choose(u"Stop"_s));
    QVERIFY(!app().item().choose(u"Stop"_s)); // Not twice: the first is under way.
    QTRY_VERIFY(app().notion.calls().contains(u"PATCH /pages/e1"_s));
}

void MenuPanelTest::theMenuCannotStopWhatDoesNotRun()
{
    app().launch();
    QVERIFY(!app().item().choose(u"Stop"_s));
}

QTEST_MAIN(MenuPanelTest)
#include "MenuPanelTest.moc"
