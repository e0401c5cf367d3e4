#include "Platform/LoginItem.h"

namespace korvo {

namespace {
LoginItem *sharedItem = nullptr;
}

LoginItem *LoginItem::shared()
{
    return sharedItem;
}

void LoginItem::setShared(LoginItem *item)
{
    sharedItem = item;
}

} // namespace korvo
