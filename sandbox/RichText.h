#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace korvo::sandbox {

/// One run of plain text as the API gives it, with its annotations.
QJsonObject textRun(const QString &text);

/// The runs of a title or text: one, or none for an empty text.
QJsonArray richText(const QString &text);

/// The runs' plain_text joined.
QString plainText(const QJsonArray &runs);

/// The runs of a write in the form of answers. `path` names them in errors, "body.properties.Name.title".
/// Throws ApiError for a run that the API refuses: too many, too long, of a wrong shape.
QJsonArray readRichText(const QJsonArray &written, const QString &path);

} // namespace korvo::sandbox
