#pragma once

#include "Platform/StatusItem.h"

class QMenu;

namespace korvo {

/// Makes `menu` show `entries`, for trays that leave it to the program to open the menu.
void fillStatusMenu(QMenu &menu, const QList<StatusMenuEntry> &entries);

} // namespace korvo
