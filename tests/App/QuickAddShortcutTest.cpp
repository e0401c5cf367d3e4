#include "LaunchedApp.h"

#include <QLineEdit>

using namespace Qt::StringLiterals;
using namespace korvo;

class QuickAddShortcutTest : public QObject {
    Q_OBJECT
private slots:
    void init() { m_app = std::make_unique<LaunchedApp>(); }
    void cleanup();

    void theLaunchTakesTheShortcutOfTheSettings();
    void aPressShowsThePanelAndTheNextOneClosesIt();
    void thePanelIsNotShownWithinTheKeyEvent();
    void aKeyCodeOfZeroWithModifiersRegisters();
    void aKeyWithoutModifiersRegisters();
    void bothZeroIsNoShortcutAndFreesTheKey();
    void aNewShortcutTakesEffectAtOnceAndTheOldKeyIsFree();
    void theEndClosesThePanelAndFreesTheKey();
    void aPressThatIsUnderWayWhenTheProgramHasGoneDoesNothing();
    void aTypedNameBecomesTheRunningTask();
    void aNameSubmittedAtTheEndOfTheProgramMakesNoRequest();

private:
    using Key = std::pair<quint32, quint32>;

    LaunchedApp &app() { return *m_app; }
    AppSettings &settings() { return app().settings.settings; }
    FakeKeyGrabber &grabber() { return *app().platform.keyGrabber; }
    bool isPanelShown() { return app().platform.inputPanel && app().platform.inputPanel->isVisible(); }

    std::unique_ptr<LaunchedApp> m_app;
};

void QuickAddShortcutTest::cleanup()
{
    app().clock().advance(1); // The focusing step.
    QCoreApplication::processEvents();
    m_app.reset();
}

void QuickAddShortcutTest::theLaunchTakesTheShortcutOfTheSettings()
{
    QVERIFY(grabber().asked.isEmpty());
    app().launch();
    QCOMPARE(grabber().held, std::optional(Key(45, 0x300)));
}

void QuickAddShortcutTest::aPressShowsThePanelAndTheNextOneClosesIt()
{
    app().launch();
    grabber().press();
    QTRY_VERIFY(isPanelShown());
    grabber().press();
    QTRY_VERIFY(!isPanelShown());
    grabber().press();
    QTRY_VERIFY(isPanelShown());
    QCOMPARE(app().platform.inputPanelCount, 2);
}

void QuickAddShortcutTest::thePanelIsNotShownWithinTheKeyEvent()
{
    app().launch();
    grabber().press();
    QCOMPARE(app().platform.inputPanelCount, 0);
    QTRY_COMPARE(app().platform.inputPanelCount, 1);
}

void QuickAddShortcutTest::aKeyCodeOfZeroWithModifiersRegisters()
{
    settings().setQuickAddKeyCode(0); // The A key.
    settings().setQuickAddModifiers(0x900);
    app().launch();
    QCOMPARE(grabber().held, std::optional(Key(0, 0x900)));
}

void QuickAddShortcutTest::aKeyWithoutModifiersRegisters()
{
    settings().setQuickAddKeyCode(122); // F1.
    settings().setQuickAddModifiers(0);
    app().launch();
    QCOMPARE(grabber().held, std::optional(Key(122, 0)));
}

void QuickAddShortcutTest::bothZeroIsNoShortcutAndFreesTheKey()
{
    app().launch();
    settings().setQuickAddKeyCode(0);
    settings().setQuickAddModifiers(0);
    app().delegate->registerGlobalHotkey();
    QVERIFY(!grabber().held);
    QVERIFY(!grabber().isInstalled);
    grabber().press();
    QCoreApplication::processEvents();
    QVERIFY(!isPanelShown());
}

void QuickAddShortcutTest::aNewShortcutTakesEffectAtOnceAndTheOldKeyIsFree()
{
    app().launch();
    grabber().calls.clear();
    settings().setQuickAddKeyCode(49); // Space.
    settings().setQuickAddModifiers(0x900);
    app().delegate->registerGlobalHotkey();
    QCOMPARE(grabber().calls, (QStringList{u"ungrab"_s, u"uninstall"_s, u"install"_s, u"grab"_s}));
    QCOMPARE(grabber().held, std::optional(Key(49, 0x900)));
    grabber().press();
    QTRY_VERIFY(isPanelShown());
}

void QuickAddShortcutTest::theEndClosesThePanelAndFreesTheKey()
{
    app().launch();
    grabber().press();
    QTRY_VERIFY(isPanelShown());
    app().delegate->applicationWillTerminate();
    QVERIFY(!isPanelShown());
    QVERIFY(!grabber().held);
}

void QuickAddShortcutTest::aPressThatIsUnderWayWhenTheProgramHasGoneDoesNothing()
{
    app().launch();
    grabber().press();
    app().delegate.reset();
    QCoreApplication::processEvents();
    QCOMPARE(app().platform.inputPanelCount, 0);
}

void QuickAddShortcutTest::aTypedNameBecomesTheRunningTask()
{
    app().notion.answer(u"POST /pages"_s, pages::page(u"p1"_s, {}));
    app().launch();
    grabber().press();
    QTRY_VERIFY(isPanelShown());
    auto *field = app().platform.inputPanel->window.findChild<QLineEdit *>();
    QTest::keyClicks(field, u"Write the letter"_s);
    app().setEntry(0, u"Running"_s);
    QTest::keyClick(field, Qt::Key_Return);
    QVERIFY(!isPanelShown());
    QTRY_VERIFY(app().delegate->timerViewModel().isTimerRunning());
    QVERIFY(
        app().platform.fakeLog.lines.contains(u"INFO Quick add: created task 'Write the letter' and started timer"_s));
}

void QuickAddShortcutTest::aNameSubmittedAtTheEndOfTheProgramMakesNoRequest()
{
    app().launch();
    grabber().press();
    QTRY_VERIFY(isPanelShown());
    auto *field = app().platform.inputPanel->window.findChild<QLineEdit *>();
    field->setText(u"Write the letter"_s);
    QTest::keyClick(field, Qt::Key_Return);
    app().delegate->applicationWillTerminate();
    app().delegate.reset();
    app().clock().advance(1);
    QVERIFY(finishSpawned(2000));
    QVERIFY(!app().notion.calls().contains(u"POST /pages"_s));
}

QTEST_MAIN(QuickAddShortcutTest)
#include "QuickAddShortcutTest.moc"
