#pragma once

#include <QString>

namespace korvo {

/// What one notification says.
struct Notification {
    QString identifier; ///< Of this notification alone.
    QString title;
    QString body;                ///< Plain text.
    bool hasDefaultSound = true; ///< With the desktop's own sound for messages.
};

/// The desktop's bubbles. What cannot be shown is dropped without a word.
class NotificationCenter {
public:
    virtual ~NotificationCenter() = default;

    /// Asks for the permission to show notifications, where the desktop wants to be asked. The answer isn't kept.
    virtual void requestAuthorization() = 0;

    /// Shows the notification at once. Never waits and never fails outwards.
    virtual void add(const Notification &notification) = 0;
};

} // namespace korvo
