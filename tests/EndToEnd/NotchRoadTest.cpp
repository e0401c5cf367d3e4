#include "EndToEnd/AttachedKorvo.h"
#include "Platform/TrayOnScreen.h"
#include "Platform/XDesktop.h"
#include "Platform/XSettings.h"
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

double scale()
{
    return qGuiApp->devicePixelRatio();
}

QPoint toDevice(const QPoint &point)
{
    return point * scale();
}

bool movePointer(const QPoint &place)
{
    const QPoint point = toDevice(place);
    return run(u"xdotool"_s, {u"mousemove"_s, QString::number(point.x()), QString::number(point.y())});
}

/// The whole desktop, in device pixels, whatever monitors it is cut into.
QImage screenshot()
{
    const auto screens = QGuiApplication::screens();
    for (auto *screen : screens) {
        if (screen->geometry().topLeft() == QPoint())
            return screen->grabWindow(0, 0, 0, screenSize.width(), screenSize.height()).toImage();
    }
    return {};
}

/// How far the black around that place at the upper edge reaches: to both sides in one row, and down.
QSize blackAround(int x, int row = 2)
{
    const auto screen = screenshot();
    const auto isBlack = [&](int column, int line) {
        return screen.valid(column, line) && screen.pixel(column, line) == qRgb(0, 0, 0);
    };
    const QPoint place = toDevice({x, row});
    QSize size(0, 0);
    int left = place.x();
    int right = place.x();
    while (left > 0 && isBlack(left - 1, place.y()))
        --left;
    while (right < screen.width() - 1 && isBlack(right + 1, place.y()))
        ++right;
    while (size.height() < screen.height() && isBlack(place.x(), size.height()))
        size.rheight()++;
    size.setWidth(isBlack(place.x(), place.y()) ? right - left + 1 : 0);
    return size / scale();
}

bool xrandr(const QStringList &arguments)
{
    return run(u"xrandr"_s, arguments);
}

/// The two halves of the desktop as monitors, as far as programs can see: that of a laptop and one beside it.
class Monitors {
public:
    Monitors() = default;
    ~Monitors()
    {
        remove(u"external"_s);
        remove(u"laptop"_s);
    }
    Q_DISABLE_COPY_MOVE(Monitors)

    bool addLaptop(bool isFirst = false) { return add(u"laptop"_s, 0, u"screen"_s, isFirst); }
    bool addExternal(bool isFirst = false) { return add(u"external"_s, 640, u"none"_s, isFirst); }

    bool remove(const QString &name) { return m_names.removeOne(name) && xrandr({u"--delmonitor"_s, name}); }

private:
    bool add(const QString &name, int left, const QString &output, bool isFirst)
    {
        m_names.append(name);
        const QPoint corner = toDevice({left, 0});
        const QPoint size = toDevice({640, 800});
        return xrandr({u"--setmonitor"_s, isFirst ? u'*' + name : name,
                       u"%1/169x%2/211+%3+0"_s.arg(size.x()).arg(size.y()).arg(corner.x()), output});
    }

    QStringList m_names;
};

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
    void itStaysOnItsScreenAsAnotherComesAndGoes();
    void itGoesForGoodWhenAnExternalScreenBecomesTheFirst();
    void itIsRebuiltAtAnotherScale();

private:
    /// Brings Korvo up around its notch, with a timer.
    bool start();
    static bool isCardShown() { return !findOnScreen(theme::stopRed).isEmpty(); }

    std::unique_ptr<AttachedKorvo> m_world;
};

void NotchRoadTest::init()
{
    QVERIFY(movePointer(farAway));
    QVERIFY(start());
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(middle).height(), 40, patience); // A timer runs.
}

bool NotchRoadTest::start()
{
    m_world = std::make_unique<AttachedKorvo>();
    m_world->arguments = QStringList(u"--notch"_s);
    return m_world->startWorkspace() && m_world->startKorvo();
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
    const QRect placeOfRing(toDevice({middle - 220 + 18, 0}), QSize(24, 40) * scale());
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
    QCOMPARE(screenshot().pixelColor(toDevice({300, 5})), QColor(Qt::white));
    QVERIFY(movePointer(onTheNotch));
    QTRY_VERIFY_WITH_TIMEOUT(isOpen(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(isCardShown(), patience);
    QVERIFY(other.hasFocus());
    QVERIFY(clickAt(toDevice({middle - 218, 150}))); // Beside the body of the shape, but in its frame.
    QTRY_COMPARE(other.clickCount(), 1);
}

void NotchRoadTest::itStaysOnItsScreenAsAnotherComesAndGoes()
{
    Monitors monitors;
    m_world.reset();
    QVERIFY(monitors.addLaptop());
    QVERIFY(start());
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(320).height(), 40, patience);
    QVERIFY(monitors.addExternal());
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(320).height(), 37, patience); // Rebuilt, at rest until the next hover.
    QCOMPARE(blackAround(960).height(), 0);
    QVERIFY(monitors.remove(u"external"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->log().count(u"Screen changed — physical notch: true, useNotchUI: true"_s), 2,
                              patience);
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(320).height(), 37, patience);
    QVERIFY(movePointer({320, 15}));
    QTRY_VERIFY_WITH_TIMEOUT(isOpen(320), patience);
}

void NotchRoadTest::itGoesForGoodWhenAnExternalScreenBecomesTheFirst()
{
    Monitors monitors;
    m_world.reset();
    QVERIFY(monitors.addLaptop(true));
    QVERIFY(monitors.addExternal());
    QVERIFY(start());
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(320).height(), 40, patience);
    QTRY_COMPARE_WITH_TIMEOUT(m_world->seconds(), -1, patience); // The notch has the time, so the tray hasn't.

    QVERIFY(monitors.remove(u"external"_s));
    QVERIFY(monitors.addExternal(true));
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() >= 0, patience);
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(320), QSize(0, 0), patience);
    QCOMPARE(blackAround(960), QSize(0, 0));
    QVERIFY(m_world->log().contains(u"Screen changed — physical notch: false, useNotchUI: true"_s));

    QVERIFY(monitors.remove(u"laptop"_s));
    QVERIFY(monitors.addLaptop(true));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->seconds(), -1, patience);
    QVERIFY(m_world->log().trimmed().endsWith(u"Screen changed — physical notch: true, useNotchUI: true"_s));
    QCOMPARE(blackAround(320), QSize(0, 0)); // Not before the next launch.
}

void NotchRoadTest::itIsRebuiltAtAnotherScale()
{
    m_world.reset();
    XSettings settings;
    QVERIFY(start());
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(middle).height(), 40, patience);
    settings.setDpi(192);
    QTRY_COMPARE_WITH_TIMEOUT(blackAround(middle).height(), 2 * 37, patience);
    QVERIFY(movePointer(onTheNotch));
    // At the edge of the body, beside all that the card holds.
    QTRY_VERIFY_WITH_TIMEOUT(blackAround(middle - 2 * 205).height() > 2 * 190, patience);
    QVERIFY(blackAround(middle - 2 * 205).height() < 2 * 200);
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    NotchRoadTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "NotchRoadTest.moc"
