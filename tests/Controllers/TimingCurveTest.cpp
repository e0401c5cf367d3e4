#include "Controllers/TimingCurve.h"

#include <QTest>

using namespace korvo;

class TimingCurveTest : public QObject {
    Q_OBJECT
private slots:
    void itBeginsAndEndsWithTheMovement();
    void aStraightCurveFollowsTime();
    void theWayAtAPartOfTheTime_data();
    void theWayAtAPartOfTheTime();
    void itNeverGoesBack();
};

constexpr TimingCurve panelCurve{{0.32, 0.72}, {0, 1}};

void TimingCurveTest::itBeginsAndEndsWithTheMovement()
{
    QCOMPARE(panelCurve.at(0), 0.0);
    QCOMPARE(panelCurve.at(1), 1.0);
    QCOMPARE(panelCurve.at(-0.5), 0.0);
    QCOMPARE(panelCurve.at(1.5), 1.0);
}

void TimingCurveTest::aStraightCurveFollowsTime()
{
    const TimingCurve straight{{0.25, 0.25}, {0.75, 0.75}};
    for (const double time : {0.1, 0.25, 0.5, 0.9})
        QVERIFY(qAbs(straight.at(time) - time) < 1e-6);
}

/// Points of the curve at its parameter t: time 3(1-t)²t·0.32 + t³, way 3(1-t)²t·0.72 + 3(1-t)t² + t³.
void TimingCurveTest::theWayAtAPartOfTheTime_data()
{
    QTest::addColumn<double>("time");
    QTest::addColumn<double>("way");
    QTest::newRow("t 0.25") << 0.150625 << 0.46;
    QTest::newRow("t 0.5") << 0.245 << 0.77;
    QTest::newRow("t 0.75") << 0.466875 << 0.945;
}

void TimingCurveTest::theWayAtAPartOfTheTime()
{
    QFETCH(const double, time);
    QFETCH(const double, way);
    QVERIFY2(qAbs(panelCurve.at(time) - way) < 1e-5, qPrintable(QString::number(panelCurve.at(time))));
}

void TimingCurveTest::itNeverGoesBack()
{
    double last = 0;
    for (int i = 1; i <= 1000; ++i) {
        const double way = panelCurve.at(i / 1000.0);
        QVERIFY(way >= last && way <= 1);
        last = way;
    }
}

QTEST_APPLESS_MAIN(TimingCurveTest)
#include "TimingCurveTest.moc"
