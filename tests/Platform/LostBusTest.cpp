#include "Platform/Freedesktop/TrayStatusItem.h"

#include "TrayOnScreen.h"

#include <QApplication>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

namespace {

const QColor green(0x10, 0xd0, 0x20);
constexpr int patience = 10000;

} // namespace

/// In the order as they stand: the bus of this process is one of its own, which the first test ends.
class LostBusTest : public QObject {
    Q_OBJECT
public:
    /// Before anything in the process looks for a bus.
    bool startBus()
    {
        m_bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        return m_bus.waitForReadyRead() && qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.readLine().trimmed());
    }

private slots:
    void theBusMayDie();
    void withoutABusTheOtherTrayShowsTheItem();

private:
    QProcess m_bus;
};

void LostBusTest::theBusMayDie()
{
    TrayStatusItem item;
    item.setImage(coloredImage(green));
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
    m_bus.kill();
    QVERIFY(m_bus.waitForFinished());
    const QColor blue(0x10, 0x20, 0xd0);
    item.setImage(coloredImage(blue));
    item.setTitle(u" 0:00:01"_s);
    item.setToolTip(u"Write"_s, u"Project"_s);
    item.setMenu({{u"Open"_s, true, {}}});
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(blue).isEmpty(), patience);
    QVERIFY(item.isShown());
}

void LostBusTest::withoutABusTheOtherTrayShowsTheItem()
{
    TrayStatusItem item;
    item.setImage(coloredImage(green));
    QTRY_VERIFY_WITH_TIMEOUT(item.isShown(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
    QSignalSpy activated(&item, &StatusItem::activated);
    QVERIFY(clickAt(findOnScreen(green).center()));
    QTRY_COMPARE_WITH_TIMEOUT(activated.count(), 1, patience);
}

int main(int argc, char **argv)
{
    LostBusTest test;
    if (!test.startBus())
        return 1;
    QApplication app(argc, argv);
    return QTest::qExec(&test, argc, argv);
}

#include "LostBusTest.moc"
