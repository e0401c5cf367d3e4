#include "Views/ProgressRing.h"

#include "Views/Theme.h"

#include <QImage>
#include <QPainter>
#include <QTest>
#include <QtMath>

using namespace korvo;

namespace {

constexpr int scale = 4;

QImage pictureOf(ProgressRing &ring)
{
    QImage picture(ring.size() * scale, QImage::Format_ARGB32);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    ring.render(&picture, {}, {}, QWidget::DrawChildren);
    return picture;
}

/// The colour on the circle, `degrees` clockwise from the top, `outwards` points from its line's middle.
QColor colorAt(const QImage &picture, double size, double degrees, double outwards = 0)
{
    const double radians = qDegreesToRadians(degrees);
    const double radius = (size / 2 + outwards) * scale;
    const double middle = picture.width() / 2.0;
    return picture.pixelColor(int(middle + radius * std::sin(radians)), int(middle - radius * std::cos(radians)));
}

bool isTrack(const QColor &color)
{
    return qAbs(color.alphaF() - 0.15) < 0.02;
}

} // namespace

class ProgressRingTest : public QObject {
    Q_OBJECT
private slots:
    void oneSecondBeforeTheHourIsAnAlmostFullRingInGreen();
    void anHourIsAnEmptyRingInCyan();
    void fourHoursAreRedForGood();
    void aStartInTheFutureIsAnEmptyGreenRing();
    void theFirstSecondShowsASpeck();
    void theArcRunsClockwiseFromTheTop();
    void theLineIsAsWideAsItShouldBe_data();
    void theLineIsAsWideAsItShouldBe();
    void theArcGlowsAndTheTrackDoesNot();
    void onlyAVisibleDifferenceIsPainted();
};

void ProgressRingTest::oneSecondBeforeTheHourIsAnAlmostFullRingInGreen()
{
    ProgressRing ring(32, 3);
    ring.resize(ring.sizeHint());
    ring.setElapsed(3599);
    QCOMPARE(ring.color(), QColor(theme::systemGreen));
    const auto picture = pictureOf(ring);
    for (const int degrees : {1, 90, 180, 270, 355})
        QCOMPARE(colorAt(picture, 32, degrees), QColor(theme::systemGreen));
}

void ProgressRingTest::anHourIsAnEmptyRingInCyan()
{
    ProgressRing ring(32, 3);
    ring.resize(ring.sizeHint());
    ring.setElapsed(3600);
    QCOMPARE(ring.progress(), 0.0);
    QCOMPARE(ring.color(), QColor(theme::systemCyan));
    const auto picture = pictureOf(ring);
    for (const int degrees : {0, 90, 180, 270})
        QVERIFY(isTrack(colorAt(picture, 32, degrees)));
}

void ProgressRingTest::fourHoursAreRedForGood()
{
    ProgressRing ring(32, 3);
    for (const double elapsed : {14400.0, 14401.0, 100000.0}) {
        ring.setElapsed(elapsed);
        QCOMPARE(ring.color(), QColor(theme::systemRed));
    }
}

void ProgressRingTest::aStartInTheFutureIsAnEmptyGreenRing()
{
    ProgressRing ring(32, 3);
    ring.resize(ring.sizeHint());
    ring.setElapsed(-900);
    QCOMPARE(ring.progress(), 0.0);
    QCOMPARE(ring.color(), QColor(theme::systemGreen));
    const auto picture = pictureOf(ring);
    for (const int degrees : {0, 90, 180, 270})
        QVERIFY(isTrack(colorAt(picture, 32, degrees)));
}

void ProgressRingTest::theFirstSecondShowsASpeck()
{
    ProgressRing ring(32, 3);
    ring.resize(ring.sizeHint());
    ring.setElapsed(1);
    const auto picture = pictureOf(ring);
    QCOMPARE(colorAt(picture, 32, 0), QColor(theme::systemGreen));
    QVERIFY(isTrack(colorAt(picture, 32, 90)));
}

void ProgressRingTest::theArcRunsClockwiseFromTheTop()
{
    ProgressRing ring(20, 2.5);
    ring.resize(ring.sizeHint());
    ring.setElapsed(900);
    const auto picture = pictureOf(ring);
    QCOMPARE(colorAt(picture, 20, 5), QColor(theme::systemGreen));
    QCOMPARE(colorAt(picture, 20, 85), QColor(theme::systemGreen));
    QVERIFY(isTrack(colorAt(picture, 20, 180)));
    QVERIFY(isTrack(colorAt(picture, 20, 270)));
}

void ProgressRingTest::theLineIsAsWideAsItShouldBe_data()
{
    QTest::addColumn<double>("size");
    QTest::addColumn<double>("lineWidth");
    QTest::newRow("in the panel") << 32.0 << 3.0;
    QTest::newRow("in the notch") << 20.0 << 2.5;
    QTest::newRow("in the notch's card") << 36.0 << 3.0;
}

void ProgressRingTest::theLineIsAsWideAsItShouldBe()
{
    QFETCH(double, size);
    QFETCH(double, lineWidth);
    ProgressRing ring(size, lineWidth);
    QCOMPARE(ring.sizeHint().width() - 2 * ring.overflow(), int(size)); // What the layout sees.
    ring.resize(ring.sizeHint());
    ring.setElapsed(0);
    const auto picture = pictureOf(ring);
    for (const double outwards : {-0.4 * lineWidth, 0.4 * lineWidth})
        QVERIFY(isTrack(colorAt(picture, size, 180, outwards)));
    for (const double outwards : {-0.7 * lineWidth, 0.7 * lineWidth})
        QCOMPARE(colorAt(picture, size, 180, outwards).alpha(), 0);
}

void ProgressRingTest::theArcGlowsAndTheTrackDoesNot()
{
    ProgressRing ring(32, 3);
    ring.resize(ring.sizeHint());
    ring.setElapsed(1800);
    const auto picture = pictureOf(ring);
    const auto near = colorAt(picture, 32, 90, 2);
    const auto far = colorAt(picture, 32, 90, 4);
    QVERIFY(near.alpha() > far.alpha());
    QVERIFY(far.alpha() > 0);
    QCOMPARE(colorAt(picture, 32, 270, 2).alpha(), 0);
}

void ProgressRingTest::onlyAVisibleDifferenceIsPainted()
{
    struct CountingRing : ProgressRing {
        using ProgressRing::ProgressRing;
        void paintEvent(QPaintEvent *event) override
        {
            ++paintCount;
            ProgressRing::paintEvent(event);
        }
        int paintCount = 0;
    };
    CountingRing ring(32, 3);
    ring.setElapsed(1800);
    ring.show();
    QVERIFY(QTest::qWaitForWindowExposed(&ring));
    QTRY_VERIFY(ring.paintCount > 0);
    QCoreApplication::processEvents();
    ring.paintCount = 0;
    ring.setElapsed(1800.5);
    QCoreApplication::processEvents();
    QCOMPARE(ring.paintCount, 0);
    ring.setElapsed(1900);
    QTRY_COMPARE(ring.paintCount, 1);
    ring.setElapsed(5500); // The same place an hour later.
    QTRY_COMPARE(ring.paintCount, 2);
}

QTEST_MAIN(ProgressRingTest)
#include "ProgressRingTest.moc"
