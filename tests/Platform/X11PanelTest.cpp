#include "Platform/X11/X11Panel.h"

#include "TrayOnScreen.h"
#include "XDesktop.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <array>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QColor red(0xd0, 0x20, 0x10);
const QColor green(0x10, 0xd0, 0x20);
const QColor desktop(0x3a, 0x5a, 0x7a);
const QRect frame(440, 140, 120, 80); // Whole device pixels at every scale.
constexpr int radius = 12;

/// All of one colour.
class Plate : public QWidget {
public:
    explicit Plate(const QColor &color) : m_color(color) { }
    void setColor(const QColor &color)
    {
        m_color = color;
        update();
    }

private:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), m_color); }

    QColor m_color;
};

QPainterPath rounded(const QSize &size)
{
    QPainterPath shape;
    shape.addRoundedRect(QRectF(QPointF(), size), radius, radius);
    return shape;
}

double scale()
{
    return qApp->devicePixelRatio();
}

bool isComposited()
{
    return qgetenv("DESKTOP_COMPOSITOR") != "off";
}

QPoint toDevice(const QPointF &point)
{
    return {int(point.x() * scale()), int(point.y() * scale())};
}

QRect toDevice(const QRect &rect)
{
    return {toDevice(QPointF(rect.topLeft())), rect.size() * scale()};
}

QImage screenshot()
{
    QImage image = QGuiApplication::primaryScreen()->grabWindow().toImage();
    image.setDevicePixelRatio(1);
    return image;
}

/// The colour on the screen at a place in logical pixels.
QColor colorAt(const QPointF &point)
{
    return screenshot().pixelColor(toDevice(point));
}

/// Whether what is over the panel is there still after ten times the time in which the panel would come above it.
bool staysAbove()
{
    return !QTest::qWaitFor([] { return colorAt(frame.center()) == red; }, 300);
}

/// Types a letter and returns whether that program has got it, and nothing else.
bool getsLetter(XClient &other)
{
    constexpr quint8 keyOfA = 38;
    QList<quint8> keys;
    return typeKeys(u"a"_s) && QTest::qWaitFor([&] {
               keys += other.takePresses();
               return keys == QList<quint8>{keyOfA};
           });
}

} // namespace

class X11PanelTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void theContentFillsTheFrame();
    void theContentFollowsTheFrame();
    void aNewContentReplacesTheFormer();
    void theOtherProgramKeepsTheKeyboard();
    void theOtherProgramKeepsTheKeyboardWhileAButtonIsClicked();
    void clicksOutsideOfTheShapeGoThrough();
    void clicksOutsideOfANewShapeGoThrough();
    void itIsAboveAFullScreenWindow_data();
    void itIsAboveAFullScreenWindow();
    void itIsOnEveryWorkspace();
    void theTaskListDoesNotHaveIt();
    void aWindowThatIsRaisedStaysBelow();
    void aNewWindowOutsideOfTheWindowManagersCareIsAnsweredOnce_data();
    void aNewWindowOutsideOfTheWindowManagersCareIsAnsweredOnce();
    void menusAndTheLikeStayAbove_data();
    void menusAndTheLikeStayAbove();
    void aLockedScreenStaysAboveWithAllThatItShows();
    void aMenuOfOurOwnStaysAbove();
    void orderFrontBringsItAboveWhatHasComeSince();
    void theCornersAreNotPainted();
    void theEdgeOfTheCornersIsSmooth();
    void theCornersStayCutWhenTheContentRepaints();
    void theShadowFollowsTheShape();
    void withoutShadowThereIsNone();
    void partOfTheFrameMayBeAboveTheScreen();
    void orderOutHidesIt();
    void theContentMayHaveItDeletedWhenItIsClicked();
    void itFollowsTheCompositor();

private:
    std::unique_ptr<X11Panel> makePanel(const PanelStyle &style = {}, const QRect &place = frame);

    std::unique_ptr<XClient> m_other;
    std::unique_ptr<X11Panel> m_panel;
};

void X11PanelTest::init()
{
    QCursor::setPos(10, 300);
    QTRY_COMPARE(colorAt(frame.center()), desktop);
    m_other = std::make_unique<XClient>();
}

void X11PanelTest::cleanup()
{
    m_panel.reset();
    // The next connection may get the same identifiers, which the window manager must have forgotten by then.
    const XClient watcher;
    m_other.reset();
    QTRY_VERIFY(watcher.managedWindows().isEmpty());
}

