#pragma once

#include "Platform/MouseMonitor.h"

namespace korvo {

/// A monitor of a mouse that a test presses.
class FakeMouseMonitor final : public MouseMonitor {
public:
    /// Presses a button over another program.
    void press() { emit mouseDown(); }
};

} // namespace korvo
