#include "Platform/X11/X11KeyGrabber.h"

#include "Fakes/FakeSystemLog.h"
#include "Services/GlobalHotkeyService.h"
#include "XDesktop.h"

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <cstdlib>
#include <memory>

// A field of the header is called so.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr quint32 commandShift = 0x300;
constexpr quint32 macN = 45;
constexpr quint8 xN = 57;

/// Counts the key presses that the application gets on the root window, repeats included.
class RootPresses final : public QAbstractNativeEventFilter {
public:
    RootPresses() { qApp->installNativeEventFilter(this); }
    ~RootPresses() override { qApp->removeNativeEventFilter(this); }
    Q_DISABLE_COPY_MOVE(RootPresses)

    bool nativeEventFilter(const QByteArray &, void *message, qintptr *) override
    {
        const auto *const event = static_cast<const xcb_key_press_event_t *>(message);
        if ((event->response_type & 0x7f) == XCB_KEY_PRESS && event->event == event->root && event->detail == xN)
            ++count;
        return false;
    }

    int count = 0;
};

xcb_connection_t *ownConnection()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

/// Whether the server tells the application of a held key by presses alone, without releases between.
void setDetectableRepeat(bool isDetectable)
{
    constexpr quint32 flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    const auto cookie
        = xcb_xkb_per_client_flags(ownConnection(), XCB_XKB_ID_USE_CORE_KBD, flag, isDetectable ? flag : 0, 0, 0, 0);
    std::free(xcb_xkb_per_client_flags_reply(ownConnection(), cookie, nullptr));
}

} // namespace

class X11KeyGrabberTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void everyCombinationOfCapsNumAndScrollLockFires_data();
    void everyCombinationOfCapsNumAndScrollLockFires();
    void aPressFiresWhateverHasTheFocus_data();
    void aPressFiresWhateverHasTheFocus();
    void modifiersAreThoseOfTheMac_data();
    void modifiersAreThoseOfTheMac();
    void otherModifiersDoNotFire_data();
    void otherModifiersDoNotFire();
    void aHeldKeyFiresOnce_data();
    void aHeldKeyFiresOnce();
    void aKeyHeldSinceBeforeTheGrabFiresAtItsNextPress();
    void aNewGrabReplacesTheFormer();
    void aKeyGivenBackIsFreeForOthers();
    void nothingIsToldAfterUninstall();
    void twoGrabbersHearTheirOwnKeys();
    void aKeyOfAnotherProgramIsRefusedAsAWhole_data();
    void aKeyOfAnotherProgramIsRefusedAsAWhole();
    void aRefusalIsLoggedAndLeavesTheServiceHalfInstalled();
    void aKeyThatNoKeyboardHasIsRefused_data();
    void aKeyThatNoKeyboardHasIsRefused();
    void withoutInstallThereIsNoGrab();
    void theKeyStaysInItsPlaceWhenTheLayoutChanges();
    void anotherGroupChangesNothing();
    void theGrabFollowsModifiersThatMove_data();
    void theGrabFollowsModifiersThatMove();
    void aRenewalThatAnotherProgramPreventsIsLogged();
    void aKeyLostAtARenewalComesBackAtALaterOne();
    void aKeyGivenUpAfterItWasLostStaysFree();
    void theCallbackMayGiveTheKeyBack();
    void theCallbackMayShowAPopupThatGrabsTheKeyboard_data();
    void theCallbackMayShowAPopupThatGrabsTheKeyboard();

private:
    bool firesBeforeLong(const QString &keys);
    bool startWindowManager(const QString &name);

    std::unique_ptr<XClient> m_other;
    std::unique_ptr<X11KeyGrabber> m_grabber;
    std::unique_ptr<QSignalSpy> m_presses;
    std::unique_ptr<QProcess> m_windowManager;
};

void X11KeyGrabberTest::initTestCase()
{
    QVERIFY(run(u"xset"_s, {u"r"_s, u"rate"_s, u"200"_s, u"50"_s}));
}

void X11KeyGrabberTest::init()
{
    QVERIFY(setLayout(u"us"_s));
    m_other = std::make_unique<XClient>();
    m_grabber = std::make_unique<X11KeyGrabber>();
    m_presses = std::make_unique<QSignalSpy>(m_grabber.get(), &KeyGrabber::pressed);
    QCOMPARE(m_grabber->install(), 0);
}

