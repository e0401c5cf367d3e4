#include "Warnings.h"

#include <cstdio>

using namespace Qt::StringLiterals;

namespace korvo::campaign {

namespace {

QStringList kept;

void keep(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg)
        std::fputs(qPrintable(message + u'\n'), stderr);
    else if (type != QtDebugMsg && type != QtInfoMsg && !message.startsWith("This plugin does not support"_L1))
        kept.append(message);
}

} // namespace

void keepWarnings()
{
    qInstallMessageHandler(keep);
}

const QStringList &warnings()
{
    return kept;
}

} // namespace korvo::campaign
