#include "ViewModels/NotionWrites.h"

#include "Fakes/TestSettings.h"

#include <QJsonArray>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

using Field = QString FieldMapping::*;

QJsonObject select(const QString &name)
{
    return {{u"select"_s, QJsonObject{{u"name"_s, name}}}};
}

const QJsonObject date{{u"date"_s, QJsonObject{{u"start"_s, u"2026-11-21T09:30:00Z"_s}}}};
const QJsonObject relation{{u"relation"_s, QJsonArray{QJsonObject{{u"id"_s, u"t1"_s}}}}};
const QJsonObject title{
    {u"title"_s, QJsonArray{QJsonObject{{u"text"_s, QJsonObject{{u"content"_s, u"Call the framer"_s}}}}}}};

/// Everything is mapped but what `cleared` names.
FieldMapping mappingWithout(Field cleared)
{
    TestSettings settings;
    TestSettings::configure(settings.settings);
    auto mapping = settings.settings.fieldMapping();
    if (cleared)
        (mapping.*cleared).clear();
    return mapping;
}

void addColumns()
{
    QTest::addColumn<FieldMapping>("mapping");
    QTest::addColumn<QJsonObject>("properties");
}

void addRow(const char *name, Field cleared, const QJsonObject &properties)
{
    QTest::newRow(name) << mappingWithout(cleared) << properties;
}

} // namespace

/// The properties of each write, also where a name that it needs is not mapped: nothing but the end, the date and the
/// status of a task is left out then.
class NotionWritesTest : public QObject {
    Q_OBJECT
private slots:
    void closingOfEntry_data();
    void closingOfEntry();
    void openingOfEntry_data();
    void openingOfEntry();
    void timerStatusOfTask_data();
    void timerStatusOfTask();
    void newTask_data();
    void newTask();
    void parentDatabase();

private:
    const QDateTime m_now{QDate(2026, 11, 21), QTime(9, 30), Qt::UTC};
};

void NotionWritesTest::closingOfEntry_data()
{
    using Mapping = FieldMapping;
    addColumns();
    addRow("all is mapped", nullptr, {{u"Status"_s, select(u"Stopped"_s)}, {u"End"_s, date}});
    addRow("no end time", &Mapping::ttEndTime, {{u"Status"_s, select(u"Stopped"_s)}});
    addRow("no status", &Mapping::ttStatus, {{u""_s, select(u"Stopped"_s)}, {u"End"_s, date}});
    addRow("no stopped option", &Mapping::ttStatusStopped, {{u"Status"_s, select(u""_s)}, {u"End"_s, date}});
}

void NotionWritesTest::closingOfEntry()
{
    QFETCH(FieldMapping, mapping);
    QTEST(NotionWrites::closingOfEntry(mapping, m_now), "properties");
}

void NotionWritesTest::openingOfEntry_data()
{
    using Mapping = FieldMapping;
    const QJsonObject all{{u"Status"_s, select(u"Running"_s)}, {u"Start"_s, date}, {u"Task"_s, relation}};
    addColumns();
    addRow("all is mapped", nullptr, all);
    addRow("no end time", &Mapping::ttEndTime, all);
    addRow("no status", &Mapping::ttStatus, {{u""_s, select(u"Running"_s)}, {u"Start"_s, date}, {u"Task"_s, relation}});
    addRow("no start time", &Mapping::ttStartTime,
           {{u"Status"_s, select(u"Running"_s)}, {u""_s, date}, {u"Task"_s, relation}});
    addRow("no task relation", &Mapping::ttTaskRelation,
           {{u"Status"_s, select(u"Running"_s)}, {u"Start"_s, date}, {u""_s, relation}});
    addRow("no running option", &Mapping::ttStatusRunning,
           {{u"Status"_s, select(u""_s)}, {u"Start"_s, date}, {u"Task"_s, relation}});
}

void NotionWritesTest::openingOfEntry()
{
    QFETCH(FieldMapping, mapping);
    QTEST(NotionWrites::openingOfEntry(mapping, m_now, u"t1"_s), "properties");
}

void NotionWritesTest::timerStatusOfTask_data()
{
    QTest::addColumn<FieldMapping>("mapping");
    QTest::addColumn<QString>("option");
    QTest::addColumn<QJsonObject>("properties");
    const auto all = mappingWithout(nullptr), none = mappingWithout(&FieldMapping::taskTimerStatus);
    QTest::newRow("all is mapped") << all << u"Busy"_s << QJsonObject{{u"Timer"_s, select(u"Busy"_s)}};
    QTest::newRow("no status") << none << u"Busy"_s << QJsonObject();
    QTest::newRow("no option") << all << QString() << QJsonObject();
}

void NotionWritesTest::timerStatusOfTask()
{
    QFETCH(FieldMapping, mapping);
    QFETCH(QString, option);
    QTEST(NotionWrites::timerStatusOfTask(mapping, option), "properties");
}

void NotionWritesTest::newTask_data()
{
    using Mapping = FieldMapping;
    const QJsonObject status = select(u"Running"_s);
    addColumns();
    addRow("all is mapped", nullptr, {{u"Name"_s, title}, {u"Date"_s, date}, {u"Timer"_s, status}});
    addRow("no name", &Mapping::taskName, {{u""_s, title}, {u"Date"_s, date}, {u"Timer"_s, status}});
    addRow("no date", &Mapping::taskDate, {{u"Name"_s, title}, {u"Timer"_s, status}});
    addRow("no status", &Mapping::taskTimerStatus, {{u"Name"_s, title}, {u"Date"_s, date}});
    addRow("no running option", &Mapping::taskTimerStatusRunning, {{u"Name"_s, title}, {u"Date"_s, date}});
    addRow("no stopped option", &Mapping::taskTimerStatusStopped,
           {{u"Name"_s, title}, {u"Date"_s, date}, {u"Timer"_s, status}});
}

void NotionWritesTest::newTask()
{
    QFETCH(FieldMapping, mapping);
    QTEST(NotionWrites::newTask(mapping, u"Call the framer"_s, m_now), "properties");
}

void NotionWritesTest::parentDatabase()
{
    QCOMPARE(NotionWrites::parentDatabase(u"tracker"_s), (QJsonObject{{u"database_id"_s, u"tracker"_s}}));
}

QTEST_GUILESS_MAIN(NotionWritesTest)
#include "NotionWritesTest.moc"
