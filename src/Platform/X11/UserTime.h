#pragma once

#include <QtGlobal>

namespace korvo {

/// Notes when, on the X server's clock, the user last did something for the program in no window of its own, as pressing
/// its system-wide key. It is what window managers ask for before they give the focus away.
void noteUserTime(quint32 time);

/// That time; 0, which stands for the present, if there has been none.
quint32 lastUserTime();

} // namespace korvo