std::unique_ptr<X11Panel> X11PanelTest::makePanel(const PanelStyle &style, const QRect &place)
{
    auto panel = std::make_unique<X11Panel>(style);
    panel->setContent(std::make_unique<Plate>(red));
    panel->setFrame(place);
    panel->setShape(rounded(place.size()));
    return panel;
}

void X11PanelTest::theContentFillsTheFrame()
{
    m_panel = makePanel();
    m_panel->setShape({});
    m_panel->orderFront();
    QVERIFY(m_panel->isVisible());
    const QRect expected(toDevice(frame.topLeft()), frame.size() * scale());
    QTRY_COMPARE(findOnScreen(red), expected);
}

void X11PanelTest::theContentFollowsTheFrame()
{
    m_panel = makePanel();
    m_panel->setShape({});
    m_panel->orderFront();
    QTRY_VERIFY(!findOnScreen(red).isEmpty());
    const QRect next(400, 100, 200, 160);
    m_panel->setFrame(next);
    QTRY_COMPARE(findOnScreen(red), QRect(toDevice(next.topLeft()), next.size() * scale()));
}

void X11PanelTest::aNewContentReplacesTheFormer()
{
    m_panel = makePanel();
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    auto next = std::make_unique<Plate>(green);
    const QPointer<Plate> former(static_cast<Plate *>(next.get()));
    m_panel->setContent(std::move(next));
    QTRY_COMPARE(colorAt(frame.center()), green);
    QVERIFY(findOnScreen(red).isEmpty());
    m_panel->setContent(std::make_unique<Plate>(red));
    QTRY_VERIFY(!former);
    QTRY_COMPARE(colorAt(frame.center()), red);
    QVERIFY(colorAt(frame.topLeft()) != red); // The edge is above it again.
}

void X11PanelTest::theOtherProgramKeepsTheKeyboard()
{
    QVERIFY(m_other->showFocusedWindow());
    m_panel = makePanel();
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    QVERIFY(getsLetter(*m_other));
    QVERIFY(m_other->hasFocus());
    QVERIFY(!QGuiApplication::focusWindow());
}

void X11PanelTest::theOtherProgramKeepsTheKeyboardWhileAButtonIsClicked()
{
    QVERIFY(m_other->showFocusedWindow());
    m_panel = makePanel();
    auto button = std::make_unique<QPushButton>(u"Stop"_s);
    QSignalSpy clicked(button.get(), &QPushButton::clicked);
    m_panel->setContent(std::move(button));
    m_panel->orderFront();
    QTRY_VERIFY(QGuiApplication::allWindows().first()->isExposed());
    for (int count = 1; count <= 2; ++count) {
        QVERIFY(clickAt(toDevice(frame.center())));
        QTRY_COMPARE(clicked.count(), count);
        QVERIFY(m_other->hasFocus());
        QVERIFY(getsLetter(*m_other));
    }
    QVERIFY(!QGuiApplication::focusWindow());
}

void X11PanelTest::clicksOutsideOfTheShapeGoThrough()
{
    QVERIFY(m_other->showFocusedWindow({toDevice(frame.topLeft() - QPoint(60, 60)), frame.size() * scale() * 2}));
    QTRY_COMPARE(colorAt(frame.topLeft()), QColor(Qt::white));
    QTRY_COMPARE(colorAt(frame.bottomRight() + QPoint(0, 6)), QColor(Qt::white));
    m_panel = makePanel();
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    QVERIFY(clickAt(toDevice(frame.center())));
    const std::array<QPoint, 5> outside{frame.topLeft() + QPoint(1, 1), frame.topRight() + QPoint(-1, 1),
                                        frame.bottomLeft() + QPoint(1, -1), frame.bottomRight() + QPoint(-1, -1),
                                        QPoint(frame.center().x(), frame.bottom() + 6)};
    int count = 0;
    for (const auto &point : outside) {
        QVERIFY(clickAt(toDevice(point)));
        ++count;
        QTRY_COMPARE(m_other->clickCount(), count);
    }
    QVERIFY(clickAt(toDevice(frame.topLeft() + QPoint(radius, 1))));
    QVERIFY(clickAt(toDevice(frame.topLeft() + QPoint(5, 5))));
    QVERIFY(clickAt(toDevice(outside.back())));
    QTRY_COMPARE(m_other->clickCount(), count + 1); // The last one alone.
}

