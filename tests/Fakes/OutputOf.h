#pragma once

#include <QByteArray>
#include <QTemporaryFile>

#include <cstdio>

#include <unistd.h>

namespace korvo {

/// What a call writes to the standard output of this process.
template <typename Call> QByteArray outputOf(Call call)
{
    QTemporaryFile file;
    if (!file.open())
        return "(no file)";
    std::fflush(stdout);
    const int output = ::dup(STDOUT_FILENO);
    ::dup2(file.handle(), STDOUT_FILENO);
    call();
    std::fflush(stdout);
    ::dup2(output, STDOUT_FILENO);
    ::close(output);
    file.seek(0);
    return file.readAll();
}

} // namespace korvo
