// korvo-bench-panel SANDBOX - what the menu panel costs: a click to its first frame, the memory that a thousand openings
// leave behind, the processor while it is open. Runs inside a headless desktop with a tray. Ends with 1 if memory grows.

#include "Figure.h"
#include "KorvoApp.h"
#include "Platform/InputPanel.h"
#include "Platform/KeyGrabber.h"
#include "Platform/MouseMonitor.h"
#include "Platform/Panel.h"
#include "Platform/Platform.h"
#include "Platform/StatusItem.h"
#include "Views/MenuBarView.h"
#include "WorkspaceSettings.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QFile>
#include <QJsonDocument>
#include <QList>
#include <QPointer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int warmUps = 50;
constexpr int openings = 1000;
constexpr int timedOpenings = 20;
constexpr int restMilliseconds = 20000;
constexpr int allowedGrowthKb
    = 64;                        // Sixteen pages: what the allocator takes and gives back from one moment to the next.
constexpr double noPolls = 3600; // Seconds between polls.

/// The desktop as it is, whose status item is at hand to be clicked.
class ClickablePlatform final : public Platform {
public:
    explicit ClickablePlatform(std::unique_ptr<Platform> desktop) : m_desktop(std::move(desktop)) { }

    Clock &clock() override { return m_desktop->clock(); }
    SystemLog &systemLog() override { return m_desktop->systemLog(); }
    UserDefaults &userDefaults() override { return m_desktop->userDefaults(); }
    Screens &screens() override { return m_desktop->screens(); }
    const KeyboardLayout &keyboardLayout() override { return m_desktop->keyboardLayout(); }
    LoginItem &loginItem() override { return m_desktop->loginItem(); }
    NotificationCenter &notificationCenter() override { return m_desktop->notificationCenter(); }
    SingleInstance &singleInstance() override { return m_desktop->singleInstance(); }
    DockTile &dockTile() override { return m_desktop->dockTile(); }
    std::unique_ptr<StatusItem> makeStatusItem() override
    {
        auto made = m_desktop->makeStatusItem();
        item = made.get();
        return made;
    }
    std::unique_ptr<KeyGrabber> makeKeyGrabber() override { return m_desktop->makeKeyGrabber(); }
    std::unique_ptr<Panel> makePanel(const PanelStyle &style) override { return m_desktop->makePanel(style); }
    std::unique_ptr<InputPanel> makeInputPanel() override { return m_desktop->makeInputPanel(); }
    std::unique_ptr<MouseMonitor> makeMouseMonitor() override { return m_desktop->makeMouseMonitor(); }
    void setSignalHandler(void (*handler)(int)) override { m_desktop->setSignalHandler(handler); }
    void setExceptionHandler(void (*handler)(const UncaughtException &)) override
    {
        m_desktop->setExceptionHandler(handler);
    }

    QPointer<StatusItem> item;

private:
    std::unique_ptr<Platform> m_desktop;
};

/// Notices when a panel has been painted on a window that the desktop shows.
class FrameWatch final : public QObject {
public:
    FrameWatch() { qApp->installEventFilter(this); }

    bool isPainted = false;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::Paint)
            return false;
        const auto *view = qobject_cast<MenuBarView *>(watched);
        // Queued: after this frame has gone to the desktop.
        if (view && view->window()->windowHandle()->isExposed())
            QMetaObject::invokeMethod(
                this, [this] { isPainted = true; }, Qt::QueuedConnection);
        return false;
    }
};

