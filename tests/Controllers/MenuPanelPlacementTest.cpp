#include "Controllers/MenuPanelPlacement.h"

#include <QTest>

using namespace korvo;

namespace {

/// A screen whose only bar is 24 points high, at its top or at its bottom.
Screen screenWithBar(const QRectF &geometry, bool atTheBottom = false)
{
    return {geometry, 0, atTheBottom ? geometry.adjusted(0, 0, 0, -24) : geometry.adjusted(0, 24, 0, 0)};
}

const QRectF laptop(0, 0, 1280, 800);

} // namespace

class MenuPanelPlacementTest : public QObject {
    Q_OBJECT
private slots:
    void thePanelStands_data();
    void thePanelStands();
};

void MenuPanelPlacementTest::thePanelStands_data()
{
    QTest::addColumn<QRect>("button");
    QTest::addColumn<QList<Screen>>("screens");
    QTest::addColumn<QRect>("frame");
    QTest::addColumn<bool>("opensUpwards");
    const QList<Screen> top{screenWithBar(laptop)};
    const QList<Screen> bottom{screenWithBar(laptop, true)};
    const QList<Screen> two{screenWithBar(laptop), screenWithBar({1280, 0, 1920, 1080})};
    const QList<Screen> none;

    QTest::newRow("centred under the item, 4 points below it")
        << QRect(700, 0, 24, 24) << top << QRect(542, 28, 340, 420) << false;
    QTest::newRow("under an item of odd width, at most half a point beside the middle")
        << QRect(700, 0, 101, 24) << top << QRect(581, 28, 340, 420) << false;
    QTest::newRow("above an item in a bar at the bottom, with the same gap")
        << QRect(700, 776, 24, 24) << bottom << QRect(542, 352, 340, 420) << true;
    QTest::newRow("slid back from the right edge")
        << QRect(1256, 0, 24, 24) << top << QRect(940, 28, 340, 420) << false;
    QTest::newRow("slid back from the left edge") << QRect(0, 0, 24, 24) << top << QRect(0, 28, 340, 420) << false;
    QTest::newRow("slid out of a bar at the left edge, beside which the item stands")
        << QRect(0, 700, 48, 48) << QList<Screen>{{laptop, 0, QRectF(48, 0, 1232, 800)}} << QRect(48, 276, 340, 420)
        << true;
    QTest::newRow("on the screen of its item") << QRect(3176, 0, 24, 24) << two << QRect(2860, 28, 340, 420) << false;
    QTest::newRow("on a screen left of the first one")
        << QRect(-100, 0, 24, 24) << QList<Screen>{screenWithBar(laptop), screenWithBar({-1280, 0, 1280, 800})}
        << QRect(-340, 28, 340, 420) << false;
    QTest::newRow("at the top of a screen that is too low for it")
        << QRect(300, 0, 24, 24) << QList<Screen>{screenWithBar({0, 0, 640, 400})} << QRect(142, 24, 340, 420) << false;
    QTest::newRow("under the item where no bar's room is known")
        << QRect(700, 0, 24, 24) << QList<Screen>{{laptop, 0, {}}} << QRect(542, 28, 340, 420) << false;
    QTest::newRow("under the item where there is no screen")
        << QRect(10, 0, 24, 24) << none << QRect(-148, 28, 340, 420) << false;
}

void MenuPanelPlacementTest::thePanelStands()
{
    QFETCH(const QRect, button);
    QFETCH(const QList<Screen>, screens);
    const auto placement = placeMenuPanel(button, screens);
    QTEST(placement.frame, "frame");
    QTEST(placement.opensUpwards, "opensUpwards");
}

QTEST_MAIN(MenuPanelPlacementTest)
#include "MenuPanelPlacementTest.moc"
