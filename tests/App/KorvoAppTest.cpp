#include "KorvoApp.h"

#include "Fakes/FakePlatform.h"
#include "Platform/KeyboardLayout.h"
#include "Platform/LoginItem.h"
#include "Utilities/DiagnosticLogger.h"

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

/// The application object is made by what is tested, so the tests have none of their own.
class KorvoAppTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void loginItemAndKeyboardLayoutAreThoseOfThePlatform();
    void loginItemIsGoneAfterwards();
    void theSystemLogIsThatOfThePlatformUntilTheEnd();
    void closingTheLastWindowDoesNotEndTheProgram();

private:
    int m_argc = 1;
    char m_name[6] = "korvo";
    char *m_argv[2] = {m_name, nullptr};
    FakePlatform m_platform; ///< One for all tests: the settings of the process keep to the first store they get.
    std::unique_ptr<KorvoApp> m_app;
};

void KorvoAppTest::init()
{
    m_platform.fakeLog.lines.clear();
    Log::setSystemLog(nullptr); // The fake had put itself there: to hand it over is the program's part.
    m_app = std::make_unique<KorvoApp>(m_argc, m_argv, m_platform);
}

void KorvoAppTest::cleanup()
{
    m_app.reset();
    KeyboardLayout::setShared(nullptr);
}

void KorvoAppTest::loginItemAndKeyboardLayoutAreThoseOfThePlatform()
{
    QCOMPARE(LoginItem::shared(), &m_platform.fakeLoginItem);
    QCOMPARE(&KeyboardLayout::shared(), &m_platform.fakeKeyboardLayout);
}

void KorvoAppTest::loginItemIsGoneAfterwards()
{
    m_app.reset();
    QVERIFY(!LoginItem::shared());
}

void KorvoAppTest::theSystemLogIsThatOfThePlatformUntilTheEnd()
{
    Log::info(u"while it is there"_s);
    QCOMPARE(m_platform.fakeLog.lines, QStringList{u"INFO while it is there"_s});
    m_app.reset();
    Log::info(u"afterwards"_s);
    QCOMPARE(m_platform.fakeLog.lines, QStringList{u"INFO while it is there"_s});
}

void KorvoAppTest::closingTheLastWindowDoesNotEndTheProgram()
{
    constexpr int quitByTheTest = 7;
    QWidget window;
    bool wasShown = false;
    // The window system tells of the last window's end by an event; what the second timer sends comes behind it.
    QTimer::singleShot(0, &window, [&] {
        window.show();
        wasShown = QTest::qWaitForWindowExposed(&window);
        window.close();
        QTimer::singleShot(100, &window, [] { QCoreApplication::exit(quitByTheTest); });
    });
    QCOMPARE(m_app->exec(), quitByTheTest);
    QVERIFY(wasShown);
}

QTEST_APPLESS_MAIN(KorvoAppTest)
#include "KorvoAppTest.moc"
