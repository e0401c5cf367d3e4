#include "Platform/Desktop/DesktopKeyGrabber.h"

#include "FakePortal.h"
#include "Platform/KeyGrabber.h"
#include "XDesktop.h"

#include <QGuiApplication>
#include <QTest>

#include <xkbcommon/xkbcommon.h>

#include <utility>

using namespace Qt::StringLiterals;
using namespace korvo;

/// The keys that a portal is asked for under real layouts, as a Wayland session has them by way of its X server.
class PortalTriggerTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();

    void thePortalIsAskedForTheKeyOfTheLayoutInForce_data();
    void thePortalIsAskedForTheKeyOfTheLayoutInForce();
    void theKeyFollowsTheGroupInForce();

private:
    XClient m_client;
};

void PortalTriggerTest::initTestCase()
{
    qputenv("XDG_SESSION_TYPE", "wayland");
}

void PortalTriggerTest::cleanupTestCase()
{
    QVERIFY(setLayout(u"us"_s));
}

void PortalTriggerTest::thePortalIsAskedForTheKeyOfTheLayoutInForce_data()
{
    QTest::addColumn<QString>("layout");
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<QString>("trigger");
    QTest::addColumn<quint32>("keysym");
    const auto row = [](const char *name, const QString &layout, quint32 keyCode, const QString &trigger,
                        quint32 keysym) { QTest::newRow(name) << layout << keyCode << trigger << keysym; };
    row("a letter, us", u"us"_s, 45, u"LOGO+SHIFT+n"_s, XKB_KEY_n);
    row("plus and its like are words, de", u"de"_s, 30, u"LOGO+SHIFT+plus"_s, XKB_KEY_plus);
    row("a letter, ru", u"ru"_s, 45, u"LOGO+SHIFT+Cyrillic_te"_s, XKB_KEY_Cyrillic_te);
    row("a letter where us has punctuation, ru", u"ru"_s, 41, u"LOGO+SHIFT+Cyrillic_zhe"_s, XKB_KEY_Cyrillic_zhe);
    row("left of 1, ru", u"ru"_s, 50, u"LOGO+SHIFT+Cyrillic_io"_s, XKB_KEY_Cyrillic_io);
    row("punctuation, ru", u"ru"_s, 44, u"LOGO+SHIFT+period"_s, XKB_KEY_period);
    row("a digit, ru", u"ru"_s, 18, u"LOGO+SHIFT+1"_s, XKB_KEY_1);
    row("Space, ru", u"ru"_s, 49, u"LOGO+SHIFT+space"_s, XKB_KEY_space);
    row("a function key, ru", u"ru"_s, 96, u"LOGO+SHIFT+F5"_s, XKB_KEY_F5);
    row("a keypad digit, ru", u"ru"_s, 89, u"LOGO+SHIFT+KP_7"_s, XKB_KEY_KP_7);
    row("a letter, ua", u"ua"_s, 50, u"LOGO+SHIFT+apostrophe"_s, XKB_KEY_apostrophe);
    row("a letter that has but its Unicode number, in(ben)", u"in(ben)"_s, 40, u"LOGO+SHIFT+U0995"_s, 0x1000995);
    row("a dead key, de", u"de"_s, 24, u"LOGO+SHIFT+dead_acute"_s, XKB_KEY_dead_acute);
}

void PortalTriggerTest::thePortalIsAskedForTheKeyOfTheLayoutInForce()
{
    QFETCH(QString, layout);
    QFETCH(quint32, keyCode);
    QFETCH(QString, trigger);
    QFETCH(quint32, keysym);
    QVERIFY(setLayout(layout));
    FakePortal portal;
    QVERIFY(portal.start());
    const auto grabber = makeDesktopKeyGrabber();
    QCOMPARE(grabber->grab(keyCode, 0x300), int(KeyGrabber::ok));
    QTRY_VERIFY(portal.calls.contains(u"BindShortcuts"_s));
    const auto asked = portal.shortcut.value(u"preferred_trigger"_s).toString();
    QCOMPARE(asked, trigger);
    // What portals do with the last part of it.
    const auto name = asked.section(u'+', -1).toLatin1();
    QCOMPARE(xkb_keysym_from_name(name.constData(), XKB_KEYSYM_NO_FLAGS), keysym);
}

void PortalTriggerTest::theKeyFollowsTheGroupInForce()
{
    QVERIFY(setLayout(u"us,ru"_s));
    FakePortal portal;
    QVERIFY(portal.start());
    const auto grabber = makeDesktopKeyGrabber();
    const std::pair<quint8, QString> triggers[]
        = {{0, u"LOGO+SHIFT+n"_s}, {1, u"LOGO+SHIFT+Cyrillic_te"_s}, {0, u"LOGO+SHIFT+n"_s}};
    for (const auto &[group, trigger] : triggers) {
        m_client.lock(xmod::none, group);
        portal.shortcut.clear();
        grabber->grab(45, 0x300);
        QTRY_COMPARE(portal.shortcut.value(u"preferred_trigger"_s).toString(), trigger);
    }
}

QTEST_MAIN(PortalTriggerTest)

#include "PortalTriggerTest.moc"
