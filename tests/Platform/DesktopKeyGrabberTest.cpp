#include "Platform/Desktop/DesktopKeyGrabber.h"

#include "Platform/Freedesktop/PortalKeyGrabber.h"
#include "Platform/X11/X11KeyGrabber.h"

#include <QTest>

using namespace korvo;

class DesktopKeyGrabberTest : public QObject {
    Q_OBJECT
private slots:
    void theSessionDecidesWhoGrabs_data();
    void theSessionDecidesWhoGrabs();
};

void DesktopKeyGrabberTest::theSessionDecidesWhoGrabs_data()
{
    QTest::addColumn<QByteArray>("sessionType");
    QTest::addColumn<QByteArray>("waylandDisplay");
    QTest::addColumn<bool>("isPortal");
    QTest::newRow("an X11 session") << QByteArray("x11") << QByteArray() << false;
    QTest::newRow("a session of unknown type") << QByteArray() << QByteArray() << false;
    QTest::newRow("a Wayland session") << QByteArray("wayland") << QByteArray("wayland-0") << true;
    QTest::newRow("a Wayland session by its type alone") << QByteArray("wayland") << QByteArray() << true;
    QTest::newRow("a Wayland display in a session of another type")
        << QByteArray("tty") << QByteArray("wayland-1") << true;
}

void DesktopKeyGrabberTest::theSessionDecidesWhoGrabs()
{
    QFETCH(QByteArray, sessionType);
    QFETCH(QByteArray, waylandDisplay);
    QFETCH(bool, isPortal);
    qputenv("XDG_SESSION_TYPE", sessionType);
    qputenv("WAYLAND_DISPLAY", waylandDisplay);
    QCOMPARE(isWaylandSession(), isPortal);
    const auto grabber = makeDesktopKeyGrabber();
    QCOMPARE(dynamic_cast<PortalKeyGrabber *>(grabber.get()) != nullptr, isPortal);
    QCOMPARE(dynamic_cast<X11KeyGrabber *>(grabber.get()) != nullptr, !isPortal);
}

QTEST_GUILESS_MAIN(DesktopKeyGrabberTest)

#include "DesktopKeyGrabberTest.moc"
