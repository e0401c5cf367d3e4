#include "EndToEnd/AttachedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Platform/TrayOnScreen.h"
#include "Views/Theme.h"

#include <QGuiApplication>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = AttachedKorvo::patience;
constexpr QColor panelGround(20, 20, 20);

/// A length of the panel's in pixels of the screen.
int scaled(int length)
{
    return qRound(length * qGuiApp->devicePixelRatio());
}

} // namespace

/// The menu panel as a user has it: real clicks on the tray, on the panel and beside it.
class MenuPanelRoadTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aClickOpensThePanelASecondOneClosesItAndTheNextOneOpensANewOne();
    void aClickOnTheDesktopClosesThePanel();
    void thePanelStopsTheTimerAndStartsATask();
    void theMenuOfTheItemOpensThePanel();
    void thePowerButtonEndsTheProgram();

private:
    static bool isPanelShown() { return !findOnScreen(theme::stopRed).isEmpty(); }

    std::unique_ptr<AttachedKorvo> m_world;
    QPoint m_ring; ///< The item's place in the tray.
};

void MenuPanelRoadTest::init()
{
    m_world = std::make_unique<AttachedKorvo>();
    QVERIFY(m_world->startWorkspace());
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > 0, patience);
    QRect ring;
    QTRY_VERIFY_WITH_TIMEOUT(!(ring = findOnScreen(theme::systemGreen)).isEmpty(), patience);
    m_ring = ring.center();
}

void MenuPanelRoadTest::cleanup()
{
    const auto item = m_world->item();
    m_world.reset();
    QTRY_VERIFY(trayItemProperty(item, u"Id"_s).isEmpty()); // The tray has seen it go.
    QTRY_VERIFY(findOnScreen(theme::systemGreen).isEmpty());
}

void MenuPanelRoadTest::aClickOpensThePanelASecondOneClosesItAndTheNextOneOpensANewOne()
{
    QVERIFY(clickAt(m_ring));
    QTRY_VERIFY_WITH_TIMEOUT(isPanelShown(), patience);
    QVERIFY(clickAt(m_ring));
    QTRY_VERIFY_WITH_TIMEOUT(!isPanelShown(), patience);
    QVERIFY(clickAt(m_ring));
    QTRY_VERIFY_WITH_TIMEOUT(isPanelShown(), patience);
}

void MenuPanelRoadTest::aClickOnTheDesktopClosesThePanel()
{
    QVERIFY(clickAt(m_ring));
    QTRY_VERIFY_WITH_TIMEOUT(isPanelShown(), patience);
    QVERIFY(clickAt({100, 600}));
    QTRY_VERIFY_WITH_TIMEOUT(!isPanelShown(), patience);
}

void MenuPanelRoadTest::thePanelStopsTheTimerAndStartsATask()
{
    QVERIFY(clickAt(m_ring));
    QTRY_VERIFY_WITH_TIMEOUT(isPanelShown(), patience);
    QVERIFY(clickAt(findOnScreen(theme::stopRed).center()));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), QString(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(!isPanelShown(), patience); // The card has given way, the panel stays.
    const auto panel = findOnScreen(panelGround);
    QVERIFY(clickAt({panel.center().x(), panel.top() + scaled(110)})); // A row of today's tasks.
    QTRY_VERIFY_WITH_TIMEOUT(!m_world->runningTask().isEmpty(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(isPanelShown(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() >= 0 && m_world->seconds() < 60, patience);
}

void MenuPanelRoadTest::theMenuOfTheItemOpensThePanel()
{
    QVERIFY(clickTrayMenu(m_world->item(), u"Open"_s));
    QTRY_VERIFY_WITH_TIMEOUT(isPanelShown(), patience);
}

void MenuPanelRoadTest::thePowerButtonEndsTheProgram()
{
    QVERIFY(clickAt(m_ring));
    QTRY_VERIFY_WITH_TIMEOUT(isPanelShown(), patience);
    const auto panel = findOnScreen(panelGround);
    QVERIFY(clickAt({panel.right() - scaled(22), panel.bottom() - scaled(17)})); // The last one of the footer.
    QTRY_COMPARE_WITH_TIMEOUT(m_world->process().state(), QProcess::NotRunning, patience);
    QCOMPARE(m_world->process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_world->process().exitCode(), 0);
    QVERIFY(m_world->log().contains(u"[INFO] App terminating — applicationWillTerminate"_s));
    QVERIFY(!m_world->runningTask().isEmpty()); // The timer goes on in the workspace.
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    MenuPanelRoadTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "MenuPanelRoadTest.moc"
