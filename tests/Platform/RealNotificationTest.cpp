#include "Platform/Freedesktop/DesktopNotifications.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = 10000;

/// The windows on the screen that belong to the notification service, by their X identifiers.
QStringList bubbles()
{
    QProcess search;
    search.start(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--class"_s, u"xfce4-notifyd"_s});
    search.waitForFinished();
    return QString::fromLatin1(search.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

QImage screenshot(WId window = 0)
{
    return QGuiApplication::primaryScreen()->grabWindow(window).toImage();
}

/// Whether a picture has light and dark in it, as text on any ground has.
bool hasText(const QImage &picture)
{
    int darkest = 255;
    int lightest = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            darkest = qMin(darkest, qGray(picture.pixel(x, y)));
            lightest = qMax(lightest, qGray(picture.pixel(x, y)));
        }
    }
    return lightest - darkest > 100;
}

} // namespace

/// With the notification service of a real desktop.
class RealNotificationTest : public QObject {
    Q_OBJECT
private slots:
    void aBubbleAppearsOnTheScreen();
};

void RealNotificationTest::aBubbleAppearsOnTheScreen()
{
    QCOMPARE(bubbles(), QStringList());
    const auto before = screenshot();
    DesktopNotifications notifications;
    notifications.requestAuthorization();
    notifications.add({.identifier = u"timerReminder-1"_s,
                       .title = u"Timer Running"_s,
                       .body = u"Your timer has been running for over 8 hours. <A & B>"_s});
    QTRY_COMPARE_WITH_TIMEOUT(bubbles().size(), 1, patience);
    const auto window = WId(bubbles().value(0).toULongLong());
    QTRY_VERIFY_WITH_TIMEOUT(hasText(screenshot(window)), patience);
    QTRY_VERIFY_WITH_TIMEOUT(screenshot() != before, patience);
}

QTEST_MAIN(RealNotificationTest)
#include "RealNotificationTest.moc"