void X11KeyGrabberTest::cleanup()
{
    if (QTest::currentTestFailed())
        releaseKeys(u"super+shift+n"_s); // It may have stopped while it held them.
    setDetectableRepeat(true);
    QVERIFY(run(u"xset"_s, {u"r"_s, u"on"_s}));
    m_other->lock(xmod::none);
    m_presses.reset();
    m_grabber.reset();
    m_other.reset();
}

void X11KeyGrabberTest::cleanupTestCase()
{
    QVERIFY(setLayout(u"us"_s));
    if (m_windowManager) {
        m_windowManager->terminate();
        QVERIFY(m_windowManager->waitForFinished());
    }
}

/// Presses keys again and again, until the grabber tells of one.
bool X11KeyGrabberTest::firesBeforeLong(const QString &keys)
{
    const auto before = m_presses->count();
    return QTest::qWaitFor([&] {
        typeKeys(keys);
        QCoreApplication::processEvents();
        return m_presses->count() > before;
    });
}

bool X11KeyGrabberTest::startWindowManager(const QString &name)
{
    if (m_other->windowManager() != name.toUtf8()) {
        m_windowManager = std::make_unique<QProcess>();
        m_windowManager->setProcessChannelMode(QProcess::ForwardedChannels);
        m_windowManager->start(name.toLower(), {u"--replace"_s});
    }
    return QTest::qWaitFor([&] { return m_other->windowManager() == name.toUtf8(); }, 20000);
}

void X11KeyGrabberTest::everyCombinationOfCapsNumAndScrollLockFires_data()
{
    QTest::addColumn<quint16>("locks");
    for (int subset = 0; subset < 8; ++subset) {
        QByteArrayList names;
        quint16 locks = xmod::none;
        const auto add = [&](int bit, const char *name, quint16 modifier) {
            if (subset & bit) {
                names.append(name);
                locks |= modifier;
            }
        };
        add(1, "Caps Lock", xmod::capsLock);
        add(2, "Num Lock", xmod::numLock);
        add(4, "Scroll Lock", xmod::unused);
        QTest::newRow(names.isEmpty() ? "no lock" : names.join(" and ").constData()) << locks;
    }
}

void X11KeyGrabberTest::everyCombinationOfCapsNumAndScrollLockFires()
{
    QFETCH(quint16, locks);
    QVERIFY(run(u"xmodmap"_s, {u"-e"_s, u"add mod3 = Scroll_Lock"_s}));
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    m_other->lock(locks);
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_COMPARE(m_presses->count(), 1);
}

void X11KeyGrabberTest::aPressFiresWhateverHasTheFocus_data()
{
    QTest::addColumn<QString>("windowManager");
    QTest::addColumn<quint16>("locks");
    for (const auto &name : {u"Xfwm4"_s, u"Openbox"_s}) {
        const auto under = " under "_ba + name.toUtf8();
        QTest::newRow("no lock" + under) << name << xmod::none;
        QTest::newRow("Caps Lock" + under) << name << xmod::capsLock;
        QTest::newRow("Num Lock" + under) << name << xmod::numLock;
        QTest::newRow("Caps Lock and Num Lock" + under) << name << quint16(xmod::capsLock | xmod::numLock);
    }
}

void X11KeyGrabberTest::aPressFiresWhateverHasTheFocus()
{
    QFETCH(QString, windowManager);
    QFETCH(quint16, locks);
    QVERIFY(startWindowManager(windowManager));
    QVERIFY(m_other->showFocusedWindow());
    m_other->lock(locks);
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);

    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_COMPARE(m_presses->count(), 1);
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_COMPARE(m_presses->count(), 2);

    // The other program has kept the focus, its other keys, and has seen nothing of this one.
    QVERIFY(m_other->hasFocus());
    QVERIFY(typeKeys(u"n"_s));
    QVERIFY(typeKeys(u"38"_s));
    QList<quint8> seen;
    QTRY_VERIFY((seen += m_other->takePresses()).contains(38));
    QCOMPARE(seen.count(xN), 1);
    QCOMPARE(m_presses->count(), 2);
}

