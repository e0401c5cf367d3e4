#include "EndToEnd/AttachedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Platform/TrayOnScreen.h"
#include "Platform/XDesktop.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = AttachedKorvo::patience;
constexpr quint8 xKeyX = 53;
constexpr QColor cardGround(10, 10, 10);
constexpr QColor accent(48, 140, 198);         // The style's own.
constexpr QRect otherPlace(60, 500, 300, 200); // Beside the panel.

bool typeText(const QString &text)
{
    return run(u"xdotool"_s, {u"type"_s, u"--delay"_s, u"20"_s, text});
}

/// What xdotool has to say of the window that has the keyboard.
QString askActiveWindow(const QStringList &question)
{
    QProcess process;
    process.start(u"xdotool"_s, QStringList{u"getactivewindow"_s} + question);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QString activeWindowName()
{
    return askActiveWindow({u"getwindowname"_s});
}

/// Its middle, across the desktop.
int middleOfActiveWindow()
{
    static const QRegularExpression figures(u"X=(-?\\d+).*WIDTH=(\\d+)"_s,
                                            QRegularExpression::DotMatchesEverythingOption);
    const auto found = figures.match(askActiveWindow({u"getwindowgeometry"_s, u"--shell"_s}));
    return found.hasMatch() ? found.captured(1).toInt() + found.captured(2).toInt() / 2 : -1;
}

} // namespace

/// The road of the shortcut as a user has it: real keys, with another program in front.
class QuickAddRoadTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void cleanupTestCase();

    void aNameTypedOverAnotherProgramBecomesTheRunningTask_data();
    void aNameTypedOverAnotherProgramBecomesTheRunningTask();
    void escapeGivesTheKeyboardBackAndMakesNoTask();
    void aClickInAnotherWindowHidesThePanelAndTheNextPressShowsAnEmptyOne();
    void theSecondPressClosesThePanel();
    void keysStruckRightBehindTheShortcutAreNotLost();
    void aDeadKeyAndItsLetterMakeOneCharacter();
    void thePanelStandsOnTheMonitorOfTheWindowThatHasTheKeyboard();
    void aPastedNameThatIsTooLongMakesNoTaskAndTheOldTimerHasEnded();
    void theShortcutDuringARecordingOpensThePanelAndTheRecordingGoesOn();
    void quittingRightAfterTheShortcutEndsCleanly();

private:
    bool pressShortcut() { return typeKeys(u"super+shift+n"_s); }
    static bool isPanelShown() { return findOnScreen(cardGround).width() > 500; }
    /// Presses the shortcut and waits until the other program has lost the keyboard to the panel.
    bool openPanel()
    {
        const bool isTaken = pressShortcut() && QTest::qWaitFor([this] { return !m_other->hasFocus(); }, patience);
        m_other->takePresses(); // The modifiers of the shortcut.
        return isTaken;
    }
    /// Whether the other program has got that key since it was asked last.
    bool otherGets(quint8 key)
    {
        QList<quint8> keys;
        return QTest::qWaitFor([&] { return (keys += m_other->takePresses()).contains(key); });
    }
    bool useWindowManager(const QString &name);

    std::unique_ptr<AttachedKorvo> m_world;
    std::unique_ptr<XClient> m_other;
    QProcess m_windowManager;
};

void QuickAddRoadTest::init()
{
    m_world = std::make_unique<AttachedKorvo>();
    m_other = std::make_unique<XClient>();
    QVERIFY(m_world->startWorkspace());
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > 0, patience); // The sample workspace begins with a running timer.
    QVERIFY(m_other->showFocusedWindow(otherPlace));
}

void QuickAddRoadTest::cleanup()
{
    const auto item = m_world->item();
    m_other.reset();
    m_world.reset();
    QTRY_VERIFY(trayItemProperty(item, u"Id"_s).isEmpty()); // The tray has seen it go.
}

void QuickAddRoadTest::cleanupTestCase()
{
    m_windowManager.terminate();
    m_windowManager.waitForFinished();
}

