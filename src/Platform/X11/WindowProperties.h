#pragma once

#include <QList>
#include <QtGlobal>

namespace korvo {

/// The atom of that name; 0 without X11.
quint32 x11Atom(const char *name);

/// The numbers of 32 bits that a property of a window consists of; empty if it has none.
QList<quint32> x11Numbers(quint32 window, const char *property);

} // namespace korvo
