#include "Platform/Linux/DesktopEntry.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

class DesktopEntryTest : public QObject {
    Q_OBJECT
private slots:
    void programsAreQuotedAsNeeded_data();
    void programsAreQuotedAsNeeded();
    void aProgramThatNoEntryCanNameHasNoExec_data();
    void aProgramThatNoEntryCanNameHasNoExec();
    void theProgramOfOthersExecIsFound_data();
    void theProgramOfOthersExecIsFound();
    void valuesAreEscapedInTheText_data();
    void valuesAreEscapedInTheText();
    void anEmptyTextGetsTheMainGroup();
    void linesThatAreNotChangedStay();
    void aKeyOfAnotherGroupIsNotOurs();
    void aKeyThatStandsTwiceIsWrittenOnce();
    void aNewKeyStandsBeforeTheNextGroup();
    void whatIsNoEntryBecomesOne_data();
    void whatIsNoEntryBecomesOne();
};

void DesktopEntryTest::programsAreQuotedAsNeeded_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("exec");
    QTest::newRow("a plain path stands as it is") << u"/usr/bin/korvo"_s << u"/usr/bin/korvo"_s;
    QTest::newRow("a blank") << u"/opt/my tools/korvo"_s << uR"("/opt/my tools/korvo")"_s;
    QTest::newRow("a double quote") << uR"(/opt/a"b/korvo)"_s << uR"("/opt/a\"b/korvo")"_s;
    QTest::newRow("a single quote") << u"/opt/a'b/korvo"_s << uR"("/opt/a'b/korvo")"_s;
    QTest::newRow("a dollar sign") << u"/opt/$HOME/korvo"_s << uR"("/opt/\$HOME/korvo")"_s;
    QTest::newRow("a backtick") << u"/opt/`id`/korvo"_s << uR"("/opt/\`id\`/korvo")"_s;
    QTest::newRow("a backslash") << uR"(/opt/a\b/korvo)"_s << uR"("/opt/a\\b/korvo")"_s;
    QTest::newRow("a backslash at the end") << uR"(/opt/korvo\)"_s << uR"("/opt/korvo\\")"_s;
    QTest::newRow("a percent sign is no field code") << u"/opt/100%f/korvo"_s << u"/opt/100%%f/korvo"_s;
    QTest::newRow("two percent signs") << u"/opt/%%/korvo"_s << u"/opt/%%%%/korvo"_s;
    QTest::newRow("a percent sign and a blank") << u"/opt/5 %u/korvo"_s << uR"("/opt/5 %%u/korvo")"_s;
    QTest::newRow("other letters than Latin ones") << u"/opt/жук/körvo"_s << u"/opt/жук/körvo"_s;
    QTest::newRow("signs of the shell") << u"/opt/a&b;c|d/korvo"_s << uR"("/opt/a&b;c|d/korvo")"_s;
    QTest::newRow("signs of a pattern") << u"/opt/a*b?(c)#~/korvo"_s << uR"("/opt/a*b?(c)#~/korvo")"_s;
}

void DesktopEntryTest::programsAreQuotedAsNeeded()
{
    QFETCH(QString, program);
    QTEST(DesktopEntry::execOf(program).value_or(QString()), "exec");
    QFETCH(QString, exec);
    QCOMPARE(DesktopEntry::programOf(exec), program);

    DesktopEntry entry;
    entry.setValue("Exec"_ba, exec);
    QCOMPARE(DesktopEntry(entry.text()).value("Exec"_ba), exec);
}

void DesktopEntryTest::aProgramThatNoEntryCanNameHasNoExec_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("a line feed") << u"/opt/a\nb"_s;
    QTest::newRow("a carriage return") << u"/opt/a\rb"_s;
    QTest::newRow("a tabulator") << u"/opt/a\tb"_s;
    QTest::newRow("a delete character") << u"/opt/a\u007fb"_s;
    QTest::newRow("an equals sign") << u"/opt/a=b"_s;
    QTest::newRow("no path") << QString();
}

void DesktopEntryTest::aProgramThatNoEntryCanNameHasNoExec()
{
    QFETCH(QString, program);
    QVERIFY(!DesktopEntry::execOf(program));
}

void DesktopEntryTest::theProgramOfOthersExecIsFound_data()
{
    QTest::addColumn<QString>("exec");
    QTest::addColumn<QString>("program");
    QTest::newRow("arguments follow") << u"/usr/bin/korvo --quiet %u"_s << u"/usr/bin/korvo"_s;
    QTest::newRow("arguments follow a quoted path") << uR"("/opt/a b/korvo" --quiet)"_s << u"/opt/a b/korvo"_s;
    QTest::newRow("a name alone") << u"korvo"_s << u"korvo"_s;
    QTest::newRow("blanks around it") << u"  korvo  "_s << u"korvo"_s;
    QTest::newRow("a quote that is not closed") << uR"("/usr/bin/korvo)"_s << QString();
    QTest::newRow("a backslash before the missing quote") << uR"("/usr/bin/korvo\")"_s << QString();
    QTest::newRow("a quote alone") << uR"(")"_s << QString();
    QTest::newRow("a percent sign at the end") << u"korvo%"_s << u"korvo%"_s;
    QTest::newRow("nothing") << QString() << QString();
}

void DesktopEntryTest::theProgramOfOthersExecIsFound()
{
    QFETCH(QString, exec);
    QTEST(DesktopEntry::programOf(exec), "program");
}

void DesktopEntryTest::valuesAreEscapedInTheText_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("value");
    QTest::newRow("plain") << "Name=Korvo"_ba << u"Korvo"_s;
    QTest::newRow("a backslash") << R"(Name=a\\b)"_ba << uR"(a\b)"_s;
    QTest::newRow("a blank at the start") << R"(Name=\s a)"_ba << u"  a"_s;
    QTest::newRow("an equals sign") << "Name=a=b"_ba << u"a=b"_s;
    QTest::newRow("other letters") << "Name=жук"_ba << u"жук"_s;
    QTest::newRow("nothing") << "Name="_ba << QString();
}

void DesktopEntryTest::valuesAreEscapedInTheText()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, value);
    const QByteArray text = "[Desktop Entry]\n" + line + '\n';
    QCOMPARE(DesktopEntry(text).value("Name"_ba), value);
    DesktopEntry entry;
    entry.setValue("Name"_ba, value);
    QCOMPARE(entry.text(), text);
}

void DesktopEntryTest::anEmptyTextGetsTheMainGroup()
{
    DesktopEntry entry;
    QCOMPARE(entry.value("Name"_ba), std::nullopt);
    QCOMPARE(entry.text(), "[Desktop Entry]\n"_ba);
    entry.setValue("Type"_ba, u"Application"_s);
    entry.setValue("Name"_ba, u"Korvo"_s);
    QCOMPARE(entry.text(), "[Desktop Entry]\nType=Application\nName=Korvo\n"_ba);
}

void DesktopEntryTest::linesThatAreNotChangedStay()
{
    const auto text = "# Mine\n"
                      "\n"
                      "[Desktop Entry]\n"
                      "Name[de]=Meine Zeit\n"
                      "Name = Time \n"
                      "# Late, please\n"
                      "X-Delay=\\t10\\q\n"
                      "\n"
                      "[Desktop Action new]\n"
                      "Name=New\n"
                      "\n"_ba;
    DesktopEntry entry(text);
    QCOMPARE(entry.text(), text);
    QCOMPARE(entry.value("Name"_ba), u"Time"_s);
    QCOMPARE(entry.value("X-Delay"_ba), u"\t10\\q"_s);
    entry.setValue("Name"_ba, u"Korvo"_s);
    QCOMPARE(entry.text(), QByteArray(text).replace("Name = Time ", "Name=Korvo"));
}

void DesktopEntryTest::aKeyOfAnotherGroupIsNotOurs()
{
    const auto text = "[Desktop Entry]\n[Other]\nHidden=true\n"_ba;
    DesktopEntry entry(text);
    QCOMPARE(entry.value("Hidden"_ba), std::nullopt);
    entry.remove("Hidden"_ba);
    QCOMPARE(entry.text(), text);
}

void DesktopEntryTest::aKeyThatStandsTwiceIsWrittenOnce()
{
    DesktopEntry entry("[Desktop Entry]\nExec=a\nName=b\nExec=c\n[Other]\nExec=d\n"_ba);
    QCOMPARE(entry.value("Exec"_ba), u"a"_s);
    entry.setValue("Exec"_ba, u"e"_s);
    QCOMPARE(entry.text(), "[Desktop Entry]\nExec=e\nName=b\n[Other]\nExec=d\n"_ba);
    entry.remove("Exec"_ba);
    QCOMPARE(entry.text(), "[Desktop Entry]\nName=b\n[Other]\nExec=d\n"_ba);
}

void DesktopEntryTest::aNewKeyStandsBeforeTheNextGroup()
{
    DesktopEntry entry("[Desktop Entry]\nName=b\n\n[Other]\nExec=d"_ba);
    entry.setValue("Exec"_ba, u"a"_s);
    QCOMPARE(entry.text(), "[Desktop Entry]\nName=b\nExec=a\n\n[Other]\nExec=d\n"_ba);
}

void DesktopEntryTest::whatIsNoEntryBecomesOne_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("lines without a group") << "hello\nName=x\n"_ba
                                           << "[Desktop Entry]\nName=Korvo\n"_ba;
    QTest::newRow("a comment alone") << "# Mine\n"_ba
                                     << "# Mine\n[Desktop Entry]\nName=Korvo\n"_ba;
    QTest::newRow("another group first") << "[Other]\nName=x\n"_ba
                                         << "[Desktop Entry]\nName=Korvo\n[Other]\nName=x\n"_ba;
    QTest::newRow("lines without an equals sign") << "[Desktop Entry]\nName\n=x\n"_ba
                                                  << "[Desktop Entry]\nName\n=x\nName=Korvo\n"_ba;
    QTest::newRow("lines that end as on Windows") << "[Desktop Entry]\r\nName=x\r\n"_ba
                                                  << "[Desktop Entry]\r\nName=Korvo\n"_ba;
    QTest::newRow("bytes that are no text") << "\xff\xfe\n\n"_ba
                                            << "\n[Desktop Entry]\nName=Korvo\n"_ba;
}

void DesktopEntryTest::whatIsNoEntryBecomesOne()
{
    QFETCH(QByteArray, text);
    DesktopEntry entry(text);
    entry.setValue("Name"_ba, u"Korvo"_s);
    QTEST(entry.text(), "expected");
}

QTEST_GUILESS_MAIN(DesktopEntryTest)
#include "DesktopEntryTest.moc"
