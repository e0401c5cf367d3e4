// What may happen in a step.

#include "BrokenPromise.h"
#include "Campaign.h"
#include "Controllers/SettingsWindow.h"
#include "FaultDraw.h"
#include "sandbox/SampleSchema.h"
#include "sandbox/Workspace.h"

#include <QApplication>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace korvo::campaign {

namespace column = sandbox::sampleproperty;

/// Some polls in a row.
void Campaign::passTime()
{
    if (m_dice.oneIn(3))
        endFaults(m_world);
    const int polls = m_dice.between(1, 20);
    tell(u"%1 polls%2"_s.arg(polls).arg(isClean() ? u", all well"_s : QString()));
    for (int i = 0; i < polls; ++i) {
        if (m_dice.oneIn(4))
            staySilent();
        poll();
    }
}

/// Up to a millisecond before the next poll, nothing goes out.
void Campaign::staySilent()
{
    keepAccount();
    const auto wake = m_world.clock.nextWake().value_or(0);
    const auto requests = m_world.requestCount;
    const auto left = wake - m_world.clock.milliseconds();
    if (left <= 0)
        return; // The poll is due: a long pause of an action's ended a moment ago.
    for (const qint64 part : {left / 3, left / 2}) {
        m_world.clock.turnTo(wake - part);
        m_world.tick();
        World::deliver();
    }
    m_world.clock.turnTo(wake - 1);
    m_world.tick();
    World::deliver();
    checkSilence(m_world, requests);
}

void Campaign::poll()
{
    keepAccount();
    ++m_polls;
    const bool isUndisturbed = isClean();
    const auto before = m_world.timer().activeTimer();
    m_world.clock.turnTo(m_world.clock.nextWake().value_or(0));
    m_world.settle();
    checkPollRequests(m_world, isUndisturbed);
    const auto expected
        = m_world.timer().activeTimer() ? m_world.settings->pollIntervalActive() : m_world.settings->pollIntervalIdle();
    promise(m_world.clock.lastSleep() == expected, u"The next poll comes after %1 s"_s.arg(expected));
    if (isUndisturbed)
        checkShownTimer(m_world);
    if (m_world.timer().hasNetworkError())
        promise(m_world.timer().activeTimer() == before, u"A failed poll leaves the timer as it was"_s);
    m_world.tick();
}

void Campaign::press(const Press &press)
{
    if (press.entries > 0 && m_dice.oneIn(4))
        planLostCreates();
    tell(press.words + (isClean() ? u", all well"_s : QString()));
    keepAccount();
    ++m_presses;
    auto &workspace = m_world.workspace();
    const auto &active = m_world.timer().activeTimer();
    const auto *activePage = active ? workspace.page(active->id) : nullptr;
    const bool isActiveThere = !active || (activePage && !activePage->isInTrash);
    const auto activeId = active ? active->id : QString();
    const bool isSure = isClean() && isActiveThere && canWrite(m_world);
    const auto entriesBefore = pageIds(m_world, workspace.timeTrackerId());
    const auto tasksBefore = pageIds(m_world, workspace.tasksId());

    press.act();
    if (m_dice.oneIn(3))
        press.act();     // A second press at once is none.
    if (m_dice.oneIn(4)) // The poll that is due comes while the action is under way.
        m_world.clock.turnTo(m_world.clock.nextWake().value_or(0));
    m_world.settle();

    int lost = 0; // Creates that may have been carried out all the same.
    for (const auto &send : std::as_const(m_world.transport.sends))
        lost += send.method == "POST" && send.path == "/v1/pages"_L1 && send.status == 0 ? 1 : 0;
    const auto entries = (pageIds(m_world, workspace.timeTrackerId()) - entriesBefore).size();
    const auto tasks = (pageIds(m_world, workspace.tasksId()) - tasksBefore).size();
    m_repeated += entries > 1 ? 1 : 0;
    const auto check = [&](const QString &what, qsizetype made, int meant) {
        const auto words = u"One press made %1 %2"_s.arg(made).arg(what);
        promise(made <= 3 * meant, words + u", more than the sends of one create"_s);
        promise(made <= meant + lost, words + u", though %1 answers were lost"_s.arg(lost));
        promise(!isSure || made == meant,
                words + u" though all was well: "_s + m_world.timer().errorMessage().value_or(u"no error"_s));
    };
    check(u"entries"_s, entries, press.entries);
    check(u"tasks"_s, tasks, press.tasks);
    if (isSure && (press.isStop || press.entries > 0))
        promise(!workspace.runningEntries().contains(activeId), u"The timer that was shown is ended"_s);
    if (isSure)
        poll(); // The action's own may have been overtaken by one that was due.
}

