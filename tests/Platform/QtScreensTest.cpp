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

QTEST_MAIN(QtScreensTest)
#include "QtScreensTest.moc"
