#include "Views/QuickAddView.h"

#include "LookUp.h"
#include "Views/KeyBadge.h"
#include "Views/SymbolIcon.h"
#include "Views/Theme.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QPainterPath>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

class QuickAddViewTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_view.reset(); }

    void anEmptyFieldAndReturnDoNothing();
    void aNameOfBlanksOnlyAndReturnDoNothing_data();
    void aNameOfBlanksOnlyAndReturnDoNothing();
    void blanksAroundANameAreLeftOut_data();
    void blanksAroundANameAreLeftOut();
    void theNameIsOtherwiseAsTyped_data();
    void theNameIsOtherwiseAsTyped();
    void theKeyPadHasAReturnKeyToo();
    void clickingTheBadgesDoesNothing();
    void escapeIsLeftToWhoeverShowsTheView();
    void itHasTheFocusAsSoonAsItAppears();
    void severalLinesThatArePastedBecomeOne_data();
    void severalLinesThatArePastedBecomeOne();
    void tenThousandCharactersThatArePastedAreKept();
    void whatAnInputMethodMakesIsTyped();
    void aDeadKeyAndItsLetterMakeOneCharacter();
    void theSubmitHandlerMayDestroyTheView();

    void theCardIsAsWideAsItShould();
    void theInputRowIsSetAsItShould();
    void theHintRowIsSetAsItShould();
    void aBadgeIsSetAsItShould();
    void theCardIsNearlyBlackWithRoundedCorners();
    void theShadowLiesBelowTheCard();

private:
    QLineEdit &field() { return *m_view->findChild<QLineEdit *>(); }
    /// The place of a child in the card's coordinates.
    QRect placeInCard(const QWidget *child) const
    {
        return placeIn(*m_view, child)
            .translated(-QuickAddView::shadowMargins.left(), -QuickAddView::shadowMargins.top());
    }
    QSize cardSize() const { return m_view->size().shrunkBy(QuickAddView::shadowMargins); }
    /// The colour at a point of the card, on transparent ground.
    QColor colorAt(const QPoint &point) const;
    QList<KeyBadge *> badges() const { return visibleIn<KeyBadge>(*m_view); }

    std::unique_ptr<QuickAddView> m_view;
    QStringList m_names;
    int m_cancelCount = 0;
};

void QuickAddViewTest::init()
{
    m_names.clear();
    m_cancelCount = 0;
    m_view = std::make_unique<QuickAddView>([this](const QString &name) { m_names.append(name); },
                                            [this] { ++m_cancelCount; });
    m_view->setAttribute(Qt::WA_TranslucentBackground);
    m_view->resize(m_view->sizeHint());
    m_view->show();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
}

QColor QuickAddViewTest::colorAt(const QPoint &point) const
{
    QImage image(m_view->size() * m_view->devicePixelRatioF(), QImage::Format_ARGB32);
    image.setDevicePixelRatio(m_view->devicePixelRatioF());
    image.fill(Qt::transparent);
    m_view->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    const QPointF place = point + QPointF(QuickAddView::shadowMargins.left(), QuickAddView::shadowMargins.top());
    return image.pixelColor((place * image.devicePixelRatio()).toPoint());
}

void QuickAddViewTest::anEmptyFieldAndReturnDoNothing()
{
    QCOMPARE(m_view->taskName(), QString());
    QTest::keyClick(&field(), Qt::Key_Return);
    QVERIFY(m_names.isEmpty());
    QVERIFY(m_view->isVisible());
}

void QuickAddViewTest::aNameOfBlanksOnlyAndReturnDoNothing_data()
{
    QTest::addColumn<QString>("blanks");
    QTest::newRow("spaces") << u"   "_s;
    QTest::newRow("a tab") << u"\t"_s;
    QTest::newRow("spaces of other kinds") << u"\u00a0\u2003\u3000"_s;
}

void QuickAddViewTest::aNameOfBlanksOnlyAndReturnDoNothing()
{
    QFETCH(const QString, blanks);
    field().setText(blanks);
    QTest::keyClick(&field(), Qt::Key_Return);
    QVERIFY(m_names.isEmpty());
    QVERIFY(m_view->isVisible());
    QCOMPARE(m_view->taskName(), blanks); // They stay in the field.
}

