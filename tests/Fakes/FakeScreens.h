#pragma once

#include "Platform/Screens.h"

namespace korvo {

/// A desktop with whatever screens a test puts there; one of 1280 by 800 to begin with.
class FakeScreens final : public Screens {
public:
    QList<Screen> screens() const override { return all; }
    std::optional<Screen> mainScreen() const override
    {
        if (main)
            return main;
        return all.isEmpty() ? std::nullopt : std::optional(all.first());
    }
    std::optional<QPointF> pointerPosition() const override { return pointer; }
    void change() { emit changed(); } ///< Tells that they have changed.

    /// One screen as of a laptop whose camera housing is `inset` high; 0 for one without.
    void setSingle(const QRectF &geometry, double inset = 0) { all = {{geometry, inset, geometry}}; }

    std::optional<Screen> main; ///< Where the user works; the first screen if nobody says.
    QList<Screen> all{{QRectF(0, 0, 1280, 800), 0, QRectF(0, 24, 1280, 776)}};
    std::optional<QPointF> pointer = QPointF(640, 600); ///< None if nobody can tell.
};

} // namespace korvo