/// Turns the event loop until something is so; the program ends if it doesn't come to that.
template <typename Condition> void spinUntil(const char *what, Condition condition)
{
    QElapsedTimer patience;
    patience.start();
    while (!condition()) {
        if (patience.hasExpired(10000)) {
            std::fprintf(stderr, "korvo-bench-panel: %s does not happen\n", what);
            std::_Exit(1);
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
    }
}

void rest(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

/// Memory that is the process's own.
int anonymousKb()
{
    QFile file(u"/proc/self/smaps_rollup"_s);
    if (file.open(QIODevice::ReadOnly)) {
        const auto lines = file.readAll().split('\n');
        for (const auto &line : lines) {
            if (line.startsWith("Anonymous:"))
                return line.mid(10).chopped(2).trimmed().toInt(); // Without "kB".
        }
    }
    std::fputs("korvo-bench-panel: no figure of the memory\n", stderr);
    std::_Exit(1);
}

double processorMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

class Benchmark {
public:
    explicit Benchmark(StatusItem &item) : m_item(item) { }

    /// False if memory grows.
    bool run()
    {
        spinUntil("a tray", [this] { return m_item.isShown(); });
        const double first = openAndClose(150);
        for (int i = 1; i < warmUps; ++i)
            openAndClose(0);

        QList<double> times;
        for (int i = 0; i < timedOpenings; ++i)
            times.append(openAndClose(150));
        bench::tell(u"a click to the first frame of the panel, the first time"_s, first, u"ms"_s, 50);
        bench::tellTimes(u"a click to the first frame of the panel"_s, times, 50);

        const double closed = processorAtRest();
        click();
        spinUntil("a panel", [this] { return m_frames.isPainted; });
        const double open = processorAtRest();
        close();
        bench::tell(u"CPU with an open panel, beside a closed one"_s, open / closed, u"times"_s, 2);

        const int before = anonymousKb();
        for (int i = 0; i < openings; ++i)
            openAndClose(0);
        const int growth = anonymousKb() - before;
        bench::tell(u"growth of the memory by 1,000 openings of the panel"_s, growth, u"kB"_s, allowedGrowthKb);
        return growth <= allowedGrowthKb;
    }

private:
    void click()
    {
        m_frames.isPainted = false;
        emit m_item.activated(m_item.button());
    }

    void close()
    {
        click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // The content goes a turn later.
    }

    /// The milliseconds to the first frame. Leaves the desktop so much time afterwards.
    double openAndClose(int pause)
    {
        QElapsedTimer timer;
        timer.start();
        click();
        spinUntil("a panel", [this] { return m_frames.isPainted; });
        const double time = double(timer.nsecsElapsed()) / 1e6;
        close();
        if (pause > 0)
            rest(pause);
        return time;
    }

    static double processorAtRest()
    {
        rest(1000); // What a change has led to is over.
        const double before = processorMilliseconds();
        rest(restMilliseconds);
        return processorMilliseconds() - before;
    }

    StatusItem &m_item;
    FrameWatch m_frames;
};

} // namespace

int main(int argc, char **argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    if (argc < 2) {
        std::fputs("usage: korvo-bench-panel SANDBOX\n", stderr);
        return 2;
    }
    QProcess sandbox;
    sandbox.start(QString::fromLocal8Bit(argv[1]), QStringList());
    while (!sandbox.canReadLine() && sandbox.waitForReadyRead(20000)) { }
    const auto workspace = QJsonDocument::fromJson(sandbox.readLine()).object();

    const QTemporaryDir folder;
    ClickablePlatform platform(Platform::create(folder.filePath(u"defaults.json"_s)));
    demo::storeSettings(platform.userDefaults(), workspace, noPolls);
    KorvoApp app(argc, argv, platform);
    demo::redirectRequests(workspace);
    bool isWithinGoals = false;
    QMetaObject::invokeMethod(
        qApp,
        [&] {
            auto &timerVM = app.delegate().timerViewModel();
            spinUntil("the first poll",
                      [&] { return timerVM.activeTimer().has_value() && !timerVM.todayTasks().isEmpty(); });
            isWithinGoals = Benchmark(*platform.item).run();
            QCoreApplication::quit();
        },
        Qt::QueuedConnection);
    const int status = app.exec();
    sandbox.kill();
    sandbox.waitForFinished();
    return status == 0 && isWithinGoals ? 0 : 1;
}