void X11KeyGrabberTest::modifiersAreThoseOfTheMac_data()
{
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<quint32>("modifiers");
    QTest::addColumn<QString>("keys");
    QTest::newRow("command is Super") << macN << 0x100u << u"super+n"_s;
    QTest::newRow("option is Alt") << macN << 0x800u << u"alt+n"_s;
    QTest::newRow("shift") << macN << 0x200u << u"shift+n"_s;
    QTest::newRow("control") << macN << 0x1000u << u"ctrl+n"_s;
    QTest::newRow("all four with Return") << 36u << 0x1b00u << u"ctrl+alt+shift+super+Return"_s;
    QTest::newRow("option and command and Space") << 49u << 2304u << u"alt+super+space"_s;
    QTest::newRow("no modifiers") << 105u << 0u << u"191"_s;
    QTest::newRow("other bits are ignored") << macN << 0x401u << u"n"_s;
    QTest::newRow("the right Super key") << macN << 0x100u << u"Super_R+n"_s;
    QTest::newRow("a keypad key") << 89u << 0x100u << u"super+79"_s;
    QTest::newRow("a key that the Mac doesn't have") << 0x100u + 99 << 0x100u << u"super+107"_s;
}

void X11KeyGrabberTest::modifiersAreThoseOfTheMac()
{
    QFETCH(quint32, keyCode);
    QFETCH(quint32, modifiers);
    QFETCH(QString, keys);
    QCOMPARE(m_grabber->grab(keyCode, modifiers), 0);
    QVERIFY(typeKeys(keys));
    QTRY_COMPARE(m_presses->count(), 1);
}

void X11KeyGrabberTest::otherModifiersDoNotFire_data()
{
    QTest::addColumn<QString>("keys");
    QTest::newRow("none") << u"n"_s;
    QTest::newRow("one too few") << u"super+n"_s;
    QTest::newRow("one too many") << u"ctrl+super+shift+n"_s;
    QTest::newRow("another") << u"alt+shift+n"_s;
    QTest::newRow("another key") << u"super+shift+m"_s;
}

void X11KeyGrabberTest::otherModifiersDoNotFire()
{
    QFETCH(QString, keys);
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    QVERIFY(typeKeys(keys));
    QVERIFY(typeKeys(u"super+shift+n"_s)); // By its press the other has been dealt with.
    QTRY_VERIFY(!m_presses->isEmpty());
    QCOMPARE(m_presses->count(), 1);
}

void X11KeyGrabberTest::aHeldKeyFiresOnce_data()
{
    QTest::addColumn<bool>("isDetectable");
    QTest::newRow("that repeats as presses alone") << true;
    QTest::newRow("that repeats as releases and presses") << false;
}

void X11KeyGrabberTest::aHeldKeyFiresOnce()
{
    QFETCH(bool, isDetectable);
    setDetectableRepeat(isDetectable);
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    RootPresses seen;
    QVERIFY(holdKeys(u"super+shift+n"_s));
    QTRY_VERIFY(seen.count > 5);
    QCOMPARE(m_presses->count(), 1);
    QVERIFY(releaseKeys(u"super+shift+n"_s));
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_VERIFY(m_presses->count() > 1);
    QCOMPARE(m_presses->count(), 2);
}

void X11KeyGrabberTest::aKeyHeldSinceBeforeTheGrabFiresAtItsNextPress()
{
    QVERIFY(m_other->showFocusedWindow());
    QVERIFY(holdKeys(u"super+shift+n"_s));
    QList<quint8> seen;
    QTRY_VERIFY((seen += m_other->takePresses()).contains(xN));
    RootPresses repeats;
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    seen.clear();
    QTRY_VERIFY((seen += m_other->takePresses()).count(xN) + repeats.count > 5);
    QCOMPARE(m_presses->count(), 0);
    QVERIFY(releaseKeys(u"super+shift+n"_s));
    QVERIFY(firesBeforeLong(u"super+shift+n"_s));
}

void X11KeyGrabberTest::aNewGrabReplacesTheFormer()
{
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    QCOMPARE(m_grabber->grab(40, 0x1200), 0);
    QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift), 0);
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QVERIFY(typeKeys(u"ctrl+shift+k"_s));
    QTRY_COMPARE(m_presses->count(), 1);
}

