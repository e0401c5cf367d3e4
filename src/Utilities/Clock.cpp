#include "Utilities/Clock.h"

namespace korvo {

namespace {
Clock *sharedClock = nullptr;
}

Clock &Clock::shared()
{
    Q_ASSERT_X(sharedClock, "Clock::shared", "The platform has not set its clock");
    return *sharedClock;
}

void Clock::setShared(Clock *clock)
{
    sharedClock = clock;
}

} // namespace korvo
