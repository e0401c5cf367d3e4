#include "Platform/X11/X11Panel.h"

#include "TrayOnScreen.h"
#include "XDesktop.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QWidget>
#include <QWindow>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QColor red(0xd0, 0x20, 0x10);
const QColor desktop(0x3a, 0x5a, 0x7a);
const QRect room(180, 0, 440, 200);
const QRect small(300, -10, 200, 46);
const QRect large(180, -10, 440, 210);

/// All of one colour.
class Plate : public QWidget {
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), red); }
};

double scale()
{
    return qApp->devicePixelRatio();
}

QPoint toDevice(const QPointF &point)
{
    return {int(point.x() * scale()), int(point.y() * scale())};
}

/// What is seen of a frame, in device pixels.
QRect onScreen(const QRect &frame)
{
    const QRect seen = frame & room;
    return {toDevice(seen.topLeft()), seen.size() * scale()};
}

bool movePointer(const QPointF &point)
{
    const auto place = toDevice(point);
    return run(u"xdotool"_s, {u"mousemove"_s, QString::number(place.x()), QString::number(place.y())});
}

} // namespace

/// A panel whose frame moves within a window that stands still.
class PanelRoomTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void theFrameMovesWithinAWindowThatStandsStill();
    void whatIsAboveTheRoomIsNotThere();
    void aFrameOutsideOfTheRoomIsNotSeen();
    void clicksInTheRoomBesideTheFrameGoThrough();
    void thePointerEntersAndLeavesTheShape();
    void aShapeThatGrowsUnderThePointerIsEntered();
    void aShapeThatShrinksAwayFromThePointerIsLeft();
    void contentShownWhereThePointerWasLastIsNotEntered();
    void aPanelThatIsTakenAwayIsNotLeft();

private:
    Plate &show(const QRect &frame);

    std::unique_ptr<X11Panel> m_panel;
    std::unique_ptr<QSignalSpy> m_entered;
    std::unique_ptr<QSignalSpy> m_left;
};

void PanelRoomTest::init()
{
    QVERIFY(movePointer({100, 400}));
    QTRY_COMPARE(findOnScreen(red), QRect());
}

void PanelRoomTest::cleanup()
{
    m_panel.reset();
}

Plate &PanelRoomTest::show(const QRect &frame)
{
    m_panel = std::make_unique<X11Panel>(PanelStyle{.hasShadow = false, .isAboveEverything = true});
    m_panel->setRoom(room);
    m_panel->setFrame(frame);
    auto content = std::make_unique<Plate>();
    auto *const plate = content.get();
    m_panel->setContent(std::move(content));
    m_entered = std::make_unique<QSignalSpy>(m_panel.get(), &Panel::pointerEntered);
    m_left = std::make_unique<QSignalSpy>(m_panel.get(), &Panel::pointerLeft);
    m_panel->orderFront();
    return *plate;
}

void PanelRoomTest::theFrameMovesWithinAWindowThatStandsStill()
{
    const auto &plate = show(small);
    QTRY_COMPARE(findOnScreen(red), onScreen(small));
    const QRect window = plate.window()->geometry();
    QCOMPARE(window, room);
    for (const auto &frame : {large, QRect(220, -10, 360, 100), small}) {
        m_panel->setFrame(frame);
        QCOMPARE(plate.size(), frame.size());
        QCOMPARE(plate.window()->geometry(), window);
        QTRY_COMPARE(findOnScreen(red), onScreen(frame));
    }
    m_panel->setRoom({});
    QTRY_COMPARE(plate.window()->geometry(), small);
}

void PanelRoomTest::whatIsAboveTheRoomIsNotThere()
{
    const auto &plate = show(large);
    QTRY_COMPARE(findOnScreen(red), onScreen(large));
    QCOMPARE(plate.mapToGlobal(QPoint(0, 0)), large.topLeft()); // But it is laid out as if.
}

