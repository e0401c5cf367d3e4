#pragma once

#include "Views/Symbols.h"

#include <QString>

#include <array>

namespace korvo {

/// A page of the settings.
enum class SettingsTab { connection, timeTracker, tasks, general };

/// All of them, in the order of the sidebar.
inline constexpr std::array allSettingsTabs{SettingsTab::connection, SettingsTab::timeTracker, SettingsTab::tasks,
                                            SettingsTab::general};

/// Its identity and its title.
QString rawValue(SettingsTab tab);
Symbol iconOf(SettingsTab tab);

} // namespace korvo
