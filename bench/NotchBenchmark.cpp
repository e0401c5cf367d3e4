// korvo-bench-notch - what the panel around the notch costs: the program's own time for each frame of its unfolding, and
// its CPU time in each state. Runs inside a headless desktop. With --quick it looks for a quarter of the time.

#include "Controllers/NotchWindowController.h"
#include "Fakes/FakePlatform.h"
#include "Platform/Linux/LinuxClock.h"
#include "Platform/X11/X11Panel.h"
#include "Views/ViewWorld.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <utility>

using namespace korvo;

namespace {

/// Adds up the time that the program spends on its events, by frame.
class MeasuredApplication final : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (m_depth > 0)
            return QApplication::notify(receiver, event);
        ++m_depth;
        QElapsedTimer timer;
        timer.start();
        const bool isHandled = QApplication::notify(receiver, event);
        m_spent += double(timer.nsecsElapsed()) / 1e6;
        --m_depth;
        return isHandled;
    }

    double takeSpent() { return std::exchange(m_spent, 0); } ///< Milliseconds since the last call.

private:
    int m_depth = 0;
    double m_spent = 0;
};

/// The real panel on the real clock, in an otherwise made-up desktop.
class BenchPlatform final : public FakePlatform {
public:
    Clock &clock() override { return m_clock; }
    std::unique_ptr<Panel> makePanel(const PanelStyle &style) override { return std::make_unique<X11Panel>(style); }

private:
    LinuxClock m_clock;
};

void wait(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

double cpuMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

/// Our own time for each frame of the way to a state. A frame is what happens in a sixtieth of a second.
QList<double> framesTo(MeasuredApplication &app, NotchWindowController &controller, NotchState state)
{
    QList<double> frames;
    QEventLoop loop;
    QTimer frame;
    frame.setTimerType(Qt::PreciseTimer);
    app.takeSpent();
    controller.setState(state);
    QObject::connect(&frame, &QTimer::timeout, &loop, [&] {
        frames.append(app.takeSpent());
        if (frames.size() == 27)
            loop.quit();
    });
    frame.start(16);
    loop.exec();
    return frames;
}

void print(const char *name, QList<double> times)
{
    std::sort(times.begin(), times.end());
    std::printf("%-52s%8.2f ms median, %.2f worst of %lld (goal 16.7)\n", name, times.at(times.size() / 2),
                times.last(), static_cast<long long>(times.size()));
}

} // namespace

int main(int argc, char **argv)
{
    MeasuredApplication app(argc, argv);
    const bool isQuick = app.arguments().contains(QStringLiteral("--quick"));
    const int seconds = isQuick ? 15 : 60;
    ViewWorld world;
    world.showTimer({});
    world.poll();
    BenchPlatform platform;
    platform.fakeScreens.setSingle(QRectF(QGuiApplication::primaryScreen()->geometry()), 32);
    NotchWindowController controller(*world.viewModel, platform, world.settings.settings);
    controller.setup();
    wait(500);

    const auto first = framesTo(app, controller, NotchState::expanded);
    QList<double> unfolding;
    QList<double> folding;
    for (int i = 0; i < (isQuick ? 5 : 20); ++i) {
        folding += framesTo(app, controller, NotchState::compact);
        unfolding += framesTo(app, controller, NotchState::expanded);
    }
    print("the card unfolds for the first time, a frame", first);
    print("the card unfolds, a frame", unfolding);
    print("the card folds away, a frame", folding);

    // The tick of the program, with nothing else in it. The view's own schedule is on a clock that runs.
    const auto cpuIn = [&](NotchState state, bool isTicking) {
        controller.setState(state);
        wait(1000);
        QTimer tick;
        QObject::connect(&tick, &QTimer::timeout, &controller, [&] {
            if (isTicking)
                controller.setState(state);
        });
        tick.start(1000);
        const double before = cpuMilliseconds();
        wait(seconds * 1000);
        return (cpuMilliseconds() - before) * 60 / seconds;
    };
    const double bare = cpuIn(NotchState::idle, false);
    std::printf("%-52s%8.1f ms\n", "CPU a minute, a tick that does nothing", bare);
    std::printf("%-52s%8.1f ms\n", "CPU a minute, at rest", cpuIn(NotchState::idle, true));
    std::printf("%-52s%8.1f ms\n", "CPU a minute, strip with ring and clock", cpuIn(NotchState::compact, true));
    std::printf("%-52s%8.1f ms\n", "CPU a minute, open card", cpuIn(NotchState::expanded, true));
    return 0;
}
