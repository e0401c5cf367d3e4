#include "Platform/X11/SpacingCharacter.h"

#include <QTest>

#include <xkbcommon/xkbcommon.h>

using namespace Qt::StringLiterals;
using namespace korvo;

class SpacingCharacterTest : public QObject {
    Q_OBJECT
private slots:
    void aKeysymHasTheCharacterOnItsKey_data();
    void aKeysymHasTheCharacterOnItsKey();
    void aDeadKeyHasACharacterThatStandsAlone();
};

void SpacingCharacterTest::aKeysymHasTheCharacterOnItsKey_data()
{
    QTest::addColumn<quint32>("keysym");
    QTest::addColumn<QString>("character");
    const auto row = [](const char *name, quint32 keysym, const QString &character) {
        QTest::newRow(name) << keysym << character;
    };
    row("a letter", XKB_KEY_n, u"n"_s);
    row("a letter with an umlaut", XKB_KEY_odiaeresis, u"ö"_s);
    row("a Cyrillic letter", XKB_KEY_Cyrillic_ef, u"ф"_s);
    row("a keysym made of its Unicode number", 0x1000000 + 0x10428, u"𐐨"_s);
    row("dead grave", XKB_KEY_dead_grave, u"`"_s);
    row("dead acute", XKB_KEY_dead_acute, u"´"_s);
    row("dead circumflex", XKB_KEY_dead_circumflex, u"^"_s);
    row("dead tilde", XKB_KEY_dead_tilde, u"~"_s);
    row("dead diaeresis", XKB_KEY_dead_diaeresis, u"¨"_s);
    row("dead cedilla", XKB_KEY_dead_cedilla, u"¸"_s);
    row("dead caron", XKB_KEY_dead_caron, u"ˇ"_s);
    row("dead hook", XKB_KEY_dead_hook, u"ˀ"_s);
    row("dead circumflex below", XKB_KEY_dead_belowcircumflex, u"ꞈ"_s);
    row("dead tilde below", XKB_KEY_dead_belowtilde, u"˷"_s);
    row("dead stroke", XKB_KEY_dead_stroke, u"/"_s);
    row("dead long stroke", XKB_KEY_dead_longsolidusoverlay, u"/"_s);
    row("a dead vowel", XKB_KEY_dead_o, u"o"_s);
    row("a dead vowel in capitals", XKB_KEY_dead_O, u"O"_s);
    row("dead schwa", XKB_KEY_dead_small_schwa, u"ə"_s);
    row("dead horn, which is a combining mark only", XKB_KEY_dead_horn, QString());
    row("dead dot below, which is a combining mark only", XKB_KEY_dead_belowdot, QString());
    row("dead diaeresis below, which is a combining mark only", XKB_KEY_dead_belowdiaeresis, QString());
    row("dead breve below, which is a combining mark only", XKB_KEY_dead_belowbreve, QString());
    row("dead inverted breve, which is a combining mark only", XKB_KEY_dead_invertedbreve, QString());
    row("a function key", XKB_KEY_F13, QString());
    row("Return", XKB_KEY_Return, QString());
    row("Escape", XKB_KEY_Escape, QString());
    row("Delete", XKB_KEY_Delete, QString());
    row("no symbol", XKB_KEY_NoSymbol, QString());
    row("a number beyond all keysyms", 0xffffffff, QString());
}

void SpacingCharacterTest::aKeysymHasTheCharacterOnItsKey()
{
    QFETCH(quint32, keysym);
    QTEST(spacingCharacter(keysym), "character");
}

void SpacingCharacterTest::aDeadKeyHasACharacterThatStandsAlone()
{
    QStringList without;
    for (quint32 keysym = XKB_KEY_dead_grave; keysym <= XKB_KEY_dead_longsolidusoverlay; ++keysym) {
        char name[64];
        xkb_keysym_get_name(keysym, name, sizeof name);
        if (!QByteArray(name).startsWith("dead_"))
            continue;
        const auto character = spacingCharacter(keysym);
        if (character.isEmpty())
            without.append(QString::fromLatin1(name));
        else
            QVERIFY2(character.size() == 1 && !character.at(0).isMark() && !character.at(0).isSpace(), name);
    }
    QCOMPARE(without,
             (QStringList{u"dead_belowdot"_s, u"dead_horn"_s, u"dead_belowbreve"_s, u"dead_belowdiaeresis"_s,
                          u"dead_invertedbreve"_s}));
}

QTEST_APPLESS_MAIN(SpacingCharacterTest)

#include "SpacingCharacterTest.moc"
