#include "EndToEnd/AttachedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Platform/TrayOnScreen.h"
#include "Platform/XDesktop.h"
#include "Views/Theme.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = AttachedKorvo::patience;
constexpr QColor panelGround(20, 20, 20);
constexpr QColor cardGround(10, 10, 10); // Of the quick-add panel.
constexpr QRect left(0, 0, 800, 800);
constexpr QRect right(800, 0, 800, 800);

/// Where on both monitors that colour is, as far as it goes; empty if it is nowhere.
QRect findOnDesktop(const QColor &color)
{
    QRect place;
    for (QScreen *screen : QGuiApplication::screens()) {
        const QImage image = screen->grabWindow().toImage();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixel(x, y) == color.rgb())
                    place |= QRect(screen->geometry().topLeft() + QPoint(x, y), QSize(1, 1));
            }
        }
    }
    return place;
}

} // namespace

/// Korvo on a desktop with two monitors side by side.
class TwoMonitorsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void thePanelOpensOnTheMonitorOfTheTray();
    void quickAddOpensOnTheMonitorOfTheActiveWindow_data();
    void quickAddOpensOnTheMonitorOfTheActiveWindow();

private:
    std::unique_ptr<AttachedKorvo> m_world;
};

void TwoMonitorsTest::initTestCase()
{
    QVERIFY(run(u"xrandr"_s, {u"--setmonitor"_s, u"left"_s, u"800/211x800/211+0+0"_s, u"screen"_s}));
    QVERIFY(run(u"xrandr"_s, {u"--setmonitor"_s, u"right"_s, u"800/211x800/211+800+0"_s, u"none"_s}));
    QTRY_COMPARE(QGuiApplication::screens().size(), 2);
}

void TwoMonitorsTest::init()
{
    m_world = std::make_unique<AttachedKorvo>();
    QVERIFY(m_world->startWorkspace());
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > 0, patience);
}

void TwoMonitorsTest::cleanup()
{
    m_world.reset();
    QTRY_VERIFY(findOnDesktop(theme::systemGreen).isEmpty()); // The tray has seen it go.
}

void TwoMonitorsTest::thePanelOpensOnTheMonitorOfTheTray()
{
    QRect ring;
    QTRY_VERIFY_WITH_TIMEOUT(!(ring = findOnDesktop(theme::systemGreen)).isEmpty(), patience);
    const auto monitor = left.contains(ring.center()) ? left : right;
    QVERIFY(clickAt(ring.center()));
    QTRY_VERIFY_WITH_TIMEOUT(!findOnDesktop(theme::stopRed).isEmpty(), patience);
    QVERIFY(monitor.contains(findOnDesktop(panelGround)));
}

void TwoMonitorsTest::quickAddOpensOnTheMonitorOfTheActiveWindow_data()
{
    QTest::addColumn<QRect>("window");
    QTest::addColumn<QRect>("monitor");
    QTest::newRow("on the left") << QRect(100, 500, 300, 200) << left;
    QTest::newRow("on the right") << QRect(1100, 500, 300, 200) << right;
    QTest::newRow("on both, mostly on the right") << QRect(750, 500, 300, 200) << right;
}

void TwoMonitorsTest::quickAddOpensOnTheMonitorOfTheActiveWindow()
{
    QFETCH(const QRect, window);
    QFETCH(const QRect, monitor);
    const QRect other = monitor == left ? right : left;
    QVERIFY(run(u"xdotool"_s, {u"mousemove"_s, QString::number(other.center().x()), u"300"_s})); // Doesn't matter.
    XClient program;
    QVERIFY(program.showFocusedWindow(window));
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_VERIFY_WITH_TIMEOUT(findOnDesktop(cardGround).width() > 500, patience);
    const auto card = findOnDesktop(cardGround);
    QVERIFY(monitor.contains(card));
    QVERIFY(qAbs(card.center().x() - monitor.center().x()) <= 2);
    QVERIFY(typeKeys(u"Escape"_s));
    QTRY_VERIFY(program.hasFocus());
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    TwoMonitorsTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "TwoMonitorsTest.moc"
