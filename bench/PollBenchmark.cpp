// korvo-bench-poll SANDBOX - what one poll costs: the program's own CPU for a poll of 100 tasks with the three page reads,
// and the time of a poll over TLS on a long way beside five bare requests on one kept connection. Ends with 1 if anything
// that was measured has failed.

#include "Fakes/FakeNotificationCenter.h"
#include "Fakes/FakeNotion.h"
#include "Fakes/FakeUserDefaults.h"
#include "Fakes/NotionPages.h"
#include "Fakes/TcpProxy.h"
#include "Fakes/TestSettings.h"
#include "Figure.h"
#include "Platform/Linux/LinuxClock.h"
#include "Services/CurlTransport.h"
#include "Services/NotionAPIService.h"
#include "Services/NotionPropertyMapper.h"
#include "Utilities/Completion.h"
#include "Utilities/Spawn.h"
#include "ViewModels/TimerViewModel.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QProcess>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr std::chrono::milliseconds oneWay{20};

/// A clock whose sleep tells that a poll is over.
class PollClock final : public Clock {
public:
    Seconds uptime() const override { return m_real.uptime(); }
    QDateTime now() const override { return QDateTime::currentDateTime(); }
    QCoro::Task<bool> sleepFor(Seconds, std::stop_token stop) override
    {
        Completion<bool> done;
        const std::stop_callback onStop(stop, [done] { done.complete(false); });
        if (m_loop)
            QMetaObject::invokeMethod(m_loop, &QEventLoop::quit, Qt::QueuedConnection); // It may not run yet.
        co_return co_await done;
    }
    QCoro::Task<bool> pauseFor(Seconds duration, std::stop_token stop) override
    {
        co_return co_await m_real.pauseFor(duration, stop);
    }
    void setLoop(QEventLoop *loop) { m_loop = loop; }

private:
    LinuxClock m_real;
    QEventLoop *m_loop = nullptr;
};

double cpuMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.value(values.size() / 2);
}

struct Workspace {
    QProcess process;
    QJsonObject info;

    explicit Workspace(const QString &program)
    {
        process.start(program, QStringList());
        while (!process.canReadLine() && process.waitForReadyRead(20000)) { }
        info = QJsonDocument::fromJson(process.readLine()).object();
    }
    ~Workspace()
    {
        process.terminate();
        process.waitForFinished();
    }
    quint16 port() const { return quint16(info["port"_L1].toInt()); }
    QString caFile() const { return info["caFile"_L1].toString(); }
};

void configure(AppSettings &settings, const QJsonObject &info)
{
    settings.setApiKey(info["apiKey"_L1].toString());
    settings.setTimeTrackerDBId(info["timeTrackerDBId"_L1].toString());
    settings.setTasksDBId(info["tasksDBId"_L1].toString());
    const auto mapping = QJsonDocument(info["fieldMapping"_L1].toObject()).toJson();
    settings.setFieldMapping(FieldMapping::fromJson(mapping).value_or(FieldMapping()));
}

QCoro::Task<> addTasks(NotionAPIService &api, QJsonObject info, int count, QEventLoop *loop)
{
    const QJsonObject parent{{u"database_id"_s, info["tasksDBId"_L1]}};
    for (int i = 0; i < count; ++i) {
        const QJsonObject run{{u"text"_s, QJsonObject{{u"content"_s, u"Task number %1"_s.arg(i)}}}};
        const QJsonObject day{{u"start"_s, QDate::currentDate().toString(Qt::ISODate)}};
        const QJsonObject properties{{u"Name"_s, QJsonObject{{u"title"_s, QJsonArray{run}}}},
                                     {u"Date"_s, QJsonObject{{u"date"_s, day}}}};
        co_await api.createPage(parent, properties);
    }
    loop->quit();
}

QCoro::Task<> askFiveTimes(HttpTransport &transport, HttpRequest request, QEventLoop *loop)
{
    for (int i = 0; i < 5; ++i)
        co_await transport.send(request, std::stop_token());
    loop->quit();
}

/// One poll of a fresh loop: until its sleep.
void pollOnce(TimerViewModel &viewModel, PollClock &clock)
{
    QEventLoop loop;
    clock.setLoop(&loop);
    viewModel.startPollingIfConfigured();
    loop.exec();
    clock.setLoop(nullptr);
}

/// Whether the last poll and the action before it, if there was one, have worked; what has failed is measured for nothing.
bool hasWorked(const TimerViewModel &viewModel)
{
    if (!viewModel.errorMessage())
        return true;
    std::fprintf(stderr, "korvo-bench-poll: %s\n", qPrintable(*viewModel.errorMessage()));
    return false;
}

