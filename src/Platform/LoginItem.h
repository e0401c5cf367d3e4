#pragma once

#include <QString>

#include <optional>

namespace korvo {

/// The desktop's list of what starts when its user logs in, as far as it concerns this program.
class LoginItem {
public:
    enum class Status {
        notRegistered, ///< The program is not in the list.
        enabled,       ///< The running program will be started at the next login.
        disabled,      ///< It is in the list, but switched off there, or not for this desktop.
        notFound,      ///< What is in the list under its name starts nothing, or another program.
    };

    virtual ~LoginItem() = default;

    /// Puts the running program into the list and switches it on there. Gives the words of a failure, none if all is
    /// well.
    virtual std::optional<QString> registerItem() = 0;

    /// Takes the program out of the list; if it isn't there, all is well. Otherwise as `registerItem`.
    virtual std::optional<QString> unregisterItem() = 0;

    virtual Status status() const = 0;

    /// The login item of the process; null until the platform has set it.
    static LoginItem *shared();
    static void setShared(LoginItem *item); ///< Must outlive its use; not owned.
};

} // namespace korvo
