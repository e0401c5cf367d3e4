#include "Views/HotkeyRecorderView.h"

#include "Fakes/FakeKeyboardLayout.h"
#include "Fakes/TestSettings.h"
#include "LookUp.h"
#include "Services/GlobalHotkeyService.h"
#include "Views/ShortcutField.h"
#include "Views/Theme.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QShortcut>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr quint32 control = 0x1000;
constexpr quint32 option = 0x800;
constexpr quint32 shift = 0x200;
constexpr quint32 command = 0x100;

} // namespace

/// In a window beside a field that takes the keys which nobody swallows.
class HotkeyRecorderTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void nothingSetReadsNotSetAndShowsNoClear();
    void keyCodeZeroAloneIsAShortcutIfItHasAModifier();
    void theFirstShortcutOfARunIsShown();
    void theFieldAndTheButtonTellOfARecording();
    void whatAPressDoes_data();
    void whatAPressDoes();
    void aRecordedKeyCodeIsWrittenBeforeTheModifiers();
    void keyCodeZeroWithCommandIsRecordedAndClearAppears();
    void clearWritesBothAndDisappears();
    void clearEndsARecording();
    void cancelLeavesTheFormerShortcut();
    void capsLockIsNoModifier();
    void aBareZeroPassesToTheProgram();
    void aSwallowedPressReachesNoWidget();
    void whileRecordingNoMnemonicOrShortcutTakesTheKey();
    void withoutARecordingKeysAreLeftAlone();
    void aPressAfterTheViewHasGoneIsStillWritten();
    void anEscapeAfterTheViewHasGoneEndsTheRecording();
    void aRecordingThatNeverEndsGoesWithTheProgram();
    void theShortcutIsFollowedWhoeverChangesIt();
    void theFieldIsAsWideAsItsTextAndAtLeastAHundredPoints();
    void theTextStandsInItsPadding();
    void theColoursAreThoseOfThePalette_data();
    void theColoursAreThoseOfThePalette();
    void theKeyboardAloneStartsAndEndsARecording();
    void screenReadersAreToldOfTheRecording();

private:
    AppSettings &settings() { return m_settings->settings; }
    std::pair<quint32, quint32> shortcut() { return {settings().quickAddKeyCode(), settings().quickAddModifiers()}; }
    void setShortcut(quint32 keyCode, quint32 modifiers)
    {
        settings().setQuickAddKeyCode(keyCode);
        settings().setQuickAddModifiers(modifiers);
    }
    QAbstractButton *button(const QString &name) { return childIn<QAbstractButton>(*m_window, name); }
    ShortcutField &field() { return *m_view->findChild<ShortcutField *>(); }
    void press(quint16 keyCode, Qt::KeyboardModifiers modifiers = {}, int key = Qt::Key_unknown,
               const QString &text = {});

    FakeKeyboardLayout m_layout;
    std::unique_ptr<TestSettings> m_settings;
    std::unique_ptr<QWidget> m_window;
    QLineEdit *m_edit = nullptr;
    HotkeyRecorderView *m_view = nullptr;
    QStringList m_writes;
};

