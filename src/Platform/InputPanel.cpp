#include "Platform/InputPanel.h" // For its meta-object code.
