#include "EndToEnd/AttachedKorvo.h"
#include "Platform/TrayOnScreen.h"
#include "Platform/XDesktop.h"
#include "Views/Theme.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = AttachedKorvo::patience;
constexpr QSize screenSize(1280, 800);
constexpr int middle = screenSize.width() / 2;
const QPoint onTheNotch(middle, 15);
const QPoint farAway(100, 600);

bool movePointer(const QPoint &place)
{
    return run(u"xdotool"_s, {u"mousemove"_s, QString::number(place.x()), QString::number(place.y())});
}

/// How far the black around that place at the upper edge reaches: to both sides in one row, and down.
QSize blackAround(int x, int row = 2)
{
    const auto screen
        = QGuiApplication::primaryScreen()->grabWindow(0, 0, 0, screenSize.width(), screenSize.height()).toImage();
    const auto isBlack = [&](int column, int line) {
        return screen.valid(column, line) && screen.pixel(column, line) == qRgb(0, 0, 0);
    };
    QSize size(0, 0);
    int left = x;
    int right = x;
    while (left > 0 && isBlack(left - 1, row))
        --left;
    while (right < screen.width() - 1 && isBlack(right + 1, row))
        ++right;
    while (size.height() < screen.height() && isBlack(x, size.height()))
        size.rheight()++;
    size.setWidth(isBlack(x, row) ? right - left + 1 : 0);
    return size;
}

/// Whether the card of the notch that is there hangs down, whatever it holds.
bool isOpen(int x = middle)
{
    const int height = blackAround(x - 205).height(); // Beside all that it can hold, where the corner begins.
    return height > 190 && height < 200;
}

/// Lets the pointer leave the open card, and come back and leave anew where it left too early to count. True if the card
/// then folds away.
bool leaves()
{
    for (int i = 0; i < 10; ++i) {
        if (!movePointer(onTheNotch) || !movePointer(farAway))
            return false;
        if (QTest::qWaitFor([] { return !isOpen(); }, 2000))
            return true;
    }
    return false;
}

} // namespace

/// The notch interface as a user has it: a real pointer over a simulated notch.
class NotchRoadTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void theCardOpensUnderThePointerAndFoldsAwayAfterItHasLeft();
    void theCardStopsTheTimer();
    void withoutATimerItIsBlackAndTheCardSaysSo();
    void itStandsOverAFullScreenWindow();
    void itFollowsTheFirstScreenAsMonitorsComeAndGo();

private:
    static bool isCardShown() { return !findOnScreen(theme::stopRed).isEmpty(); }

    std::unique_ptr<AttachedKorvo> m_world;
};

void NotchRoadTest::init()
{
    QVERIFY(movePointer(farAway));
    m_world = std::make_unique<AttachedKorvo>();
    m_world->arguments = QStringList(u"--notch"_s);
    QVERIFY(m_world->startWorkspace());
    QVERIFY(m_world->startKorvo());
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(middle).height(), 40, patience); // A timer runs.
}

void NotchRoadTest::cleanup()
{
    m_world.reset();
    QTRY_COMPARE(blackAround(middle), QSize(0, 0));
}

void NotchRoadTest::theCardOpensUnderThePointerAndFoldsAwayAfterItHasLeft()
{
    QTRY_VERIFY(blackAround(middle, 33).width() >= 404); // Below ring and clock: the body but for its corners.
    QVERIFY(blackAround(middle, 33).width() <= 424);
    // The ring is there alone: the tray shows it until the first tick.
    const QRect placeOfRing(middle - 220 + 18, 0, 24, 40);
    QTRY_VERIFY_WITH_TIMEOUT(placeOfRing.contains(findOnScreen(theme::systemGreen)), patience);
    QVERIFY(movePointer(onTheNotch));
    QTRY_VERIFY_WITH_TIMEOUT(isOpen(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(isCardShown(), patience);
    QVERIFY(leaves());
    QTRY_VERIFY_WITH_TIMEOUT(!isCardShown(), patience);
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(middle).height(), 40, patience);
}

void NotchRoadTest::theCardStopsTheTimer()
{
    QVERIFY(movePointer(onTheNotch));
    QTRY_VERIFY_WITH_TIMEOUT(isOpen(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(isCardShown(), patience);
    QVERIFY(clickAt(findOnScreen(theme::stopRed).center()));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), QString(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(!isCardShown(), patience);
    QVERIFY(isOpen()); // The card stays, and says that nothing runs.
    QVERIFY(leaves());
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(middle).height(), 37, patience);
}

void NotchRoadTest::withoutATimerItIsBlackAndTheCardSaysSo()
{
    m_world->control("POST", u"stop-timers"_s);
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(middle).height(), 37, patience);
    QTRY_VERIFY(blackAround(middle).width() >= 184 && blackAround(middle).width() <= 200);
    QVERIFY(movePointer(onTheNotch));
    QTRY_VERIFY_WITH_TIMEOUT(isOpen(), patience);
    QVERIFY(!isCardShown());
}

void NotchRoadTest::itStandsOverAFullScreenWindow()
{
    XClient other;
    QVERIFY(other.showFocusedWindow());
    QVERIFY(other.makeFullScreen());
    QTRY_COMPARE(blackAround(middle).height(), 40);
    const auto screen = QGuiApplication::primaryScreen()->grabWindow().toImage();
    QCOMPARE(screen.pixelColor(300, 5), QColor(Qt::white));
    QVERIFY(movePointer(onTheNotch));
    QTRY_VERIFY_WITH_TIMEOUT(isOpen(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(isCardShown(), patience);
    QVERIFY(other.hasFocus());
    QVERIFY(clickAt({middle - 218, 150})); // Beside the body of the shape, but in its frame.
    QTRY_COMPARE(other.clickCount(), 1);
}

/// One monitor is cut in two, as far as programs can see.
void NotchRoadTest::itFollowsTheFirstScreenAsMonitorsComeAndGo()
{
    const auto xrandr = [](const QStringList &arguments) { return run(u"xrandr"_s, arguments); };
    QVERIFY(xrandr({u"--setmonitor"_s, u"left"_s, u"640/169x800/211+0+0"_s, u"screen"_s}));
    QVERIFY(xrandr({u"--setmonitor"_s, u"right"_s, u"640/169x800/211+640+0"_s, u"none"_s}));
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(320).height(), 37, patience); // Rebuilt, at rest until the next hover.
    QCOMPARE(blackAround(960).height(), 0);
    QVERIFY(movePointer({320, 15}));
    QTRY_VERIFY_WITH_TIMEOUT(isOpen(320), patience);
    QVERIFY(movePointer(farAway));
    QVERIFY(xrandr({u"--delmonitor"_s, u"right"_s}));
    QVERIFY(xrandr({u"--delmonitor"_s, u"left"_s}));
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(middle).height(), 37, patience);
    QTRY_COMPARE(blackAround(200).height(), 0);
    QVERIFY(m_world->log().contains(u"Screen changed — physical notch: true, useNotchUI: true"_s));
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    NotchRoadTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "NotchRoadTest.moc"