void HotkeyRecorderTest::init()
{
    m_settings = std::make_unique<TestSettings>();
    m_writes.clear();
    m_window = std::make_unique<QWidget>();
    m_edit = new QLineEdit;
    m_view = new HotkeyRecorderView({[this] { return settings().quickAddKeyCode(); },
                                     [this](quint32 value) {
                                         m_writes.append(u"key code %1"_s.arg(value));
                                         settings().setQuickAddKeyCode(value);
                                     }},
                                    {[this] { return settings().quickAddModifiers(); },
                                     [this](quint32 value) {
                                         m_writes.append(u"modifiers %1"_s.arg(value));
                                         settings().setQuickAddModifiers(value);
                                     }});
    auto *row = new QHBoxLayout(m_window.get());
    row->addWidget(m_edit);
    row->addWidget(m_view);
    m_window->show();
    m_edit->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void HotkeyRecorderTest::cleanup()
{
    press(53); // Ends what a test has left recording.
    m_window.reset();
    m_settings.reset();
}

/// As the window system sends it: first the question whether somebody wants it in spite of shortcuts.
void HotkeyRecorderTest::press(quint16 keyCode, Qt::KeyboardModifiers modifiers, int key, const QString &text)
{
    if (!m_edit)
        return;
    const quint32 scanCode = keyCode + 8U;
    QKeyEvent override(QEvent::ShortcutOverride, key, modifiers, scanCode, 0, 0, text);
    override.ignore();
    QCoreApplication::sendEvent(m_edit, &override);
    QKeyEvent event(QEvent::KeyPress, key, modifiers, scanCode, 0, 0, text);
    QCoreApplication::sendEvent(m_window->windowHandle(), &event);
}

void HotkeyRecorderTest::nothingSetReadsNotSetAndShowsNoClear()
{
    setShortcut(0, 0);
    QCOMPARE(field().text(), u"Not set"_s);
    QCOMPARE(m_view->displayText(), u"Not set"_s);
    QVERIFY(!button(u"clear"_s));
    QCOMPARE(button(u"record"_s)->text().remove(u'&'), u"Record"_s);
}

void HotkeyRecorderTest::keyCodeZeroAloneIsAShortcutIfItHasAModifier()
{
    m_layout.characters.insert(0, u"a"_s);
    setShortcut(0, command);
    QCOMPARE(m_view->displayText(), u"⌘A"_s);
    QVERIFY(button(u"clear"_s));
}

void HotkeyRecorderTest::theFirstShortcutOfARunIsShown()
{
    QCOMPARE(field().text(), u"⇧⌘N"_s);
    QVERIFY(button(u"clear"_s));
    QVERIFY(!m_view->isRecording());
}

void HotkeyRecorderTest::theFieldAndTheButtonTellOfARecording()
{
    button(u"record"_s)->click();
    QVERIFY(m_view->isRecording());
    QCOMPARE(field().text(), u"Press a key..."_s);
    QVERIFY(field().isHighlighted());
    QCOMPARE(button(u"record"_s)->text(), u"Cancel"_s);
    QVERIFY(button(u"clear"_s)); // It stays while a shortcut is set.
    button(u"record"_s)->click();
    QVERIFY(!m_view->isRecording());
    QVERIFY(!field().isHighlighted());
    QCOMPARE(field().text(), u"⇧⌘N"_s);
}

void HotkeyRecorderTest::whatAPressDoes_data()
{
    QTest::addColumn<int>("keyCode");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<bool>("isRecorded");
    QTest::addColumn<quint32>("stored");
    QTest::addColumn<bool>("goesOn");
    QTest::addColumn<QString>("text");
    using Held = Qt::KeyboardModifiers;
    const auto pressKey = u"Press a key..."_s;
    QTest::newRow("command and a key") << 40 << Held(Qt::MetaModifier) << true << command << false << u"⌘K"_s;
    QTest::newRow("control and a key") << 40 << Held(Qt::ControlModifier) << true << control << false << u"⌃K"_s;
    QTest::newRow("option and a key") << 40 << Held(Qt::AltModifier) << true << option << false << u"⌥K"_s;
    QTest::newRow("shift and a key") << 40 << Held(Qt::ShiftModifier) << true << shift << false << u"⇧K"_s;
    QTest::newRow("all four and a key") << 40
                                        << (Qt::MetaModifier | Qt::ControlModifier | Qt::AltModifier
                                            | Qt::ShiftModifier)
                                        << true << (control | option | shift | command) << false << u"⌃⌥⇧⌘K"_s;
    QTest::newRow("a bare key is swallowed and recording goes on") << 40 << Held() << false << 0U << true << pressKey;
    QTest::newRow("F5 alone is swallowed and recording goes on") << 96 << Held() << false << 0U << true << pressKey;
    QTest::newRow("F1 alone is swallowed and recording goes on") << 122 << Held() << false << 0U << true << pressKey;
    QTest::newRow("F12 alone is swallowed and recording goes on") << 111 << Held() << false << 0U << true << pressKey;
    QTest::newRow("control and F5") << 96 << Held(Qt::ControlModifier) << true << control << false << u"⌃F5"_s;
    QTest::newRow("key code 105 alone") << 105 << Held() << true << 0U << false
                                        << GlobalHotkeyService::displayString(105, 0);
    QTest::newRow("key code 107 alone") << 107 << Held() << true << 0U << false
                                        << GlobalHotkeyService::displayString(107, 0);
    QTest::newRow("key code 113 alone") << 113 << Held() << true << 0U << false
                                        << GlobalHotkeyService::displayString(113, 0);
    QTest::newRow("key code 106 alone is no function key") << 106 << Held() << false << 0U << true << pressKey;
    QTest::newRow("Escape only ends the recording") << 53 << Held() << false << 0U << false << u"⇧⌘N"_s;
    QTest::newRow("shift and Escape only ends the recording")
        << 53 << Held(Qt::ShiftModifier) << false << 0U << false << u"⇧⌘N"_s;
    QTest::newRow("all four and Escape only ends the recording")
        << 53 << (Qt::MetaModifier | Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier) << false << 0U << false
        << u"⇧⌘N"_s;
    QTest::newRow("key code 0 alone passes and recording goes on") << 0 << Held() << false << 0U << true << pressKey;
    QTest::newRow("the keypad is no modifier") << 40 << Held(Qt::KeypadModifier) << false << 0U << true << pressKey;
}

void HotkeyRecorderTest::whatAPressDoes()
{
    QFETCH(const int, keyCode);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    QFETCH(const bool, isRecorded);
    QFETCH(const quint32, stored);
    button(u"record"_s)->click();
    press(quint16(keyCode), modifiers);
    QTEST(m_view->isRecording(), "goesOn");
    QTEST(field().text(), "text");
    const auto expected = isRecorded ? std::pair(quint32(keyCode), stored) : std::pair(45U, shift | command);
    QCOMPARE(shortcut(), expected);
    QCOMPARE(m_writes.size(), isRecorded ? 2 : 0);
}

void HotkeyRecorderTest::aRecordedKeyCodeIsWrittenBeforeTheModifiers()
{
    button(u"record"_s)->click();
    press(40, Qt::MetaModifier);
    QCOMPARE(m_writes, (QStringList{u"key code 40"_s, u"modifiers 256"_s}));
}

void HotkeyRecorderTest::keyCodeZeroWithCommandIsRecordedAndClearAppears()
{
    m_layout.characters.insert(0, u"a"_s);
    setShortcut(0, 0);
    button(u"record"_s)->click();
    press(0, Qt::MetaModifier);
    QCOMPARE(shortcut(), std::pair(0U, command));
    QCOMPARE(field().text(), u"⌘A"_s);
    QVERIFY(button(u"clear"_s));
}

void HotkeyRecorderTest::clearWritesBothAndDisappears()
{
    button(u"clear"_s)->click();
    QCOMPARE(m_writes, (QStringList{u"key code 0"_s, u"modifiers 0"_s}));
    QCOMPARE(field().text(), u"Not set"_s);
    QVERIFY(!button(u"clear"_s));
}

void HotkeyRecorderTest::clearEndsARecording()
{
    button(u"record"_s)->click();
    button(u"clear"_s)->click();
    QVERIFY(!m_view->isRecording());
    QCOMPARE(field().text(), u"Not set"_s);
    press(40, Qt::MetaModifier);
    QCOMPARE(shortcut(), std::pair(0U, 0U));
}

void HotkeyRecorderTest::cancelLeavesTheFormerShortcut()
{
    button(u"record"_s)->click();
    button(u"record"_s)->click();
    press(40, Qt::MetaModifier);
    QVERIFY(m_writes.isEmpty());
    QCOMPARE(field().text(), u"⇧⌘N"_s);
}

void HotkeyRecorderTest::capsLockIsNoModifier()
{
    button(u"record"_s)->click();
    press(40, {}, Qt::Key_K, u"K"_s); // What it types tells of Caps Lock, its flags do not.
    QVERIFY(m_view->isRecording());
    QVERIFY(m_writes.isEmpty());
    QCOMPARE(m_edit->text(), QString());
}

void HotkeyRecorderTest::aBareZeroPassesToTheProgram()
{
    button(u"record"_s)->click();
    press(0, {}, Qt::Key_A, u"a"_s);
    QCOMPARE(m_edit->text(), u"a"_s);
    QVERIFY(m_view->isRecording());
}

void HotkeyRecorderTest::aSwallowedPressReachesNoWidget()
{
    button(u"record"_s)->click();
    press(40, {}, Qt::Key_K, u"k"_s);
    press(40, Qt::ShiftModifier, Qt::Key_K, u"K"_s);
    QVERIFY(!m_view->isRecording());
    QCOMPARE(m_edit->text(), QString());
    press(40, Qt::ShiftModifier, Qt::Key_K, u"K"_s);
    QCOMPARE(m_edit->text(), u"K"_s);
}

void HotkeyRecorderTest::whileRecordingNoMnemonicOrShortcutTakesTheKey()
{
    int count = 0;
    QShortcut shortcutOfWindow(QKeySequence(u"Ctrl+K"_s), m_window.get());
    connect(&shortcutOfWindow, &QShortcut::activated, this, [&count] { ++count; });
    QTest::keyClick(m_window->windowHandle(), Qt::Key_K, Qt::ControlModifier);
    QCOMPARE(count, 1);
    button(u"record"_s)->click();
    QTest::keyClick(m_window->windowHandle(), Qt::Key_K, Qt::ControlModifier);
    QCOMPARE(count, 1);
    QVERIFY(m_view->isRecording()); // The test's keys have no code.
    press(40, Qt::ControlModifier, Qt::Key_K);
    QCOMPARE(shortcut(), std::pair(40U, control));
    QTest::keyClick(m_window->windowHandle(), Qt::Key_K, Qt::ControlModifier);
    QCOMPARE(count, 2);
}

void HotkeyRecorderTest::withoutARecordingKeysAreLeftAlone()
{
    press(40, {}, Qt::Key_K, u"k"_s);
    QCOMPARE(m_edit->text(), u"k"_s);
    QVERIFY(m_writes.isEmpty());
}

void HotkeyRecorderTest::aPressAfterTheViewHasGoneIsStillWritten()
{
    button(u"record"_s)->click();
    delete m_view;
    press(40, {}, Qt::Key_K, u"k"_s); // Bare: it is swallowed, and the recording goes on.
    QCOMPARE(m_edit->text(), QString());
    press(40, Qt::AltModifier);
    QCOMPARE(shortcut(), std::pair(40U, option));
    press(40, {}, Qt::Key_K, u"k"_s);
    QCOMPARE(m_edit->text(), u"k"_s);
}

void HotkeyRecorderTest::anEscapeAfterTheViewHasGoneEndsTheRecording()
{
    button(u"record"_s)->click();
    delete m_view;
    press(53);
    press(40, Qt::AltModifier);
    QVERIFY(m_writes.isEmpty());
}

void HotkeyRecorderTest::aRecordingThatNeverEndsGoesWithTheProgram()
{
    button(u"record"_s)->click();
    const auto monitors = QCoreApplication::instance()->children();
    QVERIFY(std::any_of(monitors.begin(), monitors.end(),
                        [](const QObject *one) { return one->inherits("korvo::KeyDownMonitor"); }));
}

void HotkeyRecorderTest::theShortcutIsFollowedWhoeverChangesIt()
{
    setShortcut(49, option | command);
    QCOMPARE(field().text(), u"⌥⌘Space"_s);
    setShortcut(0, 0);
    QVERIFY(!button(u"clear"_s));
}

void HotkeyRecorderTest::theFieldIsAsWideAsItsTextAndAtLeastAHundredPoints()
{
    setShortcut(0, 0);
    settleLayout();
    QCOMPARE(field().width(), 100);
    setShortcut(117, control | option | shift | command);
    m_window->resize(900, m_window->height());
    settleLayout();
    QVERIFY(field().width() >= field().fontMetrics().horizontalAdvance(field().text()) + 20);
    const auto *record = button(u"record"_s);
    const auto *clear = button(u"clear"_s);
    QCOMPARE(record->x(), field().x() + field().width() + 8);
    QCOMPARE(clear->x(), record->x() + record->width() + 8);
}

void HotkeyRecorderTest::theTextStandsInItsPadding()
{
    auto font = field().font();
    font.setPixelSize(40);
    field().setFont(font);
    settleLayout();
    const auto metrics = field().fontMetrics();
    QCOMPARE(field().sizeHint().width(), metrics.horizontalAdvance(u"⇧⌘N"_s) + 2 * 10);
    QCOMPARE(field().sizeHint().height(), metrics.height() + 2 * 6);
    QCOMPARE(field().minimumSizeHint(), field().sizeHint());
}

void HotkeyRecorderTest::theColoursAreThoseOfThePalette_data()
{
    QTest::addColumn<bool>("isRecording");
    QTest::addColumn<QColor>("text");
    QTest::addColumn<QColor>("ground");
    QTest::addColumn<QColor>("edge");
    const QColor ink = Qt::blue;
    const QColor accent = Qt::red;
    // The ground ends in the middle of the line, which lets it through.
    const auto below = theme::mixed(Qt::white, Qt::yellow, 0.5);
    QTest::newRow("at rest") << false << ink << QColor(Qt::yellow) << theme::mixed(below, ink, 0.15);
    const auto faint = theme::mixed(Qt::white, accent, 0.1);
    QTest::newRow("while recording") << true << accent << faint << accent;
}

void HotkeyRecorderTest::theColoursAreThoseOfThePalette()
{
    QFETCH(const bool, isRecording);
    QFETCH(const QColor, text);
    QFETCH(const QColor, ground);
    QFETCH(const QColor, edge);
    auto colors = m_window->palette();
    colors.setColor(QPalette::Window, Qt::white);
    colors.setColor(QPalette::WindowText, Qt::blue);
    colors.setColor(QPalette::Base, Qt::yellow);
    colors.setColor(QPalette::Highlight, Qt::red);
    m_window->setPalette(colors);
    auto font = field().font();
    font.setPixelSize(40); // So that some of its pixels are all ink.
    field().setFont(font);
    if (isRecording)
        button(u"record"_s)->click();
    settleLayout();
    const auto picture = field().grab().toImage();
    const auto isAt = [&](int x, int y, const QColor &color) {
        const auto found = picture.pixelColor(x, y);
        return qAbs(found.red() - color.red()) <= 3 && qAbs(found.green() - color.green()) <= 3
            && qAbs(found.blue() - color.blue()) <= 3;
    };
    const int middle = picture.height() / 2;
    QVERIFY(isAt(5, middle, ground));
    QVERIFY(isAt(picture.width() - 5, middle, ground));
    QVERIFY(isAt(picture.width() / 2, 1, ground)); // The line is 1 wide.
    QVERIFY(isAt(picture.width() / 2, 0, edge));
    QVERIFY(isAt(0, 0, Qt::white)); // Its corners are round,
    QVERIFY(!isAt(2, 2, ground));   // with a radius of 6.
    QVERIFY(isAt(4, 4, ground));
    const auto hasInk = [&](const QColor &color) {
        for (int x = 8; x < picture.width() - 8; ++x) {
            for (int y = 4; y < picture.height() - 4; ++y) {
                if (isAt(x, y, color))
                    return true;
            }
        }
        return false;
    };
    QVERIFY(hasInk(text));
    QVERIFY(!hasInk(isRecording ? Qt::blue : Qt::red));
}

void HotkeyRecorderTest::theKeyboardAloneStartsAndEndsARecording()
{
    auto *record = button(u"record"_s);
    record->setFocus();
    QTest::keyClick(record, Qt::Key_Space);
    QVERIFY(m_view->isRecording());
    press(53);
    QVERIFY(!m_view->isRecording());
    QVERIFY(record->hasFocus());
}

void HotkeyRecorderTest::screenReadersAreToldOfTheRecording()
{
    const auto nameOf
        = [](QWidget *widget) { return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name); };
    QCOMPARE(nameOf(&field()), u"⇧⌘N"_s);
    QCOMPARE(nameOf(button(u"record"_s)), u"Record shortcut"_s);
    QCOMPARE(nameOf(button(u"clear"_s)), u"Clear shortcut"_s);
    button(u"record"_s)->click();
    QCOMPARE(nameOf(&field()), u"Press a key..."_s);
    QCOMPARE(nameOf(button(u"record"_s)), u"Cancel recording"_s);
}

QTEST_MAIN(HotkeyRecorderTest)
#include "HotkeyRecorderTest.moc"
