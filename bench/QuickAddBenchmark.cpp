// korvo-bench-quickadd SANDBOX - the time from a press of the shortcut to a field that has the keyboard, the delayed
// focusing included, and from Return to the first byte of the request. Runs inside a headless desktop, with another
// program's window in front.

#include "AppDelegate.h"
#include "Fakes/TcpProxy.h"
#include "Figure.h"
#include "KorvoApp.h"
#include "Platform/Platform.h"
#include "Services/CurlTransport.h"
#include "Utilities/Spawn.h"
#include "WorkspaceSettings.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QLineEdit>
#include <QList>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int rounds = 40;
constexpr double noPolls = 3600; // Seconds between polls: what the proxy sees is what a name leads to.

// X key codes: evdev code + 8.
constexpr quint8 xKeyN = 49 + 8;
constexpr quint8 xKeySuper = 125 + 8;
constexpr quint8 xKeyShift = 42 + 8;
constexpr quint8 xKeyReturn = 28 + 8;

void fake(xcb_connection_t *connection, quint8 type, quint8 key)
{
    xcb_test_fake_input(connection, type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    xcb_flush(connection);
}

/// Turns the event loop until something is so; the program ends if it doesn't come to that.
template <typename Condition> void spinUntil(const char *what, Condition condition)
{
    QElapsedTimer patience;
    patience.start();
    while (!condition()) {
        if (patience.hasExpired(10000)) {
            std::fprintf(stderr, "korvo-bench-quickadd: %s does not happen\n", what);
            std::_Exit(1);
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    }
}

QLineEdit *focusedField()
{
    auto *field = qobject_cast<QLineEdit *>(QApplication::focusWidget());
    return field && field->isVisible() && field->isActiveWindow() ? field : nullptr;
}

/// A window of another client, with the focus.
void showFront(xcb_connection_t *connection)
{
    const auto *const screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const auto window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 100, 100, 600, 400, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(connection, window);
    xcb_flush(connection);
    spinUntil("a window in front", [&] {
        auto *reply = xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr);
        const bool isFocused = reply && reply->focus == window;
        std::free(reply);
        return isFocused;
    });
}

/// Once the program has been launched: presses the shortcut, types a name, and again.
void measure(TimerViewModel &timerVM, const TcpProxy &proxy)
{
    spinUntil("the first poll", [&] { return timerVM.activeTimer().has_value() && !timerVM.todayTasks().isEmpty(); });

    auto *connection = xcb_connect(nullptr, nullptr);
    showFront(connection);
    const int spawnedBefore = spawnedCount();
    QList<double> firstFocus;
    QList<double> allFocused;
    QList<double> requests;
    for (int i = 0; i < rounds; ++i) {
        QElapsedTimer timer;
        fake(connection, XCB_KEY_PRESS, xKeySuper);
        fake(connection, XCB_KEY_PRESS, xKeyShift);
        timer.start();
        fake(connection, XCB_KEY_PRESS, xKeyN);
        spinUntil("a focused field", [] { return focusedField() != nullptr; });
        firstFocus.append(double(timer.nsecsElapsed()) / 1e6);
        spinUntil("the focusing step", [&] { return spawnedCount() == spawnedBefore; });
        allFocused.append(double(timer.nsecsElapsed()) / 1e6);
        for (const quint8 key : {xKeyN, xKeyShift, xKeySuper})
            fake(connection, XCB_KEY_RELEASE, key);
        spinUntil("the focus that stays", [] { return focusedField() != nullptr; });
        focusedField()->setText(u"Task number %1"_s.arg(i));
        const auto bytesBefore = proxy.byteCount();
        timer.start();
        fake(connection, XCB_KEY_PRESS, xKeyReturn);
        spinUntil("a request", [&] { return proxy.byteCount() > bytesBefore; });
        requests.append(double(timer.nsecsElapsed()) / 1e6);
        fake(connection, XCB_KEY_RELEASE, xKeyReturn);
        spinUntil("the end of the action", [&] { return !timerVM.isLoading(); });
        timer.start();
        spinUntil("a pause", [&] { return timer.hasExpired(100); });
    }
    bench::tell(u"the first press of the shortcut to a focused field"_s, allFocused.first(), u"ms"_s);
    bench::tellTimes(u"a press of the shortcut to a field with the keyboard"_s, firstFocus);
    bench::tellTimes(u"the same with the focusing step after 50 ms"_s, allFocused, 100);
    bench::tellTimes(u"Return to the first byte of the request"_s, requests, 20);
    xcb_disconnect(connection);
}

} // namespace

int main(int argc, char **argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    if (argc < 2) {
        std::fputs("usage: korvo-bench-quickadd SANDBOX\n", stderr);
        return 2;
    }
    QProcess sandbox;
    sandbox.start(QString::fromLocal8Bit(argv[1]), QStringList());
    while (!sandbox.canReadLine() && sandbox.waitForReadyRead(20000)) { }
    auto workspace = QJsonDocument::fromJson(sandbox.readLine()).object();

    const QTemporaryDir folder;
    const auto platform = Platform::create(folder.filePath(u"defaults.json"_s));
    demo::storeSettings(platform->userDefaults(), workspace, noPolls);
    KorvoApp app(argc, argv, *platform);
    const TcpProxy proxy(quint16(workspace["port"_L1].toInt()));
    workspace["port"_L1] = proxy.port();
    demo::redirectRequests(workspace);
    QMetaObject::invokeMethod(
        qApp,
        [&] {
            measure(app.delegate().timerViewModel(), proxy);
            QCoreApplication::quit();
        },
        Qt::QueuedConnection);
    const int status = app.exec();
    sandbox.kill();
    sandbox.waitForFinished();
    return status;
}
