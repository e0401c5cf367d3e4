#include "Platform/X11/UserTime.h"

namespace korvo {

namespace {
quint32 userTime = 0;
}

void noteUserTime(quint32 time)
{
    userTime = time;
}

quint32 lastUserTime()
{
    return userTime;
}

} // namespace korvo
