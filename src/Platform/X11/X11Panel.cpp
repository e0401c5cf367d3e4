#include "Platform/X11/X11Panel.h"