void QuickAddViewTest::blanksAroundANameAreLeftOut_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("leading and trailing spaces") << u"  Call the framer   "_s;
    QTest::newRow("tabs") << u"\tCall the framer\t"_s;
    QTest::newRow("no-break and ideographic spaces") << u"\u00a0\u3000Call the framer\u2009\u00a0"_s;
}

void QuickAddViewTest::blanksAroundANameAreLeftOut()
{
    QFETCH(const QString, typed);
    field().setText(typed);
    QTest::keyClick(&field(), Qt::Key_Return);
    QCOMPARE(m_names, QStringList{u"Call the framer"_s});
    QCOMPARE(field().text(), typed);
}

void QuickAddViewTest::theNameIsOtherwiseAsTyped_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("inner spaces are kept") << u"a  b   c"_s;
    QTest::newRow("letters keep their case") << u"call THE Framer"_s;
    QTest::newRow("quotes and marks") << u"\"a\" <b>&amp; \\n 'c'"_s;
    QTest::newRow("beyond the basic plane") << u"\U0001F5BC für Ürsula 額縁"_s;
    QTest::newRow("what only looks like a blank") << u"\u200bx\u200b"_s;
}

void QuickAddViewTest::theNameIsOtherwiseAsTyped()
{
    QFETCH(const QString, name);
    field().setText(name);
    QTest::keyClick(&field(), Qt::Key_Return);
    QCOMPARE(m_names, QStringList{name});
}

