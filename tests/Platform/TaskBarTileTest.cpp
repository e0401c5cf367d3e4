#include "Platform/Freedesktop/TaskBarTile.h"

#include "TrayOnScreen.h"
#include "XDesktop.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QHash>
#include <QImage>
#include <QPainter>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = 15000;
constexpr quint32 iconic = 3;
constexpr quint32 everyWorkspace = 0xffffffff;
const QColor red(0xd0, 0x20, 0x10);
const QColor green(0x10, 0xd0, 0x20);

DockTileContent contentOf(const QColor &color, int minutes = 7, double progress = 0.5)
{
    return {QSizeF(128, 128),
            [color](QPainter &painter, const QSizeF &size) {
                painter.fillRect(QRectF(0, 0, size.width(), size.height() / 2), color);
            },
            minutes, progress};
}

/// The icons of a window by the length of their sides.
QHash<int, QImage> iconsOf(const XClient &desktop, quint32 window)
{
    QHash<int, QImage> icons;
    const auto numbers = desktop.numbers(window, "_NET_WM_ICON");
    for (qsizetype at = 0; at + 2 <= numbers.size();) {
        const int width = int(numbers[at]);
        const int height = int(numbers[at + 1]);
        at += 2;
        if (at + qsizetype(width) * height > numbers.size())
            return {};
        QImage image(width, height, QImage::Format_ARGB32);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                image.setPixel(x, y, numbers[at++]);
        }
        icons.insert(width, image);
    }
    return icons;
}

} // namespace

class TaskBarTileTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void itIsInNoTaskListUntilItIsPresent();
    void itIsMinimizedInTheTaskList();
    void itGoesWhenItIsNoLongerPresent();
    void aLaunchGoesOnBeforeTheWindowComes();
    void takenBackAtOnceNoWindowComes();
    void theIconIsTheProgramsOwnAtFirst();
    void theContentIsTheIconAtEverySize();
    void theContentOfBeforeShowsWhenItIsPresent();
    void withoutContentTheProgramsIconIsBack();
    void itIsOnEveryWorkspace();
    void aClickOnTheTaskBarAsksForTheProgram();
    void closingItEndsTheProgram();
    void docksAreToldNumberAndProgress();
    void docksAreToldNothingTwice();
    void docksAreToldNothingWhileItIsAbsent();
    void withoutABusThereIsStillAnIcon();

public slots:
    void update(const QDBusMessage &message) { m_updates.append(message); }

private:
    quint32 window() const { return m_desktop->windowOfTitle("Korvo"); }
    QVariantMap lastUpdate() const { return qdbus_cast<QVariantMap>(m_updates.last().arguments().at(1)); }

    std::unique_ptr<XClient> m_desktop;
    std::unique_ptr<TaskBarTile> m_tile;
    QList<QDBusMessage> m_updates;
};

void TaskBarTileTest::initTestCase()
{
    QApplication::setQuitOnLastWindowClosed(false);
    QVERIFY(
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"dock"_s)
            .connect({}, {}, u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s, this, SLOT(update(QDBusMessage))));
}

void TaskBarTileTest::init()
{
    m_desktop = std::make_unique<XClient>();
    m_tile = std::make_unique<TaskBarTile>();
    // What tests before have sent is here when the mark is.
    auto mark = QDBusMessage::createSignal(u"/mark"_s, u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s);
    QVERIFY(QDBusConnection::sessionBus().send(mark << u"mark"_s));
    QTRY_VERIFY(!m_updates.isEmpty() && m_updates.last().path() == u"/mark"_s);
    m_updates.clear();
}

void TaskBarTileTest::cleanup()
{
    m_tile.reset();
    QTRY_COMPARE(window(), 0u);
    m_desktop.reset();
}

