#include "Services/GlobalHotkeyService.h"

#include "Fakes/FakeKeyGrabber.h"
#include "Fakes/FakeKeyboardLayout.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/TestSettings.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <cstdio>
#include <memory>

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

using Shortcut = std::pair<quint32, quint32>;

/// In a process of its own, since it may end there.
int printKeyName(const QString &call, const QString &keyCode)
{
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    const FakeKeyboardLayout layout;
    const auto code = keyCode.toUInt();
    QString name;
    if (call == "name"_L1) {
        name = GlobalHotkeyService::keyName(code);
    } else if (call == "display"_L1) {
        name = GlobalHotkeyService::displayString(code, 768);
    } else {
        const TestSettings test({{u"quickAddKeyCode"_s, qint64{code}}, {u"quickAddModifiers"_s, qint64{768}}});
        name = quickAddHotkeyDisplay(test.settings);
    }
    std::puts(qPrintable(name));
    return 0;
}

} // namespace

class GlobalHotkeyServiceTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aRegisteredShortcutFiresAndIsLogged();
    void registeringAgainReplacesShortcutAndCallback();
    void unregisterOnAFreshInstanceDoesNothing();
    void unregisterASecondTimeDoesNothing();
    void unregisterGivesTheKeyBackBeforeTheHandler();
    void aHandlerThatCannotBeInstalledIsLoggedAndNothingIsGrabbed();
    void aRefusedKeyIsLoggedAndLeavesTheHandlerInstalled();
    void unregisterClearsTheCallbackAfterARegistrationThatFailedHalfway();
    void registeringAfterAFailureNeedsNothingSpecial_data();
    void registeringAfterAFailureNeedsNothingSpecial();
    void aLateRefusalIsLoggedOnceAndLeavesTheHandlerInstalled();
    void aLateRefusalOfAKeyGivenBackIsNotLogged();
    void aKeyThatIsLostAndComesAgainIsLoggedEachTime();
    void aKeyThatIsLostAndThenRefusedIsLoggedTwice();
    void aKeyThatComesAfterARegistrationThatWasGivenUpIsNotLogged();
    void aPressWithoutACallbackIsSwallowed();
    void theCallbackRunsWithinThePress();
    void theCallbackMayRegisterAnother();
    void theCallbackMayUnregister();
    void twoInstancesShareOneCallback();
    void destructionUnregisters();

    void carbonModifiersTranslatesTheFourFlags_data();
    void carbonModifiersTranslatesTheFourFlags();
    void displayStringPutsGlyphsBeforeTheName_data();
    void displayStringPutsGlyphsBeforeTheName();
    void keyNamesThatNoLayoutChanges_data();
    void keyNamesThatNoLayoutChanges();
    void keyNameIsWhatTheLayoutSays_data();
    void keyNameIsWhatTheLayoutSays();
    void keyNameFollowsTheLayoutInForce();
    void aKeyCodeOutsideOf16BitsIsFatal_data();
    void aKeyCodeOutsideOf16BitsIsFatal();
    void withoutALayoutAnyKeyCodeGivesItsNumber_data();
    void withoutALayoutAnyKeyCodeGivesItsNumber();
    void quickAddHotkeyDisplayTellsTheSettings_data();
    void quickAddHotkeyDisplayTellsTheSettings();
    void quickAddHotkeyDisplayOfAFirstRun();
    void aBindingOfTheDisplayFollowsTheSettings();

private:
    std::function<void()> count()
    {
        return [this] { ++m_presses; };
    }

    int m_presses = 0;
    std::unique_ptr<FakeSystemLog> m_log;
    std::unique_ptr<FakeKeyGrabber> m_grabber;
    std::unique_ptr<FakeKeyboardLayout> m_layout;
    std::unique_ptr<GlobalHotkeyService> m_service;
};

void GlobalHotkeyServiceTest::init()
{
    m_presses = 0;
    m_log = std::make_unique<FakeSystemLog>();
    m_grabber = std::make_unique<FakeKeyGrabber>();
    m_layout = std::make_unique<FakeKeyboardLayout>();
    m_service = std::make_unique<GlobalHotkeyService>(*m_grabber);
}

void GlobalHotkeyServiceTest::cleanup()
{
    m_service.reset();
    m_layout.reset();
    m_grabber.reset();
    m_log.reset();
}

