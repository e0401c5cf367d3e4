#pragma once

#include <QRandomGenerator>
#include <QString>

#include <optional>

namespace korvo::sandbox {

/// The id in the form of answers, lower case with dashes. None for what the API takes for no uuid: it wants 32
/// hexadecimal digits with or without the dashes, of version 4 or 8, or all zeros.
std::optional<QString> normalisedUuid(const QString &text);

/// The id without its dashes, as in links.
QString withoutDashes(const QString &uuid);

/// A new id of version 8 of the kind that the API gives to pages ("....-81xx-....").
QString newPageId(QRandomGenerator &random);

/// A new id of version 4, as for requests and options.
QString newRandomId(QRandomGenerator &random);

} // namespace korvo::sandbox
