#pragma once

#include <QCoreApplication>
#include <QCoroTask>
#include <QTimer>

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

namespace korvo {

/// The outcome of an operation as soon as it has one.
template <typename T> using Outcome = std::shared_ptr<std::optional<T>>;

template <typename T> QCoro::Task<> keepOutcome(QCoro::Task<T> task, Outcome<T> outcome)
{
    outcome->emplace(co_await task);
}

/// Lets an operation run on; a test asks for `*outcome` in a QTRY_ macro.
template <typename T> Outcome<T> follow(QCoro::Task<T> task)
{
    auto outcome = std::make_shared<std::optional<T>>();
    keepOutcome(std::move(task), outcome);
    return outcome;
}

/// Turns the event loop until the operation has ended, and gives what it came to.
template <typename T> T await(QCoro::Task<T> task)
{
    const auto outcome = follow(std::move(task));
    QTimer watchdog;
    QObject::connect(&watchdog, &QTimer::timeout, &watchdog, [] { qFatal("An operation does not end"); });
    watchdog.start(std::chrono::seconds(30));
    while (!outcome->has_value())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return std::move(**outcome);
}

} // namespace korvo
