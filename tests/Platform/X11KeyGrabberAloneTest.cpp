#include "Platform/X11/X11KeyGrabber.h"

#include "XDesktop.h"

#include <QGuiApplication>
#include <QTest>

#include <memory>

using namespace korvo;

/// Makes the application object itself, to see it go.
class X11KeyGrabberAloneTest : public QObject {
    Q_OBJECT
private slots:
    void aGrabberMayOutliveTheApplication_data();
    void aGrabberMayOutliveTheApplication();
};

void X11KeyGrabberAloneTest::aGrabberMayOutliveTheApplication_data()
{
    QTest::addColumn<bool>("isUninstalledFirst");
    QTest::newRow("and be taken down") << false;
    QTest::newRow("and be uninstalled") << true;
}

void X11KeyGrabberAloneTest::aGrabberMayOutliveTheApplication()
{
    QFETCH(bool, isUninstalledFirst);
    constexpr quint32 macN = 45;
    constexpr quint8 xN = 57;
    int argc = 1;
    char name[] = "test";
    char *argv[] = {name, nullptr};
    auto application = std::make_unique<QGuiApplication>(argc, argv);
    auto grabber = std::make_unique<X11KeyGrabber>();
    QCOMPARE(grabber->install(), 0);
    QCOMPARE(grabber->grab(macN, 0x300), 0);
    XClient other;
    QCOMPARE(other.grab(xN, xmod::super | xmod::shift), int(XCB_ACCESS));
    application.reset();
    if (isUninstalledFirst) {
        grabber->uninstall();
        QCOMPARE(grabber->grab(macN, 0x300), int(KeyGrabber::notSupported));
    }
    grabber.reset();
    QTRY_COMPARE(other.grab(xN, xmod::super | xmod::shift), 0); // It went with the connection.
}

QTEST_APPLESS_MAIN(X11KeyGrabberAloneTest)
#include "X11KeyGrabberAloneTest.moc"
