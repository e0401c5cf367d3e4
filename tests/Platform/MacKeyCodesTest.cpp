#include "Platform/X11/MacKeyCodes.h"

#include <QSet>
#include <QTest>

#include <algorithm>
#include <iterator>

#include <linux/input-event-codes.h>

using namespace korvo;

namespace {

struct MacKey {
    const char *name; ///< As the Mac calls it.
    quint32 mac;
    quint32 evdev;
};

/// All virtual key codes of the Mac, in their order. The numbers stand in the settings of every user: none may move.
constexpr MacKey macKeys[] = {
    // clang-format off
    {"A", 0x00, 30},
    {"S", 0x01, 31},
    {"D", 0x02, 32},
    {"F", 0x03, 33},
    {"H", 0x04, 35},
    {"G", 0x05, 34},
    {"Z", 0x06, 44},
    {"X", 0x07, 45},
    {"C", 0x08, 46},
    {"V", 0x09, 47},
    {"ISO Section", 0x0a, 86},
    {"B", 0x0b, 48},
    {"Q", 0x0c, 16},
    {"W", 0x0d, 17},
    {"E", 0x0e, 18},
    {"R", 0x0f, 19},
    {"Y", 0x10, 21},
    {"T", 0x11, 20},
    {"1", 0x12, 2},
    {"2", 0x13, 3},
    {"3", 0x14, 4},
    {"4", 0x15, 5},
    {"6", 0x16, 7},
    {"5", 0x17, 6},
    {"Equal", 0x18, 13},
    {"9", 0x19, 10},
    {"7", 0x1a, 8},
    {"Minus", 0x1b, 12},
    {"8", 0x1c, 9},
    {"0", 0x1d, 11},
    {"Right Bracket", 0x1e, 27},
    {"O", 0x1f, 24},
    {"U", 0x20, 22},
    {"Left Bracket", 0x21, 26},
    {"I", 0x22, 23},
    {"P", 0x23, 25},
    {"Return", 0x24, 28},
    {"L", 0x25, 38},
    {"J", 0x26, 36},
    {"Quote", 0x27, 40},
    {"K", 0x28, 37},
    {"Semicolon", 0x29, 39},
    {"Backslash", 0x2a, 43},
    {"Comma", 0x2b, 51},
    {"Slash", 0x2c, 53},
    {"N", 0x2d, 49},
    {"M", 0x2e, 50},
    {"Period", 0x2f, 52},
    {"Tab", 0x30, 15},
    {"Space", 0x31, 57},
    {"Grave", 0x32, 41},
    {"Delete", 0x33, 14},
    {"Escape", 0x35, 1},
    {"Right Command", 0x36, 126},
    {"Command", 0x37, 125},
    {"Shift", 0x38, 42},
    {"Caps Lock", 0x39, 58},
    {"Option", 0x3a, 56},
    {"Control", 0x3b, 29},
    {"Right Shift", 0x3c, 54},
    {"Right Option", 0x3d, 100},
    {"Right Control", 0x3e, 97},
    {"Function", 0x3f, 464},
    {"F17", 0x40, 187},
    {"Keypad Decimal", 0x41, 83},
    {"Keypad Multiply", 0x43, 55},
    {"Keypad Plus", 0x45, 78},
    {"Keypad Clear", 0x47, 69},
    {"Volume Up", 0x48, 115},
    {"Volume Down", 0x49, 114},
    {"Mute", 0x4a, 113},
    {"Keypad Divide", 0x4b, 98},
    {"Keypad Enter", 0x4c, 96},
    {"Keypad Minus", 0x4e, 74},
    {"F18", 0x4f, 188},
    {"F19", 0x50, 189},
    {"Keypad Equals", 0x51, 117},
    {"Keypad 0", 0x52, 82},
    {"Keypad 1", 0x53, 79},
    {"Keypad 2", 0x54, 80},
    {"Keypad 3", 0x55, 81},
    {"Keypad 4", 0x56, 75},
    {"Keypad 5", 0x57, 76},
    {"Keypad 6", 0x58, 77},
    {"Keypad 7", 0x59, 71},
    {"F20", 0x5a, 190},
    {"Keypad 8", 0x5b, 72},
    {"Keypad 9", 0x5c, 73},
    {"JIS Yen", 0x5d, 124},
    {"JIS Underscore", 0x5e, 89},
    {"JIS Keypad Comma", 0x5f, 121},
    {"F5", 0x60, 63},
    {"F6", 0x61, 64},
    {"F7", 0x62, 65},
    {"F3", 0x63, 61},
    {"F8", 0x64, 66},
    {"F9", 0x65, 67},
    {"JIS Eisu", 0x66, 123},
    {"F11", 0x67, 87},
    {"JIS Kana", 0x68, 122},
    {"F13", 0x69, 183},
    {"F16", 0x6a, 186},
    {"F14", 0x6b, 184},
    {"F10", 0x6d, 68},
    {"Contextual Menu", 0x6e, 127},
    {"F12", 0x6f, 88},
    {"F15", 0x71, 185},
    {"Help", 0x72, 110},
    {"Home", 0x73, 102},
    {"Page Up", 0x74, 104},
    {"Forward Delete", 0x75, 111},
    {"F4", 0x76, 62},
    {"End", 0x77, 107},
    {"F2", 0x78, 60},
    {"Page Down", 0x79, 109},
    {"F1", 0x7a, 59},
    {"Left Arrow", 0x7b, 105},
    {"Right Arrow", 0x7c, 106},
    {"Down Arrow", 0x7d, 108},
    {"Up Arrow", 0x7e, 103},
    // clang-format on
};

/// Keys of a PC keyboard that the Mac has no number for.
constexpr quint32 foreignKeys[] = {
    KEY_SCROLLLOCK,
    KEY_ZENKAKUHANKAKU,
    KEY_KATAKANA,
    KEY_HIRAGANA,
    KEY_HENKAN,
    KEY_KATAKANAHIRAGANA,
    KEY_MUHENKAN,
    KEY_KPJPCOMMA,
    KEY_SYSRQ,
    KEY_LINEFEED,
    KEY_MACRO,
    KEY_POWER,
    KEY_KPPLUSMINUS,
    KEY_PAUSE,
    KEY_SCALE,
    KEY_F21,
    KEY_F22,
    KEY_F23,
    KEY_F24,
    84, // Not given to any key.
};

} // namespace

