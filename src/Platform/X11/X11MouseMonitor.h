#pragma once

#include "Platform/MouseMonitor.h"

namespace korvo {

class X11MouseMonitor final : public MouseMonitor {
    Q_OBJECT
public:
    using MouseMonitor::MouseMonitor;
};

} // namespace korvo
