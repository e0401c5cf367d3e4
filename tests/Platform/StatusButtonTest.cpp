#include "Platform/Freedesktop/StatusButton.h"

#include <QTest>

using namespace korvo;

using Hint = std::optional<QPoint>;
using Bars = QList<BarScreen>;
Q_DECLARE_METATYPE(Hint)
Q_DECLARE_METATYPE(Bars)

class StatusButtonTest : public QObject {
    Q_OBJECT
private slots:
    void buttonIsASquareOnTheBar_data();
    void buttonIsASquareOnTheBar();
    void withoutAScreenThereIsAPlaceAllTheSame();
    void aPositionInDevicePixelsCountsFromItsScreen_data();
    void aPositionInDevicePixelsCountsFromItsScreen();
    void theBarIsTheFirstThatReservesRoom();
};

void StatusButtonTest::buttonIsASquareOnTheBar_data()
{
    QTest::addColumn<Hint>("hint");
    QTest::addColumn<QPoint>("pointer");
    QTest::addColumn<Bars>("screens");
    QTest::addColumn<QRect>("button");
    const QRect all(0, 0, 1280, 800);
    const Bars top{{all, QRect(0, 28, 1280, 772)}};
    const Bars bottom{{all, QRect(0, 0, 1280, 770)}};
    const Bars left{{all, QRect(40, 0, 1240, 800)}};
    const Bars right{{all, QRect(0, 0, 1250, 800)}};
    const Bars bare{{all, all}};
    const Bars sharp{{QRect(0, 0, 640, 400), QRect(0, 14, 640, 386), 2.0}};
    const Bars two{{all, QRect(0, 28, 1280, 772)}, {QRect(1280, 0, 1920, 1080), QRect(1280, 0, 1920, 1080)}};

    QTest::newRow("a hint under the pointer") << Hint({1100, 14}) << QPoint(1104, 10) << top << QRect(1086, 0, 28, 28);
    QTest::newRow("a hint far from the pointer means nothing")
        << Hint({0, 28}) << QPoint(1100, 10) << top << QRect(1086, 0, 28, 28);
    QTest::newRow("no hint") << Hint() << QPoint(1100, 10) << top << QRect(1086, 0, 28, 28);
    QTest::newRow("a hint beside the bar, the pointer on it")
        << Hint({1100, 40}) << QPoint(1100, 20) << top << QRect(1086, 0, 28, 28);
    QTest::newRow("at the end of the bar it stays on the screen")
        << Hint({1275, 14}) << QPoint(1275, 14) << top << QRect(1252, 0, 28, 28);
    QTest::newRow("at the start of the bar too") << Hint({3, 14}) << QPoint(3, 14) << top << QRect(0, 0, 28, 28);
    QTest::newRow("a bar at the bottom") << Hint({1000, 790}) << QPoint(1000, 790) << bottom << QRect(985, 770, 30, 30);
    QTest::newRow("an upright bar at the left") << Hint({20, 500}) << QPoint(20, 500) << left << QRect(0, 480, 40, 40);
    QTest::newRow("an upright bar at the right")
        << Hint({1260, 500}) << QPoint(1260, 500) << right << QRect(1250, 485, 30, 30);
    QTest::newRow("a click without the pointer goes to the end of the bar")
        << Hint({600, 400}) << QPoint(600, 400) << top << QRect(1252, 0, 28, 28);
    QTest::newRow("and to the lower end of an upright one")
        << Hint() << QPoint(600, 400) << left << QRect(0, 760, 40, 40);
    QTest::newRow("a bar that reserves no room is taken for a usual one")
        << Hint({1000, 8}) << QPoint(1000, 8) << bare << QRect(988, 0, 24, 24);
    QTest::newRow("such a one at the bottom")
        << Hint({1000, 790}) << QPoint(1000, 790) << bare << QRect(988, 776, 24, 24);
    QTest::newRow("nothing known: the upper right corner")
        << Hint() << QPoint(600, 400) << bare << QRect(1256, 0, 24, 24);
    QTest::newRow("a hint in device pixels of a sharp screen")
        << Hint({1000, 14}) << QPoint(502, 8) << sharp << QRect(493, 0, 14, 14);
    QTest::newRow("the second screen") << Hint({2000, 10}) << QPoint(2000, 10) << two << QRect(1988, 0, 24, 24);
    QTest::newRow("off all screens: the first screen's bar")
        << Hint() << QPoint(-500, -500) << two << QRect(1252, 0, 28, 28);
}

void StatusButtonTest::buttonIsASquareOnTheBar()
{
    QFETCH(Hint, hint);
    QFETCH(QPoint, pointer);
    QFETCH(Bars, screens);
    QTEST(statusButton(hint, pointer, screens), "button");
}

void StatusButtonTest::withoutAScreenThereIsAPlaceAllTheSame()
{
    QCOMPARE(statusButton(QPoint(5, 5), QPoint(7, 8), {}), QRect(7, 8, 1, 1));
}

void StatusButtonTest::aPositionInDevicePixelsCountsFromItsScreen_data()
{
    QTest::addColumn<QPoint>("native");
    QTest::addColumn<QPoint>("logical");
    QTest::newRow("a sharp screen") << QPoint(300, 100) << QPoint(150, 50);
    QTest::newRow("a plain screen right of it") << QPoint(2100, 100) << QPoint(2100, 100);
    QTest::newRow("off all screens") << QPoint(-3, -4) << QPoint(-3, -4);
}

void StatusButtonTest::aPositionInDevicePixelsCountsFromItsScreen()
{
    const Bars screens{{QRect(0, 0, 1000, 500), QRect(), 2.0}, {QRect(2000, 0, 1000, 500), QRect(), 1.0}};
    QFETCH(QPoint, native);
    QTEST(toLogical(native, screens), "logical");
}

void StatusButtonTest::theBarIsTheFirstThatReservesRoom()
{
    const QRect all(0, 0, 1280, 800);
    const QRect next(1280, 0, 1280, 800);
    QCOMPARE(desktopBar({{all, all}}), std::nullopt);
    QCOMPARE(desktopBar({{all, QRect()}}), std::nullopt);
    QCOMPARE(desktopBar({{all, all}, {next, QRect(1280, 30, 1280, 770)}}), QRect(1280, 0, 1280, 30));
}

QTEST_GUILESS_MAIN(StatusButtonTest)
#include "StatusButtonTest.moc"