void GlobalHotkeyServiceTest::aRegisteredShortcutFiresAndIsLogged()
{
    m_service->registerHotkey(49, 2304, count());
    QCOMPARE(m_grabber->calls, (QStringList{u"install"_s, u"grab"_s}));
    QCOMPARE(m_grabber->asked, (QList<Shortcut>{{49, 2304}}));
    QCOMPARE(m_log->lines, (QStringList{u"INFO Global hotkey registered (keyCode: 49, modifiers: 2304)"_s}));
    m_grabber->press();
    m_grabber->press();
    QCOMPARE(m_presses, 2);
}

void GlobalHotkeyServiceTest::registeringAgainReplacesShortcutAndCallback()
{
    bool isFirstCalled = false;
    m_service->registerHotkey(45, 768, [&isFirstCalled] { isFirstCalled = true; });
    m_service->registerHotkey(40, 0x1200, count());
    QCOMPARE(m_grabber->calls,
             (QStringList{u"install"_s, u"grab"_s, u"ungrab"_s, u"uninstall"_s, u"install"_s, u"grab"_s}));
    QCOMPARE(m_grabber->held, std::optional(Shortcut(40, 0x1200)));
    m_grabber->press();
    QCOMPARE(m_presses, 1);
    QVERIFY(!isFirstCalled);
}

void GlobalHotkeyServiceTest::unregisterOnAFreshInstanceDoesNothing()
{
    m_service->unregister();
    m_service->unregister();
    QCOMPARE(m_grabber->calls, QStringList());
    QCOMPARE(m_log->lines, QStringList());
}

void GlobalHotkeyServiceTest::unregisterASecondTimeDoesNothing()
{
    m_service->registerHotkey(45, 768, count());
    m_service->unregister();
    m_grabber->calls.clear();
    m_log->lines.clear();
    m_service->unregister();
    QCOMPARE(m_grabber->calls, QStringList());
    QCOMPARE(m_log->lines, QStringList());
}

void GlobalHotkeyServiceTest::unregisterGivesTheKeyBackBeforeTheHandler()
{
    m_service->registerHotkey(45, 768, count());
    m_grabber->calls.clear();
    m_service->unregister();
    QCOMPARE(m_grabber->calls, (QStringList{u"ungrab"_s, u"uninstall"_s}));
    m_grabber->press();
    QCOMPARE(m_presses, 0);
}

void GlobalHotkeyServiceTest::aHandlerThatCannotBeInstalledIsLoggedAndNothingIsGrabbed()
{
    // Another instance's presses reach the same callback, so they tell whether it is there.
    FakeKeyGrabber otherGrabber;
    GlobalHotkeyService other(otherGrabber);
    other.registerHotkey(40, 768, [] {});
    m_log->lines.clear();
    m_grabber->installStatus = -9868;
    m_service->registerHotkey(45, 768, count());
    QCOMPARE(m_log->lines, (QStringList{u"ERROR Failed to install event handler: -9868"_s}));
    QCOMPARE(m_grabber->calls, (QStringList{u"install"_s}));
    otherGrabber.press();
    QCOMPARE(m_presses, 1); // The callback stays set,
    m_service->unregister();
    QCOMPARE(m_grabber->calls, (QStringList{u"install"_s}));
    otherGrabber.press();
    QCOMPARE(m_presses, 1); // until it is taken back.
}

void GlobalHotkeyServiceTest::aRefusedKeyIsLoggedAndLeavesTheHandlerInstalled()
{
    m_grabber->grabStatus = 10;
    m_service->registerHotkey(45, 768, count());
    QCOMPARE(m_log->lines, (QStringList{u"ERROR Failed to register hotkey: 10"_s}));
    QVERIFY(m_grabber->isInstalled);
    m_grabber->press(); // The callback is still there.
    QCOMPARE(m_presses, 1);
}

void GlobalHotkeyServiceTest::unregisterClearsTheCallbackAfterARegistrationThatFailedHalfway()
{
    m_grabber->grabStatus = 10;
    m_service->registerHotkey(45, 768, count());
    // Another instance's presses reach the same callback, so they tell whether it is there.
    FakeKeyGrabber otherGrabber;
    GlobalHotkeyService other(otherGrabber);
    other.registerHotkey(40, 768, count());
    m_service->unregister();
    QCOMPARE(m_grabber->calls, (QStringList{u"install"_s, u"grab"_s, u"uninstall"_s})); // No key to give back.
    otherGrabber.press();
    QCOMPARE(m_presses, 0);
}

