#pragma once

#include "Campaign/Dice.h"
#include "Campaign/World.h"

namespace korvo::campaign {

/// Plans what goes wrong with some of the next requests, and gives it in words.
QString planFaults(World &world, Dice &dice);

/// Lets all go well again.
void endFaults(World &world);

} // namespace korvo::campaign
