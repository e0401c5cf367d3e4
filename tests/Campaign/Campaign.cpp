#include "Campaign.h"

#include "BrokenPromise.h"
#include "FaultDraw.h"
#include "Utilities/Spawn.h"
#include "Warnings.h"
#include "sandbox/SampleSchema.h"
#include "sandbox/Workspace.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

#include <array>
#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

namespace korvo::campaign {

namespace {

constexpr qint64 dayMilliseconds = 24 * 3600 * 1000;
constexpr int sampleCount = 80;

/// Some day and minute of the year 2026, so that the clocks are put forward or back in some campaigns.
QDateTime drawStart(Dice &dice)
{
    return QDateTime(QDate(2026, 1, 1).addDays(dice.below(365)), QTime(9, 0)).addSecs(60 * dice.below(600));
}

/// A log that has nearly reached its limit, as of earlier runs.
void fillLog(const QString &path)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    for (int line = 0; line < 11000; ++line)
        file.write("[2026-01-01 09:30:12.345] [ERROR] Poll failed: Network error: The request timed out\n");
}

} // namespace

Campaign::Campaign(const Options &options, const QString &folder) :
    m_options(options),
    m_dice(options.seed),
    m_world(drawStart(m_dice), folder)
{
    fillLog(m_world.logFile());
    m_start = m_world.clock.milliseconds();
}

void Campaign::run()
{
    tell(u"start"_s);
    m_world.launch();
    m_nextSample = m_world.clock.milliseconds();
    const auto end = m_start + qint64(m_options.days * double(dayMilliseconds));
    while (m_world.clock.milliseconds() < end && (m_options.mostSteps == 0 || m_steps < m_options.mostSteps))
        step();

    endFaults(m_world);
    tell(u"last poll"_s);
    m_world.clock.turnTo(m_world.clock.nextWake().value_or(0));
    m_world.settle();
    checkShownTimer(m_world);
    checkStoredSettings(m_world, m_foreign);
    m_footprint.check();

    tell(u"quit"_s);
    m_world.quit();
    promise(spawnedCount() == 0, u"No coroutine is left"_s);
    promise(m_world.clock.sleeperCount() == 0, u"Nobody sleeps any more"_s);
    const auto left = QDir(m_world.folder() + u"/run"_s).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    promise(left.isEmpty(), u"Nothing is left in the session's folder: "_s + left.join(u", "_s));
}

void Campaign::step()
{
    ++m_steps;
    m_world.transport.clear();
    draw();
    keepAccount();
    m_world.tick();
    m_world.transport.clear();
    checkStatusItem(m_world);
    promise(m_world.transport.sends.isEmpty(), u"A tick sends nothing"_s);
    promise(warnings().isEmpty(), u"Qt has nothing to complain of: "_s + warnings().join(u"; "_s));
    checkLog(m_world);

    m_world.server.clearRequests();
    m_world.platform.forget();
    m_world.tray.received.clear();
    m_world.tray.registered.clear();
    if (m_world.clock.milliseconds() >= m_nextSample) {
        housekeeping();
        sample();
        m_nextSample = m_world.clock.milliseconds() + qint64(m_options.days * double(dayMilliseconds)) / sampleCount;
    }
}

void Campaign::draw()
{
    struct Choice {
        int weight;
        void (Campaign::*act)();
    };
    static constexpr std::array choices{
        Choice{130, &Campaign::passTime},      Choice{27, &Campaign::start},
        Choice{24, &Campaign::stop},           Choice{18, &Campaign::quickAdd},
        Choice{27, &Campaign::otherDevice},    Choice{36, &Campaign::faults},
        Choice{5, &Campaign::suspend},         Choice{9, &Campaign::changeTray},
        Choice{18, &Campaign::changeSettings}, Choice{5, &Campaign::changeWorkspace},
        Choice{3, &Campaign::writeAsAnother},  Choice{9, &Campaign::useWindows},
        Choice{1, &Campaign::restart},
    };
    int total = 0;
    for (const auto &choice : choices)
        total += choice.weight;
    int drawn = m_dice.below(total);
    for (const auto &choice : choices) {
        drawn -= choice.weight;
        if (drawn < 0) {
            (this->*choice.act)();
            return;
        }
    }
}

void Campaign::tell(const QString &words)
{
    const auto line = u"%1. %2 %3"_s.arg(m_steps).arg(m_world.clock.now().toString(Qt::ISODate), words);
    m_trace.addData(line.toUtf8());
    m_lastSteps.append(line);
    if (m_lastSteps.size() > 20)
        m_lastSteps.removeFirst();
    if (m_options.isVerbose)
        QTextStream(stdout) << line << '\n';
}

/// All that was sent goes into the trace, by which two runs are compared.
void Campaign::keepAccount()
{
    for (const auto &send : std::as_const(m_world.transport.sends)) {
        m_trace.addData(send.method + ' ' + send.path.toUtf8() + ' ' + QByteArray::number(send.status) + '\n');
        m_trace.addData(send.body);
    }
    promise(m_world.requestCount <= m_world.transport.total, u"No request goes out twice for one send"_s);
    m_world.transport.clear();
}

bool Campaign::isClean()
{
    return m_world.server.faults().isEmpty();
}

/// Keeps the workspace as large as it is: what is over is taken out, and tasks that a failure left marked are put right,
/// as a tidy user does.
void Campaign::housekeeping()
{
    auto &workspace = m_world.workspace();
    namespace column = sandbox::sampleproperty;
    const auto running = workspace.runningEntries();
    const auto entries = pageIds(m_world, workspace.timeTrackerId()) + std::exchange(m_thrownAway, {});
    for (const auto &id : entries) {
        if (running.contains(id) || !workspace.page(id))
            continue;
        workspace.setProperty(id, column::entryTask, QJsonObject{{u"relation"_s, QJsonArray{}}});
        workspace.removePage(id);
    }
    QSet<QString> used;
    for (const auto &entry : runningEntries(m_world))
        used.insert(entry.taskId);
    const auto tasks = pageIds(m_world, workspace.tasksId());
    for (const auto &id : tasks) {
        if (used.contains(id))
            continue;
        if (workspace.titleOf(*workspace.page(id)).startsWith(u"Quick "_s)) {
            workspace.removePage(id);
            continue;
        }
        workspace.setProperty(id, column::taskTimer,
                              QJsonObject{{u"select"_s, QJsonObject{{u"name"_s, u"Stopped"_s}}}});
    }
}

/// In the same state each time: all well, one connection, and the settings' window, which stays until the next one, with
/// all that it offers.
void Campaign::sample()
{
    endFaults(m_world);
    mendMapping();
    openAndCloseSettings(true);
    m_world.settle();
    m_world.server.dropConnections();
    World::deliver();
    poll();
    m_world.server.clearRequests();
    keepAccount();
    m_footprint.sample();
}

QString Campaign::summary(double seconds)
{
    const double days = double(m_world.clock.milliseconds() - m_start) / double(dayMilliseconds);
    return u"%1 days in %2 s: %3 steps, %4 polls, %5 presses (%6 made more than one entry), %7 sends, %8 requests; %9; "
           "trace %10"_s.arg(days, 0, 'f', 1)
               .arg(seconds, 0, 'f', 0)
               .arg(m_steps)
               .arg(m_polls)
               .arg(m_presses)
               .arg(m_repeated)
               .arg(m_world.transport.total)
               .arg(m_world.requestCount)
               .arg(m_footprint.words(), QString::fromLatin1(m_trace.result().toHex().first(16)));
}

} // namespace korvo::campaign