/// Answers to creates that get lost, each with the page made: what the retries may double.
void Campaign::planLostCreates()
{
    using sandbox::Fault;
    const auto kind = m_dice.of({Fault::Kind::loseAnswer, Fault::Kind::cutBody, Fault::Kind::cutHeaders});
    const sandbox::FaultMatch match{
        .method = "POST", .pathPrefix = "/v1/pages", .nth = m_dice.between(1, 2), .times = m_dice.between(1, 4)};
    m_world.server.faults().add(Fault::of(kind), match);
    tell(u"%1 creates lose their answer from the %2."_s.arg(match.times).arg(match.nth));
}

void Campaign::start()
{
    const auto &tasks = m_world.timer().todayTasks();
    if (tasks.isEmpty())
        return;
    const auto task = m_dice.of(tasks);
    press({.words = u"start '%1'"_s.arg(task.name),
           .act = [this, task] { m_world.timer().startTimer(task); },
           .entries = 1});
}

void Campaign::stop()
{
    const bool isByMenu = m_dice.oneIn(2);
    press({.words = isByMenu ? u"stop by the menu"_s : u"stop"_s,
           .act =
               [this, isByMenu] {
                   if (isByMenu && m_world.shownTitle())
                       m_world.stopByMenu();
                   else
                       m_world.timer().stopTimer();
               },
           .isStop = true});
}

void Campaign::quickAdd()
{
    const auto name = u"Quick %1 %2"_s.arg(++m_names).arg(
        m_dice.of<QString>({u"call"_s, u"“Müller” & Söhne"_s, u"日本語"_s, u"\U0001F600"_s, u"a\tb\\\"c"_s}));
    const bool isTyped = m_dice.oneIn(2);
    press({.words = u"quick add '%1'%2"_s.arg(name, isTyped ? u", typed"_s : QString()),
           .act =
               [this, name, isTyped] {
                   if (isTyped && !m_world.timer().isLoading())
                       m_world.typeQuickAdd(name);
                   else
                       m_world.timer().quickAddTask(name);
               },
           .entries = 1,
           .tasks = 1});
}

void Campaign::otherDevice()
{
    auto &workspace = m_world.workspace();
    const auto running = workspace.runningEntries();
    switch (m_dice.below(5)) {
    case 0:
    case 1: {
        const auto tasks = m_world.workspace().rows(workspace.tasksId());
        const auto name = workspace.titleOf(*m_dice.of(tasks));
        tell(u"another device starts '%1'"_s.arg(name));
        workspace.startTimer(name);
        break;
    }
    case 2:
    case 3:
        tell(u"another device stops %1 timers"_s.arg(running.size()));
        workspace.stopTimers();
        break;
    default:
        if (running.isEmpty())
            return;
        const auto id = m_dice.of(running);
        tell(u"another device throws away "_s + id);
        workspace.setInTrash(id, true);
        m_thrownAway.insert(id);
    }
}

void Campaign::faults()
{
    if (m_dice.oneIn(3)) {
        tell(u"faults end"_s);
        endFaults(m_world);
    } else if (m_dice.oneIn(4)) {
        tell(u"connections drop"_s);
        m_world.server.dropConnections();
        World::deliver();
    } else {
        tell(u"faults: "_s + planFaults(m_world, m_dice));
    }
}

