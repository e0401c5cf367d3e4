#include "Platform/X11/X11InputPanel.h"

#include "Platform/X11/ActiveWindow.h"
#include "Platform/X11/UserTime.h"
#include "Platform/X11/X11KeyGrabber.h"
#include "TrayOnScreen.h"
#include "XDesktop.h"

#include <QApplication>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr QRect frame(200, 240, 240, 100);
constexpr QMargins overflow(20, 16, 20, 24);
constexpr QColor red(220, 20, 40);

double scale()
{
    return qGuiApp->devicePixelRatio();
}

QPoint toDevice(const QPoint &point)
{
    return (QPointF(point) * scale()).toPoint();
}

QColor colorAt(const QPoint &point)
{
    return QGuiApplication::primaryScreen()->grabWindow().toImage().pixelColor(toDevice(point));
}

/// A plate of one colour, the overflow included, with a field in its middle.
class Card final : public QWidget {
public:
    Card()
    {
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(overflow);
        layout->addWidget(&m_field);
        setFocusProxy(&m_field);
    }
    QLineEdit &field() { return m_field; }

private:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), red); }

    QLineEdit m_field;
};

/// Whether that program has got the key of a letter.
bool getsLetter(XClient &other)
{
    constexpr quint8 xKeyA = 38;
    QList<quint8> keys;
    return typeKeys(u"a"_s) && QTest::qWaitFor([&] {
               keys += other.takePresses();
               return keys.contains(xKeyA);
           });
}

bool isComposited()
{
    return qEnvironmentVariable("DESKTOP_COMPOSITOR") != u"off";
}

} // namespace

/// With the window manager's guard against programs that take the focus, or without, as the desktop has it.
class X11InputPanelTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void cleanupTestCase();

    void theContentFillsTheFrameAndTheOverflow();
    void clicksOnTheOverflowGoThrough();
    void theKeyboardIsTakenFromAnotherProgram();
    void theFieldHasTheKeyboardAgainInEachNewPanel();
    void theToolkitKnowsWhenTheKeyWasPressed();
    void orderOutGivesTheKeyboardBack();
    void itHidesWhenAnotherWindowIsClicked();
    void itHidesWhenATaskListRaisesAnotherWindow();
    void itStaysWhileAnotherProgramGrabsTheKeyboard();
    void itStaysWhenAnotherWindowOfTheProgramGetsTheKeyboard();
    void makeKeyTakesTheKeyboardBack();
    void makeKeyDoesNotShowAHiddenPanel();
    void noOtherWindowOfTheProgramIsRaised();
    void itIsInNoTaskList();
    void tilingWindowManagersKnowItForADialogue();
    void itIsOnTheWorkspaceOfTheUser();
    void itIsAboveAFullScreenWindow();
    void theContentMayHaveItDestroyed();
    void theActiveWindowIsWhereItIs();
    // From here on under another window manager.
    void underOpenboxTheKeyboardIsTakenAndGivenBack();
    void underOpenboxItIsAboveAFullScreenWindow();
    void withoutAWindowManagerTheKeyboardIsTaken();

private:
    void makePanel();
    QLineEdit &field() { return m_card->field(); }
    bool hasKeyboard() { return field().hasFocus() && field().window()->isActiveWindow(); }
    quint32 panelWindow() { return quint32(field().window()->winId()); }
    void showPanel()
    {
        m_panel->makeKeyAndOrderFront();
        m_panel->activateIgnoringOtherApps();
        field().setFocus();
    }
    /// Whether the keyboard comes to the panel. A program that has just taken it by itself, as the other one here does,
    /// may be ahead of the window manager's clock, so it is asked for again, as whoever shows such a panel does.
    bool getsKeyboard()
    {
        return QTest::qWaitFor([this] {
            m_panel->makeKey();
            return hasKeyboard();
        });
    }
    bool startOpenbox();
    void checkAboveFullScreen();

    std::unique_ptr<XClient> m_other;
    std::unique_ptr<X11InputPanel> m_panel;
    QPointer<Card> m_card;
    QProcess m_openbox;
};

