#include "Platform/DockTile.h"
