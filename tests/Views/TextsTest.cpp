#include "Views/ClockText.h"
#include "Views/ElidedLabel.h"

#include <QAccessible>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QTest>
#include <QToolTip>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr TextStyle style{.size = 15, .weight = QFont::DemiBold};
const QString longName = u"Rewrite the quarterly report on the migration of the booking system"_s;

void askForToolTip(QWidget &widget)
{
    QHelpEvent event(QEvent::ToolTip, QPoint(2, 2), widget.mapToGlobal(QPoint(2, 2)));
    QCoreApplication::sendEvent(&widget, &event);
}

QString accessibleName(QWidget &widget)
{
    return QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Name);
}

} // namespace

class TextsTest : public QObject {
    Q_OBJECT
private slots:
    void aTextThatFitsIsShownWhole();
    void aLongTextEndsInAnEllipsis_data();
    void aLongTextEndsInAnEllipsis();
    void aShortTextOfTwoLinesTakesOne();
    void aWordWithoutBlanksIsBrokenAnywhere();
    void lineBreaksInANameAreBlanks();
    void aCutTextIsWholeInItsToolTipAndForScreenReaders();
    void markUpInANameIsShownAsItIs();
    void aTextThatFitsHasNoToolTip();
    void aPageOfTextIsMeasuredAsALine();
    void trackingWidensAText();
    void sizesArePixels();
    void aTextPalesWhileItsButtonIsDisabled();
    void aClockDoesNotMoveWhileItCounts();
    void aClockIsLaidOutAnewOnlyForAnotherLength();
    void monospacedDigitsAreOfOneWidth();
};

void TextsTest::aTextThatFitsIsShownWhole()
{
    ElidedLabel label(longName, style, Qt::white);
    label.resize(label.sizeHint());
    QVERIFY(!label.isElided());
    QCOMPARE(label.shownLines(), QStringList{longName});
    label.resize(label.width() - 1, label.height());
    QVERIFY(label.isElided());
}

void TextsTest::aLongTextEndsInAnEllipsis_data()
{
    QTest::addColumn<int>("maximumLines");
    QTest::newRow("in one line") << 1;
    QTest::newRow("in two lines, and a third is cut off") << 2;
}

void TextsTest::aLongTextEndsInAnEllipsis()
{
    QFETCH(int, maximumLines);
    ElidedLabel label(longName, style, Qt::white, maximumLines);
    label.resize(160, 100);
    const auto lines = label.shownLines();
    QCOMPARE(lines.size(), maximumLines);
    QVERIFY(lines.last().endsWith(u'…'));
    const QFontMetricsF metrics(label.font());
    for (const auto &line : lines)
        QVERIFY(metrics.horizontalAdvance(line) <= 160);
    QVERIFY(longName.startsWith(lines.first().chopped(maximumLines == 1 ? 1 : 0)));
    if (maximumLines > 1)
        QCOMPARE(label.heightForWidth(160), 2 * label.sizeHint().height());
}

void TextsTest::aShortTextOfTwoLinesTakesOne()
{
    ElidedLabel label(u"Report"_s, style, Qt::white, 2);
    QCOMPARE(label.heightForWidth(160), label.sizeHint().height());
}

void TextsTest::aWordWithoutBlanksIsBrokenAnywhere()
{
    const ElidedLabel label(QString(200, u'w'), style, Qt::white, 2);
    QCOMPARE(label.heightForWidth(160), 2 * label.sizeHint().height());
}

void TextsTest::lineBreaksInANameAreBlanks()
{
    ElidedLabel label(u"One\nand two"_s, style, Qt::white);
    label.resize(label.sizeHint());
    QCOMPARE(label.shownLines(), QStringList{u"One and two"_s});
    QVERIFY(!label.isElided());
}

