#pragma once

#include "Platform/NotificationCenter.h"

#include <QList>

namespace korvo {

/// Keeps what was to be shown.
class FakeNotificationCenter final : public NotificationCenter {
public:
    void requestAuthorization() override { ++authorizationCount; }
    void add(const Notification &notification) override { shown.append(notification); }

    int authorizationCount = 0;
    QList<Notification> shown;
};

} // namespace korvo