/// However long it lasts, one poll follows.
void Campaign::suspend()
{
    const bool isInPoll = m_dice.oneIn(3);
    const bool areDropped = m_dice.oneIn(2);
    const int minutes = m_dice.between(10, 12 * 60);
    const bool isUndisturbed = isClean() && !areDropped;
    tell(u"%1 minutes of suspension%2%3"_s.arg(minutes).arg(isInPoll ? u" in a poll"_s : QString(),
                                                            areDropped ? u", connections drop"_s : QString()));
    keepAccount();
    if (isInPoll)
        m_world.clock.turnTo(m_world.clock.nextWake().value_or(0));
    if (isInPoll && m_dice.oneIn(2))
        QCoreApplication::processEvents(); // Its request is out, maybe.
    m_world.clock.turnTo(m_world.clock.milliseconds() + minutes * qint64{60000});
    if (areDropped)
        m_world.server.dropConnections();
    m_world.settle();
    checkPollRequests(m_world, isUndisturbed);
    promise(m_world.clock.nextWake().value_or(0) > m_world.clock.milliseconds() || !isUndisturbed,
            u"One poll follows a suspension"_s);
    if (isUndisturbed)
        checkShownTimer(m_world);
}

void Campaign::changeTray()
{
    switch (m_dice.below(3)) {
    case 0:
        tell(u"the tray restarts"_s);
        m_world.setTray(false);
        m_world.setTray(true);
        break;
    case 1:
        tell(u"the tray goes"_s);
        m_world.setTray(false);
        break;
    default:
        tell(u"the tray is there"_s);
        m_world.setTray(true);
    }
}

void Campaign::setReminderHours(double hours)
{
    if (hours != m_world.settings->reminderHours())
        m_foreign.remove(u"reminderHours"_s);
    m_world.settings->setReminderHours(hours);
}

/// Lets the settings follow the workspace, as after a visit to them.
void Campaign::mendMapping()
{
    const auto &workspace = m_world.workspace();
    const auto name = [&](const QString &database, const QString &id) {
        return workspace.database(database)->propertyById(id)->name;
    };
    const auto tracker = workspace.timeTrackerId();
    const auto tasks = workspace.tasksId();
    m_world.settings->setApiKey(m_world.server.apiKey());
    m_world.settings->changeFieldMapping([&](FieldMapping &mapping) {
        mapping.ttStatus = name(tracker, column::entryStatus);
        mapping.ttStartTime = name(tracker, column::entryStart);
        mapping.ttEndTime = name(tracker, column::entryEnd);
        mapping.ttTaskRelation = name(tracker, column::entryTask);
        mapping.taskDate = name(tasks, column::taskDate);
        mapping.taskTimerStatus = name(tasks, column::taskTimer);
    });
}

void Campaign::changeSettings()
{
    auto &settings = *m_world.settings;
    switch (m_dice.below(11)) {
    case 0:
        settings.setPollIntervalActive(m_dice.of({10.0, 15.0, 30.0, 30.0, 60.0, 120.0}));
        tell(u"active interval %1"_s.arg(settings.pollIntervalActive()));
        break;
    case 1:
        settings.setPollIntervalIdle(m_dice.of({30.0, 60.0, 60.0, 120.0, 300.0}));
        tell(u"idle interval %1"_s.arg(settings.pollIntervalIdle()));
        break;
    case 2:
        settings.setReminderEnabled(m_dice.oneIn(2));
        setReminderHours(m_dice.of({0.0, 0.5, 1.5, 8.0, 12.0}));
        tell(u"reminder %1, %2 h"_s.arg(settings.reminderEnabled()).arg(settings.reminderHours()));
        break;
    case 3:
        settings.setShowDockIcon(!settings.showDockIcon());
        m_world.delegate->updateDockIconVisibility();
        tell(u"Dock icon %1"_s.arg(settings.showDockIcon()));
        break;
    case 4:
        settings.setQuickAddKeyCode(m_dice.of<quint32>({45, 122, 49, 12}));
        settings.setQuickAddModifiers(m_dice.of<quint32>({0x300, 0x900, 0x1800}));
        m_world.delegate->registerGlobalHotkey();
        tell(u"shortcut %1 %2"_s.arg(settings.quickAddKeyCode()).arg(settings.quickAddModifiers()));
        break;
    case 5:
        settings.setLaunchAtLogin(!settings.launchAtLogin());
        tell(u"login %1"_s.arg(settings.launchAtLogin()));
        break;
    case 6:
        tell(u"a wrong key"_s);
        settings.setApiKey(u"ntn_wrong"_s);
        break;
    case 7:
        tell(u"optional properties go"_s);
        settings.changeFieldMapping([](FieldMapping &mapping) {
            mapping.ttEndTime.clear();
            mapping.taskTimerStatus.clear();
        });
        break;
    default:
        tell(u"the mapping is mended"_s);
        mendMapping();
    }
    checkStoredSettings(m_world, m_foreign);
}

