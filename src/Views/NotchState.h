#pragma once

namespace korvo {

/// How the panel around the camera notch looks: black alone, a strip with ring and clock, or the whole card.
enum class NotchState { idle, compact, expanded };

} // namespace korvo
