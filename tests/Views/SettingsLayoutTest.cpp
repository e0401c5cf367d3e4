#include "Views/SettingsView.h"

#include "SettingsWorld.h"
#include "Views/BusyIndicator.h"
#include "Views/FormSection.h"
#include "Views/FormText.h"
#include "Views/LinkText.h"
#include "Views/SettingField.h"
#include "Views/SettingsSidebar.h"
#include "Views/Theme.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleOptionButton>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

void addTabs()
{
    QTest::addColumn<SettingsTab>("tab");
    for (const auto tab : allSettingsTabs)
        QTest::newRow(qPrintable(rawValue(tab))) << tab;
}

/// What stands for a control in a list of rows; nothing for what is no control or has nothing to show.
QString signOf(const QWidget *widget)
{
    if (qobject_cast<const Picker *>(widget))
        return u"(picker)"_s;
    if (qobject_cast<const LinkText *>(widget))
        return u"(hint)"_s;
    if (qobject_cast<const BusyIndicator *>(widget))
        return u"(spinner)"_s;
    if (const auto *field = qobject_cast<const QLineEdit *>(widget))
        return u"(field: %1)"_s.arg(field->placeholderText());
    if (const auto *box = qobject_cast<const QCheckBox *>(widget))
        return u"(toggle) "_s + box->text().remove(u'&');
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return u"[%1]"_s.arg(button->text().remove(u'&'));
    const auto *label = qobject_cast<const QLabel *>(widget);
    return label ? label->text().remove(u'&') : QString();
}

/// What a form shows, row by row from the top down, each from left to right.
QStringList rowsOf(const SettingsView &view)
{
    QList<std::pair<QPoint, QString>> signs;
    for (const auto *section : visibleIn<FormSection>(view)) {
        for (const auto *widget : visibleIn<QWidget>(*section)) {
            if (const auto sign = signOf(widget); !sign.isEmpty())
                signs.append({placeIn(view, widget).center(), sign});
        }
    }
    std::sort(signs.begin(), signs.end(), [](const auto &a, const auto &b) { return a.first.y() < b.first.y(); });
    QStringList rows;
    for (auto first = signs.begin(); first != signs.end();) {
        constexpr int sameRow = 6;
        const int top = first->first.y();
        const auto last
            = std::find_if(first, signs.end(), [&](const auto &one) { return one.first.y() > top + sameRow; });
        std::sort(first, last, [](const auto &a, const auto &b) { return a.first.x() < b.first.x(); });
        QStringList row;
        for (; first != last; ++first)
            row.append(first->second);
        rows.append(row.join(u' '));
    }
    return rows;
}

QPalette darkPalette()
{
    return {QColor(50, 50, 50)};
}

} // namespace

/// The look of the settings and their use without a pointer. Run at several scales of the screen.
class SettingsLayoutTest : public QObject {
    Q_OBJECT
private slots:
    void init() { m_world = std::make_unique<SettingsWorld>(); }
    void cleanup();

    void theContentNeedsSixHundredAndFortyByFourHundredAndSixty();
    void theSidebarIsAHundredAndSeventyWide();
    void rowsStandInThisOrder_data();
    void rowsStandInThisOrder();
    void theSpinnerOfTheProjectsStandsBehindTheirPicker();
    void pickersStandInLine_data() { addTabs(); }
    void pickersStandInLine();
    void nothingIsCut_data();
    void nothingIsCut();
    void theLastControlCanBeScrolledTo_data() { addTabs(); }
    void theLastControlCanBeScrolledTo();
    void theWheelOverAPickerIsLeftToThePage();
    void textsHaveTheSizesOfTheSystem();
    void coloursFollowThePalette();
    void arrowKeysWalkThroughTheTabs();
    void tabWalksThroughEveryControlOfATab_data() { addTabs(); }
    void tabWalksThroughEveryControlOfATab();
    void theFocusScrollsIntoSight();
    void mnemonicsLeadToTheirControls();
    void mnemonicsOfATabDiffer_data() { addTabs(); }
    void mnemonicsOfATabDiffer();
    void everyControlHasAName_data() { addTabs(); }
    void everyControlHasAName();

private:
    SettingsView &view() { return *m_world->view; }
    void showAll(SettingsTab tab, const QSize &size = {640, 620});
    QList<QWidget *> controls()
    {
        QList<QWidget *> found;
        for (auto *one : visibleIn<QWidget>(view())) {
            if (one->isEnabled() && (one->focusPolicy() & Qt::TabFocus) && !one->focusProxy())
                found.append(one);
        }
        return found;
    }