void X11PanelTest::clicksOutsideOfANewShapeGoThrough()
{
    QVERIFY(m_other->showFocusedWindow({toDevice(frame.topLeft() - QPoint(60, 60)), frame.size() * scale() * 2}));
    QTRY_COMPARE(colorAt(frame.topLeft()), QColor(Qt::white));
    QTRY_COMPARE(colorAt(frame.bottomRight() + QPoint(0, 6)), QColor(Qt::white));
    m_panel = makePanel();
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    QPainterPath half;
    half.addRect(0, 0, frame.width() / 2, frame.height());
    m_panel->setShape(half);
    const QPoint right(frame.right() - 10, frame.center().y());
    QTRY_COMPARE(colorAt(right) == red, false);
    QVERIFY(clickAt(toDevice(right)));
    QTRY_COMPARE(m_other->clickCount(), 1);
    QTRY_COMPARE(colorAt(frame.topLeft()), red);
}

void X11PanelTest::itIsAboveAFullScreenWindow_data()
{
    QTest::addColumn<bool>("isAboveEverything");
    QTest::newRow("the panel of the tray") << false;
    QTest::newRow("the panel around a notch") << true;
}

void X11PanelTest::itIsAboveAFullScreenWindow()
{
    QFETCH(const bool, isAboveEverything);
    m_panel = makePanel({.hasShadow = !isAboveEverything, .isAboveEverything = isAboveEverything});
    m_panel->orderFront();
    QVERIFY(m_other->showFocusedWindow());
    QVERIFY(m_other->makeFullScreen());
    QTRY_COMPARE(colorAt({20, 400}), QColor(Qt::white));
    QTRY_COMPARE(colorAt(frame.center()), red);
    m_panel->orderOut();
    QTRY_COMPARE(colorAt(frame.center()), QColor(Qt::white));
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
}

void X11PanelTest::itIsOnEveryWorkspace()
{
    QVERIFY(m_other->setWorkspaceCount(2));
    QVERIFY(m_other->showFocusedWindow());
    m_panel = makePanel();
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    QVERIFY(m_other->goToWorkspace(1));
    QTRY_COMPARE(findOnScreen(QColor(Qt::white)), QRect()); // The other window stays behind.
    QCOMPARE(colorAt(frame.center()), red);
    QVERIFY(m_other->goToWorkspace(0));
    QTRY_VERIFY(!findOnScreen(QColor(Qt::white)).isEmpty());
    QCOMPARE(colorAt(frame.center()), red);
    QVERIFY(m_other->setWorkspaceCount(1));
}

void X11PanelTest::theTaskListDoesNotHaveIt()
{
    m_panel = makePanel();
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    QVERIFY(m_other->showFocusedWindow());
    QTRY_COMPARE(m_other->managedWindows(), QList<quint32>{m_other->window()});
}

void X11PanelTest::aWindowThatIsRaisedStaysBelow()
{
    const QRect around = frame.adjusted(-40, -40, 40, 40);
    QVERIFY(m_other->showFocusedWindow({toDevice(around.topLeft()), around.size() * scale()}));
    m_panel = makePanel();
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    XClient third;
    QVERIFY(third.showFocusedWindow({toDevice(around.topLeft()), around.size() * scale()}));
    QTRY_COMPARE(m_other->stacking().last(), third.window());
    m_other->raise();
    QTRY_COMPARE(m_other->stacking().last(), m_other->window());
    QTRY_COMPARE(colorAt(frame.center()), red);
}

void X11PanelTest::aNewWindowOutsideOfTheWindowManagersCareIsAnsweredOnce_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::newRow("a dock") << "_NET_WM_WINDOW_TYPE_DOCK"_ba;
    QTest::newRow("a notification") << "_NET_WM_WINDOW_TYPE_NOTIFICATION"_ba;
    QTest::newRow("a plain one") << QByteArray();
}

void X11PanelTest::aNewWindowOutsideOfTheWindowManagersCareIsAnsweredOnce()
{
    QFETCH(const QByteArray, type);
    m_panel = makePanel({.hasShadow = false, .isAboveEverything = true});
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    m_other->showUnmanagedWindow(toDevice(frame.adjusted(-40, -40, 40, 40)), type);
    QTRY_COMPARE(colorAt(frame.topLeft() - QPoint(20, 20)), QColor(Qt::white));
    QTRY_COMPARE(colorAt(frame.center()), red);
    m_other->raiseUnmanagedWindow();
    QTRY_COMPARE(colorAt(frame.center()), QColor(Qt::white));
    QVERIFY(staysAbove());
}

