#include "Views/KeyDownMonitor.h"

#include "Fakes/FakeKeyboardLayout.h"
#include "Services/GlobalHotkeyService.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

class KeyDownMonitorTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_edit.reset(); }

    void aPressIsToldByItsKeyCodeAndFlags_data();
    void aPressIsToldByItsKeyCodeAndFlags();
    void aPressIsToldOnce();
    void whatIsNotSwallowedReachesTheWidget();
    void whatIsSwallowedReachesNoWidget();
    void theLastMonitorSeesAPressFirst();
    void modifierKeysByThemselvesAreNoPresses_data();
    void modifierKeysByThemselvesAreNoPresses();
    void aKeyThatNobodyKnowsIsNoPress();
    void anyKeyThatIsEscapeHasItsKeyCode_data();
    void anyKeyThatIsEscapeHasItsKeyCode();
    void keysOfAnOpenMenuAreNoPresses();
    void theHandlerMayDestroyTheMonitor();
    void aShortcutOfTheWindowComesBeforeAMonitorUnlessItPrecedesThem();

private:
    void press(int key, quint32 nativeScanCode, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
               const QString &text = {});

    FakeKeyboardLayout m_layout;
    std::unique_ptr<QLineEdit> m_edit;
};

void KeyDownMonitorTest::init()
{
    m_edit = std::make_unique<QLineEdit>();
    m_edit->show();
    m_edit->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(m_edit.get()));
}

void KeyDownMonitorTest::press(int key, quint32 nativeScanCode, Qt::KeyboardModifiers modifiers, const QString &text)
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers, nativeScanCode, 0, 0, text);
    QCoreApplication::sendEvent(m_edit->windowHandle(), &event);
}

void KeyDownMonitorTest::aPressIsToldByItsKeyCodeAndFlags_data()
{
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<quint64>("flags");
    using enum GlobalHotkeyService::EventModifier;
    QTest::newRow("none") << Qt::KeyboardModifiers() << quint64(0);
    QTest::newRow("shift") << Qt::KeyboardModifiers(Qt::ShiftModifier) << quint64(shiftFlag);
    QTest::newRow("control") << Qt::KeyboardModifiers(Qt::ControlModifier) << quint64(controlFlag);
    QTest::newRow("Alt is option") << Qt::KeyboardModifiers(Qt::AltModifier) << quint64(optionFlag);
    QTest::newRow("Super is command") << Qt::KeyboardModifiers(Qt::MetaModifier) << quint64(commandFlag);
    QTest::newRow("all four") << (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)
                              << quint64(shiftFlag | controlFlag | optionFlag | commandFlag);
    QTest::newRow("the keypad is none") << Qt::KeyboardModifiers(Qt::KeypadModifier) << quint64(0);
}

void KeyDownMonitorTest::aPressIsToldByItsKeyCodeAndFlags()
{
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    KeyDown seen;
    const KeyDownMonitor monitor([&seen](const KeyDown &down) {
        seen = down;
        return true;
    });
    press(Qt::Key_N, 45 + 8, modifiers);
    QCOMPARE(seen.keyCode, quint16(45));
    QTEST(seen.modifiers, "flags");
}

void KeyDownMonitorTest::aPressIsToldOnce()
{
    int count = 0;
    const KeyDownMonitor monitor([&count](const KeyDown &) { return ++count == 0; });
    press(Qt::Key_F5, 96 + 8); // No widget takes it, so it goes up from one to the next.
    QCOMPARE(count, 1);
}

void KeyDownMonitorTest::whatIsNotSwallowedReachesTheWidget()
{
    const KeyDownMonitor monitor([](const KeyDown &) { return false; });
    press(Qt::Key_N, 45 + 8, {}, u"n"_s);
    QCOMPARE(m_edit->text(), u"n"_s);
}

void KeyDownMonitorTest::whatIsSwallowedReachesNoWidget()
{
    const KeyDownMonitor monitor([](const KeyDown &) { return true; });
    press(Qt::Key_N, 45 + 8, {}, u"n"_s);
    QCOMPARE(m_edit->text(), QString());
}

void KeyDownMonitorTest::theLastMonitorSeesAPressFirst()
{
    QStringList order;
    const KeyDownMonitor first([&order](const KeyDown &) {
        order.append(u"first"_s);
        return false;
    });
    const KeyDownMonitor second([&order](const KeyDown &down) {
        order.append(u"second"_s);
        return down.keyCode == 53;
    });
    press(Qt::Key_N, 45 + 8);
    QCOMPARE(order, (QStringList{u"second"_s, u"first"_s}));
    press(Qt::Key_Escape, 53 + 8);
    QCOMPARE(order, (QStringList{u"second"_s, u"first"_s, u"second"_s}));
}