void GlobalHotkeyServiceTest::registeringAfterAFailureNeedsNothingSpecial_data()
{
    QTest::addColumn<int>("installStatus");
    QTest::addColumn<int>("grabStatus");
    QTest::newRow("after a handler that could not be installed") << -1 << 0;
    QTest::newRow("after a key that was refused") << 0 << 10;
}

void GlobalHotkeyServiceTest::registeringAfterAFailureNeedsNothingSpecial()
{
    QFETCH(int, installStatus);
    QFETCH(int, grabStatus);
    m_grabber->installStatus = installStatus;
    m_grabber->grabStatus = grabStatus;
    m_service->registerHotkey(45, 768, count());
    m_grabber->installStatus = 0;
    m_grabber->grabStatus = 0;
    m_service->registerHotkey(45, 768, count());
    m_grabber->press();
    QCOMPARE(m_presses, 1);
    QCOMPARE(m_log->lines.last(), u"INFO Global hotkey registered (keyCode: 45, modifiers: 768)"_s);
}

void GlobalHotkeyServiceTest::aLateRefusalIsLoggedOnceAndLeavesTheHandlerInstalled()
{
    m_service->registerHotkey(45, 768, count());
    m_log->lines.clear();
    m_grabber->fail(1);
    m_grabber->fail(1);
    QCOMPARE(m_log->lines, (QStringList{u"ERROR Failed to register hotkey: 1"_s}));
    QVERIFY(m_grabber->isInstalled);
    m_grabber->calls.clear();
    m_service->unregister();
    QCOMPARE(m_grabber->calls, (QStringList{u"uninstall"_s}));
}

void GlobalHotkeyServiceTest::aLateRefusalOfAKeyGivenBackIsNotLogged()
{
    m_service->registerHotkey(45, 768, count());
    m_service->unregister();
    m_log->lines.clear();
    m_grabber->fail(1);
    QCOMPARE(m_log->lines, QStringList());
}

void GlobalHotkeyServiceTest::aKeyThatIsLostAndComesAgainIsLoggedEachTime()
{
    const auto success = u"INFO Global hotkey registered (keyCode: 45, modifiers: 768)"_s;
    const auto loss = u"ERROR Failed to register hotkey: -4"_s;
    m_service->registerHotkey(45, 768, count());
    m_grabber->fail(KeyGrabber::serviceLost);
    m_grabber->giveLate();
    m_grabber->press();
    QCOMPARE(m_presses, 1);
    m_grabber->fail(KeyGrabber::serviceLost);
    QCOMPARE(m_log->lines, (QStringList{success, loss, success, loss}));
    m_grabber->giveLate();
    m_grabber->giveLate(); // Said once is enough.
    QCOMPARE(m_log->lines, (QStringList{success, loss, success, loss, success}));
    m_grabber->calls.clear();
    m_service->unregister();
    QCOMPARE(m_grabber->calls, (QStringList{u"ungrab"_s, u"uninstall"_s}));
}

void GlobalHotkeyServiceTest::aKeyThatIsLostAndThenRefusedIsLoggedTwice()
{
    m_service->registerHotkey(45, 768, count());
    m_grabber->fail(KeyGrabber::serviceLost);
    m_grabber->fail(1);
    m_grabber->fail(1);
    QCOMPARE(m_log->messages(SystemLog::Level::error),
             (QStringList{u"Failed to register hotkey: -4"_s, u"Failed to register hotkey: 1"_s}));
}

void GlobalHotkeyServiceTest::aKeyThatComesAfterARegistrationThatWasGivenUpIsNotLogged()
{
    m_service->registerHotkey(45, 768, count());
    m_grabber->fail(KeyGrabber::serviceLost);
    m_service->unregister();
    m_log->lines.clear();
    m_grabber->giveLate();
    m_grabber->fail(1);
    QCOMPARE(m_log->lines, QStringList());
}

void GlobalHotkeyServiceTest::aPressWithoutACallbackIsSwallowed()
{
    m_service->registerHotkey(45, 768, nullptr);
    m_grabber->press();
    QCOMPARE(m_log->lines, (QStringList{u"INFO Global hotkey registered (keyCode: 45, modifiers: 768)"_s}));
}

