#include "Platform/X11/XkbKeyboardLayout.h"

#include "Services/GlobalHotkeyService.h"
#include "XDesktop.h"

#include <QGuiApplication>
#include <QTest>

#include <xkbcommon/xkbcommon.h>

using namespace Qt::StringLiterals;
using namespace korvo;

class XkbKeyboardLayoutTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();
    void cleanupTestCase();

    void aKeyGivesItsUnshiftedCharacter_data();
    void aKeyGivesItsUnshiftedCharacter();
    void aKeyWithoutACharacterGivesNone_data();
    void aKeyWithoutACharacterGivesNone();
    void thereIsALayout();
    void theLayoutMayChangeWhileRunning();
    void theGroupInForceCounts();
    void locksChangeNothing();
    void aKeysymHasItsName_data();
    void aKeysymHasItsName();
    void everyNameLeadsBackToAKeysym_data();
    void everyNameLeadsBackToAKeysym();

private:
    XClient m_client;
    XkbKeyboardLayout m_layout;
};

void XkbKeyboardLayoutTest::initTestCase()
{
    KeyboardLayout::setShared(&m_layout);
}

void XkbKeyboardLayoutTest::cleanup()
{
    m_client.lock(xmod::none);
}

void XkbKeyboardLayoutTest::cleanupTestCase()
{
    KeyboardLayout::setShared(nullptr);
    QVERIFY(setLayout(u"us"_s));
}

void XkbKeyboardLayoutTest::aKeyGivesItsUnshiftedCharacter_data()
{
    QTest::addColumn<QString>("layout");
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<QString>("character");
    QTest::addColumn<QString>("name");
    QTest::newRow("a letter, us") << u"us"_s << 45u << u"n"_s << u"N"_s;
    QTest::newRow("a digit, us") << u"us"_s << 18u << u"1"_s << u"1"_s;
    QTest::newRow("punctuation, us") << u"us"_s << 43u << u","_s << u","_s;
    QTest::newRow("left of 1, us") << u"us"_s << 50u << u"`"_s << u"`"_s;
    QTest::newRow("keypad 7 without Num Lock, us") << u"us"_s << 89u << u"7"_s << u"7"_s;
    QTest::newRow("keypad point without Num Lock, us") << u"us"_s << 65u << u"."_s << u"."_s;
    QTest::newRow("keypad plus, us") << u"us"_s << 69u << u"+"_s << u"+"_s;
    QTest::newRow("y where us has z, de") << u"de"_s << 6u << u"y"_s << u"Y"_s;
    QTest::newRow("z where us has y, de") << u"de"_s << 16u << u"z"_s << u"Z"_s;
    QTest::newRow("sharp s, de") << u"de"_s << 27u << u"ß"_s << u"SS"_s;
    QTest::newRow("an umlaut, de") << u"de"_s << 41u << u"ö"_s << u"Ö"_s;
    QTest::newRow("the ISO key, de") << u"de"_s << 10u << u"<"_s << u"<"_s;
    QTest::newRow("dead acute, de") << u"de"_s << 24u << u"´"_s << u"´"_s;
    QTest::newRow("dead circumflex, de") << u"de"_s << 50u << u"^"_s << u"^"_s;
    QTest::newRow("q where us has a, fr") << u"fr"_s << 0u << u"q"_s << u"Q"_s;
    QTest::newRow("no digit unshifted, fr") << u"fr"_s << 18u << u"&"_s << u"&"_s;
    QTest::newRow("a letter with an accent, fr") << u"fr"_s << 19u << u"é"_s << u"É"_s;
    QTest::newRow("dead grave, us(intl)") << u"us(intl)"_s << 50u << u"`"_s << u"`"_s;
    QTest::newRow("dead tilde, br") << u"br"_s << 39u << u"~"_s << u"~"_s;
    QTest::newRow("dead diaeresis, ch(fr)") << u"ch(fr)"_s << 30u << u"¨"_s << u"¨"_s;
    QTest::newRow("dead hook, vn(us)") << u"vn(us)"_s << 44u << u"ˀ"_s << u"ˀ"_s;
    QTest::newRow("a dead mark that does not stand alone, vn(us)") << u"vn(us)"_s << 47u << u"none"_s << u"Key47"_s;
    QTest::newRow("Cyrillic, ru") << u"ru"_s << 0u << u"ф"_s << u"Ф"_s;
    QTest::newRow("Greek, gr") << u"gr"_s << 0u << u"α"_s << u"Α"_s;
    QTest::newRow("yen, jp") << u"jp"_s << 93u << u"\\"_s << u"\\"_s;
}

void XkbKeyboardLayoutTest::aKeyGivesItsUnshiftedCharacter()
{
    QFETCH(QString, layout);
    QFETCH(quint32, keyCode);
    QVERIFY(setLayout(layout));
    QTEST(m_layout.unshiftedCharacter(keyCode).value_or(u"none"_s), "character");
    QTEST(GlobalHotkeyService::keyName(keyCode), "name");
}

