#include "Platform/SingleInstance.h"
