#pragma once

#include "Platform/DockTile.h"

namespace korvo {

class TaskBarTile final : public DockTile {
    Q_OBJECT
public:
    using DockTile::DockTile;

    void setPresent(bool) override { }
    void setContent(const std::optional<DockTileContent> &) override { }
};

} // namespace korvo