void X11KeyGrabberTest::aKeyGivenBackIsFreeForOthers()
{
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift), XCB_ACCESS);
    m_grabber->ungrab();
    m_grabber->ungrab();
    for (const quint16 locks : {xmod::none, xmod::capsLock, xmod::numLock, quint16(xmod::capsLock | xmod::numLock)})
        QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift | locks), 0);
}

void X11KeyGrabberTest::nothingIsToldAfterUninstall()
{
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    m_grabber->uninstall();
    m_grabber->uninstall();
    QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift), 0);
    QCOMPARE(m_grabber->install(), 0);
    QCOMPARE(m_grabber->grab(40, commandShift), 0);
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QVERIFY(typeKeys(u"super+shift+k"_s));
    QTRY_COMPARE(m_presses->count(), 1);
}

void X11KeyGrabberTest::twoGrabbersHearTheirOwnKeys()
{
    X11KeyGrabber second;
    const QSignalSpy secondPresses(&second, &KeyGrabber::pressed);
    QCOMPARE(second.install(), 0);
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    QCOMPARE(second.grab(macN, 0x1300), 0); // The same key with one modifier more.
    QVERIFY(typeKeys(u"ctrl+super+shift+n"_s));
    QTRY_COMPARE(secondPresses.count(), 1);
    QCOMPARE(m_presses->count(), 0);
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_COMPARE(m_presses->count(), 1);
    QCOMPARE(secondPresses.count(), 1);
}

void X11KeyGrabberTest::aKeyOfAnotherProgramIsRefusedAsAWhole_data()
{
    QTest::addColumn<quint16>("locks");
    QTest::newRow("held without locks") << xmod::none;
    QTest::newRow("held with Caps Lock alone") << xmod::capsLock;
    QTest::newRow("held with Caps Lock and Num Lock alone") << quint16(xmod::capsLock | xmod::numLock);
}

void X11KeyGrabberTest::aKeyOfAnotherProgramIsRefusedAsAWhole()
{
    QFETCH(quint16, locks);
    QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift | locks), 0);
    QCOMPARE(m_grabber->grab(macN, commandShift), XCB_ACCESS);
    // The combinations that were free are free again.
    XClient third;
    for (const quint16 free : {xmod::none, xmod::capsLock, xmod::numLock, quint16(xmod::capsLock | xmod::numLock)}) {
        if (free != locks)
            QCOMPARE(third.grab(xN, xmod::super | xmod::shift | free), 0);
    }
}

void X11KeyGrabberTest::aRefusalIsLoggedAndLeavesTheServiceHalfInstalled()
{
    const FakeSystemLog log;
    int calls = 0;
    QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift), 0);
    GlobalHotkeyService service(*m_grabber);
    service.registerHotkey(macN, commandShift, [&calls] { ++calls; });
    QCOMPARE(log.lines, (QStringList{u"ERROR Failed to register hotkey: 10"_s}));
    QVERIFY(typeKeys(u"super+shift+n"_s));
    // Another key goes through without more ado.
    service.registerHotkey(40, commandShift, [&calls] { ++calls; });
    QVERIFY(typeKeys(u"super+shift+k"_s));
    QTRY_COMPARE(calls, 1);
    QCOMPARE(log.lines.last(), u"INFO Global hotkey registered (keyCode: 40, modifiers: 768)"_s);
}

void X11KeyGrabberTest::aKeyThatNoKeyboardHasIsRefused_data()
{
    QTest::addColumn<quint32>("keyCode");
    QTest::newRow("a code of no key") << 0x34u;
    QTest::newRow("a key beyond X11's reach") << 0x3fu;
    QTest::newRow("the largest number") << 0xffffffffu;
}

void X11KeyGrabberTest::aKeyThatNoKeyboardHasIsRefused()
{
    QFETCH(quint32, keyCode);
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    QCOMPARE(m_grabber->grab(keyCode, commandShift), KeyGrabber::unknownKey);
    QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift), 0); // The former key is given back all the same.
}

void X11KeyGrabberTest::withoutInstallThereIsNoGrab()
{
    X11KeyGrabber grabber;
    QCOMPARE(grabber.grab(macN, commandShift), KeyGrabber::notSupported);
}