bool QuickAddRoadTest::useWindowManager(const QString &name)
{
    if (m_other->windowManager() != name.toUtf8()) {
        m_windowManager.terminate();
        m_windowManager.waitForFinished();
        m_windowManager.setProcessChannelMode(QProcess::ForwardedChannels);
        m_windowManager.start(name.toLower(), {u"--replace"_s});
    }
    return QTest::qWaitFor([&] { return m_other->windowManager() == name.toUtf8(); }, patience)
        && m_other->showFocusedWindow(otherPlace);
}

void QuickAddRoadTest::aNameTypedOverAnotherProgramBecomesTheRunningTask_data()
{
    QTest::addColumn<QString>("windowManager");
    QTest::newRow("under Openbox") << u"Openbox"_s;
    QTest::newRow("under Xfwm4") << u"Xfwm4"_s; // Last: it is the desktop's own.
}

void QuickAddRoadTest::aNameTypedOverAnotherProgramBecomesTheRunningTask()
{
    QFETCH(const QString, windowManager);
    QVERIFY(useWindowManager(windowManager));
    QVERIFY(typeKeys(u"x"_s)); // What it did a moment ago counts with window managers.
    QVERIFY(otherGets(xKeyX));
    QVERIFY(openPanel());
    QVERIFY(typeText(u" Call the framer "_s));
    QVERIFY(typeKeys(u"Return"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), u"Call the framer"_s, patience);
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() >= 0 && m_world->seconds() < 60, patience);
    QTRY_VERIFY(m_other->hasFocus());
    QVERIFY(m_other->takePresses().isEmpty());
    QTRY_VERIFY(m_world->log().contains(u"Quick add: created task 'Call the framer' and started timer"_s));
}

void QuickAddRoadTest::escapeGivesTheKeyboardBackAndMakesNoTask()
{
    const auto before = m_world->runningTask();
    QVERIFY(openPanel());
    QVERIFY(typeText(u"Call"_s));
    QVERIFY(typeKeys(u"Escape"_s));
    QTRY_VERIFY(m_other->hasFocus());
    QVERIFY(m_other->takePresses().isEmpty());
    QVERIFY(typeKeys(u"x"_s));
    QVERIFY(otherGets(xKeyX));
    QCOMPARE(m_world->runningTask(), before);
}

void QuickAddRoadTest::aClickInAnotherWindowHidesThePanelAndTheNextPressShowsAnEmptyOne()
{
    QVERIFY(openPanel());
    QVERIFY(typeText(u"Call"_s));
    QVERIFY(clickAt(otherPlace.center()));
    QTRY_VERIFY(m_other->hasFocus());
    QTRY_VERIFY(!isPanelShown());
    QVERIFY(openPanel());
    QVERIFY(typeText(u"Write"_s));
    QVERIFY(typeKeys(u"Return"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), u"Write"_s, patience);
}

void QuickAddRoadTest::theSecondPressClosesThePanel()
{
    for (int i = 0; i < 3; ++i) {
        QVERIFY(openPanel());
        QTRY_VERIFY(isPanelShown());
        QVERIFY(pressShortcut());
        QTRY_VERIFY(m_other->hasFocus());
        QTRY_VERIFY(!isPanelShown());
    }
}

void QuickAddRoadTest::keysStruckRightBehindTheShortcutAreNotLost()
{
    QVERIFY(openPanel());
    QVERIFY(typeKeys(u"k"_s)); // At once when the window has the keyboard, before the focusing step.
    QVERIFY(typeText(u"aput"_s));
    QVERIFY(typeKeys(u"Return"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), u"kaput"_s, patience);
}

void QuickAddRoadTest::aDeadKeyAndItsLetterMakeOneCharacter()
{
    QVERIFY(setLayout(u"fr"_s));
    QVERIFY(openPanel());
    QVERIFY(run(u"xdotool"_s, {u"key"_s, u"f"_s, u"dead_circumflex"_s, u"e"_s, u"t"_s, u"e"_s, u"Return"_s}));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), u"fête"_s, patience);
    QVERIFY(setLayout(u"us"_s));
}