void XkbKeyboardLayoutTest::aKeyWithoutACharacterGivesNone_data()
{
    QTest::addColumn<quint32>("keyCode");
    QTest::newRow("a function key") << 105u;
    QTest::newRow("a modifier") << 56u;
    QTest::newRow("Return types no character that can be seen") << 36u;
    QTest::newRow("keypad Enter") << 76u;
    QTest::newRow("Delete") << 117u;
    QTest::newRow("Home") << 115u;
    QTest::newRow("a sound key") << 74u;
    QTest::newRow("Print") << 0x100u + 99;
    QTest::newRow("the code of no key") << 0x34u;
    QTest::newRow("a code beyond X11's reach") << 0x3fu;
    QTest::newRow("a code beyond 16 bits") << 0x1002du;
}

void XkbKeyboardLayoutTest::aKeyWithoutACharacterGivesNone()
{
    QFETCH(quint32, keyCode);
    QVERIFY(setLayout(u"us"_s));
    QVERIFY(!m_layout.unshiftedCharacter(keyCode));
}

void XkbKeyboardLayoutTest::thereIsALayout()
{
    QVERIFY(m_layout.isKnown());
}

void XkbKeyboardLayoutTest::theLayoutMayChangeWhileRunning()
{
    const std::pair<QString, QString> names[]
        = {{u"us"_s, u"⇧⌘;"_s}, {u"de"_s, u"⇧⌘Ö"_s}, {u"fr"_s, u"⇧⌘M"_s}, {u"ru"_s, u"⇧⌘Ж"_s}, {u"us"_s, u"⇧⌘;"_s}};
    for (const auto &[layout, name] : names) {
        QVERIFY(setLayout(layout));
        QCOMPARE(GlobalHotkeyService::displayString(41, 0x300), name);
    }
}

void XkbKeyboardLayoutTest::theGroupInForceCounts()
{
    QVERIFY(setLayout(u"us,ru"_s));
    QCOMPARE(GlobalHotkeyService::keyName(45), u"N"_s);
    m_client.lock(xmod::none, 1);
    QCOMPARE(GlobalHotkeyService::keyName(45), u"Т"_s);
    m_client.lock(xmod::none, 0);
    QCOMPARE(GlobalHotkeyService::keyName(45), u"N"_s);
}

void XkbKeyboardLayoutTest::locksChangeNothing()
{
    QVERIFY(setLayout(u"us"_s));
    m_client.lock(xmod::capsLock | xmod::numLock);
    QCOMPARE(m_layout.unshiftedCharacter(45), std::optional(u"n"_s));
    QCOMPARE(m_layout.unshiftedCharacter(18), std::optional(u"1"_s));
    QCOMPARE(m_layout.unshiftedCharacter(89), std::optional(u"7"_s));
}

void XkbKeyboardLayoutTest::aKeysymHasItsName_data()
{
    QTest::addColumn<QString>("layout");
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<QString>("name");
    QTest::newRow("a letter") << u"us"_s << 45u << u"n"_s;
    QTest::newRow("Space") << u"us"_s << 49u << u"space"_s;
    QTest::newRow("Return") << u"us"_s << 36u << u"Return"_s;
    QTest::newRow("a function key") << u"us"_s << 96u << u"F5"_s;
    QTest::newRow("a keypad digit") << u"us"_s << 89u << u"KP_7"_s;
    QTest::newRow("an umlaut") << u"de"_s << 41u << u"odiaeresis"_s;
    QTest::newRow("a dead key") << u"de"_s << 24u << u"dead_acute"_s;
    QTest::newRow("a Cyrillic letter") << u"ru"_s << 45u << u"Cyrillic_te"_s;
    QTest::newRow("the code of no key") << u"us"_s << 0x34u << QString();
}

void XkbKeyboardLayoutTest::aKeysymHasItsName()
{
    QFETCH(QString, layout);
    QFETCH(quint32, keyCode);
    QVERIFY(setLayout(layout));
    QTEST(m_layout.keysymName(keyCode), "name");
}

void XkbKeyboardLayoutTest::everyNameLeadsBackToAKeysym_data()
{
    QTest::addColumn<QString>("layout");
    for (const auto *layout : {"us", "de", "fr", "ru", "ru(phonetic)", "ua", "gr", "jp", "vn(us)", "in(ben)"})
        QTest::newRow(layout) << QString::fromLatin1(layout);
}

void XkbKeyboardLayoutTest::everyNameLeadsBackToAKeysym()
{
    QFETCH(QString, layout);
    QVERIFY(setLayout(layout));
    int names = 0;
    for (quint32 keyCode = 0; keyCode < 0x80; ++keyCode) {
        const auto name = m_layout.keysymName(keyCode).toLatin1();
        if (name.isEmpty())
            continue;
        ++names;
        QVERIFY2(!name.contains('+'), name); // Which would part it.
        QVERIFY2(xkb_keysym_from_name(name.constData(), XKB_KEYSYM_NO_FLAGS) != XKB_KEY_NoSymbol, name);
    }
    QVERIFY2(names > 100, qPrintable(QString::number(names)));
}

QTEST_MAIN(XkbKeyboardLayoutTest)

#include "XkbKeyboardLayoutTest.moc"
