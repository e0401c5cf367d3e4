#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace korvo {

/// One row of the Tasks database. Data only: who needs more works it out.
struct NotionTask {
    QString id; ///< Page identifier, the identity in lists.
    QString name;
    std::optional<QDateTime> date;
    std::optional<QString> timerStatus = std::nullopt; ///< The option as Notion spells it; none if unset.

    bool operator==(const NotionTask &) const = default;
};

} // namespace korvo
