#pragma once

#include <QByteArray>

namespace korvo::sandbox {

/// The bytes in gzip form.
QByteArray gzip(const QByteArray &bytes);

/// The bytes that a gzip form holds; empty if it is broken.
QByteArray gunzip(const QByteArray &bytes);

} // namespace korvo::sandbox
