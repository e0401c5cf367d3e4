#pragma once

#include <QtGlobal>
#include <utility>
#include <variant>

namespace korvo {

/// What an operation gives that can fail: its value, or the error of its layer.
template <typename T, typename E> class Result {
public:
    Result(T value) : m_content(std::in_place_index<0>, std::move(value)) { }
    Result(E error) : m_content(std::in_place_index<1>, std::move(error)) { }

    explicit operator bool() const { return m_content.index() == 0; }

    /// The value. Only to be asked for if there is one.
    const T &operator*() const
    {
        Q_ASSERT(*this);
        return *std::get_if<0>(&m_content);
    }
    T &operator*()
    {
        Q_ASSERT(*this);
        return *std::get_if<0>(&m_content);
    }
    const T *operator->() const { return &**this; }

    /// The error. Only to be asked for if there is no value.
    const E &error() const
    {
        Q_ASSERT(!*this);
        return *std::get_if<1>(&m_content);
    }

private:
    std::variant<T, E> m_content;
};

} // namespace korvo