void GlobalHotkeyServiceTest::theCallbackRunsWithinThePress()
{
    bool isWithin = false;
    bool wasWithin = false;
    m_service->registerHotkey(45, 768, [&] { wasWithin = isWithin; });
    isWithin = true;
    m_grabber->press();
    isWithin = false;
    QVERIFY(wasWithin);
}

void GlobalHotkeyServiceTest::theCallbackMayRegisterAnother()
{
    const auto word = std::make_shared<QString>(u"kept"_s);
    QString seen;
    m_service->registerHotkey(45, 768, [this, &seen, word] {
        m_service->registerHotkey(40, 768, count());
        seen = *word; // What the callback holds lives as long as its call.
    });
    m_grabber->press();
    QCOMPARE(seen, u"kept"_s);
    m_grabber->press();
    QCOMPARE(m_presses, 1);
}

void GlobalHotkeyServiceTest::theCallbackMayUnregister()
{
    m_service->registerHotkey(45, 768, [this] {
        m_service->unregister();
        ++m_presses;
    });
    m_grabber->press();
    m_grabber->press();
    QCOMPARE(m_presses, 1);
}

void GlobalHotkeyServiceTest::twoInstancesShareOneCallback()
{
    FakeKeyGrabber otherGrabber;
    auto other = std::make_unique<GlobalHotkeyService>(otherGrabber);
    bool isFirstCalled = false;
    m_service->registerHotkey(45, 768, [&isFirstCalled] { isFirstCalled = true; });
    other->registerHotkey(40, 768, count());
    m_grabber->press();
    otherGrabber.press();
    QVERIFY(!isFirstCalled);
    QCOMPARE(m_presses, 2);
    other.reset();
    m_grabber->press(); // Gone for both.
    QCOMPARE(m_presses, 2);
}

void GlobalHotkeyServiceTest::destructionUnregisters()
{
    m_service->registerHotkey(45, 768, count());
    m_service.reset();
    QCOMPARE(m_grabber->calls, (QStringList{u"install"_s, u"grab"_s, u"ungrab"_s, u"uninstall"_s}));
    m_grabber->press();
    m_grabber->fail(1);
    QCOMPARE(m_presses, 0);
    QCOMPARE(m_log->messages(SystemLog::Level::error), QStringList());
}

void GlobalHotkeyServiceTest::carbonModifiersTranslatesTheFourFlags_data()
{
    QTest::addColumn<quint64>("from");
    QTest::addColumn<quint32>("modifiers");
    QTest::newRow("nothing") << quint64(0) << quint32(0);
    QTest::newRow("control") << quint64(0x40000) << quint32(0x1000);
    QTest::newRow("option") << quint64(0x80000) << quint32(0x800);
    QTest::newRow("shift") << quint64(0x20000) << quint32(0x200);
    QTest::newRow("command") << quint64(0x100000) << quint32(0x100);
    QTest::newRow("command and shift") << quint64(0x120000) << quint32(0x300);
    QTest::newRow("all four") << quint64(0x1e0000) << quint32(0x1b00);
    QTest::newRow("caps lock alone is nothing") << quint64(0x10000) << quint32(0);
    QTest::newRow("flags of no modifier are ignored") << quint64(0xffffffffffe1ffff) << quint32(0);
    QTest::newRow("command among all other flags") << quint64(0xfffffffffff1ffff) << quint32(0x100);
}

void GlobalHotkeyServiceTest::carbonModifiersTranslatesTheFourFlags()
{
    QFETCH(quint64, from);
    QTEST(GlobalHotkeyService::carbonModifiers(from), "modifiers");
}

void GlobalHotkeyServiceTest::displayStringPutsGlyphsBeforeTheName_data()
{
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<quint32>("modifiers");
    QTest::addColumn<QString>("text");
    QTest::newRow("option and command and Space") << 49u << 2304u << u"⌥⌘Space"_s;
    QTest::newRow("control and shift and K") << 40u << 0x1200u << u"⌃⇧K"_s;
    QTest::newRow("command and shift and Space") << 49u << 0x300u << u"⇧⌘Space"_s;
    QTest::newRow("no modifiers: the name alone") << 122u << 0u << u"F1"_s;
    QTest::newRow("all four with Return") << 36u << 0x1b00u << u"⌃⌥⇧⌘↩"_s;
    QTest::newRow("other bits are ignored") << 36u << 0xffffe4ffu << u"↩"_s;
    QTest::newRow("other bits beside the four") << 36u << 0xffffffffu << u"⌃⌥⇧⌘↩"_s;
    QTest::newRow("key code 0 without modifiers is a key like others") << 0u << 0u << u"Key0"_s;
}

