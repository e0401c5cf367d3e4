#pragma once

#include "Platform/KeyboardLayout.h"

#include <QHash>

namespace korvo {

/// The keys of one test, and the layout of the process as long as it lives.
class FakeKeyboardLayout final : public KeyboardLayout {
public:
    FakeKeyboardLayout() { setShared(this); }
    ~FakeKeyboardLayout() override { setShared(nullptr); }
    Q_DISABLE_COPY_MOVE(FakeKeyboardLayout)

    bool isKnown() const override { return hasLayout; }
    std::optional<QString> unshiftedCharacter(quint32 keyCode) const override
    {
        if (!hasLayout)
            return std::nullopt;
        const auto found = characters.find(keyCode);
        return found == characters.end() ? std::nullopt : std::optional(*found);
    }

    /// A window system that gives each key the number of its virtual key code, and 8 more.
    std::optional<quint32> keyCode(quint32 nativeScanCode) const override
    {
        return nativeScanCode < 8 ? std::nullopt : std::optional(nativeScanCode - 8);
    }

    bool hasLayout = true;
    QHash<quint32, QString> characters = {{0x28, QStringLiteral("k")}, {0x2d, QStringLiteral("n")}};
};

} // namespace korvo
