#include "KorvoApp.h"

#include "Platform/KeyboardLayout.h"
#include "Platform/LoginItem.h"
#include "Platform/Platform.h"
#include "Platform/UserDefaults.h"
#include "Utilities/Clock.h"
#include "Utilities/DiagnosticLogger.h"
#include "Utilities/Spawn.h"

#include <QSessionManager>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr int endMilliseconds = 2000; // Enough for every stopped coroutine; a hung system call is not waited for.

void neverRestart(QSessionManager &manager)
{
    manager.setRestartHint(QSessionManager::RestartNever);
}

} // namespace

KorvoApp::Shared::Shared(Platform &platform)
{
    Clock::setShared(&platform.clock());
    UserDefaults::setStandard(&platform.userDefaults());
    KeyboardLayout::setShared(&platform.keyboardLayout());
    LoginItem::setShared(&platform.loginItem());
    Log::setSystemLog(&platform.systemLog());
}

KorvoApp::Shared::~Shared()
{
    Log::setSystemLog(nullptr);
    LoginItem::setShared(nullptr);
}

KorvoApp::KorvoApp(int &argc, char **argv, Platform &platform) : m_shared(platform), m_application(argc, argv)
{
    QApplication::setApplicationName(u"Korvo"_s); // A display name would end every title of a window.
    QApplication::setDesktopFileName(u"com.korvo.app"_s);
    m_delegate = std::make_unique<AppDelegate>(platform);
    QApplication::setQuitOnLastWindowClosed(m_delegate->applicationShouldTerminateAfterLastWindowClosed());
    // A saved session besides the login item would start the program twice.
    QObject::connect(&m_application, &QGuiApplication::commitDataRequest, &m_application, neverRestart,
                     Qt::DirectConnection);
    QObject::connect(&m_application, &QGuiApplication::saveStateRequest, &m_application, neverRestart,
                     Qt::DirectConnection);
    QObject::connect(&m_application, &QCoreApplication::aboutToQuit, m_delegate.get(),
                     &AppDelegate::applicationWillTerminate);
}

KorvoApp::~KorvoApp() = default;

int KorvoApp::exec()
{
    m_delegate->applicationDidFinishLaunching();
    const int status = QApplication::exec();
    if (!finishSpawned(endMilliseconds)) {
        m_delegate.reset(); // Gives up an action that still waits for its answer.
        finishSpawned(endMilliseconds);
    }
    return status;
}

} // namespace korvo