void X11KeyGrabberTest::theKeyStaysInItsPlaceWhenTheLayoutChanges()
{
    constexpr quint32 macY = 16;
    QCOMPARE(m_grabber->grab(macY, commandShift), 0);
    QVERIFY(typeKeys(u"super+shift+y"_s));
    QTRY_COMPARE(m_presses->count(), 1);
    QVERIFY(setLayout(u"de"_s));
    QVERIFY(typeKeys(u"super+shift+29"_s));
    QTRY_COMPARE(m_presses->count(), 2);
    QVERIFY(typeKeys(u"super+shift+y"_s)); // Now the key that was z.
    QVERIFY(typeKeys(u"super+shift+z"_s));
    QTRY_COMPARE(m_presses->count(), 3);
}

void X11KeyGrabberTest::anotherGroupChangesNothing()
{
    QVERIFY(setLayout(u"us,ru"_s));
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    for (const quint8 group : {quint8(1), quint8(0)}) {
        m_other->lock(xmod::none, group);
        QVERIFY(typeKeys(u"super+shift+57"_s));
        QTRY_COMPARE(m_presses->count(), 2 - group);
    }
}

void X11KeyGrabberTest::theGrabFollowsModifiersThatMove_data()
{
    QTest::addColumn<QStringList>("changes");
    QTest::addColumn<quint16>("locks");
    QTest::addColumn<quint16>("held"); // One of the combinations that are ours then, and one that was.
    QTest::addColumn<std::optional<quint16>>("givenBack");
    const quint16 superShift = xmod::super | xmod::shift;
    const auto row = [](const char *name, const QStringList &changes, int locks, int held, std::optional<int> former) {
        QTest::newRow(name) << changes << quint16(locks) << quint16(held) << std::optional<quint16>(former);
    };
    row("Num Lock", {u"clear mod2"_s, u"add mod3 = Num_Lock"_s}, xmod::unused, superShift, superShift | xmod::numLock);
    row("Scroll Lock", {u"add mod3 = Scroll_Lock"_s}, xmod::unused | xmod::numLock, superShift, std::nullopt);
    row("Super", {u"clear mod4"_s, u"add mod3 = Super_L"_s}, xmod::numLock, xmod::unused | xmod::shift, superShift);
    row("Alt and Super change places",
        {u"clear mod1"_s, u"clear mod4"_s, u"add mod4 = Alt_L"_s, u"add mod1 = Super_L"_s}, xmod::capsLock,
        xmod::alt | xmod::shift, superShift);
}

void X11KeyGrabberTest::theGrabFollowsModifiersThatMove()
{
    QFETCH(QStringList, changes);
    QFETCH(quint16, locks);
    QFETCH(quint16, held);
    QFETCH(std::optional<quint16>, givenBack);
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    QStringList arguments;
    for (const auto &change : changes)
        arguments << u"-e"_s << change;
    QVERIFY(run(u"xmodmap"_s, arguments));
    m_other->lock(locks);
    QVERIFY(firesBeforeLong(u"super+shift+n"_s));

    QCOMPARE(m_other->grab(xN, held), XCB_ACCESS);
    if (givenBack)
        QTRY_COMPARE(m_other->grab(xN, *givenBack), 0);
    m_other->lock(xmod::none);
    QVERIFY(firesBeforeLong(u"super+shift+n"_s));
}

void X11KeyGrabberTest::aRenewalThatAnotherProgramPreventsIsLogged()
{
    const FakeSystemLog log;
    GlobalHotkeyService service(*m_grabber);
    service.registerHotkey(macN, commandShift, [] {});
    const QSignalSpy failures(m_grabber.get(), &KeyGrabber::failed);
    QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift | xmod::unused), 0);
    QVERIFY(run(u"xmodmap"_s, {u"-e"_s, u"add mod3 = Scroll_Lock"_s}));
    QTRY_COMPARE(failures.count(), 1);
    QCOMPARE(log.messages(SystemLog::Level::error), (QStringList{u"Failed to register hotkey: 10"_s}));
    QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift), 0); // Nothing of it is left.
}

