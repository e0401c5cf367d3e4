#pragma once

#include "AppDelegate.h"
#include "Campaign/CampaignPlatform.h"
#include "Campaign/TurnedClock.h"
#include "Campaign/WatchedTransport.h"
#include "Models/AppSettings.h"
#include "Platform/FakeTray.h"
#include "Platform/Linux/JsonUserDefaults.h"
#include "sandbox/SandboxServer.h"

#include <QString>

#include <memory>

namespace korvo::campaign {

/// The program as it runs, a workspace on a server of its own, and a tray, all in one process.
class World {
public:
    World(const QDateTime &start, const QString &folder);
    ~World();
    Q_DISABLE_COPY_MOVE(World)

    /// Starts the program, and waits until its first poll is over.
    void launch();
    /// Ends it as a user does, with whatever is under way.
    void quit();

    /// Turns the event loop until nothing is under way but the sleep between polls.
    void settle();
    /// Delivers what stands in the queue of events.
    static void deliver();
    /// Lets the tick of a second go.
    void tick();

    /// What the tray shows beside the picture; none while there is neither a tray nor another in its place.
    std::optional<QString> shownTitle();
    bool hasTray() const { return m_hasTray; }
    void setTray(bool hasTray);
    void click();      ///< On the status item.
    void stopByMenu(); ///< The item's menu, where there is one.
    /// Types a name into the panel of the shortcut.
    void typeQuickAdd(const QString &name);

    QString settingsFile() const { return m_folder + QStringLiteral("/config/Korvo/defaults.json"); }
    QString logFile() const { return m_folder + QStringLiteral("/state/Korvo/korvo.log"); }
    QString folder() const { return m_folder; }

    TimerViewModel &timer() { return delegate->timerViewModel(); }
    sandbox::Workspace &workspace() { return server.workspace(); }

    TurnedClock clock;
    sandbox::SandboxServer server;
    qint64 requestCount = 0; ///< That the server has met.
    WatchedTransport transport;
    CampaignPlatform platform{clock};
    FakeTray tray;
    std::unique_ptr<JsonUserDefaults> store;
    std::unique_ptr<AppSettings> settings;
    std::unique_ptr<AppDelegate> delegate;

private:
    bool isAtRest();
    bool end(); ///< False if something goes on after the end.
    void fillSettings();

    const QString m_folder;
    bool m_hasTray = true;
    QString m_shownEntry;
    bool m_isReminded = false; ///< Of that entry.
};

} // namespace korvo::campaign
