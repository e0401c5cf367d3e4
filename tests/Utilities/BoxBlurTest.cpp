#include "Utilities/BoxBlur.h"

#include <QByteArray>
#include <QTest>

using namespace korvo;

class BoxBlurTest : public QObject {
    Q_OBJECT
private slots:
    void onePassIsTheMeanOfTheNeighbours();
    void threePassesReachThreeTimesAsFar();
    void bytesBehindTheEndOfARowAreLeftAlone();
    void nothingIsToBeBlurred();
};

void BoxBlurTest::onePassIsTheMeanOfTheNeighbours()
{
    unsigned char row[]{0, 0, 90, 0, 0};
    boxBlur(row, 5, 1, 5, 1, 1);
    // Along the column the row has no neighbours but the 0 outside.
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(row), 5), QByteArray("\0\12\12\12\0", 5));
}

void BoxBlurTest::threePassesReachThreeTimesAsFar()
{
    constexpr int side = 9;
    unsigned char square[side * side]{};
    square[4 * side + 4] = 255;
    boxBlur(square, side, side, side, 1);
    QVERIFY(square[4 * side + 4] > square[4 * side + 3]);
    QCOMPARE(square[4 * side + 3], square[4 * side + 5]); // The same to all sides.
    QCOMPARE(square[3 * side + 4], square[5 * side + 4]);
    QVERIFY(square[4 * side + 2] > 0);
    QCOMPARE(square[4 * side], 0);
}

void BoxBlurTest::bytesBehindTheEndOfARowAreLeftAlone()
{
    unsigned char rows[]{200, 200, 7, 7, 200, 200, 7, 7};
    boxBlur(rows, 2, 2, 4, 1);
    for (const int index : {2, 3, 6, 7})
        QCOMPARE(rows[index], 7);
    QVERIFY(rows[0] < 200);
}

void BoxBlurTest::nothingIsToBeBlurred()
{
    boxBlur(nullptr, 0, 0, 0, 5);
}

QTEST_APPLESS_MAIN(BoxBlurTest)
#include "BoxBlurTest.moc"