void KeyDownMonitorTest::modifierKeysByThemselvesAreNoPresses_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Shift") << int(Qt::Key_Shift);
    QTest::newRow("Control") << int(Qt::Key_Control);
    QTest::newRow("Alt") << int(Qt::Key_Alt);
    QTest::newRow("Super") << int(Qt::Key_Meta);
    QTest::newRow("Alt Gr") << int(Qt::Key_AltGr);
    QTest::newRow("Caps Lock") << int(Qt::Key_CapsLock);
}

void KeyDownMonitorTest::modifierKeysByThemselvesAreNoPresses()
{
    QFETCH(const int, key);
    int count = 0;
    const KeyDownMonitor monitor([&count](const KeyDown &) { return ++count > 0; });
    press(key, 56 + 8);
    QCOMPARE(count, 0);
}

void KeyDownMonitorTest::aKeyThatNobodyKnowsIsNoPress()
{
    int count = 0;
    const KeyDownMonitor monitor([&count](const KeyDown &) { return ++count > 0; });
    press(Qt::Key_N, 0, {}, u"ń"_s); // As an input method sends what it has made of several presses.
    QCOMPARE(count, 0);
    QCOMPARE(m_edit->text(), u"ń"_s);
}

void KeyDownMonitorTest::anyKeyThatIsEscapeHasItsKeyCode_data()
{
    QTest::addColumn<quint32>("nativeScanCode");
    QTest::newRow("Escape itself") << 53U + 8;
    QTest::newRow("Caps Lock made to Escape") << 66U;
    QTest::newRow("a key that nobody knows") << 0U;
}

void KeyDownMonitorTest::anyKeyThatIsEscapeHasItsKeyCode()
{
    QFETCH(const quint32, nativeScanCode);
    KeyDown seen;
    const KeyDownMonitor monitor([&seen](const KeyDown &down) {
        seen = down;
        return true;
    });
    press(Qt::Key_Escape, nativeScanCode, Qt::ShiftModifier);
    QCOMPARE(seen.keyCode, quint16(53));
    QCOMPARE(seen.modifiers, quint64(GlobalHotkeyService::shiftFlag));
}

void KeyDownMonitorTest::keysOfAnOpenMenuAreNoPresses()
{
    int count = 0;
    KeyDownMonitor monitor([&count](const KeyDown &) { return ++count > 0; });
    monitor.precedeShortcuts();
    QMenu menu(m_edit.get());
    menu.addAction(u"Paste"_s);
    menu.popup(m_edit->mapToGlobal(QPoint(4, 4)));
    QTRY_COMPARE(QApplication::activePopupWidget(), &menu);
    press(Qt::Key_Down, 125 + 8);
    QCOMPARE(menu.activeAction(), menu.actions().first());
    press(Qt::Key_Escape, 53 + 8);
    QTRY_VERIFY(!menu.isVisible());
    QCOMPARE(count, 0);
    press(Qt::Key_Escape, 53 + 8);
    QCOMPARE(count, 1);
}

void KeyDownMonitorTest::theHandlerMayDestroyTheMonitor()
{
    std::unique_ptr<KeyDownMonitor> monitor;
    monitor = std::make_unique<KeyDownMonitor>([&monitor](const KeyDown &) {
        monitor.reset();
        return true;
    });
    press(Qt::Key_Escape, 53 + 8);
    QVERIFY(!monitor);
}

void KeyDownMonitorTest::aShortcutOfTheWindowComesBeforeAMonitorUnlessItPrecedesThem()
{
    QShortcut shortcut(QKeySequence(u"Alt+K"_s), m_edit.get());
    QSignalSpy activated(&shortcut, &QShortcut::activated);
    KeyDownMonitor monitor([](const KeyDown &) { return false; });
    QTest::keyClick(m_edit->windowHandle(), Qt::Key_K, Qt::AltModifier);
    QCOMPARE(activated.size(), 1);
    monitor.precedeShortcuts();
    QTest::keyClick(m_edit->windowHandle(), Qt::Key_K, Qt::AltModifier);
    QCOMPARE(activated.size(), 1);
}

QTEST_MAIN(KeyDownMonitorTest)
#include "KeyDownMonitorTest.moc"