void X11InputPanelTest::init()
{
    QCursor::setPos(10, 300);
    m_other = std::make_unique<XClient>();
    makePanel();
}

void X11InputPanelTest::cleanup()
{
    m_panel.reset();
    m_other.reset();
}

void X11InputPanelTest::cleanupTestCase()
{
    m_openbox.terminate();
    m_openbox.waitForFinished();
}

void X11InputPanelTest::makePanel()
{
    m_panel = std::make_unique<X11InputPanel>();
    auto card = std::make_unique<Card>();
    m_card = card.get();
    m_panel->setContent(std::move(card), overflow);
    m_panel->setFrame(frame);
}

bool X11InputPanelTest::startOpenbox()
{
    if (m_openbox.state() == QProcess::NotRunning) {
        m_openbox.setProcessChannelMode(QProcess::ForwardedChannels);
        m_openbox.start(u"openbox"_s, {u"--replace"_s});
    }
    return QTest::qWaitFor([this] { return m_other->windowManager() == "Openbox"; }, 20000);
}

void X11InputPanelTest::theContentFillsTheFrameAndTheOverflow()
{
    field().hide();
    m_panel->makeKeyAndOrderFront();
    QVERIFY(m_panel->isVisible());
    QCOMPARE(m_panel->content(), m_card.data());
    const QRect seen = isComposited() ? frame.marginsAdded(overflow) : frame;
    QTRY_COMPARE(findOnScreen(red), QRect(toDevice(seen.topLeft()), seen.size() * scale()));
}

void X11InputPanelTest::clicksOnTheOverflowGoThrough()
{
    const QRect around = frame.adjusted(-80, -80, 80, 80);
    QVERIFY(m_other->showFocusedWindow({toDevice(around.topLeft()), around.size() * scale()}));
    m_panel->makeKeyAndOrderFront();
    QTRY_COMPARE(colorAt(frame.topLeft() + QPoint(3, 3)), red);
    QVERIFY(clickAt(toDevice(frame.bottomLeft() + QPoint(20, 12))));
    QTRY_COMPARE(m_other->clickCount(), 1);
}

void X11InputPanelTest::theKeyboardIsTakenFromAnotherProgram()
{
    QVERIFY(m_other->showFocusedWindow());
    QVERIFY(getsLetter(*m_other));
    showPanel();
    QVERIFY(getsKeyboard());
    QVERIFY(typeKeys(u"a"_s));
    QTRY_COMPARE(field().text(), u"a"_s);
    QVERIFY(m_other->takePresses().isEmpty());
}

void X11InputPanelTest::theFieldHasTheKeyboardAgainInEachNewPanel()
{
    QVERIFY(m_other->showFocusedWindow());
    for (int i = 0; i < 10; ++i) {
        showPanel();
        QVERIFY(getsKeyboard());
        QVERIFY(typeKeys(u"a"_s));
        QTRY_COMPARE(field().text(), u"a"_s);
        m_panel->orderOut();
        makePanel(); // At once.
    }
}

void X11InputPanelTest::theToolkitKnowsWhenTheKeyWasPressed()
{
    constexpr quint32 macN = 45;
    constexpr quint32 commandShift = 0x300;
    QVERIFY(m_other->showFocusedWindow());
    X11KeyGrabber grabber;
    QCOMPARE(grabber.install(), 0);
    QCOMPARE(grabber.grab(macN, commandShift), 0);
    connect(&grabber, &KeyGrabber::pressed, this, &X11InputPanelTest::showPanel, Qt::QueuedConnection);
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_VERIFY(hasKeyboard());
    QVERIFY(lastUserTime() != 0);
    const auto teller = m_other->numbers(panelWindow(), "_NET_WM_USER_TIME_WINDOW").value(0, panelWindow());
    const quint32 told = m_other->numbers(teller, "_NET_WM_USER_TIME").value(0);
    QVERIFY2(told >= lastUserTime() && told - lastUserTime() < 60000, qPrintable(QString::number(told)));
}

