#include "Platform/Linux/QtScreens.h"

#include "XSettings.h"

#include <QCursor>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

namespace {

bool xrandr(const QStringList &arguments)
{
    QProcess process; // What it has to say is of no use.
    process.start(u"xrandr"_s, arguments);
    return process.waitForFinished() && process.exitCode() == 0;
}

/// Makes two monitors of the one, as far as programs can see, side by side.
bool cutInTwo()
{
    return xrandr({u"--setmonitor"_s, u"left"_s, u"640/169x800/211+0+0"_s, u"screen"_s})
        && xrandr({u"--setmonitor"_s, u"right"_s, u"640/169x800/211+640+0"_s, u"none"_s});
}

} // namespace

class QtScreensTest : public QObject {
    Q_OBJECT
public:
    explicit QtScreensTest(XSettings &settings) : m_settings(settings) { }

private slots:
    void cleanup();

    void theScreenOfTheDesktopIsThere();
    void theMainScreenIsThatOfTheActiveWindow_data();
    void theMainScreenIsThatOfTheActiveWindow();
    void ofTwoScreensTheMainOneIsThatOfTheActiveWindow_data();
    void ofTwoScreensTheMainOneIsThatOfTheActiveWindow();
    void anExternalScreenOfALaptopWithAHousingHasNoInset();
    void pluggingAScreenIsToldOnceItHasSettled();
    void anotherFirstScreenIsTold();
    void anotherSizeIsTold();
    void anotherScaleIsTold();
    void thePointerIsWhereItIs();
    void aPointerThatIsNotKnownIsNowhere();

private:
    XSettings &m_settings;
};

void QtScreensTest::theScreenOfTheDesktopIsThere()
{
    const QRectF whole = QGuiApplication::primaryScreen()->geometry();
    const QList<Screen> all{{whole, 0, whole, u"screen"_s}}; // There is no bar.
    QCOMPARE(QtScreens(QStringList()).screens(), all);
    QVERIFY(!all.first().geometry.isEmpty());
}

void QtScreensTest::anExternalScreenOfALaptopWithAHousingHasNoInset()
{
    const auto screens = QtScreens({u"apple,j314s"_s}).screens();
    QCOMPARE(screens.size(), 1);
    QCOMPARE(screens.first().topSafeAreaInset, 0.0);
}

void QtScreensTest::theMainScreenIsThatOfTheActiveWindow_data()
{
    QTest::addColumn<std::optional<QRect>>("activeWindow");
    QTest::newRow("a window in the middle of the screen") << std::optional(QRect(300, 300, 200, 100));
    QTest::newRow("a window partly outside") << std::optional(QRect(-100, -50, 200, 100));
    QTest::newRow("a window outside of all screens: that of the pointer") << std::optional(QRect(-900, -900, 10, 10));
    QTest::newRow("an empty window: that of the pointer") << std::optional(QRect());
    QTest::newRow("no active window: that of the pointer") << std::optional<QRect>();
}

void QtScreensTest::theMainScreenIsThatOfTheActiveWindow()
{
    QFETCH(const std::optional<QRect>, activeWindow);
    const QtScreens screens(QStringList(), [&] { return activeWindow; });
    QCOMPARE(screens.mainScreen(), std::optional(screens.screens().first()));
    QVERIFY(!screens.mainScreen()->available.isEmpty());
}

void QtScreensTest::ofTwoScreensTheMainOneIsThatOfTheActiveWindow_data()
{
    QTest::addColumn<std::optional<QRect>>("activeWindow");
    QTest::addColumn<QPoint>("pointer");
    QTest::addColumn<QRectF>("screen");
    const QRectF left(0, 0, 640, 800);
    const QRectF right(640, 0, 640, 800);
    const QPoint onLeft(100, 100), onRight(1000, 100);
    QTest::newRow("the left one, with the pointer on the right")
        << std::optional(QRect(100, 300, 200, 100)) << onRight << left;
    QTest::newRow("the right one, with the pointer on the left")
        << std::optional(QRect(800, 300, 200, 100)) << onLeft << right;
    QTest::newRow("the one that shows most of it, the left")
        << std::optional(QRect(500, 300, 200, 100)) << onRight << left;
    QTest::newRow("the one that shows most of it, the right")
        << std::optional(QRect(600, 300, 200, 100)) << onLeft << right;
    QTest::newRow("no active window: that of the pointer, the left") << std::optional<QRect>() << onLeft << left;
    QTest::newRow("no active window: that of the pointer, the right") << std::optional<QRect>() << onRight << right;
}

