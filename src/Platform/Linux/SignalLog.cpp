#include "Platform/Linux/SignalLog.h"

#include <atomic>
#include <cerrno>
#include <csignal>

namespace korvo {

namespace {

std::atomic<void (*)(int)> installedHandler = nullptr;
static_assert(std::atomic<void (*)(int)>::is_always_lock_free); // It is read inside a signal handler.

void received(int signal)
{
    const int errorBefore = errno; // What was interrupted may be about to look at it.
    if (const auto handler = installedHandler.load())
        handler(signal);
    errno = errorBefore;
}

} // namespace

void SignalLog::install(void (*handler)(int signal))
{
    installedHandler = handler;
    struct sigaction action { };
    action.sa_handler = received;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGTERM, SIGINT, SIGABRT})
        ::sigaction(signal, &action, nullptr);
}

} // namespace korvo
