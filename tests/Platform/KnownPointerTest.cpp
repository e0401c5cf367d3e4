#include "Platform/X11/KnownPointer.h"

#include "XDesktop.h"

#include <QCursor>
#include <QGuiApplication>
#include <QTest>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

#include <xcb/xinput.h>

using namespace korvo;

namespace {

constexpr QPoint overTheWindow(250, 200);
constexpr QPoint overNothing(900, 600);

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

template <typename T> using Reply = std::unique_ptr<T, Free>;

struct Disconnect {
    void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
};

/// Gives the X server one more pointer of that name. False if it doesn't take it.
bool addPointer(const char *name)
{
    const std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, nullptr));
    const Reply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        connection.get(), xcb_input_xi_query_version(connection.get(), 2, 2), nullptr));
    struct {
        xcb_input_add_master_t head;
        std::array<char, 16> name;
    } change{};
    change.head.type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_ADD_MASTER;
    change.head.len = sizeof change / 4;
    change.head.name_len = sizeof change.name;
    change.head.enable = 1;
    std::copy_n(name, std::min<std::size_t>(qstrlen(name), change.name.size()), change.name.begin());
    const auto *const first = reinterpret_cast<const xcb_input_hierarchy_change_t *>(&change);
    const auto cookie = xcb_input_xi_change_hierarchy_checked(connection.get(), 1, first);
    const Reply<xcb_generic_error_t> error(xcb_request_check(connection.get(), cookie));
    return version && !error;
}

bool movePointer(const QPoint &place)
{
    QCursor::setPos(place);
    return QTest::qWaitFor([&] { return QCursor::pos() == place; });
}

} // namespace

/// Whether the X server's place of the pointer is worth anything. The last test turns the server into an XWayland, as
/// far as programs can see.
class KnownPointerTest : public QObject {
    Q_OBJECT
private slots:
    void onAPlainServerItIsKnownEverywhere();
    void underXWaylandItIsKnownOverXWindowsAlone();
};

void KnownPointerTest::onAPlainServerItIsKnownEverywhere()
{
    XClient other;
    QVERIFY(other.showFocusedWindow());
    for (const auto &place : {overTheWindow, overNothing}) {
        QVERIFY(movePointer(place));
        QVERIFY(isX11PointerKnown());
    }
}

void KnownPointerTest::underXWaylandItIsKnownOverXWindowsAlone()
{
    QVERIFY(addPointer("xwayland-pointer"));
    XClient other;
    QVERIFY(other.showFocusedWindow());
    QVERIFY(movePointer(overTheWindow));
    QTRY_VERIFY(isX11PointerKnown());
    QVERIFY(movePointer(overNothing));
    QTRY_VERIFY(!isX11PointerKnown());
}

QTEST_MAIN(KnownPointerTest)
#include "KnownPointerTest.moc"