void X11InputPanelTest::orderOutGivesTheKeyboardBack()
{
    QVERIFY(m_other->showFocusedWindow());
    showPanel();
    QVERIFY(getsKeyboard());
    m_panel->orderOut();
    QVERIFY(!m_panel->isVisible());
    QTRY_VERIFY(m_other->hasFocus());
    QVERIFY(getsLetter(*m_other));
}

void X11InputPanelTest::itHidesWhenAnotherWindowIsClicked()
{
    const QRect beside(frame.right() + 60, frame.top(), 200, 200);
    QVERIFY(m_other->showFocusedWindow({toDevice(beside.topLeft()), beside.size() * scale()}));
    showPanel();
    QVERIFY(getsKeyboard());
    QVERIFY(clickAt(toDevice(beside.center())));
    QTRY_VERIFY(!m_panel->isVisible());
    QTRY_VERIFY(m_other->hasFocus());
}

void X11InputPanelTest::itHidesWhenATaskListRaisesAnotherWindow()
{
    QVERIFY(m_other->showFocusedWindow());
    showPanel();
    QVERIFY(getsKeyboard());
    m_other->raise();
    QTRY_VERIFY(!m_panel->isVisible());
}

void X11InputPanelTest::itStaysWhileAnotherProgramGrabsTheKeyboard()
{
    constexpr quint8 xKeyF5 = 71;
    QVERIFY(m_other->showFocusedWindow());
    QCOMPARE(m_other->grab(xKeyF5, xmod::none), 0);
    showPanel();
    QVERIFY(getsKeyboard());
    QVERIFY(holdKeys(u"F5"_s));
    QList<quint8> keys;
    QTRY_VERIFY((keys += m_other->takePresses()).contains(xKeyF5));
    QTRY_VERIFY(!field().window()->isActiveWindow()); // The toolkit takes it for a loss.
    QVERIFY(m_panel->isVisible());
    QVERIFY(releaseKeys(u"F5"_s));
    QTRY_VERIFY(hasKeyboard());
    QVERIFY(typeKeys(u"a"_s));
    QTRY_COMPARE(field().text(), u"a"_s);
}

void X11InputPanelTest::itStaysWhenAnotherWindowOfTheProgramGetsTheKeyboard()
{
    QVERIFY(m_other->showFocusedWindow());
    QWidget settings;
    settings.setGeometry(500, 300, 200, 150);
    settings.show();
    QVERIFY(QTest::qWaitForWindowExposed(&settings));
    showPanel();
    QVERIFY(getsKeyboard());
    settings.activateWindow();
    QTRY_VERIFY(settings.isActiveWindow());
    QVERIFY(m_panel->isVisible());
    m_other->raise();
    QTRY_VERIFY(!m_panel->isVisible()); // The whole program has lost it.
}

void X11InputPanelTest::makeKeyTakesTheKeyboardBack()
{
    QWidget settings;
    settings.setGeometry(500, 300, 200, 150);
    settings.show();
    QVERIFY(QTest::qWaitForWindowExposed(&settings));
    showPanel();
    QVERIFY(getsKeyboard());
    settings.activateWindow();
    QTRY_VERIFY(settings.isActiveWindow());
    m_panel->makeKey();
    QTRY_VERIFY(hasKeyboard());
}

void X11InputPanelTest::makeKeyDoesNotShowAHiddenPanel()
{
    QVERIFY(m_other->showFocusedWindow());
    showPanel();
    QVERIFY(getsKeyboard());
    m_panel->orderOut();
    m_panel->makeKey();
    m_panel->activateIgnoringOtherApps();
    QTRY_VERIFY(m_other->hasFocus());
    QVERIFY(!m_panel->isVisible());
}

void X11InputPanelTest::noOtherWindowOfTheProgramIsRaised()
{
    QWidget settings;
    settings.setGeometry(100, 100, 200, 150);
    settings.show();
    QVERIFY(QTest::qWaitForWindowExposed(&settings));
    QVERIFY(m_other->showFocusedWindow());
    m_other->raise();
    QTRY_COMPARE(m_other->stacking().last(), m_other->window());
    showPanel();
    QVERIFY(getsKeyboard());
    const auto order = m_other->stacking();
    QCOMPARE(order.last(), panelWindow());
    QVERIFY(order.indexOf(quint32(settings.winId())) < order.indexOf(m_other->window()));
}

