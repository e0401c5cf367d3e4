#include "Platform/Linux/ExceptionLog.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <execinfo.h>
#include <memory>

namespace korvo {

namespace {

std::atomic<void (*)(const UncaughtException &)> installedHandler = nullptr;
std::terminate_handler formerHandler = nullptr;

QString nameOf(const std::type_info &type)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                           &std::free);
    return QString::fromUtf8(status == 0 ? name.get() : type.name());
}

QStringList callStack()
{
    std::array<void *, 64> addresses{};
    const int count = ::backtrace(addresses.data(), int(addresses.size()));
    const std::unique_ptr<char *, decltype(&std::free)> symbols(::backtrace_symbols(addresses.data(), count),
                                                                &std::free);
    QStringList calls;
    for (int i = 0; symbols && i < count; ++i)
        calls.append(QString::fromLocal8Bit(symbols.get()[i]));
    return calls;
}

/// None for exceptions that only repeat their name, and for those that aren't of the standard's kind.
std::optional<QString> reasonOf(const std::exception_ptr &exception, const QString &name)
{
    try {
        std::rethrow_exception(exception);
    } catch (const std::exception &error) {
        const auto reason = QString::fromUtf8(error.what());
        return reason.isEmpty() || reason == name ? std::nullopt : std::optional(reason);
    } catch (...) {
        return std::nullopt;
    }
}

[[noreturn]] void terminated()
{
    const auto handler = installedHandler.load();
    const auto exception = std::current_exception();
    const auto *type = abi::__cxa_current_exception_type();
    if (handler && exception && type) {
        const auto name = nameOf(*type);
        handler({name, reasonOf(exception, name), callStack()});
    }
    if (formerHandler)
        formerHandler();
    std::abort();
}

} // namespace

void ExceptionLog::install(void (*handler)(const UncaughtException &exception))
{
    installedHandler = handler;
    const auto former = std::set_terminate(terminated);
    if (former != terminated)
        formerHandler = former;
}

} // namespace korvo
