#include "Platform/ProgramIcon.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr std::array drawnSides{16, 22, 24, 32, 48, 64, 128, 256};

} // namespace

QImage programIcon(int side)
{
    const auto *const found
        = std::find_if(drawnSides.begin(), drawnSides.end() - 1, [side](int drawn) { return drawn >= side; });
    // The format is named, so that no plugin of another one is loaded to have a look at it.
    const QImage icon(u":/icons/hicolor/%1x%1/apps/com.korvo.app.png"_s.arg(*found), "PNG");
    return icon.width() == side ? icon : icon.scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace korvo
