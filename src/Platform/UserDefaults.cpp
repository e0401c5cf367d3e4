#include "Platform/UserDefaults.h"

namespace korvo {

namespace {
UserDefaults *standardDefaults = nullptr;
}

UserDefaults &UserDefaults::standard()
{
    Q_ASSERT_X(standardDefaults, "UserDefaults::standard", "The platform has not set its store");
    return *standardDefaults;
}

void UserDefaults::setStandard(UserDefaults *defaults)
{
    standardDefaults = defaults;
}

} // namespace korvo