void X11KeyGrabberTest::aKeyLostAtARenewalComesBackAtALaterOne()
{
    const FakeSystemLog log;
    const auto success = u"INFO Global hotkey registered (keyCode: 45, modifiers: 768)"_s;
    const auto loss = u"ERROR Failed to register hotkey: 10"_s;
    constexpr quint16 scrollLocked = xmod::super | xmod::shift | xmod::unused;
    GlobalHotkeyService service(*m_grabber);
    int calls = 0;
    service.registerHotkey(macN, commandShift, [&calls] { ++calls; });
    QStringList lines{success};
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(m_other->grab(xN, scrollLocked), 0);
        QVERIFY(run(u"xmodmap"_s, {u"-e"_s, u"add mod3 = Scroll_Lock"_s}));
        lines += loss;
        QTRY_COMPARE(log.lines, lines);
        QVERIFY(run(u"xmodmap"_s, {u"-e"_s, u"clear mod3"_s})); // So many as before are ours to have.
        lines += success;
        QTRY_COMPARE(log.lines, lines);
        m_other->ungrab(xN, scrollLocked);
    }
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_COMPARE(calls, 1);
}

void X11KeyGrabberTest::aKeyGivenUpAfterItWasLostStaysFree()
{
    constexpr quint16 scrollLocked = xmod::super | xmod::shift | xmod::unused;
    constexpr quint8 xK = 45;
    X11KeyGrabber second; // It hears of everything before the first one does.
    const QSignalSpy failures(m_grabber.get(), &KeyGrabber::failed);
    const QSignalSpy secondFailures(&second, &KeyGrabber::failed);
    const QSignalSpy grabs(m_grabber.get(), &KeyGrabber::grabbed);
    QCOMPARE(second.install(), 0);
    QCOMPARE(m_grabber->grab(40, commandShift), 0);
    QCOMPARE(second.grab(macN, commandShift), 0);
    for (const quint8 key : {xN, xK})
        QCOMPARE(m_other->grab(key, scrollLocked), 0);
    QVERIFY(run(u"xmodmap"_s, {u"-e"_s, u"add mod3 = Scroll_Lock"_s}));
    QTRY_COMPARE(failures.count() + secondFailures.count(), 2);

    second.ungrab();
    QVERIFY(run(u"xmodmap"_s, {u"-e"_s, u"clear mod3"_s}));
    QTRY_COMPARE(grabs.count(), 1);
    QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift), 0);
}

void X11KeyGrabberTest::theCallbackMayGiveTheKeyBack()
{
    GlobalHotkeyService service(*m_grabber);
    int calls = 0;
    service.registerHotkey(macN, commandShift, [&] {
        service.unregister();
        ++calls;
    });
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_COMPARE(calls, 1);
    QCOMPARE(m_other->grab(xN, xmod::super | xmod::shift), 0);
}

void X11KeyGrabberTest::theCallbackMayShowAPopupThatGrabsTheKeyboard_data()
{
    QTest::addColumn<bool>("isClosedWhileHeld");
    QTest::newRow("that gets the release") << false;
    QTest::newRow("that is closed before the release") << true;
}

void X11KeyGrabberTest::theCallbackMayShowAPopupThatGrabsTheKeyboard()
{
    QFETCH(bool, isClosedWhileHeld);
    QVERIFY(m_other->showFocusedWindow());
    QVERIFY(run(u"xset"_s, {u"r"_s, u"off"_s})); // Else a repeat would take the keyboard back.
    QWidget popup(nullptr, Qt::Popup);
    QCOMPARE(m_grabber->grab(macN, commandShift), 0);
    connect(m_grabber.get(), &KeyGrabber::pressed, &popup, &QWidget::show);
    QVERIFY(holdKeys(u"super+shift+n"_s));
    QTRY_VERIFY(popup.isVisible());
    QVERIFY(QTest::qWaitForWindowExposed(&popup));
    if (isClosedWhileHeld)
        popup.hide();
    QCoreApplication::processEvents();
    QVERIFY(releaseKeys(u"super+shift+n"_s));
    if (isClosedWhileHeld) {
        // Nobody tells us of that release. The grabber looks every 50 ms, and these timers go off in turns.
        QTimer timer;
        const QSignalSpy ticks(&timer, &QTimer::timeout);
        timer.start(60);
        QTRY_VERIFY(ticks.count() > 4);
    }
    popup.hide();
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_COMPARE(m_presses->count(), 2);
}

QTEST_MAIN(X11KeyGrabberTest)

#include "X11KeyGrabberTest.moc"
