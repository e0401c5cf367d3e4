#include "Platform/Freedesktop/LauncherEntry.h"

#include <QDBusMessage>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace korvo {

void LauncherEntry::show(const std::optional<DockTileContent> &content)
{
    QVariantMap properties{{u"count"_s, qlonglong(content ? content->minutes : 0)},
                           {u"count-visible"_s, content.has_value()},
                           {u"progress"_s, content ? std::clamp(content->progress, 0.0, 1.0) : 0.0},
                           {u"progress-visible"_s, content.has_value()}};
    if (m_told == properties || (!content && m_told.isEmpty()))
        return;
    m_told = std::move(properties);
    const auto bus = m_bus();
    if (!bus.isConnected())
        return;
    // Readers look at the name of the desktop entry, not at the path.
    auto update = QDBusMessage::createSignal(u"/com/korvo/app/LauncherEntry"_s, u"com.canonical.Unity.LauncherEntry"_s,
                                             u"Update"_s);
    update << u"application://com.korvo.app.desktop"_s << m_told;
    bus.send(update);
}

} // namespace korvo
