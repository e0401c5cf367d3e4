#include "Platform/X11/X11MouseMonitor.h"
