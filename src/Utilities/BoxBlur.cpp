#include "Utilities/BoxBlur.h"

#include <algorithm>
#include <vector>

namespace korvo {

namespace {

/// Replaces each of `count` values, `step` bytes apart, by the mean of those up to `radius` away.
void blurLine(unsigned char *line, int count, std::ptrdiff_t step, int radius, std::vector<unsigned char> &former)
{
    for (int i = 0; i < count; ++i)
        former[std::size_t(i)] = line[i * step];
    const int width = 2 * radius + 1;
    int sum = 0;
    for (int i = 0; i < std::min(radius, count); ++i)
        sum += former[std::size_t(i)];
    for (int i = 0; i < count; ++i) {
        if (i + radius < count)
            sum += former[std::size_t(i + radius)];
        if (i - radius - 1 >= 0)
            sum -= former[std::size_t(i - radius - 1)];
        line[i * step] = static_cast<unsigned char>(sum / width);
    }
}

} // namespace

void boxBlur(unsigned char *bits, int width, int height, std::ptrdiff_t bytesPerLine, int radius, int passCount)
{
    std::vector<unsigned char> former(std::size_t(std::max(width, height)));
    for (int pass = 0; pass < passCount; ++pass) {
        for (int y = 0; y < height; ++y)
            blurLine(bits + y * bytesPerLine, width, 1, radius, former);
        for (int x = 0; x < width; ++x)
            blurLine(bits + x, height, bytesPerLine, radius, former);
    }
}

} // namespace korvo