class MacKeyCodesTest : public QObject {
    Q_OBJECT
private slots:
    void aKeyHasBothNumbers_data();
    void aKeyHasBothNumbers();
    void everyVirtualKeyCodeOfTheMacIsAsItAlwaysWas_data();
    void everyVirtualKeyCodeOfTheMacIsAsItAlwaysWas();
    void noOtherKeyHasANumberOfTheMac();
    void everyKeyOfAKeyboardHasAMacKeyCode_data();
    void everyKeyOfAKeyboardHasAMacKeyCode();
    void everyMacKeyCodeComesBack();
    void everyEvdevKeyCodeComesBack();
    void noTwoKeysShareANumber();
    void aNumberOfNoKeyHasNone_data();
    void aNumberOfNoKeyHasNone();
};

void MacKeyCodesTest::aKeyHasBothNumbers_data()
{
    QTest::addColumn<quint32>("mac");
    QTest::addColumn<quint32>("evdev");
    const auto row = [](const char *name, quint32 mac, quint32 evdev) { QTest::newRow(name) << mac << evdev; };
    row("A", 0, KEY_A);
    row("N", 45, KEY_N);
    row("Y of the US keyboard", 16, KEY_Y);
    row("Z of the US keyboard", 6, KEY_Z);
    row("5 and 6 are crossed on the Mac", 23, KEY_5);
    row("6 and 5 are crossed on the Mac", 22, KEY_6);
    row("left of 1", 50, KEY_GRAVE);
    row("right of the left Shift of ISO keyboards", 10, KEY_102ND);
    row("Return", 36, KEY_ENTER);
    row("Tab", 48, KEY_TAB);
    row("Space", 49, KEY_SPACE);
    row("Backspace", 51, KEY_BACKSPACE);
    row("Escape", 53, KEY_ESC);
    row("Delete", 117, KEY_DELETE);
    row("Insert is Help", 114, KEY_INSERT);
    row("Left", 123, KEY_LEFT);
    row("Right", 124, KEY_RIGHT);
    row("Down", 125, KEY_DOWN);
    row("Up", 126, KEY_UP);
    row("F1", 122, KEY_F1);
    row("F5", 96, KEY_F5);
    row("F12", 111, KEY_F12);
    row("F13", 105, KEY_F13);
    row("F14", 107, KEY_F14);
    row("F15", 113, KEY_F15);
    row("F20", 90, KEY_F20);
    row("Num Lock is Clear", 71, KEY_NUMLOCK);
    row("keypad 0", 82, KEY_KP0);
    row("keypad 7", 89, KEY_KP7);
    row("keypad 8 comes after F20", 91, KEY_KP8);
    row("keypad Enter", 76, KEY_KPENTER);
    row("Super is Command", 55, KEY_LEFTMETA);
    row("right Alt is right Option", 61, KEY_RIGHTALT);
    row("Menu", 110, KEY_COMPOSE);
    row("Yen", 93, KEY_YEN);
    row("underscore of Japanese keyboards", 94, KEY_RO);
    row("Eisu", 102, KEY_HANJA);
    row("Kana", 104, KEY_HANGEUL);
    row("mute", 74, KEY_MUTE);
    row("Print has a number of our own", 0x100 + 99, KEY_SYSRQ);
    row("Muhenkan has a number of our own", 0x100 + 94, KEY_MUHENKAN);
}

void MacKeyCodesTest::aKeyHasBothNumbers()
{
    QFETCH(quint32, mac);
    QFETCH(quint32, evdev);
    QCOMPARE(macKeyCode(evdev), std::optional(mac));
    QCOMPARE(evdevKeyCode(mac), std::optional(evdev));
}

