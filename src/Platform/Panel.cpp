#include "Platform/Panel.h"