void TaskBarTileTest::itIsInNoTaskListUntilItIsPresent()
{
    m_tile->setContent(contentOf(green));
    m_tile->setContent(std::nullopt);
    m_tile->setPresent(false);
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void TaskBarTileTest::itIsMinimizedInTheTaskList()
{
    m_tile->setPresent(true);
    m_tile->setPresent(true);
    QTRY_VERIFY(window() != 0);
    QTRY_COMPARE(m_desktop->numbers(window(), "WM_STATE").value(0), iconic);
    const auto state = m_desktop->numbers(window(), "_NET_WM_STATE");
    QVERIFY(!state.contains(m_desktop->atom("_NET_WM_STATE_SKIP_TASKBAR")));
    QCOMPARE(QApplication::topLevelWidgets().size(), 1);
}

void TaskBarTileTest::itGoesWhenItIsNoLongerPresent()
{
    m_tile->setPresent(true);
    QTRY_VERIFY(window() != 0);
    m_tile->setPresent(false);
    QTRY_COMPARE(window(), 0u);
    m_tile->setPresent(true);
    QTRY_VERIFY(window() != 0);
}

void TaskBarTileTest::aLaunchGoesOnBeforeTheWindowComes()
{
    m_tile->setPresent(true);
    QCoreApplication::processEvents();
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
    QTRY_VERIFY(window() != 0);
}

void TaskBarTileTest::takenBackAtOnceNoWindowComes()
{
    m_tile->setPresent(true);
    m_tile->setPresent(false);
    TaskBarTile later;
    later.setPresent(true);
    QTRY_VERIFY(window() != 0);
    QCOMPARE(QApplication::topLevelWidgets().size(), 1); // The later one's.
}

void TaskBarTileTest::theIconIsTheProgramsOwnAtFirst()
{
    m_tile->setPresent(true);
    QTRY_VERIFY(window() != 0);
    const QImage icon = iconsOf(*m_desktop, window()).value(int(128 * qApp->devicePixelRatio()));
    QVERIFY(!icon.isNull());
    QCOMPARE(icon.pixelColor(icon.width() / 2, icon.height() / 2), QColor(0x1c, 0x1c, 0x1e));
    QCOMPARE(icon.pixelColor(icon.width() / 2, icon.height() / 4), QColor(0x30, 0xd1, 0x58));
    QCOMPARE(icon.pixelColor(0, 0).alpha(), 0);
}

void TaskBarTileTest::theContentIsTheIconAtEverySize()
{
    m_tile->setPresent(true);
    QTRY_VERIFY(window() != 0);
    for (const QColor &color : {green, red}) {
        m_tile->setContent(contentOf(color));
        QTRY_COMPARE(iconsOf(*m_desktop, window()).value(int(128 * qApp->devicePixelRatio())).pixelColor(1, 1), color);
        const auto icons = iconsOf(*m_desktop, window());
        for (const int side : {16, 24, 32, 48, 64, 128}) {
            const QImage icon = icons.value(int(side * qApp->devicePixelRatio()));
            QVERIFY(!icon.isNull());
            QCOMPARE(icon.height(), icon.width());
            QCOMPARE(icon.pixelColor(icon.width() - 1, icon.height() / 2 - 1), color);
            QCOMPARE(icon.pixelColor(icon.width() - 1, icon.height() / 2).alpha(), 0);
        }
    }
}

void TaskBarTileTest::theContentOfBeforeShowsWhenItIsPresent()
{
    m_tile->setContent(contentOf(green));
    m_tile->setPresent(true);
    QTRY_VERIFY(window() != 0);
    QTRY_COMPARE(iconsOf(*m_desktop, window()).value(int(128 * qApp->devicePixelRatio())).pixelColor(1, 1), green);
    QTRY_COMPARE(m_updates.size(), 1);
}

void TaskBarTileTest::withoutContentTheProgramsIconIsBack()
{
    m_tile->setPresent(true);
    QTRY_VERIFY(window() != 0);
    const auto own = iconsOf(*m_desktop, window());
    m_tile->setContent(contentOf(green));
    QTRY_VERIFY(iconsOf(*m_desktop, window()) != own);
    m_tile->setContent(std::nullopt);
    QTRY_COMPARE(iconsOf(*m_desktop, window()), own);
}

void TaskBarTileTest::itIsOnEveryWorkspace()
{
    QVERIFY(m_desktop->setWorkspaceCount(2));
    m_tile->setPresent(true);
    QTRY_VERIFY(window() != 0);
    QTRY_COMPARE(m_desktop->numbers(window(), "_NET_WM_DESKTOP").value(0), everyWorkspace);
    QVERIFY(m_desktop->setWorkspaceCount(1));
}

void TaskBarTileTest::aClickOnTheTaskBarAsksForTheProgram()
{
    m_tile->setContent(contentOf(green));
    m_tile->setPresent(true);
    QSignalSpy activated(m_tile.get(), &DockTile::activated);
    QTRY_COMPARE(m_desktop->numbers(window(), "WM_STATE").value(0), iconic);
    XClient other;
    QVERIFY(other.showFocusedWindow({300, 300, 200, 200}));
    QCOMPARE(activated.count(), 0);
    const QPoint place(40, 12); // Where the task bar's first button is.
    for (int count = 1; count <= 3; ++count) {
        // Until the bar has made its button, a click does nothing.
        QTRY_VERIFY_WITH_TIMEOUT(
            activated.count() >= count
                || (clickMeanwhile(place) && QTest::qWaitFor([&] { return activated.count() >= count; }, 1000)),
            patience);
        QCOMPARE(activated.count(), count);
        QTRY_COMPARE(m_desktop->numbers(window(), "WM_STATE").value(0), iconic);
        QVERIFY(other.hasFocus());
    }
}

void TaskBarTileTest::closingItEndsTheProgram()
{
    m_tile->setPresent(true);
    QTRY_VERIFY(window() != 0);
    QSignalSpy ending(qApp, &QCoreApplication::aboutToQuit);
    QTimer::singleShot(0, this, [this] { m_desktop->ask(window(), "_NET_CLOSE_WINDOW", {0, 2}); });
    QTimer::singleShot(patience, qApp, [] { QCoreApplication::exit(1); });
    QCOMPARE(QApplication::exec(), 0);
    QCOMPARE(ending.count(), 1);
}

void TaskBarTileTest::docksAreToldNumberAndProgress()
{
    m_tile->setPresent(true);
    m_tile->setContent(contentOf(green, 75, 0.25));
    QTRY_COMPARE(m_updates.size(), 1);
    QCOMPARE(m_updates[0].signature(), u"sa{sv}"_s);
    QCOMPARE(m_updates[0].arguments().at(0).toString(), u"application://com.korvo.app.desktop"_s);
    QCOMPARE(
        lastUpdate(),
        QVariantMap(
            {{u"count"_s, 75ll}, {u"count-visible"_s, true}, {u"progress"_s, 0.25}, {u"progress-visible"_s, true}}));
    QCOMPARE(lastUpdate().value(u"count"_s).userType(), int(QMetaType::LongLong));
    m_tile->setContent(std::nullopt);
    QTRY_COMPARE(m_updates.size(), 2);
    QCOMPARE(lastUpdate().value(u"count-visible"_s), false);
    QCOMPARE(lastUpdate().value(u"progress-visible"_s), false);
}

void TaskBarTileTest::docksAreToldNothingTwice()
{
    m_tile->setPresent(true);
    m_tile->setContent(std::nullopt);
    m_tile->setContent(contentOf(green));
    m_tile->setContent(contentOf(red));
    m_tile->setContent(std::nullopt);
    m_tile->setContent(std::nullopt);
    m_tile->setContent(contentOf(green, 8));
    QTRY_COMPARE(m_updates.isEmpty() ? QVariant() : lastUpdate().value(u"count"_s), QVariant(8ll));
    QCOMPARE(m_updates.size(), 3);
}

void TaskBarTileTest::docksAreToldNothingWhileItIsAbsent()
{
    m_tile->setContent(contentOf(green, 7));
    m_tile->setContent(contentOf(green, 8));
    m_tile->setPresent(true);
    QTRY_COMPARE(m_updates.size(), 1);
    QCOMPARE(lastUpdate().value(u"count"_s), QVariant(8ll));
    m_tile->setPresent(false);
    QTRY_COMPARE(m_updates.size(), 2);
    QCOMPARE(lastUpdate().value(u"count-visible"_s), false);
}

void TaskBarTileTest::withoutABusThereIsStillAnIcon()
{
    m_tile = std::make_unique<TaskBarTile>(
        [] { return QDBusConnection::connectToBus(u"unix:path=/nonexistent"_s, u"none"_s); });
    m_tile->setPresent(true);
    m_tile->setContent(contentOf(green));
    QTRY_VERIFY(window() != 0);
    QTRY_COMPARE(iconsOf(*m_desktop, window()).value(int(128 * qApp->devicePixelRatio())).pixelColor(1, 1), green);
    QDBusConnection::disconnectFromBus(u"none"_s);
}

QTEST_MAIN(TaskBarTileTest)
#include "TaskBarTileTest.moc"
