#pragma once

#include <QObject>
#include <QProperty>

#include <functional>
#include <type_traits>
#include <utility>

namespace korvo {

/// A value that a control shows and writes, wherever it is kept. Both functions may outlive the control.
template <typename T> struct Binding {
    std::function<T()> get; ///< Followed through the properties that it reads.
    std::function<void(const T &)> set;
};

/// Calls `show` with what `read` gives: now, and each time a property that it has read gives it another outcome. Ends
/// with `owner`.
template <typename Read, typename Show> void follow(QObject &owner, Read read, Show show)
{
    struct Follower final : QObject {
        using QObject::QObject;
        QProperty<std::invoke_result_t<Read>> value;
        QPropertyNotifier notifier;
    };
    auto *follower = new Follower(&owner);
    follower->value.setBinding(std::move(read));
    follower->notifier = follower->value.addNotifier([follower, show] { show(follower->value.value()); });
    show(follower->value.value());
}

} // namespace korvo
