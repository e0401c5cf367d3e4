#include "EndToEnd/AttachedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Platform/TrayOnScreen.h"
#include "Platform/XDesktop.h"
#include "Views/Theme.h"

#include <QGuiApplication>
#include <QImage>
#include <QJsonArray>
#include <QPixmap>
#include <QScreen>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {
constexpr int patience = AttachedKorvo::patience;
constexpr QColor cardGround(10, 10, 10); // Of the quick-add panel.
constexpr QColor lockGround(0x70, 0x20, 0x90);

bool typeText(const QString &text)
{
    return run(u"xdotool"_s, {u"type"_s, u"--delay"_s, u"20"_s, text});
}

/// How much of the screen has that colour, in pixels.
int countOnScreen(const QColor &color)
{
    const auto picture = qApp->primaryScreen()->grabWindow(0).toImage().convertToFormat(QImage::Format_RGB32);
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        const auto *const line = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        count += int(std::count(line, line + picture.width(), color.rgb()));
    }
    return count;
}

int screenArea()
{
    const auto size = qApp->primaryScreen()->size();
    return size.width() * size.height();
}

} // namespace

/// A locked screen: a program that covers it all and has both the keyboard and the pointer to itself.
class ScreenLockTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void theTimerGoesOnBehindTheLockAndTheProgramAnswersAfterIt();
    void anOpenQuickAddPanelStaysAndLearnsNothingOfThePassword();
    void nothingShinesThroughTheLock_data();
    void nothingShinesThroughTheLock();

private:
    bool lock();
    bool unlock();
    int polls();
    static bool isPanelShown() { return !findOnScreen(theme::stopRed).isEmpty(); }
    static bool isQuickAddShown() { return findOnScreen(cardGround).width() > 500; }

    std::unique_ptr<AttachedKorvo> m_world;
    QProcess m_locker;
    QPoint m_ring; ///< The item's place in the tray.
};

void ScreenLockTest::init()
{
    m_world = std::make_unique<AttachedKorvo>();
    QVERIFY(m_world->startWorkspace());
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > 0, patience);
    QRect ring;
    QTRY_VERIFY_WITH_TIMEOUT(!(ring = findOnScreen(theme::systemGreen)).isEmpty(), patience);
    m_ring = ring.center();
}

void ScreenLockTest::cleanup()
{
    if (m_locker.state() != QProcess::NotRunning)
        unlock();
    const auto item = m_world->item();
    m_world.reset();
    QTRY_VERIFY(trayItemProperty(item, u"Id"_s).isEmpty()); // The tray has seen it go.
}

bool ScreenLockTest::lock()
{
    m_locker.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_locker.start(u"i3lock"_s, {u"--nofork"_s, u"--no-unlock-indicator"_s, u"--color"_s, lockGround.name().mid(1)});
    return m_locker.waitForStarted()
        && QTest::qWaitFor([] { return findOnScreen(lockGround).size() == qApp->primaryScreen()->size(); }, patience);
}

/// As the right password does: the locker ends.
bool ScreenLockTest::unlock()
{
    m_locker.terminate();
    return m_locker.waitForFinished() && QTest::qWaitFor([] { return findOnScreen(lockGround).isEmpty(); }, patience);
}

int ScreenLockTest::polls()
{
    const auto query = u"/databases/%1/query"_s.arg(m_world->workspace()["timeTrackerDBId"_L1].toString());
    const auto requests = m_world->control("GET", u"requests"_s)["requests"_L1].toArray();
    return int(std::count_if(requests.begin(), requests.end(), [&query](const auto &request) {
        return request.toObject()["target"_L1].toString().endsWith(query);
    }));
}

void ScreenLockTest::theTimerGoesOnBehindTheLockAndTheProgramAnswersAfterIt()
{
    QVERIFY(lock());
    const int before = polls();
    const int shown = m_world->seconds();
    QVERIFY(typeKeys(u"super+shift+n"_s)); // The keyboard and the pointer are the locker's now.
    QVERIFY(clickAt(m_ring));
    QTRY_VERIFY_WITH_TIMEOUT(polls() >= before + 3, patience);
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() >= shown + 3, patience);
    QCOMPARE(findOnScreen(lockGround).size(), qApp->primaryScreen()->size());
    m_world->control("POST", u"stop-timers"_s);
    m_world->control("POST", u"start-timer?task=Answer%20the%20printer"_s);
    QTRY_VERIFY_WITH_TIMEOUT(m_world->property(u"Title"_s).contains(u"Answer the printer"_s), patience);

    QVERIFY(unlock());
    QVERIFY(!isPanelShown());
    QVERIFY(!isQuickAddShown());
    QVERIFY(clickAt(m_ring));
    QTRY_VERIFY_WITH_TIMEOUT(isPanelShown(), patience);
    QVERIFY(clickAt(m_ring));
    QTRY_VERIFY_WITH_TIMEOUT(!isPanelShown(), patience);
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_VERIFY_WITH_TIMEOUT(isQuickAddShown(), patience);
    QVERIFY(typeText(u"Call the framer"_s));
    QVERIFY(typeKeys(u"Return"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), u"Call the framer"_s, patience);
    QVERIFY(!m_world->log().contains(u"[FAULT]"_s));
}

void ScreenLockTest::anOpenQuickAddPanelStaysAndLearnsNothingOfThePassword()
{
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_VERIFY_WITH_TIMEOUT(isQuickAddShown(), patience);
    QVERIFY(typeText(u"Call "_s));
    QVERIFY(lock());
    QVERIFY(typeText(u"secret"_s));
    QVERIFY(typeKeys(u"Return"_s));
    const int before = polls();
    QTRY_VERIFY_WITH_TIMEOUT(polls() >= before + 2, patience);
    QVERIFY(unlock());
    QTRY_VERIFY_WITH_TIMEOUT(isQuickAddShown(), patience);
    QVERIFY(typeText(u"the framer"_s));
    QVERIFY(typeKeys(u"Return"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), u"Call the framer"_s, patience);
}

void ScreenLockTest::nothingShinesThroughTheLock_data()
{
    QTest::addColumn<bool>("isNotch");
    QTest::newRow("of an open panel") << false;
    QTest::newRow("of the notch") << true;
}

void ScreenLockTest::nothingShinesThroughTheLock()
{
    QFETCH(const bool, isNotch);
    const auto isWhole = [] { return countOnScreen(lockGround) == screenArea(); };
    if (isNotch) {
        cleanup();
        m_world = std::make_unique<AttachedKorvo>();
        m_world->arguments = QStringList(u"--notch"_s);
        QVERIFY(m_world->startWorkspace());
        QVERIFY(m_world->startKorvo());
    } else {
        QVERIFY(clickAt(m_ring));
        QTRY_VERIFY_WITH_TIMEOUT(isPanelShown(), patience);
    }
    QVERIFY(lock());
    QTRY_VERIFY_WITH_TIMEOUT(isWhole(), patience);
    for (int count = 0, before = polls(); count < 3; ++count) {
        const int now = before + count + 1;
        QTRY_VERIFY_WITH_TIMEOUT(polls() >= now, patience);
        QVERIFY(isWhole()); // Also while what is behind it changes.
    }
    QVERIFY(unlock());
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    ScreenLockTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "ScreenLockTest.moc"
