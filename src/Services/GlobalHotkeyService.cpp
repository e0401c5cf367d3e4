#include "Services/GlobalHotkeyService.h"

#include "Models/AppSettings.h"
#include "Platform/HotkeyModifiers.h"
#include "Platform/KeyGrabber.h"
#include "Platform/KeyboardLayout.h"
#include "Utilities/DiagnosticLogger.h"

#include <array>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

struct ModifierGlyph {
    quint32 bit;
    QChar glyph;
};

/// In the order of reading.
constexpr std::array glyphs = {
    ModifierGlyph{hotkeyModifier::control, u'⌃'},
    ModifierGlyph{hotkeyModifier::option, u'⌥'},
    ModifierGlyph{hotkeyModifier::shift, u'⇧'},
    ModifierGlyph{hotkeyModifier::command, u'⌘'},
};

struct NamedKey {
    quint32 keyCode;
    QStringView name;
};

/// Keys whose names never depend on the layout.
constexpr std::array namedKeys = {
    NamedKey{122, u"F1"},  NamedKey{120, u"F2"},  NamedKey{99, u"F3"},    NamedKey{118, u"F4"}, NamedKey{96, u"F5"},
    NamedKey{97, u"F6"},   NamedKey{98, u"F7"},   NamedKey{100, u"F8"},   NamedKey{101, u"F9"}, NamedKey{109, u"F10"},
    NamedKey{103, u"F11"}, NamedKey{111, u"F12"}, NamedKey{49, u"Space"}, NamedKey{36, u"↩"},   NamedKey{48, u"⇥"},
    NamedKey{51, u"⌫"},    NamedKey{53, u"⎋"},    NamedKey{126, u"↑"},    NamedKey{125, u"↓"},  NamedKey{123, u"←"},
    NamedKey{124, u"→"},
};

/// What the key types under the layout in force. Layouts know key codes of 16 bits: nothing in the program makes a
/// longer one, so one that comes to be asked for ends the program, like a stored shortcut outside of 32 bits.
std::optional<QString> keyNameFromInputSource(quint32 keyCode)
{
    const auto &layout = KeyboardLayout::shared();
    if (keyCode > std::numeric_limits<quint16>::max() && layout.isKnown())
        qFatal("The key code %u of a shortcut is outside of 16 bits", keyCode);
    return layout.unshiftedCharacter(keyCode);
}

} // namespace

std::function<void()> GlobalHotkeyService::onHotkeyPressed;

GlobalHotkeyService::GlobalHotkeyService(KeyGrabber &grabber) :
    m_grabber(grabber),
    m_failures(QObject::connect(&grabber, &KeyGrabber::failed,
                                [this](int status) {
                                    const bool isNews = m_isHotkeyHeld
                                        || m_failure != status; // Lost and then refused are two things.
                                    if (m_eventHandler && isNews)
                                        noteFailure(status);
                                })),
    m_lateGrabs(QObject::connect(&grabber, &KeyGrabber::grabbed, [this] {
        if (m_eventHandler && !m_isHotkeyHeld)
            noteSuccess();
    }))
{
}

GlobalHotkeyService::~GlobalHotkeyService()
{
    QObject::disconnect(m_failures);
    QObject::disconnect(m_lateGrabs);
    unregister();
}

void GlobalHotkeyService::registerHotkey(quint32 keyCode, quint32 modifiers, std::function<void()> handler)
{
    unregister();
    onHotkeyPressed = std::move(handler);
    m_keyCode = keyCode;
    m_modifiers = modifiers;

    const int installStatus = m_grabber.install();
    if (installStatus != KeyGrabber::ok) {
        Log::error(u"Failed to install event handler: %1"_s.arg(installStatus));
        return;
    }
    m_eventHandler = QObject::connect(&m_grabber, &KeyGrabber::pressed, &GlobalHotkeyService::handlePress);

    const int grabStatus = m_grabber.grab(keyCode, modifiers);
    if (grabStatus != KeyGrabber::ok) {
        noteFailure(grabStatus);
        return;
    }
    noteSuccess();
}

void GlobalHotkeyService::unregister()
{
    if (std::exchange(m_isHotkeyHeld, false))
        m_grabber.ungrab();
    if (QObject::disconnect(m_eventHandler))
        m_grabber.uninstall();
    onHotkeyPressed = nullptr;
}

void GlobalHotkeyService::handlePress()
{
    // A copy, for the handler may register another shortcut.
    if (const auto handler = onHotkeyPressed)
        handler();
}

void GlobalHotkeyService::noteSuccess()
{
    m_isHotkeyHeld = true;
    m_failure.reset();
    Log::info(u"Global hotkey registered (keyCode: %1, modifiers: %2)"_s.arg(m_keyCode).arg(m_modifiers));
}

void GlobalHotkeyService::noteFailure(int status)
{
    m_isHotkeyHeld = false;
    m_failure = status;
    Log::error(u"Failed to register hotkey: %1"_s.arg(status));
}

quint32 GlobalHotkeyService::carbonModifiers(quint64 from)
{
    quint32 modifiers = 0;
    if (from & commandFlag)
        modifiers |= hotkeyModifier::command;
    if (from & shiftFlag)
        modifiers |= hotkeyModifier::shift;
    if (from & optionFlag)
        modifiers |= hotkeyModifier::option;
    if (from & controlFlag)
        modifiers |= hotkeyModifier::control;
    return modifiers;
}

QString GlobalHotkeyService::displayString(quint32 keyCode, quint32 modifiers)
{
    QString text;
    for (const auto &[bit, glyph] : glyphs) {
        if (modifiers & bit)
            text += glyph;
    }
    return text + keyName(keyCode);
}

QString GlobalHotkeyService::keyName(quint32 keyCode)
{
    for (const auto &named : namedKeys) {
        if (named.keyCode == keyCode)
            return named.name.toString();
    }
    const auto character = keyNameFromInputSource(keyCode);
    if (!character || character->isEmpty())
        return u"Key%1"_s.arg(keyCode);
    return character->toUpper();
}

QString quickAddHotkeyDisplay(const AppSettings &settings)
{
    const auto keyCode = settings.quickAddKeyCode();
    const auto modifiers = settings.quickAddModifiers();
    if (keyCode == 0 && modifiers == 0)
        return u"Not set"_s;
    return GlobalHotkeyService::displayString(keyCode, modifiers);
}

} // namespace korvo
