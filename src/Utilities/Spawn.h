#pragma once

#include <QCoroTask>

namespace korvo {

/// Lets a coroutine run on its own. Its owner stops it by the stop token that it was given; an exception that leaves it
/// goes into the log. At the end of the program `finishSpawned` waits for it.
void spawn(QCoro::Task<> task);

/// How many coroutines given to `spawn` have not ended.
int spawnedCount();

/// Turns the event loop until all coroutines given to `spawn` have ended, for `milliseconds` at most. True if they have.
bool finishSpawned(int milliseconds);

} // namespace korvo