void QuickAddViewTest::theKeyPadHasAReturnKeyToo()
{
    QTest::keyClicks(&field(), u"x"_s);
    QTest::keyClick(&field(), Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(m_names, QStringList{u"x"_s});
}

void QuickAddViewTest::clickingTheBadgesDoesNothing()
{
    QTest::keyClicks(&field(), u"x"_s);
    QCOMPARE(badges().size(), 2);
    for (auto *badge : badges()) {
        QTest::mouseClick(m_view->windowHandle(), Qt::LeftButton, {}, placeIn(*m_view, badge).center());
        QVERIFY(m_view->isFocused());
    }
    QVERIFY(m_names.isEmpty());
    QCOMPARE(m_cancelCount, 0);
    QCOMPARE(m_view->taskName(), u"x"_s);
}

void QuickAddViewTest::escapeIsLeftToWhoeverShowsTheView()
{
    QTest::keyClick(&field(), Qt::Key_Escape);
    QCOMPARE(m_cancelCount, 0);
}

void QuickAddViewTest::itHasTheFocusAsSoonAsItAppears()
{
    QVERIFY(m_view->isFocused());
    QCOMPARE(QGuiApplication::focusWindow(), m_view->windowHandle());
}

void QuickAddViewTest::severalLinesThatArePastedBecomeOne_data()
{
    QTest::addColumn<QString>("pasted");
    QTest::addColumn<QString>("name");
    QTest::newRow("lines of this system") << u"Call\nthe framer"_s << u"Call the framer"_s;
    QTest::newRow("lines of another system") << u"Call\r\nthe framer\r\n"_s << u"Call the framer"_s;
    QTest::newRow("line breaks at the ends") << u"\n\nCall the framer\n"_s << u"Call the framer"_s;
    QTest::newRow("separators of lines and paragraphs") << u"Call\u2028the\u2029framer"_s << u"Call the framer"_s;
    QTest::newRow("an empty line between") << u"Call\n\nthe framer"_s << u"Call  the framer"_s;
}

void QuickAddViewTest::severalLinesThatArePastedBecomeOne()
{
    QFETCH(const QString, pasted);
    QGuiApplication::clipboard()->setText(pasted);
    field().paste();
    QVERIFY(m_names.isEmpty()); // A line break is no Return key.
    QTest::keyClick(&field(), Qt::Key_Return);
    QTEST(m_names.value(0), "name");
}

void QuickAddViewTest::tenThousandCharactersThatArePastedAreKept()
{
    for (const int length : {10000, 100000}) {
        const QString name = QString(length - 1, u'x') + u'y';
        QGuiApplication::clipboard()->setText(name);
        field().selectAll();
        field().paste();
        QTest::keyClick(&field(), Qt::Key_Return);
        QCOMPARE(m_names.takeLast(), name);
        QCOMPARE(cardSize().width(), 520);
    }
}

void QuickAddViewTest::whatAnInputMethodMakesIsTyped()
{
    QVERIFY(field().testAttribute(Qt::WA_InputMethodEnabled));
    QInputMethodEvent composing(u"がく"_s, {});
    QCoreApplication::sendEvent(&field(), &composing);
    QCOMPARE(m_view->taskName(), QString()); // It is not decided yet.
    QInputMethodEvent commit;
    commit.setCommitString(u"額縁"_s);
    QCoreApplication::sendEvent(&field(), &commit);
    QTest::keyClick(&field(), Qt::Key_Return);
    QCOMPARE(m_names, QStringList{u"額縁"_s});
}

void QuickAddViewTest::aDeadKeyAndItsLetterMakeOneCharacter()
{
    QTest::sendKeyEvent(QTest::Click, &field(), Qt::Key_Dead_Circumflex, QString(), Qt::NoModifier);
    QCOMPARE(m_view->taskName(), QString());
    QInputMethodEvent composed; // As the toolkit's own composing does it.
    composed.setCommitString(u"ê"_s);
    QCoreApplication::sendEvent(&field(), &composed);
    QCOMPARE(m_view->taskName(), u"ê"_s);
}

void QuickAddViewTest::theSubmitHandlerMayDestroyTheView()
{
    QString submitted;
    QuickAddView *view = nullptr;
    view = new QuickAddView(
        [&](const QString &name) {
            submitted = name;
            view->deleteLater();
        },
        [] {});
    view->show();
    auto *edit = view->findChild<QLineEdit *>();
    edit->setText(u"x"_s);
    QTest::keyClick(edit, Qt::Key_Return);
    QCOMPARE(submitted, u"x"_s);
    settleLayout();
}

void QuickAddViewTest::theCardIsAsWideAsItShould()
{
    QCOMPARE(cardSize().width(), 520);
    const auto *input = childIn(*m_view, u"input"_s);
    const auto *hints = childIn(*m_view, u"hints"_s);
    QCOMPARE(placeInCard(input), QRect(0, 0, 520, 56));
    QCOMPARE(placeInCard(childIn(*m_view, u"rule"_s)), QRect(0, 56, 520, 1));
    QCOMPARE(placeInCard(hints).topLeft(), QPoint(0, 57));
    QCOMPARE(placeInCard(hints).bottom(), cardSize().height() - 1);
}

void QuickAddViewTest::theInputRowIsSetAsItShould()
{
    const auto *plus = visibleIn<SymbolIcon>(*m_view).value(0);
    QCOMPARE(plus->symbol(), Symbol::plusCircle);
    QCOMPARE(plus->textSize(), 18);
    QCOMPARE(inkOf(plus), theme::faded(theme::systemGreen, 0.4));
    QCOMPARE(placeInCard(plus).left(), 20);
    QCOMPARE(placeInCard(&field()).left(), placeInCard(plus).right() + 1 + 12);
    const auto *enter = badges().at(0);
    QVERIFY(textIn(*enter, u"↵"_s));
    QCOMPARE(placeInCard(enter).right(), 520 - 20 - 1);
    QCOMPARE(placeInCard(&field()).right() + 1 + 12, placeInCard(enter).left());
    for (const auto *child : QList<const QWidget *>{plus, &field(), enter})
        QVERIFY(qAbs(placeInCard(child).center().y() - 28) <= 1);
    QCOMPARE(field().placeholderText(), u"What are you working on?"_s);
    QCOMPARE(field().font().pixelSize(), 16);
    QCOMPARE(field().palette().color(QPalette::Text), QColor(Qt::white));
    QVERIFY(!field().hasFrame());
    QCOMPARE(field().palette().color(QPalette::Base).alpha(), 0);
    QVERIFY(!field().accessibleName().isEmpty());
}

void QuickAddViewTest::theHintRowIsSetAsItShould()
{
    const auto *words = textIn(*m_view, u"Task will be created in Notion & timer starts"_s);
    QVERIFY(words);
    QVERIFY(!words->isElided());
    QCOMPARE(words->font().pixelSize(), 11);
    QCOMPARE(inkOf(words), theme::white(0.3));
    const QRect place = placeInCard(words);
    QCOMPARE(place.left(), 20 + 6 + 6); // Behind the dot.
    const auto *dot = qobject_cast<RoundedBox *>(
        m_view->childAt(placeIn(*m_view, words).left() - 9, placeIn(*m_view, words).center().y()));
    QVERIFY(dot);
    QCOMPARE(dot->size(), QSize(6, 6));
    QCOMPARE(dot->color(), theme::faded(theme::systemGreen, 0.6));
    const auto *escape = badges().at(1);
    QVERIFY(textIn(*escape, u"Esc"_s));
    QCOMPARE(placeInCard(escape).right(), 520 - 20 - 1);
    QCOMPARE(placeInCard(escape).top(), 57 + 10);
    QCOMPARE(placeInCard(escape).bottom(), cardSize().height() - 10 - 1);
}

void QuickAddViewTest::aBadgeIsSetAsItShould()
{
    for (const auto *badge : badges()) {
        const auto *text = visibleIn<ElidedLabel>(*badge).value(0);
        QCOMPARE(text->font().pixelSize(), 10);
        QCOMPARE(text->font().weight(), QFont::Medium);
        QCOMPARE(inkOf(text), theme::white(0.3));
        QCOMPARE(placeIn(*badge, text), badge->rect().adjusted(6, 3, -6, -3));
        QCOMPARE(badge->color(), theme::white(0.06));
        QCOMPARE(badge->radius(), 4.0);
        // A line of white at 0.08 around a ground of white at 0.06, on the card.
        const QRect place = placeInCard(badge);
        const int ground = colorAt({place.left() + 3, place.center().y()}).red();
        const int line = colorAt({place.left(), place.center().y()}).red();
        QVERIFY2(qAbs(ground - 25) <= 1, qPrintable(QString::number(ground)));
        QVERIFY2(qAbs(line - 43) <= 1, qPrintable(QString::number(line)));
    }
}

void QuickAddViewTest::theCardIsNearlyBlackWithRoundedCorners()
{
    QCOMPARE(colorAt({260, 8}), QColor(10, 10, 10));
    QVERIFY(colorAt({0, 0}).alpha() < 255); // The shadow alone.
    QVERIFY(colorAt({4, 4}).alpha() < 255);
    QCOMPARE(colorAt({6, 6}).alpha(), 255);
    QPainterPath corners;
    corners.addRoundedRect(0, 0, 520, 90, 16, 16);
    QCOMPARE(QuickAddView::outline({520, 90}), corners);
    QCOMPARE(childIn(*m_view, u"rule"_s)->findChild<RoundedBox *>()->color(), theme::white(0.04));
    const QColor edge = colorAt({260, 0});
    QCOMPARE(edge.alpha(), 255);
    QVERIFY2(qAbs(edge.red() - 30) <= 1, qPrintable(edge.name())); // White at 0.08 on it.
}

void QuickAddViewTest::theShadowLiesBelowTheCard()
{
    const int below = colorAt({260, cardSize().height() + 4}).alpha();
    const int above = colorAt({260, -4}).alpha();
    const int left = colorAt({-4, cardSize().height() / 2}).alpha();
    const int right = colorAt({523, cardSize().height() / 2}).alpha();
    QVERIFY2(below > above + 20, qPrintable(u"%1 %2"_s.arg(below).arg(above)));
    QVERIFY(above > 0);
    QVERIFY(qAbs(left - right) <= 4);
    QVERIFY(below < 0.6 * 255);
    QCOMPARE(colorAt({260, cardSize().height() + 71}).alpha(), 0); // It ends before the view does.
    QCOMPARE(colorAt({-60, cardSize().height() / 2}).alpha(), 0);
}

QTEST_MAIN(QuickAddViewTest)
#include "QuickAddViewTest.moc"
