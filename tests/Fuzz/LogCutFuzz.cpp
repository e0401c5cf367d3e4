// A log that is full, whatever stands in it, and one more line.

#include "Fuzz.h"
#include "Utilities/LogFile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QUtf8StringView>

#include <algorithm>

using namespace korvo;
using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    static const QTemporaryDir folder;
    const QString path = folder.filePath(u"korvo.log"_s);
    const QByteArray input = fuzz::bytesOf(data, size);
    const QByteArray before = input.repeated(LogFile::maxSize / qsizetype(size) + 1);
    QFile file(path);
    fuzz::require(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the folder can be written to");
    file.write(before);
    file.close();

    LogFile(path).append(u"info"_s, u"one more"_s);
    fuzz::require(file.open(QIODevice::ReadOnly), "the log is there");
    const QByteArray after = file.readAll();
    constexpr qsizetype lineSize = 42; // "[2026-11-21 09:30:00.123] [info] one more" and a line feed.
    if (!QUtf8StringView(before).isValidUtf8()) {
        fuzz::require(after.size() == before.size() + lineSize, "a log that is no text grows");
        return 0;
    }
    const auto pieces = before.count('\n') + 2;
    fuzz::require(after.count('\n') == std::max<qsizetype>(pieces / 2 - 1, 0), "the later half of the lines stays");
    fuzz::require(after.isEmpty() || before.endsWith(after.chopped(lineSize)), "no line is changed");
    return 0;
}
