#pragma once

#include <QCoreApplication>
#include <QMetaObject>

#include <coroutine>
#include <memory>
#include <optional>
#include <utility>

namespace korvo {

/// One result on its way to one coroutine: whoever has it calls `complete`, the coroutine says `co_await`. Copies share
/// the result. The coroutine goes on in a later turn of the event loop, never inside `complete`.
template <typename T> class Completion {
public:
    /// Delivers the value. Only the first call counts.
    void complete(T value) const
    {
        if (m_state->isComplete)
            return;
        m_state->isComplete = true;
        m_state->value.emplace(std::move(value));
        if (m_state->waiter)
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [waiter = m_state->waiter] { waiter.resume(); }, Qt::QueuedConnection);
    }
    bool isComplete() const { return m_state->isComplete; }

    bool await_ready() const noexcept { return m_state->isComplete; }
    void await_suspend(std::coroutine_handle<> waiter) const noexcept { m_state->waiter = waiter; }
    T await_resume() const { return std::move(*m_state->value); }

private:
    struct State {
        bool isComplete = false;
        std::optional<T> value;
        std::coroutine_handle<> waiter;
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace korvo
