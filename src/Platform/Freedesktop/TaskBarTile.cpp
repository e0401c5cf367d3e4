#include "Platform/Freedesktop/TaskBarTile.h"
