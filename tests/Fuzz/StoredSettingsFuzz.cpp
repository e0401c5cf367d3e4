// The file of the settings, whatever somebody wrote into it.

#include "Fuzz.h"
#include "Platform/Linux/JsonMembers.h"
#include "Platform/Linux/JsonUserDefaults.h"

#include <QFile>
#include <QTemporaryDir>

using namespace korvo;
using namespace Qt::StringLiterals;

namespace {

/// A stored shortcut that doesn't fit ends the program, by design.
bool fits(const UserDefaults &defaults, const QString &key)
{
    const auto stored = defaults.integer(key);
    return !stored || (*stored >= 0 && *stored <= 0xffffffff);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(u"defaults.json"_s);
    QFile::remove(path);
    QFile::remove(path + u".corrupt"_s);
    const QByteArray input(reinterpret_cast<const char *>(data), qsizetype(size));
    QFile file(path);
    fuzz::require(file.open(QIODevice::WriteOnly), "the folder can be written to");
    file.write(input);
    file.close();
    {
        JsonUserDefaults defaults(path);
        if (!fits(defaults, u"quickAddKeyCode"_s) || !fits(defaults, u"quickAddModifiers"_s))
            return 0;
        const auto settings = TestSettings::load(defaults);
        settings->setApiKey(u"ntn_new"_s);
    }
    JsonUserDefaults defaults(path);
    fuzz::require(defaults.string(u"apiKey"_s) == u"ntn_new"_s, "what was set last is stored");

    const auto before = JsonMembers::parse(input);
    if (!before) {
        QFile corrupt(path + u".corrupt"_s);
        fuzz::require(input.isEmpty() || (corrupt.open(QIODevice::ReadOnly) && corrupt.readAll() == input),
                      "a file that is no JSON object is set aside as it was");
        return 0;
    }
    fuzz::require(file.open(QIODevice::ReadOnly), "the file is there");
    const auto after = JsonMembers::parse(file.readAll());
    fuzz::require(after.has_value(), "the file is a JSON object");
    const TestSettings own; // The keys that the settings write.
    for (const auto &key : before->keys()) {
        const bool isForeign = key.startsWith(u"foreign"_s);
        fuzz::require(after->contains(key), "no member is lost");
        fuzz::require(!isForeign || after->text(key) == before->text(key), "what is not ours stays letter by letter");
    }
    return 0;
}