void GlobalHotkeyServiceTest::displayStringPutsGlyphsBeforeTheName()
{
    QFETCH(quint32, keyCode);
    QFETCH(quint32, modifiers);
    QTEST(GlobalHotkeyService::displayString(keyCode, modifiers), "text");
}

void GlobalHotkeyServiceTest::keyNamesThatNoLayoutChanges_data()
{
    QTest::addColumn<quint32>("keyCode");
    const std::pair<quint32, const char *> keys[] = {
        {0x7a, "F1"}, {0x78, "F2"}, {0x63, "F3"},  {0x76, "F4"},  {0x60, "F5"},  {0x61, "F6"},    {0x62, "F7"},
        {0x64, "F8"}, {0x65, "F9"}, {0x6d, "F10"}, {0x67, "F11"}, {0x6f, "F12"}, {0x31, "Space"}, {0x24, "↩"},
        {0x30, "⇥"},  {0x33, "⌫"},  {0x35, "⎋"},   {0x7e, "↑"},   {0x7d, "↓"},   {0x7b, "←"},     {0x7c, "→"},
    };
    for (const auto &[keyCode, name] : keys)
        QTest::newRow(name) << keyCode;
}

void GlobalHotkeyServiceTest::keyNamesThatNoLayoutChanges()
{
    QFETCH(quint32, keyCode);
    m_layout->characters.insert(keyCode, u"x"_s);
    QCOMPARE(GlobalHotkeyService::keyName(keyCode), QString::fromUtf8(QTest::currentDataTag()));
}

void GlobalHotkeyServiceTest::keyNameIsWhatTheLayoutSays_data()
{
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<QString>("character");
    QTest::addColumn<QString>("name");
    QTest::newRow("a letter in capitals") << 45u << u"n"_s << u"N"_s;
    QTest::newRow("a digit") << 18u << u"1"_s << u"1"_s;
    QTest::newRow("punctuation") << 43u << u","_s << u","_s;
    QTest::newRow("an umlaut") << 41u << u"ö"_s << u"Ö"_s;
    QTest::newRow("a Cyrillic letter") << 0u << u"ф"_s << u"Ф"_s;
    QTest::newRow("sharp s becomes two letters") << 27u << u"ß"_s << u"SS"_s;
    QTest::newRow("a ligature becomes its letters") << 27u << u"ﬁ"_s << u"FI"_s;
    QTest::newRow("an apostrophe before n") << 27u << u"ŉ"_s << u"ʼN"_s;
    QTest::newRow("a letter beyond 16 bits") << 27u << u"𐐨"_s << u"𐐀"_s;
    QTest::newRow("several characters") << 27u << u"lj"_s << u"LJ"_s;
    QTest::newRow("an empty translation gives the number") << 27u << u""_s << u"Key27"_s;
    QTest::newRow("no translation gives the number") << 105u << QString() << u"Key105"_s;
    QTest::newRow("the last number of 16 bits") << 65535u << QString() << u"Key65535"_s;
}

void GlobalHotkeyServiceTest::keyNameIsWhatTheLayoutSays()
{
    QFETCH(quint32, keyCode);
    QFETCH(QString, character);
    m_layout->characters.clear();
    if (!character.isNull())
        m_layout->characters.insert(keyCode, character);
    QTEST(GlobalHotkeyService::keyName(keyCode), "name");
    QCOMPARE(m_log->lines, QStringList());
}

void GlobalHotkeyServiceTest::keyNameFollowsTheLayoutInForce()
{
    m_layout->characters.insert(16, u"y"_s);
    QCOMPARE(GlobalHotkeyService::keyName(16), u"Y"_s);
    m_layout->characters.insert(16, u"z"_s);
    QCOMPARE(GlobalHotkeyService::keyName(16), u"Z"_s);
}

