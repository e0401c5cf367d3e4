#pragma once

#include <QString>

namespace korvo::campaign {

/// What is thrown when the program does not keep its word.
struct BrokenPromise {
    QString words;
};

inline void promise(bool isKept, const QString &words)
{
    if (!isKept)
        throw BrokenPromise{words};
}

} // namespace korvo::campaign