void PanelRoomTest::aFrameOutsideOfTheRoomIsNotSeen()
{
    show(small);
    QTRY_COMPARE(findOnScreen(red), onScreen(small));
    m_panel->setFrame({300, 300, 200, 46});
    QTRY_COMPARE(findOnScreen(red), QRect());
}

void PanelRoomTest::clicksInTheRoomBesideTheFrameGoThrough()
{
    XClient other;
    QVERIFY(other.showFocusedWindow());
    QVERIFY(other.makeFullScreen());
    show(small);
    QTRY_COMPARE(findOnScreen(red), onScreen(small));
    QVERIFY(clickAt(toDevice({250, 20})));
    QTRY_COMPARE(other.clickCount(), 1);
    QVERIFY(clickAt(toDevice({400, 100})));
    QTRY_COMPARE(other.clickCount(), 2);
    QVERIFY(clickAt(toDevice({400, 20}))); // On the panel.
    m_panel->setFrame(large);
    QTRY_COMPARE(findOnScreen(red), onScreen(large));
    QVERIFY(clickAt(toDevice({250, 20}))); // On the panel by now.
    QVERIFY(clickAt(toDevice({400, 250})));
    QTRY_COMPARE(other.clickCount(), 3);
}

void PanelRoomTest::thePointerEntersAndLeavesTheShape()
{
    show(small);
    QTRY_COMPARE(findOnScreen(red), onScreen(small));
    QPainterPath half;
    half.addRect(0, 0, 100, 46);
    m_panel->setShape(half);
    QTRY_COMPARE(findOnScreen(red), onScreen({300, -10, 100, 46}));
    QVERIFY(movePointer({450, 20})); // In the frame, beside the shape.
    QVERIFY(movePointer({350, 20}));
    QTRY_COMPARE(m_entered->count(), 1);
    QCOMPARE(m_left->count(), 0);
    QVERIFY(movePointer({450, 20}));
    QTRY_COMPARE(m_left->count(), 1);
    QCOMPARE(m_entered->count(), 1);
}

void PanelRoomTest::aShapeThatGrowsUnderThePointerIsEntered()
{
    show(small);
    QTRY_COMPARE(findOnScreen(red), onScreen(small));
    QVERIFY(movePointer({400, 100}));
    QCOMPARE(m_entered->count(), 0);
    m_panel->setFrame(large);
    QTRY_COMPARE(m_entered->count(), 1);
}

void PanelRoomTest::aShapeThatShrinksAwayFromThePointerIsLeft()
{
    show(large);
    QTRY_COMPARE(findOnScreen(red), onScreen(large));
    QVERIFY(movePointer({400, 100}));
    QTRY_COMPARE(m_entered->count(), 1);
    m_panel->setFrame(small);
    QTRY_COMPARE(m_left->count(), 1);
}

/// The toolkit believes the pointer where it was when it left.
void PanelRoomTest::contentShownWhereThePointerWasLastIsNotEntered()
{
    auto &plate = show(large);
    QTRY_COMPARE(findOnScreen(red), onScreen(large));
    auto *first = new QWidget(&plate);
    first->setGeometry(plate.rect());
    first->show();
    QVERIFY(movePointer({400, 20}));
    QTRY_COMPARE(m_entered->count(), 1);
    QVERIFY(movePointer({100, 400}));
    QTRY_COMPARE(m_left->count(), 1);
    delete first;
    m_panel->setFrame(small);
    auto *next = new QWidget(&plate);
    next->setGeometry(plate.rect());
    next->show();
    QTRY_COMPARE(findOnScreen(red), onScreen(small));
    QCOMPARE(m_entered->count(), 1);
}

void PanelRoomTest::aPanelThatIsTakenAwayIsNotLeft()
{
    show(small);
    QTRY_COMPARE(findOnScreen(red), onScreen(small));
    QVERIFY(movePointer({400, 20}));
    QTRY_COMPARE(m_entered->count(), 1);
    m_panel->orderOut();
    QTRY_COMPARE(findOnScreen(red), QRect());
    QCOMPARE(m_left->count(), 0);
}

QTEST_MAIN(PanelRoomTest)
#include "PanelRoomTest.moc"