/// This and the others below are false if what they measured has failed.
bool measureCpu(const Workspace &workspace)
{
    PollClock clock;
    TestSettings settings;
    configure(settings.settings, workspace.info);
    CurlTransport transport;
    transport.redirectHost(u"api.notion.com"_s, u"127.0.0.1"_s, workspace.port(), workspace.caFile());
    NotionAPIService api(transport, settings.settings, clock);
    QEventLoop loop;
    spawn(addTasks(api, workspace.info, 100, &loop));
    loop.exec();

    FakeNotificationCenter notifications;
    TimerViewModel viewModel(notifications, transport, settings.settings, clock);
    pollOnce(viewModel, clock);
    bool isGood = hasWorked(viewModel);
    QList<double> polls;
    for (int i = 0; i < 50 && isGood; ++i) {
        const double before = cpuMilliseconds();
        pollOnce(viewModel, clock);
        polls.append(cpuMilliseconds() - before);
        isGood = hasWorked(viewModel);
    }
    if (viewModel.todayTasks().size() != 100 || !viewModel.activeTimer() || !viewModel.activeTimer()->clientName) {
        std::fputs("korvo-bench-poll: a poll has not read everything\n", stderr);
        isGood = false;
    }
    bench::tell(u"CPU of a poll of 100 tasks and three pages"_s, median(polls), u"ms"_s, 5);
    viewModel.stopPolling();
    return isGood;
}

bool measureLongWay(const Workspace &workspace)
{
    PollClock clock;
    TestSettings settings;
    configure(settings.settings, workspace.info);
    const TcpProxy proxy(workspace.port(), oneWay);
    HttpRequest bare;
    bare.method = "GET";
    bare.url = QUrl(u"https://api.notion.com/v1/users/me"_s);
    bare.headers
        = {{"Authorization", "Bearer " + settings.settings.apiKey().toUtf8()}, {"Notion-Version", "2022-06-28"}};
    QList<double> polls;
    QList<double> requests;
    bool isGood = true;
    for (int i = 0; i < 7 && isGood; ++i) {
        QElapsedTimer timer;
        {
            CurlTransport transport;
            transport.redirectHost(u"api.notion.com"_s, u"127.0.0.1"_s, proxy.port(), workspace.caFile());
            QEventLoop loop;
            timer.start();
            spawn(askFiveTimes(transport, bare, &loop));
            loop.exec();
            requests.append(double(timer.nsecsElapsed()) / 1e6);
        }
        CurlTransport transport;
        transport.redirectHost(u"api.notion.com"_s, u"127.0.0.1"_s, proxy.port(), workspace.caFile());
        FakeNotificationCenter notifications;
        TimerViewModel viewModel(notifications, transport, settings.settings, clock);
        timer.start();
        pollOnce(viewModel, clock);
        polls.append(double(timer.nsecsElapsed()) / 1e6);
        isGood = hasWorked(viewModel);
        viewModel.stopPolling();
        finishSpawned(1000);
    }
    bench::tell(u"five bare requests over TLS, 40 ms round trip"_s, median(requests), u"ms"_s);
    bench::tell(u"a poll on the same way"_s, median(polls), u"ms"_s);
    bench::tell(u"a poll beside the five requests"_s, median(polls) / median(requests), u"times"_s, 1.05);
    return isGood;
}

/// With the network's part left out: a workspace in memory answers at once.
bool measureQuickAdd()
{
    PollClock clock;
    TestSettings settings;
    TestSettings::configure(settings.settings);
    FakeNotion notion;
    notion.answerRows(u"POST /databases/tracker/query"_s, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion.answerRows(u"POST /databases/tasks/query"_s, {});
    notion.answer(u"GET /pages/t1"_s, pages::task(u"t1"_s, u"Write"_s));
    notion.answer(u"PATCH /pages/e1"_s, pages::page(u"e1"_s, {}));
    notion.answer(u"PATCH /pages/t1"_s, pages::page(u"t1"_s, {}));
    notion.answer(u"POST /pages"_s, pages::page(u"p1"_s, {}));
    FakeNotificationCenter notifications;
    TimerViewModel viewModel(notifications, notion, settings.settings, clock);
    pollOnce(viewModel, clock);
    bool isGood = hasWorked(viewModel);
    QList<double> actions;
    for (int i = 0; i < 50 && isGood; ++i) {
        notion.asked.clear();
        QEventLoop loop;
        QObject::connect(&viewModel, &TimerViewModel::isLoadingChanged, &loop, [&] {
            if (!viewModel.isLoading())
                loop.quit();
        });
        const double before = cpuMilliseconds();
        viewModel.quickAddTask(u"Call the framer"_s);
        if (viewModel.isLoading())
            loop.exec();
        actions.append(cpuMilliseconds() - before);
        isGood = hasWorked(viewModel);
        const auto writes = notion.calls().mid(0, 4);
        if (writes != QStringList{u"PATCH /pages/e1"_s, u"PATCH /pages/t1"_s, u"POST /pages"_s, u"POST /pages"_s}) {
            std::fprintf(stderr, "korvo-bench-poll: a quick add asked for %s\n", qPrintable(writes.join(u", "_s)));
            isGood = false;
        }
    }
    bench::tell(u"CPU of a quick add apart from the network"_s, median(actions), u"ms"_s, 3);
    viewModel.stopPolling();
    return isGood;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    if (argc < 2) {
        std::fprintf(stderr, "usage: korvo-bench-poll SANDBOX\n");
        return 2;
    }
    bool isGood = true;
    {
        const Workspace workspace(QString::fromLocal8Bit(argv[1]));
        isGood = measureLongWay(workspace) && isGood;
        isGood = measureCpu(workspace) && isGood;
    }
    isGood = measureQuickAdd() && isGood;
    finishSpawned(1000);
    return isGood ? 0 : 1;
}
