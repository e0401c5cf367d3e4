// korvo-bench-settings - the time from the wish for the settings to the first frame of their window, everything loaded.
// Runs inside a headless desktop.

#include "Controllers/SettingsWindow.h"
#include "Fakes/FakeScreens.h"
#include "Figure.h"
#include "Views/SettingsView.h"
#include "Views/ViewWorld.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <memory>

using namespace korvo;

using namespace Qt::StringLiterals;

namespace {

constexpr int openings = 20;
constexpr int patience = 5000;

/// Leaves an event loop once a widget has been painted on a window that the desktop shows.
class FirstFrame final : public QObject {
public:
    FirstFrame(QWidget &window, QEventLoop &loop) : m_window(window), m_loop(loop) { window.installEventFilter(this); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        // Queued: after this frame has gone to the desktop.
        if (watched == &m_window && event->type() == QEvent::Paint && m_window.windowHandle()->isExposed())
            QMetaObject::invokeMethod(&m_loop, &QEventLoop::quit, Qt::QueuedConnection);
        return false;
    }

private:
    QWidget &m_window;
    QEventLoop &m_loop;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    ViewWorld world;
    FakeScreens screens;
    QList<double> times;
    std::unique_ptr<SettingsWindow> window;
    for (int i = 0; i < openings; ++i) {
        QEventLoop loop;
        QTimer giveUp;
        giveUp.setSingleShot(true);
        QObject::connect(&giveUp, &QTimer::timeout, &loop, [&loop] { loop.exit(1); });
        giveUp.start(patience);
        QElapsedTimer timer;
        timer.start();
        window = std::make_unique<SettingsWindow>(
            new SettingsView(*world.viewModel, world.settings.settings, world.notion, world.clock, screens, {}));
        const FirstFrame frame(*window, loop);
        window->bringToFront();
        if (loop.exec() != 0) {
            std::fputs("korvo-bench-settings: a window was never painted\n", stderr);
            return 1;
        }
        times.append(double(timer.nsecsElapsed()) / 1e6);
        window->close();
        QEventLoop pause; // Until the desktop has taken the window away.
        QTimer::singleShot(150, &pause, &QEventLoop::quit);
        pause.exec();
    }
    bench::tell(u"opening the settings to the first frame, the first time"_s, times.first(), u"ms"_s, 150);
    bench::tellTimes(u"opening the settings to the first frame"_s, times, 150);
    return 0;
}
