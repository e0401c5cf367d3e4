#include "Platform/Linux/NotchInset.h"

#include <QFile>
#include <QSet>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

/// Apple's names of the laptops with a camera housing. Those of 2020 and 2022 with a 13 inch panel of 16:10 (j293,
/// j313, j493) have none, nor has any desktop machine.
const QSet<QString> &modelsWithHousing()
{
    static const QSet<QString> models{
        u"j314"_s, u"j316"_s,            // MacBook Pro 14 and 16 inch, M1 Pro and Max
        u"j414"_s, u"j416"_s,            // the same, M2
        u"j504"_s, u"j514"_s, u"j516"_s, // the same, M3; j504 with the plain chip
        u"j604"_s, u"j614"_s, u"j616"_s, // the same, M4; j604 with the plain chip
        u"j413"_s, u"j415"_s,            // MacBook Air 13 and 15 inch, M2
        u"j613"_s, u"j615"_s,            // the same, M3
        u"j713"_s, u"j715"_s,            // the same, M4
    };
    return models;
}

/// The letter after the number tells the chip: j314s has the M1 Pro, j314c the M1 Max.
bool hasHousing(const QStringList &machine)
{
    constexpr qsizetype numberLength = 4;
    for (const QString &name : machine) {
        if (!name.startsWith("apple,"_L1))
            continue;
        const QString model = name.sliced("apple,"_L1.size());
        const bool hasChip = model.size() == numberLength + 1 && model.back() >= u'a' && model.back() <= u'z';
        if ((hasChip || model.size() == numberLength) && modelsWithHousing().contains(model.first(numberLength)))
            return true;
    }
    return false;
}

} // namespace

double notchInset(const QStringList &machine, const QString &output, const QSize &nativeSize, double scale)
{
    if (!output.startsWith("eDP"_L1) || !(scale > 0) || !hasHousing(machine))
        return 0;
    const double strip = nativeSize.height() - nativeSize.width() * 10.0 / 16.0;
    // The strip of a real panel is a thirtieth to a twenty-fifth of the height. More is a panel turned on its side.
    if (strip <= 0 || strip > nativeSize.height() / 20.0)
        return 0;
    return strip / scale;
}

QStringList deviceTreeCompatible(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLatin1(file.read(4096)).split(u'\0', Qt::SkipEmptyParts);
}

} // namespace korvo