void X11InputPanelTest::itIsInNoTaskList()
{
    showPanel();
    QVERIFY(getsKeyboard());
    const auto states = m_other->numbers(panelWindow(), "_NET_WM_STATE");
    for (const char *state : {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER", "_NET_WM_STATE_ABOVE"})
        QVERIFY2(states.contains(m_other->atom(state)), state);
}

void X11InputPanelTest::tilingWindowManagersKnowItForADialogue()
{
    showPanel();
    QVERIFY(getsKeyboard());
    QCOMPARE(m_other->numbers(panelWindow(), "_NET_WM_WINDOW_TYPE"),
             QList<quint32>{m_other->atom("_NET_WM_WINDOW_TYPE_DIALOG")});
}

void X11InputPanelTest::itIsOnTheWorkspaceOfTheUser()
{
    QVERIFY(m_other->setWorkspaceCount(2));
    QVERIFY(m_other->goToWorkspace(1));
    showPanel();
    QVERIFY(getsKeyboard());
    QCOMPARE(m_other->numbers(panelWindow(), "_NET_WM_DESKTOP"), QList<quint32>{1});
    m_panel->orderOut();
    QVERIFY(m_other->goToWorkspace(0));
    QVERIFY(m_other->setWorkspaceCount(1));
}

void X11InputPanelTest::checkAboveFullScreen()
{
    QVERIFY(m_other->showFocusedWindow());
    QVERIFY(m_other->makeFullScreen());
    QTRY_COMPARE(colorAt({20, 400}), QColor(Qt::white));
    showPanel();
    QVERIFY(getsKeyboard());
    QTRY_COMPARE(colorAt(frame.topLeft() + QPoint(3, 3)), red);
    QCOMPARE(colorAt({20, 400}), QColor(Qt::white));
}

void X11InputPanelTest::itIsAboveAFullScreenWindow()
{
    checkAboveFullScreen();
}

void X11InputPanelTest::theContentMayHaveItDestroyed()
{
    showPanel();
    QVERIFY(getsKeyboard());
    connect(&field(), &QLineEdit::returnPressed, this, [this] { m_panel.reset(); });
    QVERIFY(typeKeys(u"Return"_s));
    QTRY_VERIFY(!m_card);
    QVERIFY(!m_panel);
}

void X11InputPanelTest::theActiveWindowIsWhereItIs()
{
    const QRect place(120, 160, 320, 240);
    QVERIFY(m_other->showFocusedWindow(place));
    m_other->raise();
    // The window manager may put a frame around it.
    QTRY_COMPARE(x11ActiveWindowGeometry().value_or(QRect()).size(), place.size());
    QVERIFY(QRect(place.topLeft(), QSize(40, 60)).contains(x11ActiveWindowGeometry()->topLeft()));
}

void X11InputPanelTest::underOpenboxTheKeyboardIsTakenAndGivenBack()
{
    QVERIFY(startOpenbox());
    theFieldHasTheKeyboardAgainInEachNewPanel();
    QTRY_VERIFY(m_other->hasFocus());
}

void X11InputPanelTest::underOpenboxItIsAboveAFullScreenWindow()
{
    QVERIFY(startOpenbox());
    checkAboveFullScreen();
}

void X11InputPanelTest::withoutAWindowManagerTheKeyboardIsTaken()
{
    QVERIFY(startOpenbox());
    m_openbox.terminate();
    QVERIFY(m_openbox.waitForFinished());
    QTRY_VERIFY(m_other->windowManager().isEmpty());
    QVERIFY(m_other->showFocusedWindow());
    showPanel();
    QVERIFY(getsKeyboard());
    QVERIFY(typeKeys(u"a"_s));
    QTRY_COMPARE(field().text(), u"a"_s);
}

QTEST_MAIN(X11InputPanelTest)
#include "X11InputPanelTest.moc"