void MacKeyCodesTest::everyVirtualKeyCodeOfTheMacIsAsItAlwaysWas_data()
{
    QTest::addColumn<quint32>("mac");
    QTest::addColumn<quint32>("evdev");
    for (const auto &key : macKeys)
        QTest::newRow(key.name) << key.mac << key.evdev;
}

void MacKeyCodesTest::everyVirtualKeyCodeOfTheMacIsAsItAlwaysWas()
{
    QFETCH(quint32, mac);
    QFETCH(quint32, evdev);
    QVERIFY(mac < 0x100);
    QCOMPARE(macKeyCode(evdev), std::optional(mac));
    QCOMPARE(evdevKeyCode(mac), std::optional(evdev));
}

void MacKeyCodesTest::noOtherKeyHasANumberOfTheMac()
{
    QSet<quint32> expected;
    for (const auto &key : macKeys)
        expected.insert(key.mac);
    QCOMPARE(expected.size(), qsizetype(std::size(macKeys)));
    for (quint32 mac = 0; mac < 0x100; ++mac)
        QCOMPARE(evdevKeyCode(mac).has_value(), expected.contains(mac));
}

void MacKeyCodesTest::everyKeyOfAKeyboardHasAMacKeyCode_data()
{
    QTest::addColumn<quint32>("first");
    QTest::addColumn<quint32>("last");
    QTest::newRow("from Escape to the main block's end") << quint32(KEY_ESC) << quint32(KEY_KPASTERISK);
    QTest::newRow("from Alt to keypad point") << quint32(KEY_LEFTALT) << quint32(KEY_KPDOT);
    QTest::newRow("ISO key, F11, F12 and the Japanese keys") << quint32(KEY_ZENKAKUHANKAKU) << quint32(KEY_KPJPCOMMA);
    QTest::newRow("the keys beside and below the main block") << quint32(KEY_KPENTER) << quint32(KEY_DELETE);
    QTest::newRow("sound, keypad, Pause and Super") << quint32(KEY_MUTE) << quint32(KEY_COMPOSE);
    QTest::newRow("F13 to F24") << quint32(KEY_F13) << quint32(KEY_F24);
}

void MacKeyCodesTest::everyKeyOfAKeyboardHasAMacKeyCode()
{
    QFETCH(quint32, first);
    QFETCH(quint32, last);
    for (quint32 evdev = first; evdev <= last; ++evdev) {
        const auto mac = macKeyCode(evdev);
        QVERIFY2(mac.has_value(), qPrintable(QString::number(evdev)));
        const bool isForeign
            = std::find(std::begin(foreignKeys), std::end(foreignKeys), evdev) != std::end(foreignKeys);
        QVERIFY2(isForeign ? *mac == 0x100 + evdev : *mac < 0x100, qPrintable(QString::number(evdev)));
    }
}

void MacKeyCodesTest::everyMacKeyCodeComesBack()
{
    int count = 0;
    for (quint32 mac = 0; mac <= 0x10000; ++mac) {
        const auto evdev = evdevKeyCode(mac);
        if (!evdev)
            continue;
        QCOMPARE(macKeyCode(*evdev), std::optional(mac));
        ++count;
    }
    QVERIFY(count > 110);
}

void MacKeyCodesTest::everyEvdevKeyCodeComesBack()
{
    for (quint32 evdev = 0; evdev <= 0x10000; ++evdev) {
        if (const auto mac = macKeyCode(evdev))
            QCOMPARE(evdevKeyCode(*mac), std::optional(evdev));
    }
}

void MacKeyCodesTest::noTwoKeysShareANumber()
{
    QSet<quint32> macs;
    qsizetype count = 0;
    for (quint32 evdev = 0; evdev <= KEY_MAX; ++evdev) {
        if (const auto mac = macKeyCode(evdev)) {
            macs.insert(*mac);
            ++count;
        }
    }
    QCOMPARE(macs.size(), count);
}

void MacKeyCodesTest::aNumberOfNoKeyHasNone_data()
{
    QTest::addColumn<quint32>("mac");
    QTest::newRow("a gap in the Mac's numbers") << 0x34u;
    QTest::newRow("the last of the Mac's numbers") << 0xffu;
    QTest::newRow("our own number of no key") << 0x100u;
    QTest::newRow("our own number of a key that the Mac knows") << 0x100u + KEY_N;
    QTest::newRow("a key that X11 can't tell") << 0x100u + 248;
    QTest::newRow("beyond 16 bits") << 0x1002du;
    QTest::newRow("the largest number") << 0xffffffffu;
}

void MacKeyCodesTest::aNumberOfNoKeyHasNone()
{
    QFETCH(quint32, mac);
    QVERIFY(!evdevKeyCode(mac));
}

QTEST_APPLESS_MAIN(MacKeyCodesTest)

#include "MacKeyCodesTest.moc"