    std::unique_ptr<SettingsWorld> m_world;
};

void SettingsLayoutTest::cleanup()
{
    m_world.reset();
    QApplication::setFont({});
}

/// With every section and every message that there can be.
void SettingsLayoutTest::showAll(SettingsTab tab, const QSize &size)
{
    m_world->screens.setSingle(QRectF(0, 0, 1512, 982), 38);
    m_world->store().setReminderEnabled(true);
    m_world->show(tab, size);
    m_world->notion.answer(u"GET /users/me"_s, {}, 401);
    view().settingsVM().testConnection();
    m_world->settle();
    m_world->refuse(u"tracker"_s, 404);
    m_world->refuse(u"tasks"_s, 404);
    m_world->refuse(u"projects"_s, 404);
    view().settingsVM().loadTimeTrackerSchema();
    view().settingsVM().loadTasksSchema();
    view().settingsVM().loadProjectsSchema();
    m_world->settle();
}

void SettingsLayoutTest::theContentNeedsSixHundredAndFortyByFourHundredAndSixty()
{
    showAll(SettingsTab::tasks);
    QCOMPARE(view().minimumSizeHint(), QSize(640, 460));
}

void SettingsLayoutTest::theSidebarIsAHundredAndSeventyWide()
{
    showAll(SettingsTab::tasks);
    const auto *sidebar = view().findChild<SettingsSidebar *>();
    QCOMPARE(placeIn(view(), sidebar), QRect(0, 0, 170, 620));
    const auto picture = view().grab().toImage();
    const double ratio = picture.devicePixelRatio();
    QCOMPARE(picture.pixelColor(int(5 * ratio), int(610 * ratio)),
             picture.pixelColor(int(85 * ratio), int(400 * ratio)));
    QVERIFY(picture.pixelColor(int(85 * ratio), int(400 * ratio))
            != picture.pixelColor(int(180 * ratio), int(5 * ratio)));
}

void SettingsLayoutTest::rowsStandInThisOrder_data()
{
    QTest::addColumn<SettingsTab>("tab");
    QTest::addColumn<bool>("isAllThere"); // Else: no schema, no camera housing, no reminder.
    QTest::addColumn<QStringList>("rows");
    const QStringList database{u"Database"_s, u"(field: Database ID (32 characters))"_s, u"[Load Fields]"_s};
    const QStringList values{u"Status Values"_s, u"\"Running\" value (picker)"_s, u"\"Stopped\" value (picker)"_s};
    const QStringList polling{u"Polling"_s, u"Active timer interval (picker)"_s, u"Idle interval (picker)"_s};
    const QStringList system{u"System"_s, u"(toggle) Launch at Login"_s, u"(toggle) Show app icon in Dock"_s,
                             u"When enabled, the Dock icon shows elapsed time while a timer is running."_s};
    const QStringList reminder{u"Notifications"_s, u"(toggle) Notify when timer runs too long"_s};
    const QStringList shortcuts{u"Shortcuts"_s, u"Quick Add ⇧⌘N [Record] [Clear]"_s};

    QTest::newRow("Connection") << SettingsTab::connection << true
                                << QStringList{u"API Key"_s, u"(field: Secret key (ntn_...))"_s,
                                               u"[Test Connection] Connected"_s, u"(hint)"_s};
    QTest::newRow("Time Tracker, nothing loaded") << SettingsTab::timeTracker << false << database;
    QTest::newRow("Time Tracker") << SettingsTab::timeTracker << true
                                  << database
            + QStringList{u"Field Mapping"_s, u"Task Relation (picker)"_s, u"Start Time (picker)"_s,
                          u"End Time (picker)"_s, u"Timer Status (picker)"_s}
            + values;
    QTest::newRow("Tasks, nothing loaded") << SettingsTab::tasks << false << database;
    QTest::newRow("Tasks") << SettingsTab::tasks << true
                           << database
            + QStringList{u"Field Mapping"_s, u"Task Name (picker)"_s, u"Task Date (picker)"_s,
                          u"Timer Status (picker)"_s}
            + values
            + QStringList{u"Extended Fields"_s, u"Project Relation (picker)"_s, u"Client Relation (picker)"_s,
                          u"Resource not found"_s, u"Total Time Rollup (picker)"_s};
    QTest::newRow("General without a camera housing, reminders off")
        << SettingsTab::general << false << polling + system + reminder + shortcuts;
    QTest::newRow("General") << SettingsTab::general << true
                             << polling + system + reminder
            + QStringList{u"Remind after (picker)"_s, u"Notch Interface"_s, u"(toggle) Use notch interface"_s,
                          u"Shows timer around the MacBook notch. Menu bar will show icon only."_s}
            + shortcuts;
}

