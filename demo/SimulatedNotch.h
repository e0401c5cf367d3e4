#pragma once

#include <memory>

namespace korvo {
class Platform;
}

namespace korvo::demo {

/// The same platform, but for a camera housing at the top of the first screen.
std::unique_ptr<Platform> withSimulatedNotch(std::unique_ptr<Platform> platform);

} // namespace korvo::demo
