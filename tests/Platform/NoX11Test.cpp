#include "Platform/X11/X11KeyGrabber.h"
#include "Platform/X11/XkbKeyboardLayout.h"

#include "Fakes/FakeSystemLog.h"
#include "Services/GlobalHotkeyService.h"

#include <QGuiApplication>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

class NoX11Test : public QObject {
    Q_OBJECT
private slots:
    void aHandlerCannotBeInstalledOnAnotherWindowSystem();
    void noKeyHasACharacterOnAnotherWindowSystem();
};

void NoX11Test::aHandlerCannotBeInstalledOnAnotherWindowSystem()
{
    const FakeSystemLog log;
    X11KeyGrabber grabber;
    GlobalHotkeyService service(grabber);
    service.registerHotkey(45, 768, [] {});
    QCOMPARE(log.lines, (QStringList{u"ERROR Failed to install event handler: -1"_s}));
}

void NoX11Test::noKeyHasACharacterOnAnotherWindowSystem()
{
    const XkbKeyboardLayout layout;
    KeyboardLayout::setShared(&layout);
    QCOMPARE(GlobalHotkeyService::displayString(45, 768), u"⇧⌘Key45"_s);
    QCOMPARE(GlobalHotkeyService::displayString(70000, 768), u"⇧⌘Key70000"_s); // There is nobody to ask.
    QVERIFY(!layout.isKnown());
    QCOMPARE(layout.keysymName(45), QString());
    KeyboardLayout::setShared(nullptr);
}

QTEST_MAIN(NoX11Test)

#include "NoX11Test.moc"