void SettingsLayoutTest::rowsStandInThisOrder()
{
    QFETCH(const SettingsTab, tab);
    QFETCH(const bool, isAllThere);
    auto &store = m_world->store();
    store.setReminderEnabled(isAllThere);
    if (isAllThere)
        m_world->screens.setSingle(QRectF(0, 0, 1512, 982), 38);
    else {
        store.setTimeTrackerDBId({});
        store.setTasksDBId({});
        m_world->change(&FieldMapping::taskProjectRelation, {});
    }
    m_world->show(tab);
    if (isAllThere) {
        m_world->notion.answer(u"GET /users/me"_s, {});
        view().settingsVM().testConnection();
        m_world->refuse(u"projects"_s, 404);
        view().settingsVM().loadProjectsSchema();
        m_world->settle();
    }
    QTEST(rowsOf(view()), "rows");
}

void SettingsLayoutTest::theSpinnerOfTheProjectsStandsBehindTheirPicker()
{
    m_world->show(SettingsTab::tasks);
    auto rows = rowsOf(view());
    m_world->notion.isHolding = true;
    view().settingsVM().loadProjectsSchema();
    settleLayout();
    rows.replaceInStrings(u"Project Relation (picker)"_s, u"Project Relation (picker) (spinner)"_s);
    QCOMPARE(rowsOf(view()), rows);
    m_world->notion.isHolding = false;
    m_world->settle();
}

void SettingsLayoutTest::pickersStandInLine()
{
    QFETCH(const SettingsTab, tab);
    showAll(tab);
    const auto pickers = visibleIn<Picker>(view());
    for (const auto *picker : pickers) {
        QCOMPARE(placeIn(view(), picker).left(), placeIn(view(), pickers.first()).left());
        QCOMPARE(picker->width(), pickers.first()->width());
        QCOMPARE(picker->height(), pickers.first()->height());
    }
}

void SettingsLayoutTest::nothingIsCut_data()
{
    QTest::addColumn<SettingsTab>("tab");
    QTest::addColumn<int>("fontSize");
    for (const auto tab : allSettingsTabs) {
        for (const int fontSize : {9, 13, 18})
            QTest::newRow(qPrintable(rawValue(tab) + u" in a font of %1 points"_s.arg(fontSize))) << tab << fontSize;
    }
}

void SettingsLayoutTest::nothingIsCut()
{
    QFETCH(const SettingsTab, tab);
    QFETCH(const int, fontSize);
    auto font = QApplication::font();
    font.setPointSize(fontSize);
    QApplication::setFont(font);
    showAll(tab);
    view().resize(view().minimumSizeHint().expandedTo({640, 620}));
    settleLayout();
    for (const auto *area : visibleIn<QScrollArea>(view()))
        QVERIFY(area->widget()->minimumSizeHint().width() <= area->viewport()->width());
    for (const auto *label : visibleIn<QLabel>(view())) {
        if (const auto *text = qobject_cast<const FormText *>(label))
            QVERIFY2(!text->isElided() && text->height() >= text->heightForWidth(text->width()),
                     qPrintable(text->text()));
        else if (label->wordWrap())
            QVERIFY2(label->height() >= label->heightForWidth(label->width()), qPrintable(label->text()));
        else
            QVERIFY2(label->width() >= label->sizeHint().width() && label->height() >= label->sizeHint().height(),
                     qPrintable(label->text()));
    }
    for (const auto *one : visibleIn<QAbstractButton>(view()))
        QVERIFY2(one->width() >= one->sizeHint().width() && one->height() >= one->sizeHint().height(),
                 qPrintable(one->text()));
    for (const auto *picker : visibleIn<Picker>(view())) {
        QStyleOptionComboBox option;
        option.initFrom(picker);
        const auto room = picker->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField);
        QVERIFY2(picker->fontMetrics().horizontalAdvance(picker->currentText()) <= room.width(),
                 qPrintable(picker->currentText()));
    }
}

