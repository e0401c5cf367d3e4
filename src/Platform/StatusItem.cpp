#include "Platform/StatusItem.h" // For its meta-object code.
