#include "Platform/Linux/NotchInset.h"

#include <QTemporaryFile>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

class NotchInsetTest : public QObject {
    Q_OBJECT
private slots:
    void insetIsTheStripAboveSixteenByTen_data();
    void insetIsTheStripAboveSixteenByTen();
    void deviceTreeNamesTheMachine();
    void aMachineWithoutDeviceTreeHasNoName();
};

void NotchInsetTest::insetIsTheStripAboveSixteenByTen_data()
{
    QTest::addColumn<QStringList>("machine");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QSize>("nativeSize");
    QTest::addColumn<double>("scale");
    QTest::addColumn<double>("inset");
    const QStringList pro14{u"apple,j314s"_s, u"apple,t6000"_s, u"apple,arm-platform"_s};
    const QStringList pro16{u"apple,j316c"_s, u"apple,t6001"_s, u"apple,arm-platform"_s};
    const QStringList air13{u"apple,j413"_s, u"apple,t8112"_s, u"apple,arm-platform"_s};
    const QStringList air15{u"apple,j415"_s, u"apple,t8112"_s, u"apple,arm-platform"_s};
    const QStringList flatAir{u"apple,j313"_s, u"apple,t8103"_s, u"apple,arm-platform"_s};
    QTest::newRow("14 inch MacBook Pro") << pro14 << u"eDP-1"_s << QSize(3024, 1964) << 1.0 << 74.0;
    QTest::newRow("14 inch MacBook Pro at double scale") << pro14 << u"eDP-1"_s << QSize(3024, 1964) << 2.0 << 37.0;
    QTest::newRow("16 inch MacBook Pro") << pro16 << u"eDP-1"_s << QSize(3456, 2234) << 2.0 << 37.0;
    QTest::newRow("13 inch MacBook Air of 2022") << air13 << u"eDP-1"_s << QSize(2560, 1664) << 2.0 << 32.0;
    QTest::newRow("15 inch MacBook Air") << air15 << u"eDP-1"_s << QSize(2880, 1864) << 2.0 << 32.0;
    QTest::newRow("the driver hides the strip") << pro14 << u"eDP-1"_s << QSize(3024, 1890) << 2.0 << 0.0;
    QTest::newRow("a mode below 16:10") << pro14 << u"eDP-1"_s << QSize(1920, 1080) << 1.0 << 0.0;
    QTest::newRow("a 4:3 mode has no strip") << pro14 << u"eDP-1"_s << QSize(1024, 768) << 1.0 << 0.0;
    QTest::newRow("the panel turned on its side") << pro14 << u"eDP-1"_s << QSize(1964, 3024) << 2.0 << 0.0;
    QTest::newRow("an external screen") << pro14 << u"HDMI-1"_s << QSize(3024, 1964) << 1.0 << 0.0;
    QTest::newRow("an Apple laptop without a housing") << flatAir << u"eDP-1"_s << QSize(2560, 1664) << 1.0 << 0.0;
    QTest::newRow("another maker") << QStringList{u"lenovo,x13s"_s} << u"eDP-1"_s << QSize(3024, 1964) << 1.0 << 0.0;
    QTest::newRow("another maker with a name that ends alike")
        << QStringList{u"pineapple,j314s"_s} << u"eDP-1"_s << QSize(3024, 1964) << 1.0 << 0.0;
    QTest::newRow("no device tree") << QStringList() << u"eDP-1"_s << QSize(3024, 1964) << 1.0 << 0.0;
    QTest::newRow("no screen size") << pro14 << u"eDP-1"_s << QSize() << 1.0 << 0.0;
    QTest::newRow("no scale") << pro14 << u"eDP-1"_s << QSize(3024, 1964) << 0.0 << 0.0;
}

void NotchInsetTest::insetIsTheStripAboveSixteenByTen()
{
    QFETCH(QStringList, machine);
    QFETCH(QString, output);
    QFETCH(QSize, nativeSize);
    QFETCH(double, scale);
    QTEST(notchInset(machine, output, nativeSize, scale), "inset");
}

void NotchInsetTest::deviceTreeNamesTheMachine()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("apple,j314s\0apple,t6000\0apple,arm-platform\0"_ba);
    file.close();
    const QStringList names{u"apple,j314s"_s, u"apple,t6000"_s, u"apple,arm-platform"_s};
    QCOMPARE(deviceTreeCompatible(file.fileName()), names);
}

void NotchInsetTest::aMachineWithoutDeviceTreeHasNoName()
{
    QCOMPARE(deviceTreeCompatible(u"/nonexistent/compatible"_s), QStringList());
}

QTEST_GUILESS_MAIN(NotchInsetTest)
#include "NotchInsetTest.moc"
