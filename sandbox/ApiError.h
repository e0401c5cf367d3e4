#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

namespace korvo::sandbox {

/// An answer of the API that refuses a request. Whatever finds a fault in a request throws one; the router answers it.
struct ApiError {
    int status = 400;
    QString code;
    QString message;
    QJsonObject additionalData; ///< Left out of the answer when empty.
    bool hasRequestId = true;
};

/// Status 400, code "validation_error", which is the API's word for most faults.
ApiError validationError(const QString &message);

/// Status 400 with "body failed validation: " before `what`, which ends without a full stop: "body.page_size should be
/// a number", to which "instead was" and `value` as JSON are added.
ApiError bodyError(const QString &what, const QJsonValue &value);

/// Status 404. `kind` is "page" or "database".
ApiError notFoundError(const QString &kind, const QString &id);

/// The error with the code and words that the API documents for `status`; any other status is an internal error.
ApiError documentedError(int status);

/// The error body as the API forms it.
QJsonObject toJson(const ApiError &error, const QString &requestId);

/// A JSON value as error messages quote it: between backticks, `undefined` for a missing one.
QString quoted(const QJsonValue &value);

} // namespace korvo::sandbox
