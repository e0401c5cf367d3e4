#pragma once

#include <cstddef>

namespace korvo {

/// Blurs `height` rows of `width` bytes, `bytesPerLine` apart, in place: each byte becomes the mean of those up to
/// `radius` away, along the rows and then along the columns, `passCount` times. Three passes are close to a Gaussian and
/// reach three times as far as one. What is outside counts as 0.
void boxBlur(unsigned char *bits, int width, int height, std::ptrdiff_t bytesPerLine, int radius, int passCount = 3);

} // namespace korvo