void TextsTest::aCutTextIsWholeInItsToolTipAndForScreenReaders()
{
    ElidedLabel label(longName, style, Qt::white);
    label.resize(100, label.sizeHint().height());
    label.show();
    askForToolTip(label);
    QCOMPARE(QToolTip::text(), u"<p>"_s + longName + u"</p>"_s);
    QCOMPARE(accessibleName(label), longName);
    QToolTip::hideText();
}

void TextsTest::markUpInANameIsShownAsItIs()
{
    ElidedLabel label(u"Use <b>bold</b> & such in a long, long, long name"_s, style, Qt::white);
    label.resize(100, label.sizeHint().height());
    label.show();
    QVERIFY(label.shownLines().first().startsWith(u"Use <b"_s));
    askForToolTip(label);
    QCOMPARE(QToolTip::text(), u"<p>Use &lt;b&gt;bold&lt;/b&gt; &amp; such in a long, long, long name</p>"_s);
    QToolTip::hideText();
}

void TextsTest::aTextThatFitsHasNoToolTip()
{
    ElidedLabel label(longName, style, Qt::white);
    label.resize(label.sizeHint());
    QVERIFY(!label.showToolTip({}));
}

void TextsTest::aPageOfTextIsMeasuredAsALine()
{
    ElidedLabel label(QString(100000, u'x'), style, Qt::white, 2);
    label.resize(160, 40);
    QVERIFY(label.sizeHint().width() < 20000);
    QVERIFY(label.isElided());
    QVERIFY(label.shownLines().last().endsWith(u'…'));
}

void TextsTest::trackingWidensAText()
{
    const ElidedLabel plain(u"TOTAL"_s, {.size = 9}, Qt::white);
    const ElidedLabel tracked(u"TOTAL"_s, {.size = 9, .tracking = 0.8}, Qt::white);
    QVERIFY(qAbs(tracked.font().letterSpacing() - 0.8) < 0.01); // Fonts keep 64ths.
    const int difference = tracked.sizeHint().width() - plain.sizeHint().width();
    QVERIFY(difference >= 3 && difference <= 5); // Five letters.
}

void TextsTest::sizesArePixels()
{
    QCOMPARE(makeFont(TextStyle{.size = 13}).pixelSize(), 13);
    QCOMPARE(makeFont(TextStyle{.size = 13, .weight = QFont::Medium}).weight(), QFont::Medium);
}

void TextsTest::aTextPalesWhileItsButtonIsDisabled()
{
    QWidget button;
    auto *label = new ElidedLabel(u"Stop"_s, style, Qt::white);
    label->setParent(&button);
    QCOMPARE(label->palette().color(QPalette::WindowText), QColor(Qt::white));
    button.setEnabled(false);
    QVERIFY(label->palette().color(QPalette::WindowText).alphaF() < 0.6F);
}

void TextsTest::aClockDoesNotMoveWhileItCounts()
{
    ClockText clock(makeFont(style), Qt::white); // In a font whose digits may well differ.
    clock.setTime(u"1:11:11"_s);
    const auto narrow = clock.sizeHint();
    clock.setTime(u"8:08:48"_s);
    QCOMPARE(clock.sizeHint(), narrow);
    QCOMPARE(accessibleName(clock), u"8:08:48"_s);
}

void TextsTest::aClockIsLaidOutAnewOnlyForAnotherLength()
{
    ClockText clock(makeFont({.size = 20, .isMonospaced = true}), Qt::white);
    clock.setTime(u"9:59:59"_s);
    const auto before = clock.sizeHint();
    clock.setTime(u"10:00:00"_s);
    QVERIFY(clock.sizeHint().width() > before.width());
    QCOMPARE(clock.sizeHint().height(), before.height());
}

void TextsTest::monospacedDigitsAreOfOneWidth()
{
    const QFontMetricsF metrics(makeFont({.size = 20, .weight = QFont::DemiBold, .isMonospaced = true}));
    for (const auto character : u"023456789hm:"_s)
        QCOMPARE(metrics.horizontalAdvance(character), metrics.horizontalAdvance(u'1'));
}

QTEST_MAIN(TextsTest)
#include "TextsTest.moc"
