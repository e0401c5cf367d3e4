#pragma once

namespace korvo {

/// The signals that a program is told to end by.
namespace SignalLog {

/// Has `handler` called with the number of each SIGTERM, SIGINT and SIGABRT, on the thread that receives it. The program
/// then goes on; only abort() still ends it. Interrupted system calls start again. Source: sigaction(2), abort(3).
void install(void (*handler)(int signal));

} // namespace SignalLog

} // namespace korvo
