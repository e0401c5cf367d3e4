#pragma once

#include "Fakes/EventList.h"
#include "Fakes/FakeClock.h"
#include "Fakes/FakeDockTile.h"
#include "Fakes/FakeInputPanel.h"
#include "Fakes/FakeKeyGrabber.h"
#include "Fakes/FakeKeyboardLayout.h"
#include "Fakes/FakeLoginItem.h"
#include "Fakes/FakeMouseMonitor.h"
#include "Fakes/FakeNotificationCenter.h"
#include "Fakes/FakePanel.h"
#include "Fakes/FakeScreens.h"
#include "Fakes/FakeSingleInstance.h"
#include "Fakes/FakeStatusItem.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/FakeUserDefaults.h"
#include "Platform/Platform.h"

#include <QPointer>

#include <memory>

namespace korvo {

/// A desktop made of fakes.
class FakePlatform : public Platform {
public:
    FakePlatform()
    {
        fakeLog.events = events;
        fakeNotifications.events = events;
        fakeSingleInstance.events = events;
        fakeDockTile.events = events;
    }

    Clock &clock() override { return fakeClock; }
    SystemLog &systemLog() override { return fakeLog; }
    UserDefaults &userDefaults() override { return fakeDefaults; }
    Screens &screens() override { return fakeScreens; }
    const KeyboardLayout &keyboardLayout() override { return fakeKeyboardLayout; }
    LoginItem &loginItem() override { return fakeLoginItem; }
    NotificationCenter &notificationCenter() override { return fakeNotifications; }
    SingleInstance &singleInstance() override { return fakeSingleInstance; }
    DockTile &dockTile() override { return fakeDockTile; }
    std::unique_ptr<StatusItem> makeStatusItem() override
    {
        auto item = std::make_unique<FakeStatusItem>();
        statusItem = item.get();
        item->events = events;
        note(events, QStringLiteral("status item made"));
        return item;
    }
    std::unique_ptr<KeyGrabber> makeKeyGrabber() override
    {
        auto grabber = std::make_unique<FakeKeyGrabber>();
        keyGrabber = grabber.get();
        grabber->events = events;
        return grabber;
    }
    std::unique_ptr<Panel> makePanel(const PanelStyle &style) override
    {
        auto made = std::make_unique<FakePanel>(style);
        panel = made.get();
        made->events = events;
        ++panelCount;
        return made;
    }
    std::unique_ptr<InputPanel> makeInputPanel() override
    {
        auto made = std::make_unique<FakeInputPanel>();
        inputPanel = made.get();
        made->events = events;
        ++inputPanelCount;
        return made;
    }
    std::unique_ptr<MouseMonitor> makeMouseMonitor() override
    {
        auto monitor = std::make_unique<FakeMouseMonitor>();
        mouseMonitor = monitor.get();
        return monitor;
    }
    void setSignalHandler(void (*handler)(int)) override
    {
        note(events, QStringLiteral("signal handler"));
        signalHandler = handler;
    }
    void setExceptionHandler(void (*handler)(const UncaughtException &)) override
    {
        note(events, QStringLiteral("exception handler"));
        exceptionHandler = handler;
    }

    const std::shared_ptr<EventList> events = std::make_shared<EventList>(); ///< What all of them were told.
    FakeClock fakeClock;
    FakeSystemLog fakeLog;
    FakeUserDefaults fakeDefaults;
    FakeScreens fakeScreens;
    FakeKeyboardLayout fakeKeyboardLayout;
    FakeLoginItem fakeLoginItem;
    FakeNotificationCenter fakeNotifications;
    FakeSingleInstance fakeSingleInstance;
    FakeDockTile fakeDockTile;
    QPointer<FakeStatusItem> statusItem;
    QPointer<FakeKeyGrabber> keyGrabber;
    QPointer<FakePanel> panel;           ///< The last one that was made.
    int panelCount = 0;                  ///< How many have been made.
    QPointer<FakeInputPanel> inputPanel; ///< The same.
    int inputPanelCount = 0;
    QPointer<FakeMouseMonitor> mouseMonitor;
    void (*signalHandler)(int) = nullptr;
    void (*exceptionHandler)(const UncaughtException &) = nullptr;
};

} // namespace korvo
