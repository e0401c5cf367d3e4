#pragma once

#include "Platform/LoginItem.h"

#include <QStringList>

namespace korvo {

/// A desktop's list of login items that notes what it is asked for, and may refuse.
class FakeLoginItem final : public LoginItem {
public:
    std::optional<QString> registerItem() override { return answer(QStringLiteral("register"), Status::enabled); }
    std::optional<QString> unregisterItem() override
    {
        return answer(QStringLiteral("unregister"), Status::notRegistered);
    }
    Status status() const override { return itemStatus; }

    std::optional<QString> refusal; ///< What it says to each request.
    Status itemStatus = Status::notRegistered;
    QStringList calls;

private:
    std::optional<QString> answer(const QString &call, Status next)
    {
        calls.append(call);
        if (!refusal)
            itemStatus = next;
        return refusal;
    }
};

} // namespace korvo
