// korvo-bench-hotkey - the time from a key press in the X server to the callback of the shortcut. Runs inside a headless
// desktop.

#include "Figure.h"
#include "Platform/Desktop/DesktopKeyGrabber.h"
#include "Platform/KeyGrabber.h"
#include "Services/GlobalHotkeyService.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QList>
#include <QRasterWindow>
#include <QTimer>

#include <algorithm>
#include <cstdio>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

using namespace korvo;

using namespace Qt::StringLiterals;

namespace {

constexpr int presses = 200;
constexpr quint32 keyN = 45; // As the settings store it.
constexpr quint32 commandShift = 768;

// X key codes of the keys behind the default shortcut: evdev code + 8.
constexpr quint8 xKeyN = 49 + 8;
constexpr quint8 xKeySuper = 125 + 8;
constexpr quint8 xKeyShift = 42 + 8;

void fake(xcb_connection_t *connection, quint8 type, quint8 key)
{
    xcb_test_fake_input(connection, type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    xcb_flush(connection);
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const auto grabber = makeDesktopKeyGrabber();
    GlobalHotkeyService service(*grabber);
    auto *connection = xcb_connect(nullptr, nullptr);
    QRasterWindow front; // Where nothing has the focus the server looks for no grab.
    front.resize(200, 100);
    front.show();
    front.requestActivate();
    const QDeadlineTimer patience(5000);
    while (!front.isActive() && !patience.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    QList<double> times;
    QElapsedTimer timer;
    QEventLoop loop;
    QTimer giveUp;
    giveUp.setSingleShot(true);
    QObject::connect(&giveUp, &QTimer::timeout, &loop, &QEventLoop::quit);
    service.registerHotkey(keyN, commandShift, [&] {
        times.append(double(timer.nsecsElapsed()) / 1e6);
        loop.quit();
    });
    for (int i = 0; i < presses; ++i) {
        fake(connection, XCB_KEY_PRESS, xKeySuper);
        fake(connection, XCB_KEY_PRESS, xKeyShift);
        giveUp.start(2000);
        timer.start();
        fake(connection, XCB_KEY_PRESS, xKeyN);
        loop.exec();
        giveUp.stop();
        for (const quint8 key : {xKeyN, xKeyShift, xKeySuper})
            fake(connection, XCB_KEY_RELEASE, key);
        QEventLoop pause; // Until the server has told of the releases.
        QTimer::singleShot(5, &pause, &QEventLoop::quit);
        pause.exec();
    }
    xcb_disconnect(connection);
    std::sort(times.begin(), times.end());
    if (times.size() != presses) {
        std::fprintf(stderr, "korvo-bench-hotkey: the shortcut came %lld times after %d presses\n",
                     static_cast<long long>(times.size()), presses);
        return 1;
    }
    bench::tellTimes(u"key press in the X server to the callback"_s, times, 10);
    return 0;
}