void GlobalHotkeyServiceTest::aKeyCodeOutsideOf16BitsIsFatal_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<QByteArray>("name"); // Empty if the call is fatal.
    QTest::newRow("the last of 16 bits") << u"name"_s << 65535u << "Key65535"_ba;
    QTest::newRow("the first of 17 bits") << u"name"_s << 65536u << QByteArray();
    QTest::newRow("17 bits") << u"name"_s << 70000u << QByteArray();
    QTest::newRow("the low 16 bits are those of F1") << u"name"_s << 0x1007au << QByteArray();
    QTest::newRow("the low 16 bits are those of a letter") << u"name"_s << 0x1002du << QByteArray();
    QTest::newRow("-1, as 32 bits without a sign read it") << u"name"_s << quint32(-1) << QByteArray();
    QTest::newRow("the lowest of 32 bits with a sign") << u"name"_s << 0x80000000u << QByteArray();
    QTest::newRow("in the text of a shortcut") << u"display"_s << 70000u << QByteArray();
    QTest::newRow("in the settings, as they were stored") << u"settings"_s << 70000u << QByteArray();
    QTest::newRow("in the settings, all 32 bits") << u"settings"_s << 0xffffffffu << QByteArray();
}

void GlobalHotkeyServiceTest::aKeyCodeOutsideOf16BitsIsFatal()
{
    QFETCH(QString, call);
    QFETCH(quint32, keyCode);
    QFETCH(QByteArray, name);
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"--key-name"_s, call, QString::number(keyCode)});
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.readAllStandardOutput().trimmed(), name);
    if (!name.isEmpty()) {
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        return;
    }
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    QCOMPARE(child.exitCode(), SIGABRT);
    const auto words = "The key code " + QByteArray::number(keyCode) + " of a shortcut is outside of 16 bits";
    const auto errors = child.readAllStandardError();
    QVERIFY2(errors.contains(words), errors);
}

void GlobalHotkeyServiceTest::withoutALayoutAnyKeyCodeGivesItsNumber_data()
{
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<QString>("name");
    QTest::newRow("a letter") << 45u << u"Key45"_s;
    QTest::newRow("17 bits") << 70000u << u"Key70000"_s;
    QTest::newRow("all 32 bits") << 0xffffffffu << u"Key4294967295"_s;
    QTest::newRow("a key that needs no layout") << 122u << u"F1"_s;
}

void GlobalHotkeyServiceTest::withoutALayoutAnyKeyCodeGivesItsNumber()
{
    QFETCH(quint32, keyCode);
    m_layout->hasLayout = false;
    QTEST(GlobalHotkeyService::keyName(keyCode), "name");
    QCOMPARE(m_log->lines, QStringList());
}

void GlobalHotkeyServiceTest::quickAddHotkeyDisplayTellsTheSettings_data()
{
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<quint32>("modifiers");
    QTest::addColumn<QString>("text");
    QTest::newRow("both 0") << 0u << 0u << u"Not set"_s;
    QTest::newRow("key code 0 with a modifier") << 0u << 0x100u << u"⌘Key0"_s;
    QTest::newRow("a key without modifiers") << 122u << 0u << u"F1"_s;
    QTest::newRow("both") << 49u << 2304u << u"⌥⌘Space"_s;
}

void GlobalHotkeyServiceTest::quickAddHotkeyDisplayTellsTheSettings()
{
    QFETCH(quint32, keyCode);
    QFETCH(quint32, modifiers);
    TestSettings test;
    test.settings.setQuickAddKeyCode(keyCode);
    test.settings.setQuickAddModifiers(modifiers);
    QTEST(quickAddHotkeyDisplay(test.settings), "text");
}

void GlobalHotkeyServiceTest::quickAddHotkeyDisplayOfAFirstRun()
{
    const TestSettings test;
    QCOMPARE(quickAddHotkeyDisplay(test.settings), u"⇧⌘N"_s);
}

void GlobalHotkeyServiceTest::aBindingOfTheDisplayFollowsTheSettings()
{
    TestSettings test;
    QProperty<QString> text;
    text.setBinding([&test] { return quickAddHotkeyDisplay(test.settings); });
    QCOMPARE(text.value(), u"⇧⌘N"_s);
    test.settings.setQuickAddKeyCode(0);
    test.settings.setQuickAddModifiers(0);
    QCOMPARE(text.value(), u"Not set"_s);
}

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    if (app.arguments().value(1) == "--key-name"_L1)
        return printKeyName(app.arguments().value(2), app.arguments().value(3));
    GlobalHotkeyServiceTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "GlobalHotkeyServiceTest.moc"
