#include "EndToEnd/ShippedKorvo.h"
#include "Fakes/FakeSessionManager.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

/// The end of the desktop's session, as its session manager tells the built program of it.
class SessionEndTest : public QObject {
    Q_OBJECT
private slots:
    void theProgramEndsAsByItsPowerButtonAndIsNotSaved();
};

void SessionEndTest::theProgramEndsAsByItsPowerButtonAndIsNotSaved()
{
    constexpr int restartNever = 3; // Source: X Session Management Protocol 1.0, RestartStyleHint.
    FakeSessionManager session;
    QVERIFY(!session.address().isEmpty());
    ShippedKorvo korvo;
    korvo.setVariable(u"SESSION_MANAGER"_s, session.address());
    QVERIFY(korvo.start());
    QVERIFY(session.isRegistered);

    session.saveYourself();
    QTRY_COMPARE_WITH_TIMEOUT(session.savedCount, 1, ShippedKorvo::patience);
    QCOMPARE(session.restartStyle, restartNever);
    QCOMPARE(korvo.process().state(), QProcess::Running);

    session.die();
    QTRY_COMPARE_WITH_TIMEOUT(korvo.process().state(), QProcess::NotRunning, ShippedKorvo::patience);
    QCOMPARE(korvo.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(korvo.process().exitCode(), 0);
    QVERIFY(korvo.log().contains(u"[INFO] App terminating — applicationWillTerminate"_s));
}

QTEST_GUILESS_MAIN(SessionEndTest)
#include "SessionEndTest.moc"