void Campaign::changeWorkspace()
{
    struct Column {
        QString database;
        QString id;
    };
    auto &workspace = m_world.workspace();
    const auto tracker = workspace.timeTrackerId();
    const auto column = m_dice.of<Column>({{tracker, column::entryStatus},
                                           {tracker, column::entryStart},
                                           {tracker, column::entryTask},
                                           {tracker, column::entryEnd},
                                           {workspace.tasksId(), column::taskDate},
                                           {workspace.tasksId(), column::taskTimer}});
    const auto from = workspace.database(column.database)->propertyById(column.id)->name;
    const auto to = u"Column %1"_s.arg(++m_names);
    tell(u"the column '%1' becomes '%2'"_s.arg(from, to));
    workspace.renameProperty(column.database, from, to);
    if (m_dice.oneIn(2))
        mendMapping();
}

void Campaign::writeAsAnother()
{
    JsonUserDefaults other(m_world.settingsFile());
    const double number = m_dice.below(1000) + 0.25;
    const auto key = m_dice.of<QString>({u"reminderHours"_s, u"somebodyElsesKey"_s});
    tell(u"another process sets %1 to %2"_s.arg(key).arg(number));
    other.set({{key, number}});
    m_foreign.insert(key, number);
    m_world.settings->setShowDockIcon(m_world.settings->showDockIcon()); // Writes them all.
    checkStoredSettings(m_world, m_foreign);
}

void Campaign::useWindows()
{
    switch (m_dice.below(3)) {
    case 0:
        tell(u"the panel opens and closes"_s);
        m_world.click();
        m_world.click();
        break;
    case 1:
        tell(u"the quick-add panel opens and closes"_s);
        for (int press = 0; press < 2; ++press) {
            m_world.platform.keyGrabber->press();
            World::deliver();
            m_world.settle();
        }
        break;
    default:
        tell(u"the settings open and close"_s);
        openAndCloseSettings(m_dice.oneIn(2));
        m_world.settle();
        checkStoredSettings(m_world, m_foreign);
    }
}

void Campaign::openAndCloseSettings(bool isLoadWaitedFor)
{
    m_world.delegate->openSettings();
    if (isLoadWaitedFor)
        m_world.settle();
    const auto windows = QApplication::topLevelWidgets();
    for (auto *window : windows) {
        if (qobject_cast<SettingsWindow *>(window))
            window->close();
    }
}

void Campaign::restart()
{
    const bool isInPoll = m_dice.oneIn(2);
    tell(u"restart%1"_s.arg(isInPoll ? u" in a poll"_s : QString()));
    if (isInPoll) {
        m_world.clock.turnTo(m_world.clock.nextWake().value_or(0));
        QCoreApplication::processEvents();
    }
    m_world.quit();
    m_foreign.remove(u"reminderHours"_s); // What is read now.
    m_world.launch();
    checkStoredSettings(m_world, m_foreign);
}

} // namespace korvo::campaign
