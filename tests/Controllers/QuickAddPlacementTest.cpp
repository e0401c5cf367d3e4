#include "Controllers/QuickAddPlacement.h"

#include <QTest>

using namespace korvo;

class QuickAddPlacementTest : public QObject {
    Q_OBJECT
private slots:
    void theLowerLeftCornerIs_data();
    void theLowerLeftCornerIs();
    void withoutAScreenThePanelIsInTheCornerOfTheDesktop();
};

void QuickAddPlacementTest::theLowerLeftCornerIs_data()
{
    QTest::addColumn<Screen>("screen");
    QTest::addColumn<QPoint>("corner");
    // Counted from the bottom, the room begins at 25, its middle is at 462.5, and the corner 87.5 above that, at 550.
    QTest::newRow("at (460, 550) from the bottom of a screen of 900 with a bar of 25 at its bottom")
        << Screen{{0, 0, 1440, 900}, 0, {0, 0, 1440, 875}} << QPoint(460, 900 - 550);
    QTest::newRow("25 lower where the bar is at the top")
        << Screen{{0, 0, 1440, 900}, 0, {0, 25, 1440, 875}} << QPoint(460, 375);
    QTest::newRow("on a screen beside the first one")
        << Screen{{1280, 100, 1920, 1080}, 0, {1280, 100, 1920, 1080}} << QPoint(1980, 532);
    QTest::newRow("left of a small screen, half on each side")
        << Screen{{0, 0, 480, 320}, 0, {0, 0, 480, 320}} << QPoint(-20, 128);
    QTest::newRow("by the whole screen where no bar's room is known")
        << Screen{{0, 0, 1000, 1000}, 0, {}} << QPoint(240, 400);
}

void QuickAddPlacementTest::theLowerLeftCornerIs()
{
    QFETCH(const Screen, screen);
    QTEST(quickAddLowerLeft(screen), "corner");
}

void QuickAddPlacementTest::withoutAScreenThePanelIsInTheCornerOfTheDesktop()
{
    QCOMPARE(quickAddLowerLeft(std::nullopt), QPoint(0, 90)); // From 0 to 90.
}

QTEST_APPLESS_MAIN(QuickAddPlacementTest)
#include "QuickAddPlacementTest.moc"
