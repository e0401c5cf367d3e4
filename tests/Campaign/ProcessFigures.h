#pragma once

#include <QList>
#include <QtGlobal>

namespace korvo::campaign {

/// What this process holds of the machine. Source: proc(5), mallinfo(3).
struct ProcessFigures {
    qint64 heap = 0;      ///< Bytes in use.
    qint64 anonymous = 0; ///< Bytes of anonymous memory in RAM.
    qint64 files = 0;     ///< Open file descriptors.

    static ProcessFigures take();
};

/// How many processes have this one as their parent.
int childCount();

} // namespace korvo::campaign
