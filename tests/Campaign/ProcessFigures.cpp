#include "ProcessFigures.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <malloc.h>

using namespace Qt::StringLiterals;

namespace korvo::campaign {

ProcessFigures ProcessFigures::take()
{
    ProcessFigures figures;
    const auto heap = ::mallinfo2();
    figures.heap = qint64(heap.uordblks + heap.hblkhd);
    QFile status(u"/proc/self/status"_s);
    if (status.open(QIODevice::ReadOnly)) {
        const auto lines = status.readAll().split('\n');
        for (const auto &line : lines) {
            if (line.startsWith("RssAnon:"))
                figures.anonymous = line.simplified().split(' ').value(1).toLongLong() * 1024;
        }
    }
    figures.files = QDir(u"/proc/self/fd"_s).entryList(QDir::Files | QDir::System).size();
    return figures;
}

int childCount()
{
    QFile children(u"/proc/self/task/%1/children"_s.arg(QCoreApplication::applicationPid()));
    if (!children.open(QIODevice::ReadOnly))
        return -1;
    return int(children.readAll().simplified().split(' ').removeIf([](const QByteArray &id) { return !id.isEmpty(); }));
}

} // namespace korvo::campaign
