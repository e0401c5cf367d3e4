#include "EndToEnd/AttachedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Platform/TrayOnScreen.h"
#include "Views/Theme.h"

#include <QDate>
#include <QGuiApplication>
#include <QJsonArray>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = AttachedKorvo::patience;

} // namespace

/// Korvo in sessions whose language has other digits, another calendar or other letters than English: what it shows, logs
/// and sends stays the same.
class OtherLanguageTest : public QObject {
    Q_OBJECT
private slots:
    void cleanup();

    void timesAndDatesAreAsInEnglish_data();
    void timesAndDatesAreAsInEnglish();

private:
    std::unique_ptr<AttachedKorvo> m_world;
};

void OtherLanguageTest::cleanup()
{
    m_world.reset();
    for (const char *name : {"LC_ALL", "LANGUAGE", "LOCPATH"})
        qunsetenv(name);
    QTRY_VERIFY(findOnScreen(theme::systemGreen).isEmpty()); // The tray has seen it go.
}

void OtherLanguageTest::timesAndDatesAreAsInEnglish_data()
{
    QTest::addColumn<QString>("locale");
    QTest::newRow("Arabic of Egypt: other digits") << u"ar_EG"_s;
    QTest::newRow("Persian: other digits, another calendar") << u"fa_IR"_s;
    QTest::newRow("Thai: another calendar") << u"th_TH"_s;
    QTest::newRow("Turkish: another i, a comma in numbers") << u"tr_TR"_s;
}

void OtherLanguageTest::timesAndDatesAreAsInEnglish()
{
    QFETCH(const QString, locale);
    // As on a desktop where it is installed, so that the C library knows it too.
    const QTemporaryDir locales;
    const auto name = locale + u".UTF-8"_s;
    QCOMPARE(QProcess::execute(u"localedef"_s,
                               {u"--force"_s, u"--quiet"_s, u"--no-archive"_s, u"-f"_s, u"UTF-8"_s, u"-i"_s, locale,
                                locales.filePath(name)}),
             0);
    qputenv("LOCPATH", locales.path().toUtf8());
    qputenv("LC_ALL", name.toUtf8());
    qputenv("LANGUAGE", locale.toUtf8());

    m_world = std::make_unique<AttachedKorvo>();
    QVERIFY(m_world->startWorkspace());
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > 0, patience); // Reads 0 to 9 alone.
    QVERIFY(m_world->property(u"Title"_s).contains(QRegularExpression(u"[0-9]"_s)));

    QVERIFY(clickTrayMenu(m_world->item(), u"Stop"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), QString(), patience);

    const auto year = QString::number(QDate::currentDate().year());
    const QRegularExpression dates(u"\"(\\d+-\\d+-\\d+[^\"]*)\""_s, QRegularExpression::UseUnicodePropertiesOption);
    const QRegularExpression iso(u"^"_s + year
                                 + u"-[0-9]{2}-[0-9]{2}(T[0-9:]{8}(\\.[0-9]+)?(Z|[+-][0-9]{2}:[0-9]{2}))?$"_s);
    int dateCount = 0;
    for (const auto &request : m_world->control("GET", u"requests"_s)["requests"_L1].toArray()) {
        const auto body = QJsonDocument(QJsonArray{request["body"_L1]}).toJson();
        for (auto found = dates.globalMatch(QString::fromUtf8(body)); found.hasNext(); ++dateCount) {
            const auto date = found.next().captured(1);
            QVERIFY2(iso.match(date).hasMatch(), qPrintable(date));
        }
    }
    QVERIFY(dateCount > 1); // Those of the day, and the end of the timer.

    const QRegularExpression line(u"^\\["_s + year + u"-[0-9]{2}-[0-9]{2} [0-9:]{8}\\.[0-9]{3}\\] \\[[A-Z]+\\] "_s);
    for (const auto &one : m_world->log().split(u'\n', Qt::SkipEmptyParts))
        QVERIFY2(line.match(one).hasMatch(), qPrintable(one));
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    OtherLanguageTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "OtherLanguageTest.moc"
