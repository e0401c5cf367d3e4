#include "sandbox/Uuid.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

QString withDashes(QString digits)
{
    for (const int position : {20, 16, 12, 8})
        digits.insert(position, u'-');
    return digits;
}

QString randomDigits(QRandomGenerator &random)
{
    QString digits;
    while (digits.size() < 32)
        digits += QString::number(random.generate(), 16).rightJustified(8, u'0');
    return digits;
}

} // namespace

std::optional<QString> normalisedUuid(const QString &text)
{
    static const QRegularExpression dashless(u"\\A[0-9a-f]{32}\\z"_s);
    static const QRegularExpression form(
        u"\\A(?:[0-9a-f]{8}-[0-9a-f]{4}-[48][0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}|0{8}-(?:0{4}-){3}0{12})\\z"_s);
    QString lower = text.toLower();
    if (dashless.match(lower).hasMatch())
        lower = withDashes(lower);
    if (!form.match(lower).hasMatch())
        return std::nullopt;
    return lower;
}

QString withoutDashes(const QString &uuid)
{
    return QString(uuid).remove(u'-');
}

QString newPageId(QRandomGenerator &random)
{
    QString digits = randomDigits(random);
    digits.replace(12, 2, u"81"_s);
    digits[16] = u'8';
    return withDashes(digits);
}

QString newRandomId(QRandomGenerator &random)
{
    QString digits = randomDigits(random);
    digits[12] = u'4';
    digits[16] = u'9';
    return withDashes(digits);
}

} // namespace korvo::sandbox
