#include "Platform/Freedesktop/JournalLog.h"
#include "Platform/Freedesktop/TrayStatusItem.h"
#include "Platform/Linux/JsonUserDefaults.h"
#include "Platform/Linux/LinuxClock.h"
#include "Platform/Linux/QtScreens.h"
#include "Platform/Linux/SignalLog.h"
#include "Platform/Platform.h"

#include <QtGlobal>

namespace korvo {

namespace {

/// The adapters of a freedesktop.org desktop on Linux.
class LinuxPlatform final : public Platform {
public:
    explicit LinuxPlatform(const QString &defaultsFile) : m_userDefaults(defaultsFile) { }

    Clock &clock() override { return m_clock; }
    SystemLog &systemLog() override { return m_systemLog; }
    UserDefaults &userDefaults() override { return m_userDefaults; }
    Screens &screens() override { return m_screens; }
    std::unique_ptr<StatusItem> makeStatusItem() override { return std::make_unique<TrayStatusItem>(); }
    void setSignalHandler(void (*handler)(int signal)) override { SignalLog::install(handler); }

private:
    LinuxClock m_clock;
    JournalLog m_systemLog;
    JsonUserDefaults m_userDefaults;
    QtScreens m_screens;
};

/// Windows can't place themselves under Wayland: there the program runs through XWayland, unless the user says otherwise.
void preferX11()
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && !qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb");
}

} // namespace

std::unique_ptr<Platform> Platform::create(const QString &defaultsFile)
{
    preferX11();
    return std::make_unique<LinuxPlatform>(defaultsFile.isEmpty() ? JsonUserDefaults::defaultPath() : defaultsFile);
}

} // namespace korvo
