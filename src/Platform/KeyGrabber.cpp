#include "Platform/KeyGrabber.h" // For its meta-object code.
