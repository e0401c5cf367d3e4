#pragma once

#include <memory>

namespace korvo {
class Platform;
}

namespace korvo::demo {

/// The same platform, but for a camera housing at the top of the screen that is the first one
/// at the start. It stays with that screen, whichever others come, and whether or not it is the first.
std::unique_ptr<Platform> withSimulatedNotch(std::unique_ptr<Platform> platform);

} // namespace korvo::demo
