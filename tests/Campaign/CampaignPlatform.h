#pragma once

#include "Campaign/TurnedClock.h"
#include "Fakes/FakePlatform.h"
#include "Platform/Freedesktop/TrayStatusItem.h"

namespace korvo::campaign {

/// A desktop with a real store and a real tray item; clock, windows and keys are the campaign's own.
class CampaignPlatform final : public FakePlatform {
public:
    explicit CampaignPlatform(TurnedClock &clock) : m_clock(clock)
    {
        Log::setSystemLog(nullptr); // The file is enough.
    }

    Clock &clock() override { return m_clock; }
    UserDefaults &userDefaults() override { return *store; }
    std::unique_ptr<StatusItem> makeStatusItem() override
    {
        auto made = std::make_unique<TrayStatusItem>([this] {
            auto other = std::make_unique<FakeStatusItem>();
            fallback = other.get();
            return other;
        });
        item = made.get();
        return made;
    }

    /// Forgets what the fakes have noted, so that they hold no more at the end than at the beginning.
    void forget()
    {
        events->all.clear();
        fakeDockTile.contents.clear();
        fakeDockTile.calls.clear();
        fakeLoginItem.calls.clear();
        fakeNotifications.shown.clear();
        fakeLog.lines.clear();
        if (keyGrabber) {
            keyGrabber->asked.clear();
            keyGrabber->calls.clear();
        }
        if (fallback) {
            fallback->imageKeys.clear();
            fallback->titles.clear();
        }
    }

    UserDefaults *store = nullptr;
    QPointer<TrayStatusItem> item;
    QPointer<FakeStatusItem> fallback; ///< In use while there is no tray on the bus.

private:
    TurnedClock &m_clock;
};

} // namespace korvo::campaign
