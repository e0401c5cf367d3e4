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
constexpr int patienceForWords = 5000; // Of a window that is there, and stays for about ten seconds.

/// The windows on the screen that belong to the notification service, by their X identifiers.
QStringList bubbles()
{
    QProcess search;
    search.start(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--class"_s, u"xfce4-notifyd"_s});
    search.waitForFinished();
    return QString::fromLatin1(search.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

/// The one window among them that `former` has not; 0 until it is there.
WId newBubble(const QStringList &former)
{
    auto found = bubbles();
    for (const auto &window : former)
        found.removeAll(window);
    return found.size() == 1 ? WId(found.first().toULongLong()) : 0;
}

QImage screenshot(WId window)
{
    return QGuiApplication::primaryScreen()->grabWindow(window).toImage();
}

/// The rows, from the first to the last, in which two pictures differ: all of them if their sizes do.
struct Rows {
    int first = -1; ///< None if the pictures are the same.
    int last = -1;

    bool isEmpty() const { return first < 0; }
};

Rows differingRows(const QImage &one, const QImage &other)
{
    if (one.size() != other.size())
        return {0, one.height() - 1};
    Rows rows;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            if (one.pixel(x, y) == other.pixel(x, y))
                continue;
            rows.first = rows.isEmpty() ? y : rows.first;
            rows.last = y;
            break;
        }
    }
    return rows;
}

} // namespace

/// With the notification service of a real desktop.
class RealNotificationTest : public QObject {
    Q_OBJECT
private slots:
    void aBubbleShowsTitleAndBody();

private:
    /// The window of a new bubble; 0 if none comes.
    WId show(const QString &title, const QString &body);

    DesktopNotifications m_notifications;
};

WId RealNotificationTest::show(const QString &title, const QString &body)
{
    const auto former = bubbles();
    m_notifications.add({.identifier = u"timerReminder-1"_s, .title = title, .body = body});
    WId window = 0;
    return QTest::qWaitFor([&] { return (window = newBubble(former)) != 0; }, patience) ? window : 0;
}

/// A bubble with other words in its title differs from the first in rows above those where one with another body does.
/// The others say the same words in another order, which makes them as wide and high.
void RealNotificationTest::aBubbleShowsTitleAndBody()
{
    QCOMPARE(bubbles(), QStringList());
    m_notifications.requestAuthorization();
    const auto title = u"Timer Running"_s;
    const auto body = u"Over 8 hours <A & B>"_s;
    const auto window = show(title, body);
    const auto twin = show(title, body);
    const auto otherTitle = show(u"Running Timer"_s, body);
    const auto otherBody = show(title, u"<A & B> Over 8 hours"_s);
    QVERIFY(window && twin && otherTitle && otherBody);

    Rows same, titleRows, bodyRows;
    const auto areDrawn = [&] {
        const auto picture = screenshot(window);
        same = differingRows(picture, screenshot(twin));
        titleRows = differingRows(picture, screenshot(otherTitle));
        bodyRows = differingRows(picture, screenshot(otherBody));
        // Bubbles go by themselves, and a window that has gone has no picture.
        const bool areThere = bubbles().size() == 4;
        return areThere && same.isEmpty() && !titleRows.isEmpty() && !bodyRows.isEmpty()
            && titleRows.last < bodyRows.first;
    };
    const bool isDrawn = QTest::qWaitFor(areDrawn, patienceForWords); // A window may be there before its words.
    QVERIFY2(isDrawn,
             qPrintable(u"title in rows %1 to %2, body in %3 to %4"_s.arg(titleRows.first)
                            .arg(titleRows.last)
                            .arg(bodyRows.first)
                            .arg(bodyRows.last)));
}

QTEST_MAIN(RealNotificationTest)
#include "RealNotificationTest.moc"
