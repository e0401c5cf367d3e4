#include "Platform/Screens.h"
