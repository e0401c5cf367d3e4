#include "Models/LaunchAtLoginHelper.h"

#include "Platform/LoginItem.h"

#include <cstdio>

namespace korvo::LaunchAtLoginHelper {

void setEnabled(bool isWanted)
{
    auto *const item = LoginItem::shared();
    if (!item)
        return;
    const auto failure = isWanted ? item->registerItem() : item->unregisterItem();
    if (!failure)
        return;
    std::printf("Launch at login error: %s\n", failure->toUtf8().constData());
    std::fflush(stdout);
}

bool isEnabled()
{
    const auto *const item = LoginItem::shared();
    return item && item->status() == LoginItem::Status::enabled;
}

} // namespace korvo::LaunchAtLoginHelper