void X11PanelTest::menusAndTheLikeStayAbove_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<bool>("isSavingUnder");
    QTest::newRow("a menu") << "_NET_WM_WINDOW_TYPE_MENU"_ba << false;
    QTest::newRow("a drop-down menu") << "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU"_ba << false;
    QTest::newRow("a pop-up menu") << "_NET_WM_WINDOW_TYPE_POPUP_MENU"_ba << false;
    QTest::newRow("a tool tip") << "_NET_WM_WINDOW_TYPE_TOOLTIP"_ba << false;
    QTest::newRow("a list of choices") << "_NET_WM_WINDOW_TYPE_COMBO"_ba << false;
    QTest::newRow("what is being dragged") << "_NET_WM_WINDOW_TYPE_DND"_ba << false;
    QTest::newRow("a menu of an old toolkit") << QByteArray() << true;
}

void X11PanelTest::menusAndTheLikeStayAbove()
{
    QFETCH(const QByteArray, type);
    QFETCH(const bool, isSavingUnder);
    m_panel = makePanel({.hasShadow = false, .isAboveEverything = true});
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    m_other->showUnmanagedWindow(toDevice(frame), type, isSavingUnder);
    QTRY_COMPARE(colorAt(frame.center()), QColor(Qt::white));
    QVERIFY(staysAbove());
}

void X11PanelTest::aLockedScreenStaysAboveWithAllThatItShows()
{
    m_panel = makePanel({.hasShadow = false, .isAboveEverything = true});
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    m_other->showUnmanagedWindow({QPoint(), QGuiApplication::primaryScreen()->size() * scale()});
    QTRY_COMPARE(colorAt(frame.center()), QColor(Qt::white));
    XClient prompt;
    prompt.showUnmanagedWindow(toDevice(frame));
    QVERIFY(staysAbove());
}

void X11PanelTest::aMenuOfOurOwnStaysAbove()
{
    m_panel = makePanel({.hasShadow = false, .isAboveEverything = true});
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    Plate popup{QColor(Qt::white)};
    popup.setWindowFlags(Qt::Window | Qt::X11BypassWindowManagerHint | Qt::FramelessWindowHint);
    popup.setGeometry(frame);
    popup.show();
    QTRY_COMPARE(colorAt(frame.center()), QColor(Qt::white));
    QVERIFY(staysAbove());
}

void X11PanelTest::orderFrontBringsItAboveWhatHasComeSince()
{
    m_panel = makePanel();
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    X11Panel above({});
    above.setContent(std::make_unique<Plate>(green));
    above.setFrame(frame.adjusted(-10, -10, 10, 10));
    above.orderFront();
    QTRY_COMPARE(colorAt(frame.center()), green);
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
}

void X11PanelTest::theCornersAreNotPainted()
{
    m_panel = makePanel({.hasShadow = false});
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    const QImage image = screenshot();
    const QRect device(toDevice(frame.topLeft()), frame.size() * scale());
    for (const auto &corner : {device.topLeft(), device.topRight(), device.bottomLeft(), device.bottomRight()})
        QCOMPARE(image.pixelColor(corner), desktop);
    for (const auto &edge : {QPoint(device.center().x(), device.top()), QPoint(device.center().x(), device.bottom()),
                             QPoint(device.left(), device.center().y()), QPoint(device.right(), device.center().y())})
        QCOMPARE(image.pixelColor(edge), red);
}

/// Without a compositor there are no pixels between the content and what is behind it.
void X11PanelTest::theEdgeOfTheCornersIsSmooth()
{
    m_panel = makePanel({.hasShadow = false});
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    const QImage image = screenshot();
    const QPoint corner = toDevice(frame.topLeft());
    int mixedCount = 0;
    for (int y = 0; y < radius * scale(); ++y) {
        for (int x = 0; x < radius * scale(); ++x) {
            const QColor color = image.pixelColor(corner + QPoint(x, y));
            if (color == red || color == desktop)
                continue;
            ++mixedCount;
            QVERIFY(color.red() >= desktop.red() && color.red() <= red.red());
            QVERIFY(color.blue() <= desktop.blue() && color.blue() >= red.blue());
        }
    }
    if (isComposited())
        QVERIFY(mixedCount >= 8);
    else
        QCOMPARE(mixedCount, 0);
}

void X11PanelTest::theCornersStayCutWhenTheContentRepaints()
{
    m_panel = makePanel();
    auto content = std::make_unique<Plate>(red);
    Plate *const plate = content.get();
    m_panel->setContent(std::move(content));
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    QImage before = screenshot();
    plate->setColor(green);
    QTRY_COMPARE(colorAt(frame.center()), green);
    plate->setColor(red);
    QTRY_COMPARE(colorAt(frame.center()), red);
    QCOMPARE(screenshot(), before); // Nothing adds up, neither edge nor shadow.
}

