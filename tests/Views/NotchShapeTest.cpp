#include "Views/NotchShape.h"

#include <QTest>

#include <iterator>

using namespace korvo;

namespace {

using Element = QPainterPath::Element;

/// Where each step of a path ends: lines at their point, curves at their last one.
QList<QPointF> endsOf(const QPainterPath &path)
{
    QList<QPointF> ends;
    for (int i = 0; i < path.elementCount(); ++i) {
        const Element element = path.elementAt(i);
        if (element.type == QPainterPath::CurveToElement)
            i += 2;
        ends.append(path.elementAt(i));
    }
    return ends;
}

} // namespace

class NotchShapeTest : public QObject {
    Q_OBJECT
private slots:
    void itPassesThroughItsPointsInOrder();
    void defaultsOfEarAndOverflow();
    void curvesAreQuadraticWithTheirControlPointInTheCorner();
    void earsBendInwards();
    void largerCornersLeaveTheEars();
    void aRectangleThatIsTooSmallCrossesItself_data();
    void aRectangleThatIsTooSmallCrossesItself();
    void leftAndTopAreTheOriginWhateverTheRectangle();
    void theSameNumbersGiveTheSamePath();
};

void NotchShapeTest::itPassesThroughItsPointsInOrder()
{
    const QList<QPointF> expected{{0, 0},   {200, 0}, {200, 10}, {192, 18}, {192, 33}, {178, 47},
                                  {22, 47}, {8, 33},  {8, 18},   {0, 10},   {0, 0}};
    QCOMPARE(endsOf(NotchShape{.cornerRadius = 14}.path({0, 0, 200, 47})), expected);
}

void NotchShapeTest::defaultsOfEarAndOverflow()
{
    const NotchShape shape{.cornerRadius = 14};
    QCOMPARE(shape.earRadius, 8.0);
    QCOMPARE(shape.overflow, 10.0);
}

/// A quadratic curve from a over c to b is the cubic one whose controls are two thirds of the way to c.
void NotchShapeTest::curvesAreQuadraticWithTheirControlPointInTheCorner()
{
    const auto path = NotchShape{.cornerRadius = 14}.path({0, 0, 200, 47});
    const QList<QPointF> corners{{192, 10}, {192, 47}, {8, 47}, {8, 10}};
    QList<QPointF> found;
    for (int i = 1; i < path.elementCount(); ++i) {
        if (path.elementAt(i).type != QPainterPath::CurveToElement)
            continue;
        const QPointF from = path.elementAt(i - 1);
        const QPointF to = path.elementAt(i + 2);
        const QPointF corner = from + (QPointF(path.elementAt(i)) - from) * 1.5;
        QVERIFY(QLineF(corner, to + (QPointF(path.elementAt(i + 1)) - to) * 1.5).length() < 1e-9);
        found.append(corner);
    }
    QCOMPARE(found.size(), corners.size());
    for (int i = 0; i < corners.size(); ++i)
        QVERIFY(QLineF(found.at(i), corners.at(i)).length() < 1e-9);
}

void NotchShapeTest::earsBendInwards()
{
    const auto path = NotchShape{.cornerRadius = 14}.path({0, 0, 200, 47});
    QVERIFY(path.contains(QPointF(1, 9)));   // The strip has the whole width,
    QVERIFY(!path.contains(QPointF(2, 16))); // an ear is cut off below it,
    QVERIFY(path.contains(QPointF(7, 11)));  // but for what leads over to the body,
    QVERIFY(!path.contains(QPointF(7, 30))); // which is narrower by an ear on each side.
    QVERIFY(path.contains(QPointF(9, 30)));
    QVERIFY(!path.contains(QPointF(193, 30)));
    QVERIFY(!path.contains(QPointF(9, 46)));
}

void NotchShapeTest::largerCornersLeaveTheEars()
{
    const auto ends = endsOf(NotchShape{.cornerRadius = 20}.path({0, 0, 440, 210}));
    const QList<QPointF> expected{{0, 0},    {440, 0}, {440, 10}, {432, 18}, {432, 190}, {412, 210},
                                  {28, 210}, {8, 190}, {8, 18},   {0, 10},   {0, 0}};
    QCOMPARE(ends, expected);
}

void NotchShapeTest::aRectangleThatIsTooSmallCrossesItself_data()
{
    QTest::addColumn<QRectF>("rect");
    QTest::newRow("narrower than twice ear and corner") << QRectF(0, 0, 40, 47);
    QTest::newRow("lower than strip, ear and corner") << QRectF(0, 0, 200, 20);
}

void NotchShapeTest::aRectangleThatIsTooSmallCrossesItself()
{
    QFETCH(const QRectF, rect);
    const auto ends = endsOf(NotchShape{.cornerRadius = 14}.path(rect));
    QCOMPARE(ends.size(), 11);
    QCOMPARE(ends.at(5), QPointF(rect.width() - 22, rect.height())); // No radius gives way.
    QCOMPARE(ends.at(6), QPointF(22, rect.height()));
    QCOMPARE(ends.at(7), QPointF(8, rect.height() - 14));
}

void NotchShapeTest::leftAndTopAreTheOriginWhateverTheRectangle()
{
    const auto ends = endsOf(NotchShape{.cornerRadius = 14}.path({50, 20, 150, 27}));
    QCOMPARE(ends.first(), QPointF(0, 0));
    QCOMPARE(ends.at(1), QPointF(200, 0));
    QCOMPARE(ends.at(5), QPointF(178, 47));
}

void NotchShapeTest::theSameNumbersGiveTheSamePath()
{
    const NotchShape shape{.cornerRadius = 14};
    QCOMPARE(shape.path({0, 0, 300, 100}), shape.path({0, 0, 300, 100}));
    QVERIFY(shape.path({0, 0, 300, 100}) != shape.path({0, 0, 300, 101}));
}

QTEST_APPLESS_MAIN(NotchShapeTest)
#include "NotchShapeTest.moc"
