#pragma once

#include "Fakes/FakeClock.h"
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
    std::unique_ptr<StatusItem> makeStatusItem() override
    {
        auto item = std::make_unique<FakeStatusItem>();
        statusItem = item.get();
        return item;
    }
    void setSignalHandler(void (*handler)(int)) override { signalHandler = handler; }

    FakeClock fakeClock;
    FakeSystemLog fakeLog;
    FakeUserDefaults fakeDefaults;
    FakeScreens fakeScreens;
    QPointer<FakeStatusItem> statusItem;
    void (*signalHandler)(int) = nullptr;
};

} // namespace korvo