/// One monitor is cut in two, as far as programs can see.
void QuickAddRoadTest::thePanelStandsOnTheMonitorOfTheWindowThatHasTheKeyboard()
{
    const auto xrandr = [](const QStringList &arguments) { return run(u"xrandr"_s, arguments); };
    const int scale = qRound(qApp->devicePixelRatio()); // Of a screen of so many times 1280 by 800 pixels.
    const auto half = u"%1/169x%2/211+%3+0"_s.arg(640 * scale).arg(800 * scale);
    QVERIFY(xrandr({u"--setmonitor"_s, u"left"_s, half.arg(0), u"screen"_s}));
    QVERIFY(xrandr({u"--setmonitor"_s, u"right"_s, half.arg(640 * scale), u"none"_s}));
    QVERIFY(run(u"xdotool"_s, {u"mousemove"_s, u"100"_s, u"400"_s}));
    for (const int middle : {960 * scale, 320 * scale}) {
        QVERIFY(m_other->showFocusedWindow({middle - 150, 560 * scale, 300, 200}));
        QVERIFY(openPanel());
        QTRY_COMPARE(activeWindowName(), u"Korvo"_s);
        QTRY_COMPARE_WITH_TIMEOUT(middleOfActiveWindow(), middle, patience); // Korvo may still learn of the monitors.
        QVERIFY(typeKeys(u"Escape"_s));
        QTRY_VERIFY(m_other->hasFocus());
    }
    QVERIFY(xrandr({u"--delmonitor"_s, u"right"_s}));
    QVERIFY(xrandr({u"--delmonitor"_s, u"left"_s}));
}

void QuickAddRoadTest::aPastedNameThatIsTooLongMakesNoTaskAndTheOldTimerHasEnded()
{
    QVERIFY(!m_world->runningTask().isEmpty());
    QGuiApplication::clipboard()->setText(QString(10000, u'x'));
    QVERIFY(openPanel());
    QVERIFY(typeKeys(u"ctrl+v"_s));
    QVERIFY(typeKeys(u"Return"_s));
    QTRY_VERIFY_WITH_TIMEOUT(m_world->log().contains(u"Quick add failed: Server error 400: "_s), patience);
    QVERIFY(m_world->log().contains(u"text.content.length should be ≤ `2000`"_s));
    QCOMPARE(m_world->runningTask(), QString());
    QTRY_COMPARE_WITH_TIMEOUT(m_world->seconds(), -1, patience); // The next poll no longer finds it.
    QCOMPARE(m_world->property(u"Title"_s), u"Korvo, No timer running"_s);
}

void QuickAddRoadTest::theShortcutDuringARecordingOpensThePanelAndTheRecordingGoesOn()
{
    QVERIFY(clickTrayMenu(m_world->item(), u"Settings"_s));
    QTRY_COMPARE(activeWindowName(), u"Korvo Settings"_s);
    QVERIFY(run(u"xdotool"_s, {u"key"_s, u"Down"_s, u"Down"_s, u"Down"_s})); // To the tab General.
    QVERIFY(typeKeys(u"alt+c"_s)); // Re&cord, a moment later: its field is highlighted, besides the tab.
    QTRY_VERIFY(findOnScreen(accent).width() > 300);
    QVERIFY(pressShortcut());
    QTRY_COMPARE(activeWindowName(), u"Korvo"_s);
    QTRY_VERIFY(isPanelShown());
    QVERIFY(typeKeys(u"Escape"_s)); // Closes the panel alone,
    QTRY_COMPARE(activeWindowName(), u"Korvo Settings"_s);
    QVERIFY(!m_world->log().contains(u"keyCode: 40"_s));
    QVERIFY(typeKeys(u"ctrl+k"_s)); // and this is still recorded.
    QTRY_VERIFY(m_world->log().contains(u"Global hotkey registered (keyCode: 40, modifiers: 4096)"_s));
    QVERIFY(typeKeys(u"ctrl+k"_s));
    QTRY_COMPARE(activeWindowName(), u"Korvo"_s);
}

void QuickAddRoadTest::quittingRightAfterTheShortcutEndsCleanly()
{
    QVERIFY(openPanel());
    QVERIFY(clickTrayMenu(m_world->item(), u"Quit"_s));
    QVERIFY(m_world->process().waitForFinished(patience));
    QCOMPARE(m_world->process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_world->process().exitCode(), 0);
    QTRY_VERIFY(m_other->hasFocus());
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    QuickAddRoadTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "QuickAddRoadTest.moc"
