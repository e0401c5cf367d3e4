#include "Utilities/DiagnosticLogger.h"
