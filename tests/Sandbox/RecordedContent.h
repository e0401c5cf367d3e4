#pragma once

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

namespace korvo::sandbox {

struct Database;
struct PropertySchema;
class Workspace;

/// What a recording of the real API speaks of, laid out in a workspace, so that its request can be sent again: the
/// database with the columns and rows that the answer shows, the rows that it relates to, and its users.
class RecordedContent {
public:
    /// Adds to the workspace. A filtered query also gets the rows of other filtered queries of its database, from
    /// `all`, so that it has something to leave out.
    RecordedContent(Workspace &workspace, const QJsonObject &recording, const QList<QJsonObject> &all);

    QByteArray method() const;
    /// The recorded path, with the id of our page in place of the recorded one.
    QByteArray target() const { return m_target; }
    /// The recorded body, with our ids; where it was not recorded, one that asks for what the answer shows.
    std::optional<QJsonObject> body() const { return m_body; }

private:
    void findPages(const QList<QJsonObject> &all);
    void addUsers(const QJsonValue &value);
    void addRelatedRows();
    void addDatabase();
    void addOptions(PropertySchema &schema) const;
    void addFilteredOptions(Database &database, const QJsonValue &filter) const;
    void connectRollup(PropertySchema &schema) const;
    QString addRow(const QJsonObject &page, const QStringList &leftOut);
    void addRows();
    void readRequest();
    QString mainRelation() const;
    QJsonObject written(const QJsonObject &page, const QStringList &leftOut) const;
    QJsonObject translated(const QJsonObject &json) const;
    QJsonObject recordedRequest() const;

    Workspace &m_workspace;
    QJsonObject m_recording;
    QString m_databaseId;
    QList<QJsonObject> m_pages;
    QHash<QString, QString> m_ids; ///< Ours for the recorded ones.
    QString m_surplusRow;          ///< One more related row, for a relation of which the answer shows not all.
    QByteArray m_target;
    std::optional<QJsonObject> m_body;
};

/// The title of a page object, plain.
QString titleIn(const QJsonValue &page);

} // namespace korvo::sandbox