void SettingsLayoutTest::theLastControlCanBeScrolledTo()
{
    QFETCH(const SettingsTab, tab);
    showAll(tab, {640, 460});
    auto *area = visibleIn<QScrollArea>(view()).first();
    area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
    settleLayout();
    int bottom = 0;
    for (const auto *one : visibleIn<QWidget>(*area->widget()))
        bottom = std::max(bottom, placeIn(view(), one).bottom());
    QVERIFY(bottom < view().height());
}

void SettingsLayoutTest::theWheelOverAPickerIsLeftToThePage()
{
    showAll(SettingsTab::tasks, {640, 460});
    auto *picker = m_world->picker(u"Task Date"_s);
    picker->setFocus();
    const auto place = picker->mapTo(&view(), picker->rect().center());
    QWheelEvent event(place, view().mapToGlobal(place), {}, {0, -240}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                      false);
    QCoreApplication::sendEvent(picker, &event);
    QVERIFY(!event.isAccepted());
    QCOMPARE(picker->currentText(), u"Date"_s);
}

void SettingsLayoutTest::textsHaveTheSizesOfTheSystem()
{
    auto body = QApplication::font();
    body.setPixelSize(26);
    QApplication::setFont(body);
    showAll(SettingsTab::connection);
    const auto sizeOf = [](const QWidget *text) { return text ? text->font().pixelSize() : 0; };
    const auto textOf = [this](const QString &words) {
        for (auto *text : visibleIn<FormText>(view())) {
            if (text->text().startsWith(words))
                return text;
        }
        return static_cast<FormText *>(nullptr);
    };
    QCOMPARE(sizeOf(textOf(u"API Key"_s)), 26);
    QCOMPARE(sizeOf(textOf(u"Invalid API key"_s)), 26);
    const int callout = sizeOf(m_world->child<LinkText>(u"hint"_s));
    QCOMPARE(callout, 24);
    view().setSelectedTab(SettingsTab::tasks);
    settleLayout();
    const int caption = sizeOf(m_world->child<FormText>(u"error"_s));
    QVERIFY(caption >= 20 && caption < callout);
    view().setSelectedTab(SettingsTab::general);
    settleLayout();
    for (const auto &words : {u"When enabled, the Dock icon"_s, u"Shows timer around"_s}) {
        QCOMPARE(sizeOf(textOf(words)), caption);
        QCOMPARE(textOf(words)->ink(), theme::secondaryOn(view().palette()));
    }
}

void SettingsLayoutTest::coloursFollowThePalette()
{
    showAll(SettingsTab::connection);
    const auto groundAt = [this](const QPoint &place) {
        const auto picture = view().grab().toImage();
        return picture.pixelColor(place * picture.devicePixelRatio()).lightness();
    };
    const QPoint window(180, 600);
    const auto *section = m_world->sectionTitled(u"API Key"_s);
    const QPoint box = placeIn(view(), section).bottomRight() - QPoint(6, 12);
    view().setPalette(QPalette(QColor(240, 240, 240)));
    settleLayout();
    QVERIFY(groundAt(window) > 200);
    QVERIFY(groundAt(box) > groundAt(window));
    const auto light = visibleIn<FormText>(*m_world->child(u"failed"_s)).first()->ink();
    view().setPalette(darkPalette());
    settleLayout();
    QVERIFY(groundAt(window) < 80);
    QVERIFY(groundAt(box) > groundAt(window));
    QVERIFY(groundAt({85, 500}) < groundAt(window)); // The sidebar.
    QVERIFY(visibleIn<FormText>(*m_world->child(u"failed"_s)).first()->ink() != light);
    const auto *hint = m_world->child<LinkText>(u"hint"_s);
    QVERIFY(inkOf(hint).lightness() > 200);
    QVERIFY(!hint->text().contains(u"#0000ff"_s)); // The blue of white pages.
}

void SettingsLayoutTest::arrowKeysWalkThroughTheTabs()
{
    m_world->show();
    auto *sidebar = view().findChild<SettingsSidebar *>();
    QVERIFY(sidebar->hasFocus()); // The key is there: the user has come for something else.
    for (const auto tab : allSettingsTabs) {
        QCOMPARE(view().selectedTab(), tab);
        QCOMPARE(visibleIn<QScrollArea>(view()).first()->accessibleName(), rawValue(tab));
        QTest::keyClick(sidebar, Qt::Key_Down);
    }
    QCOMPARE(view().selectedTab(), SettingsTab::general);
    QTest::keyClick(sidebar, Qt::Key_Home);
    QCOMPARE(view().selectedTab(), SettingsTab::connection);
}

