#pragma once

#include "Fakes/FakeClock.h"
#include "Fakes/FakeKeyGrabber.h"
#include "Fakes/FakeKeyboardLayout.h"
#include "Fakes/FakeLoginItem.h"
#include "Fakes/FakeNotificationCenter.h"
#include "Fakes/FakeScreens.h"
#include "Fakes/FakeStatusItem.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/FakeUserDefaults.h"
#include "Platform/Platform.h"

#include <QPointer>

#include <memory>

namespace korvo {

/// A desktop made of fakes.
class FakePlatform final : public Platform {
public:
    Clock &clock() override { return fakeClock; }
    SystemLog &systemLog() override { return fakeLog; }
    UserDefaults &userDefaults() override { return fakeDefaults; }
    Screens &screens() override { return fakeScreens; }
    const KeyboardLayout &keyboardLayout() override { return fakeKeyboardLayout; }
    LoginItem &loginItem() override { return fakeLoginItem; }
    NotificationCenter &notificationCenter() override { return fakeNotifications; }
    std::unique_ptr<StatusItem> makeStatusItem() override
    {
        auto item = std::make_unique<FakeStatusItem>();
        statusItem = item.get();
        return item;
    }
    std::unique_ptr<KeyGrabber> makeKeyGrabber() override
    {
        auto grabber = std::make_unique<FakeKeyGrabber>();
        keyGrabber = grabber.get();
        return grabber;
    }
    void setSignalHandler(void (*handler)(int)) override { signalHandler = handler; }
    void setExceptionHandler(void (*handler)(const UncaughtException &)) override { exceptionHandler = handler; }

    FakeClock fakeClock;
    FakeSystemLog fakeLog;
    FakeUserDefaults fakeDefaults;
    FakeScreens fakeScreens;
    FakeKeyboardLayout fakeKeyboardLayout;
    FakeLoginItem fakeLoginItem;
    FakeNotificationCenter fakeNotifications;
    QPointer<FakeStatusItem> statusItem;
    QPointer<FakeKeyGrabber> keyGrabber;
    void (*signalHandler)(int) = nullptr;
    void (*exceptionHandler)(const UncaughtException &) = nullptr;
};

} // namespace korvo
