#include "Platform/Platform.h"
#include "Platform/StatusItem.h"
#include "Platform/X11/X11MouseMonitor.h"
#include "TrayOnScreen.h"

#include <QCursor>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = 15000;
constexpr int rightButton = 3;
const QColor green(0x10, 0xd0, 0x20);
const QPoint desktop(700, 500);

/// A place on the tray's bar where nothing is.
QPoint emptyPlaceOnBar()
{
    const QRect item = findOnScreen(green);
    return {item.left() - 150, item.center().y()};
}

} // namespace

/// Presses on the bar of a real tray, and on the program's own item there.
class MouseMonitorTrayTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void aPressOnTheBarIsReportedAfterAMoment();
    void aClickOnTheStatusItemIsNotReported();
    void theMenuOfTheStatusItemIsNotReported();

private:
    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<StatusItem> m_item;
    std::unique_ptr<MouseMonitor> m_monitor;
    std::unique_ptr<QSignalSpy> m_presses;
};

void MouseMonitorTrayTest::initTestCase()
{
    m_platform = Platform::create();
}

void MouseMonitorTrayTest::init()
{
    QCursor::setPos(desktop);
    m_item = m_platform->makeStatusItem();
    m_item->setImage(coloredImage(green));
    m_item->setMenu({{u"Open Korvo"_s, true, {}}, {}, {u"Stop"_s, false, {}}});
    QTRY_VERIFY_WITH_TIMEOUT(m_item->isShown() && !findOnScreen(green).isEmpty(), patience);
    m_monitor = m_platform->makeMouseMonitor();
    m_presses = std::make_unique<QSignalSpy>(m_monitor.get(), &MouseMonitor::mouseDown);
}

void MouseMonitorTrayTest::cleanup()
{
    m_presses.reset();
    m_monitor.reset();
    m_item.reset();
    QTRY_VERIFY_WITH_TIMEOUT(findOnScreen(green).isEmpty(), patience);
}

void MouseMonitorTrayTest::aPressOnTheBarIsReportedAfterAMoment()
{
    QVERIFY(clickMeanwhile(emptyPlaceOnBar()));
    QTRY_COMPARE(m_presses->count(), 1);
    // One elsewhere right after it stands for both.
    QVERIFY(clickMeanwhile(emptyPlaceOnBar()) && clickMeanwhile(desktop));
    QTRY_COMPARE(m_presses->count(), 2);
    QTest::qWait(2 * X11MouseMonitor::patience.count()); // In which the first one would come.
    QCOMPARE(m_presses->count(), 2);
}

void MouseMonitorTrayTest::aClickOnTheStatusItemIsNotReported()
{
    QSignalSpy activated(m_item.get(), &StatusItem::activated);
    for (int count = 1; count <= 3; ++count) {
        QVERIFY(clickMeanwhile(findOnScreen(green).center()));
        QTRY_COMPARE_WITH_TIMEOUT(activated.count(), count, patience);
        QTest::qWait(2 * X11MouseMonitor::patience.count()); // In which a report would come, and beyond a double click.
        QCOMPARE(m_presses->count(), 0);
    }
}

void MouseMonitorTrayTest::theMenuOfTheStatusItemIsNotReported()
{
    QSignalSpy opened(m_item.get(), &StatusItem::menuOpened);
    // A tray may need some time until it has read the menu; till then it opens its own.
    const auto open = [&] {
        m_presses->clear();
        return pressKeys({u"Escape"_s}) && clickMeanwhile(findOnScreen(green).center(), rightButton)
            && QTest::qWaitFor([&] { return !opened.isEmpty(); }, 1000);
    };
    QTRY_VERIFY_WITH_TIMEOUT(!opened.isEmpty() || open(), patience);
    QTest::qWait(2 * X11MouseMonitor::patience.count());
    QCOMPARE(m_presses->count(), 0);
    QVERIFY(pressKeys({u"Escape"_s}));
}

QTEST_MAIN(MouseMonitorTrayTest)
#include "MouseMonitorTrayTest.moc"
