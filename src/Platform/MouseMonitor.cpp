#include "Platform/MouseMonitor.h"
