#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace korvo {

class Clock;
class DockTile;
class InputPanel;
class KeyGrabber;
class KeyboardLayout;
class LoginItem;
class MouseMonitor;
class NotificationCenter;
class Panel;
class Screens;
class SingleInstance;
class StatusItem;
class SystemLog;
class UserDefaults;
struct PanelStyle;

/// An exception that nobody caught.
struct UncaughtException {
    QString name; ///< Of its type.
    std::optional<QString> reason;
    QStringList callStack; ///< A symbol a call, the innermost first.
};

/// Everything the program wants of the system it runs on. The build picks one implementation; tests bring their own.
class Platform {
public:
    virtual ~Platform() = default;

    virtual Clock &clock() = 0;
    virtual SystemLog &systemLog() = 0;
    virtual UserDefaults &userDefaults() = 0;
    virtual Screens &screens() = 0;
    virtual const KeyboardLayout &keyboardLayout() = 0;
    virtual LoginItem &loginItem() = 0;
    virtual NotificationCenter &notificationCenter() = 0;
    virtual SingleInstance &singleInstance() = 0;
    virtual DockTile &dockTile() = 0;
    virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
    virtual std::unique_ptr<KeyGrabber> makeKeyGrabber() = 0;
    virtual std::unique_ptr<Panel> makePanel(const PanelStyle &style) = 0;
    virtual std::unique_ptr<InputPanel> makeInputPanel() = 0;
    virtual std::unique_ptr<MouseMonitor> makeMouseMonitor() = 0;

    /// Calls `handler` on whatever thread receives one of the signals SIGTERM, SIGINT and SIGABRT, with its number; the
    /// program then goes on where the system lets it.
    virtual void setSignalHandler(void (*handler)(int signal)) = 0;

    /// Calls `handler` with each exception that nobody catches, on the thread that fails; the program then ends.
    virtual void setExceptionHandler(void (*handler)(const UncaughtException &exception)) = 0;

    /// The implementation of this build. To be called before there is an application object, since it also chooses the
    /// window system. The settings stand in `defaultsFile`, or where the system keeps them if that is empty.
    static std::unique_ptr<Platform> create(const QString &defaultsFile = {});
};

} // namespace korvo
