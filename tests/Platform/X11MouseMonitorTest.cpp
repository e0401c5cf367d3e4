#include "Platform/X11/X11MouseMonitor.h"

#include "Platform/X11/X11Panel.h"
#include "TrayOnScreen.h"
#include "XDesktop.h"

#include <QCursor>
#include <QGuiApplication>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int rightButton = 3;
const QRect frame(440, 140, 120, 80);
const QPoint desktop(700, 500);

} // namespace

class X11MouseMonitorTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aPressOnTheDesktopIsReported_data();
    void aPressOnTheDesktopIsReported();
    void theMiddleButtonIsNotReported();
    void aPressInAnotherProgramIsReported();
    void aPressInThePanelIsNotReported();
    void aPressThatClosesThePanelIsNotReported();
    void aPressInThePanelsShadowIsReported();
    void aPressBesideAnOpenMenuIsNotReported();
    void withoutAMonitorNothingIsReported();
    void whoIsToldMayDeleteTheMonitor();

private:
    std::unique_ptr<X11Panel> makePanel(std::unique_ptr<QWidget> content);
    bool isQuiet();

    std::unique_ptr<X11MouseMonitor> m_monitor;
    std::unique_ptr<QSignalSpy> m_presses;
};

void X11MouseMonitorTest::init()
{
    QCursor::setPos(desktop);
    m_monitor = std::make_unique<X11MouseMonitor>();
    m_presses = std::make_unique<QSignalSpy>(m_monitor.get(), &MouseMonitor::mouseDown);
}

void X11MouseMonitorTest::cleanup()
{
    m_presses.reset();
    m_monitor.reset();
}

std::unique_ptr<X11Panel> X11MouseMonitorTest::makePanel(std::unique_ptr<QWidget> content)
{
    auto panel = std::make_unique<X11Panel>(PanelStyle());
    panel->setContent(std::move(content));
    panel->setFrame(frame);
    panel->orderFront();
    return panel;
}

/// Whether nothing has been reported up to now, which a press on the desktop shows: it comes after all the others.
bool X11MouseMonitorTest::isQuiet()
{
    return m_presses->isEmpty() && clickAt(desktop) && QTest::qWaitFor([this] { return !m_presses->isEmpty(); })
        && m_presses->takeFirst().isEmpty() && m_presses->isEmpty();
}

void X11MouseMonitorTest::aPressOnTheDesktopIsReported_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("left") << 1;
    QTest::newRow("right") << rightButton;
}

void X11MouseMonitorTest::aPressOnTheDesktopIsReported()
{
    QFETCH(int, button);
    for (int count = 1; count <= 3; ++count) {
        QVERIFY(clickAt(desktop, button));
        QTRY_COMPARE(m_presses->count(), count);
    }
}

void X11MouseMonitorTest::theMiddleButtonIsNotReported()
{
    QVERIFY(clickAt(desktop, 2));
    QVERIFY(clickAt(desktop, 4)); // The wheel.
    QVERIFY(isQuiet());
}

void X11MouseMonitorTest::aPressInAnotherProgramIsReported()
{
    XClient other;
    QVERIFY(other.showFocusedWindow({300, 300, 200, 200}));
    QVERIFY(clickAt({400, 420}));
    QTRY_COMPARE(m_presses->count(), 1);
    QTRY_COMPARE(other.clickCount(), 1); // Which gets it all the same.
}

void X11MouseMonitorTest::aPressInThePanelIsNotReported()
{
    auto content = std::make_unique<QPushButton>(u"Stop"_s);
    QSignalSpy clicked(content.get(), &QPushButton::clicked);
    const auto panel = makePanel(std::move(content));
    QTRY_VERIFY(QGuiApplication::topLevelAt(frame.center()));
    QVERIFY(clickAt(frame.center()));
    QTRY_COMPARE(clicked.count(), 1);
    QVERIFY(clickAt(frame.center(), rightButton));
    QVERIFY(isQuiet());
}

void X11MouseMonitorTest::aPressThatClosesThePanelIsNotReported()
{
    auto content = std::make_unique<QPushButton>(u"Stop"_s);
    const QPointer<QPushButton> button(content.get());
    auto panel = makePanel(std::move(content));
    connect(button, &QPushButton::pressed, this, [&] { panel.reset(); });
    QTRY_VERIFY(QGuiApplication::topLevelAt(frame.center()));
    QVERIFY(clickAt(frame.center()));
    QTRY_VERIFY(!button);
    QVERIFY(isQuiet());
}

void X11MouseMonitorTest::aPressInThePanelsShadowIsReported()
{
    const auto panel = makePanel(std::make_unique<QPushButton>());
    QTRY_VERIFY(QGuiApplication::topLevelAt(frame.center()));
    QVERIFY(clickAt({frame.center().x(), frame.bottom() + 5}));
    QTRY_COMPARE(m_presses->count(), 1);
}

void X11MouseMonitorTest::aPressBesideAnOpenMenuIsNotReported()
{
    const auto panel = makePanel(std::make_unique<QPushButton>());
    QMenu menu;
    menu.addAction(u"One"_s);
    menu.popup(frame.center());
    QTRY_VERIFY(menu.windowHandle()->isExposed());
    QVERIFY(clickAt({300, 600})); // Which closes the menu, and does nothing else.
    QTRY_VERIFY(!menu.isVisible());
    QVERIFY(isQuiet());
}

void X11MouseMonitorTest::withoutAMonitorNothingIsReported()
{
    int count = 0;
    auto other = std::make_unique<X11MouseMonitor>();
    connect(other.get(), &MouseMonitor::mouseDown, this, [&] { ++count; });
    QVERIFY(isQuiet());
    QTRY_COMPARE(count, 1);
    other.reset();
    QVERIFY(isQuiet());
    QCOMPARE(count, 1);
}

void X11MouseMonitorTest::whoIsToldMayDeleteTheMonitor()
{
    connect(m_monitor.get(), &MouseMonitor::mouseDown, this, [this] { m_monitor.reset(); });
    QVERIFY(clickAt(desktop));
    QVERIFY(clickAt(desktop));
    QTRY_VERIFY(!m_monitor);
    QCOMPARE(m_presses->count(), 1);
}

QTEST_MAIN(X11MouseMonitorTest)
#include "X11MouseMonitorTest.moc"
