// korvo-bench-notch - what the panel around the notch costs: the program's own time for each frame of its unfolding, and
// its CPU time in each state. Runs inside a headless desktop. With --quick it looks for a quarter of the time. Ends with 1
// if a frame took longer than a sixtieth of a second.

#include "Controllers/NotchWindowController.h"
#include "Fakes/FakePlatform.h"
#include "Figure.h"
#include "Platform/Linux/LinuxClock.h"
#include "Platform/X11/X11Panel.h"
#include "Views/ViewWorld.h"

#include <QApplication>
#include <QEventLoop>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <utility>

using namespace korvo;

using namespace Qt::StringLiterals;

namespace {

constexpr double frameMilliseconds = 1000 / 60.0;
constexpr double restGoal = 1.1;        // Two minutes of one and the same program differ by a tenth.
constexpr int settleMilliseconds = 100; // In which the last frame is on the screen.

double cpuMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

/// The program's CPU time, cut where it begins a frame.
class FrameCuts {
public:
    void cut()
    {
        const double now = cpuMilliseconds();
        m_frames.append(now - m_begin);
        m_begin = now;
    }
    void restart()
    {
        m_frames.clear();
        m_begin = cpuMilliseconds();
    }
    const QList<double> &frames() const { return m_frames; }

private:
    QList<double> m_frames;
    double m_begin = 0;
};

/// The real panel. A step of its movement is where one frame ends and the next one begins.
class MeasuredPanel final : public Panel {
public:
    MeasuredPanel(const PanelStyle &style, FrameCuts &cuts) : m_real(style), m_cuts(cuts)
    {
        connect(&m_real, &Panel::pointerEntered, this, &Panel::pointerEntered);
        connect(&m_real, &Panel::pointerLeft, this, &Panel::pointerLeft);
    }

    void setContent(std::unique_ptr<QWidget> content) override { m_real.setContent(std::move(content)); }
    void setFrame(const QRect &frame) override
    {
        m_cuts.cut();
        m_real.setFrame(frame);
    }
    void setRoom(const QRect &room) override { m_real.setRoom(room); }
    void setShape(const QPainterPath &shape) override { m_real.setShape(shape); }
    void orderFront() override { m_real.orderFront(); }
    void orderOut() override { m_real.orderOut(); }
    bool isVisible() const override { return m_real.isVisible(); }

private:
    X11Panel m_real;
    FrameCuts &m_cuts;
};

/// The real panel on the real clock, in an otherwise made-up desktop.
class BenchPlatform final : public FakePlatform {
public:
    Clock &clock() override { return m_clock; }
    std::unique_ptr<Panel> makePanel(const PanelStyle &style) override
    {
        return std::make_unique<MeasuredPanel>(style, cuts);
    }

    FrameCuts cuts;

private:
    LinuxClock m_clock;
};

void wait(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

/// The program's own time for each frame of the way to a state: first that in which the content changes, last that which
/// shows the panel at its goal.
QList<double> framesTo(BenchPlatform &platform, NotchWindowController &controller, NotchState state)
{
    platform.cuts.restart();
    controller.setState(state);
    wait(state == NotchState::expanded ? 400 : 300);
    wait(settleMilliseconds);
    platform.cuts.cut();
    return platform.cuts.frames();
}

/// Tells what the frames of some movements took. False if one of them took longer than a screen shows it.
bool tell(const QString &name, QList<double> times, int movementCount, double milliseconds)
{
    std::sort(times.begin(), times.end());
    bench::tell(name + u", a frame, median"_s, times.at(times.size() / 2), u"ms"_s);
    bench::tell(name + u", a frame, worst"_s, times.last(), u"ms"_s, frameMilliseconds);
    bench::tell(name + u", from frame to frame"_s, milliseconds * movementCount / double(times.size()), u"ms"_s);
    return times.last() <= frameMilliseconds;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const bool isQuick = app.arguments().contains(QStringLiteral("--quick"));
    const int seconds = isQuick ? 15 : 60;
    const int movementCount = isQuick ? 5 : 20;
    ViewWorld world;
    world.showTimer({});
    world.poll();
    BenchPlatform platform;
    platform.fakeScreens.setSingle(QRectF(QGuiApplication::primaryScreen()->geometry()), 32);
    NotchWindowController controller(*world.viewModel, platform, world.settings.settings);
    controller.setup();
    wait(500);

    const auto first = framesTo(platform, controller, NotchState::expanded);
    QList<double> unfolding;
    QList<double> folding;
    for (int i = 0; i < movementCount; ++i) {
        folding += framesTo(platform, controller, NotchState::compact);
        unfolding += framesTo(platform, controller, NotchState::expanded);
    }
    bool isSmooth = tell(u"the card unfolds for the first time"_s, first, 1, 400);
    isSmooth = tell(u"the card unfolds"_s, unfolding, movementCount, 400) && isSmooth;
    isSmooth = tell(u"the card folds away"_s, folding, movementCount, 300) && isSmooth;

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
    bench::tell(u"CPU of a tick that does nothing"_s, bare, u"ms a minute"_s);
    bench::tell(u"CPU with the notch at rest, beside that"_s, cpuIn(NotchState::idle, true) / bare, u"times"_s,
                restGoal);
    bench::tell(u"CPU with the strip of ring and clock"_s, cpuIn(NotchState::compact, true), u"ms a minute"_s);
    bench::tell(u"CPU with the open card"_s, cpuIn(NotchState::expanded, true), u"ms a minute"_s);
    return isSmooth ? 0 : 1;
}
