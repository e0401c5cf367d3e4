#include "Platform/X11/MacKeyCodes.h"

#include <QSet>
#include <QTest>

#include <linux/input-event-codes.h>

using namespace korvo;

class MacKeyCodesTest : public QObject {
    Q_OBJECT
private slots:
    void aKeyHasBothNumbers_data();
    void aKeyHasBothNumbers();
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
    for (quint32 evdev = first; evdev <= last; ++evdev)
        QVERIFY2(macKeyCode(evdev).has_value(), qPrintable(QString::number(evdev)));
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
