#include "Promises.h"

#include "BrokenPromise.h"
#include "Fakes/TestSettings.h"
#include "Utilities/LogFile.h"
#include "sandbox/SampleSchema.h"
#include "sandbox/Workspace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace korvo::campaign {

namespace {

using sandbox::Workspace;
namespace column = sandbox::sampleproperty;

constexpr double mebibyte = 1024.0 * 1024.0;

QString nameOf(World &world, const QString &databaseId, const QString &propertyId)
{
    return world.workspace().database(databaseId)->propertyById(propertyId)->name;
}

/// "1:02:03", worked out anew: the program's own words are what is judged.
QString clockText(qint64 milliseconds)
{
    const auto seconds = std::max<qint64>(0, milliseconds / 1000);
    return QString::asprintf("%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

} // namespace

QList<RunningEntry> runningEntries(World &world)
{
    const Workspace &workspace = world.workspace();
    const auto *task = workspace.database(workspace.timeTrackerId())->propertyById(column::entryTask);
    QList<RunningEntry> entries;
    const auto ids = workspace.runningEntries();
    for (const auto &id : ids) {
        const auto *page = workspace.page(id);
        const auto start = page->values.value(column::entryStart).toObject().value("start"_L1).toString();
        entries.append({id, QDateTime::fromString(start, Qt::ISODate), workspace.relatedIds(*page, *task).value(0)});
    }
    return entries;
}

QSet<QString> pageIds(World &world, const QString &databaseId)
{
    QSet<QString> ids;
    const auto rows = world.workspace().rows(databaseId);
    for (const auto *row : rows)
        ids.insert(row->id);
    return ids;
}

bool canPoll(World &world)
{
    const auto mapping = world.settings->fieldMapping();
    const auto tracker = world.workspace().timeTrackerId();
    return world.settings->apiKey() == world.server.apiKey()
        && mapping.ttStatus == nameOf(world, tracker, column::entryStatus)
        && mapping.ttStartTime == nameOf(world, tracker, column::entryStart);
}

bool canWrite(World &world)
{
    const auto mapping = world.settings->fieldMapping();
    const auto tracker = world.workspace().timeTrackerId();
    const auto tasks = world.workspace().tasksId();
    const auto fits = [&](const QString &name, const QString &database, const QString &id) {
        return name.isEmpty() || name == nameOf(world, database, id);
    };
    return canPoll(world) && mapping.ttTaskRelation == nameOf(world, tracker, column::entryTask)
        && fits(mapping.ttEndTime, tracker, column::entryEnd) && fits(mapping.taskDate, tasks, column::taskDate)
        && fits(mapping.taskTimerStatus, tasks, column::taskTimer);
}

void checkShownTimer(World &world)
{
    auto &timer = world.timer();
    const auto &shown = timer.activeTimer();
    if (!canPoll(world)) {
        promise(timer.hasNetworkError() && timer.errorMessage(), u"A poll that the workspace refuses shows an error"_s);
        return;
    }
    promise(!timer.hasNetworkError() && !timer.errorMessage(),
            u"A good poll leaves no error: "_s + timer.errorMessage().value_or(u"(no words)"_s));

    const auto running = runningEntries(world);
    if (running.isEmpty()) {
        promise(!shown, u"No timer is shown where none runs"_s);
        return;
    }
    const auto latest = std::ranges::max(running, {}, &RunningEntry::start).start;
    promise(shown.has_value(), u"The timer that runs is shown"_s);
    const auto it = std::ranges::find(running, shown->id, &RunningEntry::id);
    promise(it != running.end(), u"The shown timer is one that runs"_s);
    promise(it->start == latest, u"The shown timer is the one that began last"_s);
    promise(shown->startTime == it->start, u"The shown timer has the entry's start"_s);
    promise(timer.isTimerRunning(), u"The shown timer runs"_s);
    const bool isTaskKnown = world.settings->fieldMapping().ttTaskRelation
        == nameOf(world, world.workspace().timeTrackerId(), column::entryTask);
    if (const auto *task = world.workspace().page(it->taskId); task && isTaskKnown)
        promise(shown->taskName == world.workspace().titleOf(*task), u"The shown timer has its task's name"_s);
}

void checkStatusItem(World &world)
{
    const auto title = world.shownTitle();
    if (!title)
        return;
    const auto &shown = world.timer().activeTimer();
    const auto expected = shown && world.timer().isTimerRunning()
        ? u' ' + clockText(world.clock.milliseconds() - shown->startTime.toMSecsSinceEpoch())
        : QString();
    promise(*title == expected, u"The tray shows '%1' and not '%2'"_s.arg(expected, *title));
}

void checkPollRequests(World &world, bool isUndisturbed)
{
    QSet<QString> operations;
    for (const auto &send : std::as_const(world.transport.sends))
        operations.insert(QString::fromLatin1(send.method) + u' ' + send.path);
    const auto sends = world.transport.sends.size();
    promise(sends >= 1, u"A poll asks the workspace"_s);
    promise(operations.size() <= 5, u"A poll has five operations at most, not %1"_s.arg(operations.size()));
    const bool isSure = isUndisturbed && canWrite(world); // What is refused is sent again.
    promise(sends <= (isSure ? 1 : 3) * operations.size(),
            u"A poll sends each of its %1 operations %2, but %3 sends went out"_s.arg(operations.size())
                .arg(isSure ? u"once"_s : u"three times at most"_s)
                .arg(sends));
}

void checkSilence(World &world, qint64 requestsBefore)
{
    promise(world.transport.sends.isEmpty(),
            u"Nothing is sent between polls, but %1 was"_s.arg(world.transport.sends.value(0).path));
    promise(world.requestCount == requestsBefore, u"Nothing reaches the server between polls"_s);
}

void checkStoredSettings(World &world, const QMap<QString, double> &foreignNumbers)
{
    const QFileInfo file(world.settingsFile());
    const auto names = file.dir().entryList(QDir::Files | QDir::Hidden);
    promise(names == QStringList{file.fileName()}, u"The settings' file is alone: "_s + names.join(u", "_s));
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    promise(!(file.permissions() & others), u"Nobody else can read the settings"_s);

    JsonUserDefaults store(world.settingsFile());
    const auto stored = TestSettings::load(store);
    const AppSettings &now = *world.settings;
    const auto same = [&](const QString &key, const auto &found, const auto &expected) {
        if (!foreignNumbers.contains(key))
            promise(found == expected, u"The stored %1 is that of the settings"_s.arg(key));
    };
    same(u"apiKey"_s, stored->apiKey(), now.apiKey());
    same(u"timeTrackerDBId"_s, stored->timeTrackerDBId(), now.timeTrackerDBId());
    same(u"tasksDBId"_s, stored->tasksDBId(), now.tasksDBId());
    same(u"fieldMapping"_s, stored->fieldMapping(), now.fieldMapping());
    same(u"pollIntervalActive"_s, stored->pollIntervalActive(), now.pollIntervalActive());
    same(u"pollIntervalIdle"_s, stored->pollIntervalIdle(), now.pollIntervalIdle());
    same(u"launchAtLogin"_s, stored->launchAtLogin(), now.launchAtLogin());
    same(u"reminderHours"_s, stored->reminderHours(), now.reminderHours());
    same(u"reminderEnabled"_s, stored->reminderEnabled(), now.reminderEnabled());
    same(u"useNotchUI"_s, stored->useNotchUI(), now.useNotchUI());
    same(u"quickAddKeyCode"_s, stored->quickAddKeyCode(), now.quickAddKeyCode());
    same(u"quickAddModifiers"_s, stored->quickAddModifiers(), now.quickAddModifiers());
    same(u"showDockIcon"_s, stored->showDockIcon(), now.showDockIcon());
    for (auto it = foreignNumbers.begin(); it != foreignNumbers.end(); ++it)
        promise(store.number(it.key()) == it.value(), u"%1 is as another process wrote it"_s.arg(it.key()));
}

void checkLog(World &world)
{
    const QFileInfo file(world.logFile());
    const auto names = file.dir().entryList(QDir::Files | QDir::Hidden);
    promise(names == QStringList{file.fileName()}, u"The log is alone: "_s + names.join(u", "_s));
    constexpr qint64 longestLine = 61 * 1024; // The largest error that is drawn, with the words before it.
    promise(file.size() <= LogFile::maxSize + longestLine, u"The log has %1 bytes"_s.arg(file.size()));
}

void Footprint::sample()
{
    m_samples.append(ProcessFigures::take());
}

template <typename Figure> Footprint::Thirds Footprint::thirds(Figure figure) const
{
    const auto median = [&](qsizetype from, qsizetype count) {
        QList<qint64> values;
        for (const auto &sample : m_samples.sliced(from, count))
            values.append(sample.*figure);
        std::ranges::sort(values);
        return values.isEmpty() ? 0.0 : double(values[values.size() / 2]);
    };
    const auto warmUp = m_samples.size() / 4;
    const auto third = (m_samples.size() - warmUp) / 3;
    return {median(warmUp, third), median(m_samples.size() - third, third)};
}

void Footprint::check() const
{
    constexpr double fileAllowance = 3;
    const auto files = thirds(&ProcessFigures::files);
    promise(files.last - files.first <= fileAllowance, u"The number of open files does not grow: "_s + words());
#ifndef __SANITIZE_ADDRESS__ // It keeps freed memory back, and looks for leaks itself.
    constexpr double heapAllowance = 0.25 * mebibyte;
    constexpr double anonymousAllowance = 4 * mebibyte; // Pages come into use late; what leaks is in the heap.
    const auto heap = thirds(&ProcessFigures::heap);
    promise(heap.last - heap.first <= heapAllowance, u"The heap does not grow: "_s + words());
    const auto anonymous = thirds(&ProcessFigures::anonymous);
    promise(anonymous.last - anonymous.first <= anonymousAllowance, u"The memory does not grow: "_s + words());
#endif
}

QString Footprint::words() const
{
    const auto heap = thirds(&ProcessFigures::heap);
    const auto anonymous = thirds(&ProcessFigures::anonymous);
    const auto files = thirds(&ProcessFigures::files);
    return u"heap %1 then %2 MiB, anonymous memory %3 then %4 MiB, open files %5 then %6"_s
        .arg(heap.first / mebibyte, 0, 'f', 3)
        .arg(heap.last / mebibyte, 0, 'f', 3)
        .arg(anonymous.first / mebibyte, 0, 'f', 2)
        .arg(anonymous.last / mebibyte, 0, 'f', 2)
        .arg(files.first)
        .arg(files.last);
}

} // namespace korvo::campaign
