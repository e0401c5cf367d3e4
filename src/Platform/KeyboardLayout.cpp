#include "Platform/KeyboardLayout.h"

namespace korvo {

namespace {
const KeyboardLayout *sharedLayout = nullptr;
}

const KeyboardLayout &KeyboardLayout::shared()
{
    Q_ASSERT_X(sharedLayout, "KeyboardLayout::shared", "The platform has not set its keyboard layout");
    return *sharedLayout;
}

void KeyboardLayout::setShared(const KeyboardLayout *layout)
{
    sharedLayout = layout;
}

} // namespace korvo