void X11PanelTest::theShadowFollowsTheShape()
{
    m_panel = makePanel();
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    const auto lightnessBelow
        = [](int x, int distance) { return colorAt(QPointF(x, frame.bottom() + distance)).lightnessF(); };
    const int middle = frame.center().x();
    if (!isComposited()) {
        QCOMPARE(colorAt(QPointF(middle, frame.bottom() + 3)), desktop);
        return;
    }
    QVERIFY(lightnessBelow(middle, 3) < desktop.lightnessF() - 0.05);
    QVERIFY(lightnessBelow(middle, 3) < lightnessBelow(middle, 12));
    QVERIFY(lightnessBelow(middle, 12) < lightnessBelow(middle, 24));
    QCOMPARE(colorAt(QPointF(middle, frame.bottom() + 40)), desktop);
    QPainterPath half;
    half.addRect(0, 0, 20, frame.height());
    m_panel->setShape(half);
    QTRY_COMPARE(colorAt(QPointF(frame.right() - 10, frame.bottom() + 3)), desktop);
    QVERIFY(lightnessBelow(frame.left() + 10, 3) < desktop.lightnessF() - 0.02);
}

void X11PanelTest::withoutShadowThereIsNone()
{
    m_panel = makePanel({.hasShadow = false});
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    QImage image = screenshot();
    QPainter painter(&image);
    painter.fillRect(QRect(toDevice(frame.topLeft()), frame.size() * scale()), desktop);
    painter.end();
    QImage bare(image.size(), image.format());
    bare.fill(desktop);
    QCOMPARE(image.copy(0, 0, image.width(), int(400 * scale())), bare.copy(0, 0, image.width(), int(400 * scale())));
}

void X11PanelTest::partOfTheFrameMayBeAboveTheScreen()
{
    m_panel = makePanel({.hasShadow = false, .isAboveEverything = true}, QRect(440, -8, 120, 48));
    m_panel->setShape({});
    m_panel->orderFront();
    QTRY_COMPARE(findOnScreen(red), QRect(toDevice({440, 0}), QSize(120, 40) * scale()));
}

void X11PanelTest::orderOutHidesIt()
{
    m_panel = makePanel();
    QVERIFY(!m_panel->isVisible());
    QVERIFY(findOnScreen(red).isEmpty());
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    m_panel->orderOut();
    QVERIFY(!m_panel->isVisible());
    QTRY_VERIFY(findOnScreen(red).isEmpty());
}

void X11PanelTest::theContentMayHaveItDeletedWhenItIsClicked()
{
    m_panel = makePanel();
    auto content = std::make_unique<QPushButton>(u"Settings"_s);
    const QPointer<QPushButton> button(content.get());
    connect(button, &QPushButton::clicked, this, [this] { m_panel.reset(); });
    m_panel->setContent(std::move(content));
    m_panel->orderFront();
    QTRY_VERIFY(QGuiApplication::allWindows().first()->isExposed());
    QVERIFY(clickAt(toDevice(frame.center())));
    QTRY_VERIFY(!button);
    QVERIFY(!m_panel);
}

void X11PanelTest::itFollowsTheCompositor()
{
    m_panel = makePanel();
    m_panel->orderFront();
    QTRY_COMPARE(colorAt(frame.center()), red);
    const QPointF shadow(frame.center().x(), frame.bottom() + 3);
    if (isComposited()) {
        const auto setCompositing = [](const QString &value) {
            return run(u"xfconf-query"_s,
                       {u"-c"_s, u"xfwm4"_s, u"-p"_s, u"/general/use_compositing"_s, u"-s"_s, value});
        };
        QVERIFY(setCompositing(u"false"_s));
        QTRY_COMPARE(colorAt(shadow), desktop);
        QTRY_COMPARE(colorAt(frame.center()), red);
        QCOMPARE(colorAt(frame.topLeft()), desktop);
        QVERIFY(setCompositing(u"true"_s));
        QTRY_VERIFY(colorAt(shadow).lightnessF() < desktop.lightnessF() - 0.05);
        QTRY_COMPARE(colorAt(frame.center()), red);
        return;
    }
    // One that blends nothing: what is translucent shows black.
    QVERIFY(m_other->showFocusedWindow());
    m_other->own("_NET_WM_CM_S0");
    QTRY_COMPARE(colorAt(shadow), QColor(Qt::black));
    m_other = std::make_unique<XClient>();
    QTRY_COMPARE(colorAt(shadow), desktop);
    QTRY_COMPARE(colorAt(frame.center()), red);
}

QTEST_MAIN(X11PanelTest)
#include "X11PanelTest.moc"
