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
    row("a dead key without a mark of its own", XKB_KEY_dead_belowdot, QString());
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

QTEST_APPLESS_MAIN(SpacingCharacterTest)

#include "SpacingCharacterTest.moc"
