#pragma once

#include "Platform/DockTile.h"

#include <QList>
#include <QStringList>

namespace korvo {

/// A dock that remembers what it was told, and that a test clicks.
class FakeDockTile final : public DockTile {
public:
    void setPresent(bool isPresentNow) override
    {
        calls.append(isPresentNow ? QStringLiteral("present") : QStringLiteral("absent"));
        isPresent = isPresentNow;
    }
    void setContent(const std::optional<DockTileContent> &newContent) override
    {
        calls.append(newContent ? QStringLiteral("content") : QStringLiteral("no content"));
        content = newContent;
        contents.append(newContent);
    }

    void click() { emit activated(); }

    bool isPresent = false;
    std::optional<DockTileContent> content;
    QList<std::optional<DockTileContent>> contents; ///< Of each call, in order.
    QStringList calls;
};

} // namespace korvo
