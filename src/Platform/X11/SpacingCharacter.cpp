#include "Platform/X11/SpacingCharacter.h"

#include <QChar>

#include <array>

#include <xkbcommon/xkbcommon.h>

namespace korvo {

namespace {

struct DeadKey {
    quint32 keysym;
    char32_t mark;
};

/// Horn, inverted breve, and dot, diaeresis and breve below are missing: Unicode has them as combining marks only, which
/// would settle on the glyph before them.
constexpr std::array deadKeys = {
    DeadKey{XKB_KEY_dead_grave, U'`'},
    DeadKey{XKB_KEY_dead_acute, U'´'},
    DeadKey{XKB_KEY_dead_circumflex, U'^'},
    DeadKey{XKB_KEY_dead_tilde, U'~'},
    DeadKey{XKB_KEY_dead_macron, U'¯'},
    DeadKey{XKB_KEY_dead_breve, U'˘'},
    DeadKey{XKB_KEY_dead_abovedot, U'˙'},
    DeadKey{XKB_KEY_dead_diaeresis, U'¨'},
    DeadKey{XKB_KEY_dead_abovering, U'˚'},
    DeadKey{XKB_KEY_dead_doubleacute, U'˝'},
    DeadKey{XKB_KEY_dead_caron, U'ˇ'},
    DeadKey{XKB_KEY_dead_cedilla, U'¸'},
    DeadKey{XKB_KEY_dead_ogonek, U'˛'},
    DeadKey{XKB_KEY_dead_iota, U'ͺ'},
    DeadKey{XKB_KEY_dead_voiced_sound, U'゛'},
    DeadKey{XKB_KEY_dead_semivoiced_sound, U'゜'},
    DeadKey{XKB_KEY_dead_hook, U'ˀ'}, // No hook by name, but of its shape.
    DeadKey{XKB_KEY_dead_stroke, U'/'},
    DeadKey{XKB_KEY_dead_longsolidusoverlay, U'/'},
    DeadKey{XKB_KEY_dead_abovecomma, U'᾿'},
    DeadKey{XKB_KEY_dead_abovereversedcomma, U'῾'},
    DeadKey{XKB_KEY_dead_doublegrave, U'˵'},
    DeadKey{XKB_KEY_dead_belowring, U'˳'},
    DeadKey{XKB_KEY_dead_belowmacron, U'ˍ'},
    DeadKey{XKB_KEY_dead_belowcircumflex, U'ꞈ'},
    DeadKey{XKB_KEY_dead_belowtilde, U'˷'},
    DeadKey{XKB_KEY_dead_belowcomma, U','},
    DeadKey{XKB_KEY_dead_currency, U'¤'},
    DeadKey{XKB_KEY_dead_lowline, U'_'},
    DeadKey{XKB_KEY_dead_aboveverticalline, U'ˈ'},
    DeadKey{XKB_KEY_dead_belowverticalline, U'ˌ'},
    DeadKey{XKB_KEY_dead_greek, U'µ'},
    DeadKey{XKB_KEY_dead_a, U'a'},
    DeadKey{XKB_KEY_dead_A, U'A'},
    DeadKey{XKB_KEY_dead_e, U'e'},
    DeadKey{XKB_KEY_dead_E, U'E'},
    DeadKey{XKB_KEY_dead_i, U'i'},
    DeadKey{XKB_KEY_dead_I, U'I'},
    DeadKey{XKB_KEY_dead_o, U'o'},
    DeadKey{XKB_KEY_dead_O, U'O'},
    DeadKey{XKB_KEY_dead_u, U'u'},
    DeadKey{XKB_KEY_dead_U, U'U'},
    DeadKey{XKB_KEY_dead_small_schwa, U'ə'},
    DeadKey{XKB_KEY_dead_capital_schwa, U'Ə'},
};

} // namespace

QString spacingCharacter(quint32 keysym)
{
    char32_t character = xkb_keysym_to_utf32(keysym);
    for (const auto &dead : deadKeys) {
        if (dead.keysym == keysym)
            character = dead.mark;
    }
    // Return, Tab, Delete and their like have control characters.
    if (character == 0 || QChar::category(character) == QChar::Other_Control)
        return {};
    return QString::fromUcs4(&character, 1);
}

} // namespace korvo
