#include "Platform/Linux/QtScreens.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

class QtScreensTest : public QObject {
    Q_OBJECT
private slots:
    void theScreenOfTheDesktopIsThere();
    void theMainScreenIsThatOfTheActiveWindow_data();
    void theMainScreenIsThatOfTheActiveWindow();
    void anExternalScreenOfALaptopWithAHousingHasNoInset();
};

void QtScreensTest::theScreenOfTheDesktopIsThere()
{
    const QRectF whole = QGuiApplication::primaryScreen()->geometry();
    const QList<Screen> all{{whole, 0, whole}}; // There is no bar.
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

QTEST_MAIN(QtScreensTest)
#include "QtScreensTest.moc"
