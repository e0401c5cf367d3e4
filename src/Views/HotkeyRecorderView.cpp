#include "Views/HotkeyRecorderView.h"

#include "Services/GlobalHotkeyService.h"
#include "Views/KeyDownMonitor.h"
#include "Views/ShortcutField.h"
#include "Views/Stack.h"
#include "Views/TextStyle.h"

#include <QCoreApplication>
#include <QPointer>
#include <QPushButton>

#include <utility>

namespace korvo {

namespace {

// Virtual key codes.
constexpr quint32 escapeKey = 53;
constexpr quint32 firstFunctionKey = 122; // Above the last one, so there is none between: F1 to F12 are no such keys
constexpr quint32 lastFunctionKey = 111;  // here, and need a modifier.

bool isFunctionKey(quint32 keyCode)
{
    return (keyCode >= firstFunctionKey && keyCode <= lastFunctionKey) || keyCode == 105 || keyCode == 107
        || keyCode == 113;
}

QPushButton *smallButton(const QString &text)
{
    auto *button = new QPushButton(text);
    button->setAutoDefault(false);
    button->setFont(makeFont(SystemText::subheadline));
    return button;
}

} // namespace

/// What the view and the monitor's handler share.
class HotkeyRecorderView::Recording : public std::enable_shared_from_this<Recording> {
public:
    Recording(Binding<quint32> boundKeyCode, Binding<quint32> boundModifiers) :
        keyCode(std::move(boundKeyCode)),
        modifiers(std::move(boundModifiers))
    {
    }

    bool isSet() const { return keyCode.get() != 0 || modifiers.get() != 0; }
    QString displayText() const
    {
        return isSet() ? GlobalHotkeyService::displayString(keyCode.get(), modifiers.get()) : tr("Not set");
    }

    void start()
    {
        isRecording = true;
        // The program's, not the view's: it lasts until a key ends it, and keeps this object alive.
        monitor = new KeyDownMonitor([self = shared_from_this()](const KeyDown &down) { return self->take(down); },
                                     QCoreApplication::instance());
        monitor->precedeShortcuts();
    }

    void stop()
    {
        isRecording = false;
        delete monitor.data();
    }

    /// True swallows the press.
    bool take(const KeyDown &down)
    {
        using Hotkeys = GlobalHotkeyService;
        constexpr quint64 anyModifier
            = Hotkeys::commandFlag | Hotkeys::shiftFlag | Hotkeys::optionFlag | Hotkeys::controlFlag;
        const bool hasModifiers = (down.modifiers & anyModifier) != 0;
        if (!hasModifiers && down.keyCode == 0)
            return false;
        const quint32 mods = Hotkeys::carbonModifiers(down.modifiers);
        if (down.keyCode == escapeKey) {
            stop();
            return true;
        }
        if (!isFunctionKey(down.keyCode) && mods == 0)
            return true;
        keyCode.set(down.keyCode);
        modifiers.set(mods);
        stop();
        return true;
    }

    const Binding<quint32> keyCode;
    const Binding<quint32> modifiers;
    QProperty<bool> isRecording{false};
    QPointer<KeyDownMonitor> monitor;
};

HotkeyRecorderView::HotkeyRecorderView(const Binding<quint32> &keyCode, const Binding<quint32> &modifiers,
                                       QWidget *parent) :
    QWidget(parent),
    m_recording(std::make_shared<Recording>(keyCode, modifiers))
{
    const auto recording = m_recording; // A copy for whoever follows it.
    auto *field = new ShortcutField;
    auto *record = smallButton({});
    record->setObjectName(QStringLiteral("record"));
    auto *clear = smallButton(tr("Cl&ear"));
    clear->setObjectName(QStringLiteral("clear"));
    clear->setAccessibleName(tr("Clear shortcut"));
    setLayout(hstack({.spacing = 8}, field, record, clear));
    setFocusProxy(record);

    follow(
        *field, [recording] { return recording->isRecording ? tr("Press a key...") : recording->displayText(); },
        [field](const QString &text) { field->setText(text); });
    follow(
        *this, [recording] { return recording->isRecording.value(); },
        [field, record](bool isRecording) {
            field->setHighlighted(isRecording);
            record->setText(isRecording ? tr("Cancel") : tr("Re&cord"));
            record->setAccessibleName(isRecording ? tr("Cancel recording") : tr("Record shortcut"));
        });
    follow(
        *clear, [recording] { return recording->isSet(); }, [clear](bool isSet) { clear->setVisible(isSet); });
    connect(record, &QPushButton::clicked, this, [recording] {
        if (recording->isRecording)
            recording->stop();
        else
            recording->start();
    });
    connect(clear, &QPushButton::clicked, this, [recording] {
        recording->keyCode.set(0);
        recording->modifiers.set(0);
        recording->stop();
    });
}

QString HotkeyRecorderView::displayText() const
{
    return m_recording->displayText();
}

bool HotkeyRecorderView::isRecording() const
{
    return m_recording->isRecording;
}

} // namespace korvo
