#include "World.h"

#include "BrokenPromise.h"
#include "Fakes/TestSettings.h"
#include "Platform/KeyboardLayout.h"
#include "Platform/LoginItem.h"
#include "Utilities/Spawn.h"
#include "sandbox/Workspace.h"

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace korvo::campaign {

namespace {

constexpr auto patience = 60s; // Of real time, for what takes milliseconds.

/// Turns the event loop until `isSo`. False if that takes far too long.
template <typename Condition> bool turnUntil(Condition isSo)
{
    QElapsedTimer elapsed;
    elapsed.start();
    QTimer beat;
    beat.start(20ms);
    while (!isSo()) {
        if (elapsed.hasExpired(std::chrono::milliseconds(patience).count()))
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

} // namespace

World::World(const QDateTime &start, const QString &folder) : clock(start), m_folder(folder)
{
    Clock::setShared(&clock);
    KeyboardLayout::setShared(&platform.keyboardLayout());
    LoginItem::setShared(&platform.loginItem());
    server.setClock([this] { return clock.now(); });
    QObject::connect(&server, &sandbox::SandboxServer::requestReceived, &server, [this] { ++requestCount; });
    promise(server.listen(), u"The sandbox listens: "_s + server.errorString());
    transport.transport.redirectHost(u"api.notion.com"_s, u"127.0.0.1"_s, server.port(), server.caFile());
    fillSettings();
}

World::~World()
{
    if (delegate)
        end();
    LoginItem::setShared(nullptr);
}

void World::fillSettings()
{
    JsonUserDefaults defaults(settingsFile());
    const auto filled = TestSettings::load(defaults);
    filled->setApiKey(server.apiKey());
    filled->setTimeTrackerDBId(workspace().timeTrackerId());
    filled->setTasksDBId(workspace().tasksId());
    const auto mapping = QJsonDocument(sandbox::Workspace::fieldMapping()).toJson();
    filled->setFieldMapping(FieldMapping::fromJson(mapping).value_or(FieldMapping()));
}

void World::launch()
{
    store = std::make_unique<JsonUserDefaults>(settingsFile());
    UserDefaults::setStandard(store.get());
    platform.store = store.get();
    settings = TestSettings::load(*store);
    delegate = std::make_unique<AppDelegate>(platform, transport, *settings);
    // A stop that was answered well lets the entry count anew, should it turn up again.
    QObject::connect(&timer(), &TimerViewModel::activeTimerChanged, &timer(), [this] {
        const auto &entry = timer().activeTimer();
        const auto id = entry ? entry->id : QString();
        if (std::exchange(m_shownEntry, id) != id)
            m_isReminded = false;
    });
    delegate->applicationDidFinishLaunching();
    delegate->findChild<QTimer *>(u"statusBarTimer"_s)->stop(); // The campaign ticks itself.
    settle();
    if (m_hasTray)
        promise(turnUntil([this] { return platform.item->isShown(); }), u"The item shows in a tray after a start"_s);
}

void World::quit()
{
    promise(end(), u"All that is under way ends with the program"_s);
}

bool World::end()
{
    delegate->applicationWillTerminate();
    const bool hasEnded = finishSpawned(5000);
    delegate.reset();
    finishSpawned(5000);
    settings.reset();
    store.reset();
    platform.store = nullptr;
    deliver();
    m_isReminded = false;
    return hasEnded;
}

bool World::isAtRest()
{
    const int loops = settings->isConfigured() ? 1 : 0;
    return transport.underWay() == 0 && !timer().isLoading() && spawnedCount() == loops
        && clock.sleeperCount() == loops;
}

void World::settle()
{
    const bool rests = turnUntil([this] { return isAtRest(); });
    promise(rests,
            u"A poll or an action comes to its end: %1 requests under way, %2 coroutines, %3 sleepers%4"_s
                .arg(transport.underWay())
                .arg(spawnedCount())
                .arg(clock.sleeperCount())
                .arg(timer().isLoading() ? u", busy"_s : QString()));
    deliver();
}

void World::deliver()
{
    for (int turn = 0; turn < 3; ++turn) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

void World::tick()
{
    const auto shown = platform.fakeNotifications.shown.size();
    QMetaObject::invokeMethod(delegate->findChild<QTimer *>(u"statusBarTimer"_s), "timeout");
    const auto reminders = platform.fakeNotifications.shown.size() - shown;
    promise(reminders <= (m_isReminded ? 0 : 1), u"One entry is reminded of once"_s);
    m_isReminded = m_isReminded || reminders > 0;
}

std::optional<QString> World::shownTitle()
{
    if (platform.fallback)
        return platform.fallback->title;
    if (m_hasTray && platform.item && platform.item->isShown())
        return tray.itemProperty(u"XAyatanaLabel"_s).toString();
    return std::nullopt;
}

void World::setTray(bool hasTray)
{
    m_hasTray = hasTray;
    if (hasTray)
        tray.ownWatcherName();
    else
        tray.releaseWatcherName();
    if (hasTray)
        promise(turnUntil([this] { return platform.item->isShown() && !platform.fallback; }),
                u"The item shows again in a tray that came back"_s);
    else
        promise(turnUntil([this] { return !platform.item->isShown() || platform.fallback; }),
                u"The item notices that its tray has gone"_s);
}

void World::stopByMenu()
{
    constexpr int stop = 4; // Behind "Open", a line and the task's name.
    if (platform.fallback) {
        platform.fallback->choose(u"Stop"_s);
    } else if (m_hasTray) {
        const auto menu = tray.itemProperty(u"Menu"_s).value<QDBusObjectPath>();
        tray.call(menu.path(), u"com.canonical.dbusmenu"_s, u"Event"_s,
                  {stop, u"clicked"_s, QVariant::fromValue(QDBusVariant(QString())), 0U});
    }
}

void World::typeQuickAdd(const QString &name)
{
    platform.keyGrabber->press();
    deliver();
    promise(platform.inputPanel && platform.inputPanel->isVisible(), u"The shortcut shows the quick-add panel"_s);
    auto *field = platform.inputPanel->window.findChild<QLineEdit *>();
    field->setText(name);
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(field, &enter);
    deliver();
    promise(!platform.inputPanel || !platform.inputPanel->isVisible(), u"The quick-add panel closes"_s);
}

void World::click()
{
    if (platform.fallback)
        platform.fallback->click();
    else if (m_hasTray)
        tray.call(u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, u"Activate"_s, {0, 24});
    deliver();
}

} // namespace korvo::campaign