void QtScreensTest::ofTwoScreensTheMainOneIsThatOfTheActiveWindow()
{
    QFETCH(const std::optional<QRect>, activeWindow);
    QFETCH(const QPoint, pointer);
    const QtScreens screens(QStringList(), [&] { return activeWindow; });
    QVERIFY(cutInTwo());
    QTRY_COMPARE(screens.screens().size(), 2);
    QCursor::setPos(pointer);
    QTRY_COMPARE(QCursor::pos(), pointer);
    const auto screen = screens.mainScreen().value_or(Screen()).geometry;
    QTEST(screen, "screen");
}

void QtScreensTest::cleanup()
{
    xrandr({u"--delmonitor"_s, u"left"_s});
    xrandr({u"--delmonitor"_s, u"right"_s});
    xrandr({u"--output"_s, u"screen"_s, u"--mode"_s, u"1280x800"_s});
    m_settings.setDpi(96);
    QTRY_COMPARE(QGuiApplication::screens().size(), 1);
    QTRY_COMPARE(QGuiApplication::primaryScreen()->geometry(), QRect(0, 0, 1280, 800));
}

void QtScreensTest::pluggingAScreenIsToldOnceItHasSettled()
{
    const QtScreens screens{QStringList()};
    QSignalSpy changed(&screens, &Screens::changed);
    QVERIFY(cutInTwo());
    QTRY_COMPARE(screens.screens().size(), 2);
    QTRY_VERIFY(!changed.isEmpty());
    QCOMPARE(screens.screens().first().geometry, QRectF(0, 0, 640, 800));
    QCOMPARE(screens.screens().last().geometry, QRectF(640, 0, 640, 800));
    changed.clear();
    QVERIFY(xrandr({u"--delmonitor"_s, u"right"_s}));
    QTRY_COMPARE(screens.screens().size(), 1);
    QVERIFY(changed.isEmpty()); // Not within the toolkit's own notice.
    QTRY_VERIFY(!changed.isEmpty());
}

void QtScreensTest::anotherFirstScreenIsTold()
{
    QVERIFY(xrandr({u"--setmonitor"_s, u"left"_s, u"640/169x800/211+0+0"_s, u"screen"_s}));
    QVERIFY(xrandr({u"--setmonitor"_s, u"right"_s, u"640/169x800/211+640+0"_s, u"none"_s}));
    QTRY_COMPARE(QGuiApplication::screens().size(), 2);
    const QtScreens screens{QStringList()};
    QSignalSpy changed(&screens, &Screens::changed);
    QCOMPARE(screens.screens().first().name, u"left"_s);
    QVERIFY(xrandr({u"--delmonitor"_s, u"right"_s}));
    QVERIFY(xrandr({u"--setmonitor"_s, u"*right"_s, u"640/169x800/211+640+0"_s, u"none"_s}));
    QTRY_COMPARE(screens.screens().first().name, u"right"_s);
    QCOMPARE(screens.screens().first().geometry, QRectF(640, 0, 640, 800));
    QCOMPARE(screens.screens().size(), 2);
    QTRY_VERIFY(!changed.isEmpty());
}

void QtScreensTest::anotherScaleIsTold()
{
    const QtScreens screens{QStringList()};
    QSignalSpy changed(&screens, &Screens::changed);
    m_settings.setDpi(192);
    QTRY_VERIFY(!changed.isEmpty());
    QCOMPARE(screens.screens().first().geometry, QRectF(0, 0, 640, 400));
}

void QtScreensTest::anotherSizeIsTold()
{
    const QtScreens screens{QStringList()};
    QSignalSpy changed(&screens, &Screens::changed);
    QVERIFY(xrandr({u"--output"_s, u"screen"_s, u"--mode"_s, u"2560x1600"_s}));
    QTRY_VERIFY(!changed.isEmpty());
    QCOMPARE(screens.screens().first().geometry, QRectF(0, 0, 2560, 1600));
}

void QtScreensTest::thePointerIsWhereItIs()
{
    QCursor::setPos(123, 45);
    QTRY_COMPARE(QtScreens(QStringList()).pointerPosition(), std::optional(QPointF(123, 45)));
    QCOMPARE(QtScreens(QStringList(), {}, [] { return true; }).pointerPosition(), std::optional(QPointF(123, 45)));
}

void QtScreensTest::aPointerThatIsNotKnownIsNowhere()
{
    QCOMPARE(QtScreens(QStringList(), {}, [] { return false; }).pointerPosition(), std::nullopt);
}

int main(int argc, char **argv)
{
    XSettings settings;
    QGuiApplication app(argc, argv);
    QtScreensTest test(settings);
    return QTest::qExec(&test, argc, argv);
}

#include "QtScreensTest.moc"
