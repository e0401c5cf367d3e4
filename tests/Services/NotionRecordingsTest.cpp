#include "Services/NotionPropertyMapper.h"

#include "Fakes/LocalZone.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

struct Page {
    QString where; ///< The file and the page's place in it.
    QJsonObject properties;
};

/// The pages in an answer: itself, or its results.
QList<Page> pagesOf(const QString &fileName, const QJsonObject &answer)
{
    QList<Page> pages;
    QJsonArray candidates{answer};
    for (const auto &result : answer[u"results"].toArray())
        candidates.append(result);
    for (const auto &candidate : candidates) {
        if (candidate[u"object"] == u"page"_s)
            pages.append({u"%1 page %2"_s.arg(fileName).arg(pages.size()), candidate[u"properties"].toObject()});
    }
    return pages;
}

/// Worked out by a pattern and the calendar of Qt, with nothing of the reader's. The local zone is that of the test.
std::optional<QDateTime> expectedInstant(const QString &start)
{
    static const QRegularExpression form(
        uR"(^(\d{4}-\d\d-\d\d)(?:T(\d\d:\d\d:\d\d)(?:\.(\d{3})\d*)?(?:Z|([+-])(\d\d):(\d\d)))?$)"_s);
    const auto match = form.match(start);
    if (!match.hasMatch())
        return std::nullopt;
    const auto day = QDate::fromString(match.captured(1), Qt::ISODate);
    if (match.captured(2).isEmpty())
        return QDateTime(day, QTime(0, 0));
    auto offset = match.captured(5).toInt() * 3600 + match.captured(6).toInt() * 60;
    if (match.captured(4) == u"-"_s)
        offset = -offset;
    const auto time = QTime::fromString(match.captured(2), Qt::ISODate).addMSecs(match.captured(3).toInt());
    return QDateTime(day, time, Qt::OffsetFromUTC, offset);
}

} // namespace

/// Reads what the real API answered, if its answers are at hand.
class NotionRecordingsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void everyPropertyReadsAsItsTypeAndAsNoOther_data();
    void everyPropertyReadsAsItsTypeAndAsNoOther();
    void everyTypeOccurs();

private:
    const LocalZone m_zone{"Europe/Warsaw"};
    QList<Page> m_pages;
    QMap<QString, int> m_read; ///< How many values of each type have been present.
};

void NotionRecordingsTest::initTestCase()
{
    const QDir folder(qEnvironmentVariable("KORVO_RECORDINGS"));
    const auto names = folder.entryList({u"*.json"_s}, QDir::Files, QDir::Name);
    QVERIFY(!names.isEmpty());
    for (const auto &name : names) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto recording = QJsonDocument::fromJson(file.readAll());
        QVERIFY2(recording.isObject(), qPrintable(name));
        m_pages += pagesOf(name, recording[u"body"].toObject());
    }
    QVERIFY(!m_pages.isEmpty());
}

void NotionRecordingsTest::everyPropertyReadsAsItsTypeAndAsNoOther_data()
{
    QTest::addColumn<qsizetype>("page");
    for (qsizetype page = 0; page < m_pages.size(); ++page)
        QTest::newRow(qPrintable(m_pages[page].where)) << page;
}

void NotionRecordingsTest::everyPropertyReadsAsItsTypeAndAsNoOther()
{
    QFETCH(qsizetype, page);
    const auto &properties = m_pages[page].properties;
    for (const auto &key : properties.keys()) {
        const auto property = properties[key];
        const auto type = property[u"type"].toString();

        std::optional<QString> title;
        if (type == u"title"_s && !property[u"title"].toArray().isEmpty())
            title = property[u"title"][0][u"plain_text"].toString();
        QCOMPARE(NotionPropertyMapper::title(properties, key), title);
        m_read[u"title"_s] += title.has_value();

        std::optional<QDateTime> date;
        if (type == u"date"_s && !property[u"date"].isNull()) {
            date = expectedInstant(property[u"date"][u"start"].toString());
            QVERIFY2(date, qPrintable(property[u"date"][u"start"].toString()));
        }
        QCOMPARE(NotionPropertyMapper::date(properties, key), date);
        m_read[u"date"_s] += date.has_value();

        std::optional<QString> option;
        if (type == u"select"_s && !property[u"select"].isNull())
            option = property[u"select"][u"name"].toString();
        QCOMPARE(NotionPropertyMapper::select(properties, key), option);
        m_read[u"select"_s] += option.has_value();

        QStringList ids;
        if (type == u"relation"_s) {
            for (const auto &element : property[u"relation"].toArray())
                ids.append(element[u"id"].toString());
        }
        QCOMPARE(NotionPropertyMapper::relations(properties, key), ids);
        m_read[u"relation"_s] += int(ids.size());

        std::optional<double> number;
        if (type == u"rollup"_s && property[u"rollup"][u"type"] == u"number"_s
            && !property[u"rollup"][u"number"].isNull())
            number = property[u"rollup"][u"number"].toDouble();
        QCOMPARE(NotionPropertyMapper::rollupNumber(properties, key), number);
        m_read[u"rollup"_s] += number.has_value();
    }
}

void NotionRecordingsTest::everyTypeOccurs()
{
    for (const char *type : {"title", "date", "select", "relation", "rollup"})
        QVERIFY2(m_read[QString::fromLatin1(type)] > 0, type);
}

QTEST_GUILESS_MAIN(NotionRecordingsTest)

#include "NotionRecordingsTest.moc"