void SettingsLayoutTest::tabWalksThroughEveryControlOfATab()
{
    QFETCH(const SettingsTab, tab);
    showAll(tab);
    const auto expected = controls();
    QVERIFY(expected.size() >= 4);
    view().findChild<SettingsSidebar *>()->setFocus();
    QList<QWidget *> walked;
    int lowest = 0;
    for (int i = 0; i < 2 * expected.size(); ++i) {
        auto *focused = QApplication::focusWidget();
        QVERIFY(focused);
        if (walked.contains(focused))
            break;
        walked.append(focused);
        if (walked.size() > 1) { // From the top down.
            QVERIFY(placeIn(*visibleIn<QScrollArea>(view()).first()->widget(), focused).bottom() >= lowest);
            lowest = placeIn(*visibleIn<QScrollArea>(view()).first()->widget(), focused).top();
        }
        QTest::keyClick(focused, Qt::Key_Tab);
    }
    for (auto *one : expected)
        QVERIFY2(walked.contains(one), qPrintable(one->accessibleName() + one->objectName()));
    QCOMPARE(walked.size(), expected.size());
}

void SettingsLayoutTest::theFocusScrollsIntoSight()
{
    showAll(SettingsTab::general, {640, 460});
    auto *record = m_world->child(u"record"_s);
    m_world->child(u"record"_s)->setFocus(Qt::TabFocusReason);
    auto *before = m_world->picker(u"Active timer interval"_s);
    before->setFocus(Qt::TabFocusReason);
    while (QApplication::focusWidget() != record)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    settleLayout();
    QVERIFY(placeIn(view(), record).bottom() < view().height());
}

void SettingsLayoutTest::mnemonicsLeadToTheirControls()
{
    showAll(SettingsTab::tasks);
    QTest::keyClick(view().windowHandle(), Qt::Key_D, Qt::AltModifier);
    QVERIFY(m_world->picker(u"Task Date"_s)->hasFocus());
    view().setSelectedTab(SettingsTab::general);
    settleLayout();
    QTest::keyClick(view().windowHandle(), Qt::Key_Q, Qt::AltModifier);
    QVERIFY(m_world->child(u"record"_s)->hasFocus());
    QVERIFY(m_world->store().showDockIcon());
    QTest::keyClick(view().windowHandle(), Qt::Key_S, Qt::AltModifier);
    QTRY_VERIFY(!m_world->store().showDockIcon());
}

void SettingsLayoutTest::mnemonicsOfATabDiffer()
{
    QFETCH(const SettingsTab, tab);
    showAll(tab);
    QStringList keys;
    const auto note = [&keys](const QString &text) {
        const auto key = QKeySequence::mnemonic(text);
        if (!key.isEmpty())
            keys.append(key.toString());
    };
    for (const auto *label : visibleIn<QLabel>(view())) {
        if (label->buddy())
            note(label->text());
    }
    for (const auto *one : visibleIn<QAbstractButton>(view()))
        note(one->text());
    auto different = keys;
    different.removeDuplicates();
    QCOMPARE(keys, different);
    QVERIFY(!keys.isEmpty());
}

void SettingsLayoutTest::everyControlHasAName()
{
    QFETCH(const SettingsTab, tab);
    showAll(tab);
    for (auto *one : controls()) {
        auto *accessible = QAccessible::queryAccessibleInterface(one);
        QVERIFY2(!accessible->text(QAccessible::Name).isEmpty(), one->metaObject()->className());
        QVERIFY(!accessible->text(QAccessible::Name).contains(u'&'));
    }
    for (auto *section : visibleIn<QWidget>(view())) {
        if (section->inherits("korvo::FormSection"))
            QCOMPARE(QAccessible::queryAccessibleInterface(section)->role(), QAccessible::Grouping);
    }
    auto *sidebar = QAccessible::queryAccessibleInterface(view().findChild<SettingsSidebar *>());
    QCOMPARE(sidebar->text(QAccessible::Name), u"Settings"_s);
    QCOMPARE(sidebar->child(1)->text(QAccessible::Name), u"Time Tracker"_s);
}

QTEST_MAIN(SettingsLayoutTest)
#include "SettingsLayoutTest.moc"
