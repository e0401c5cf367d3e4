#pragma once

#include <QStringList>

namespace korvo::campaign {

/// Keeps what Qt warns of, but for what the offscreen platform cannot do, from now on.
void keepWarnings();

/// All that was kept.
const QStringList &warnings();

} // namespace korvo::campaign
