#include "Gallery.h"

#include "Fakes/FakeScreens.h"
#include "Fakes/NotionDatabases.h"
#include "LookUp.h"
#include "ViewWorld.h"
#include "Views/ActiveTimerView.h"
#include "Views/ActivityRing.h"
#include "Views/BusyIndicator.h"
#include "Views/DockIcon.h"
#include "Views/MenuBarView.h"
#include "Views/SettingsView.h"
#include "Views/Stack.h"
#include "Views/Theme.h"
#include "Views/TodayTasksView.h"

#include <QApplication>
#include <QPainter>
#include <QTest>

namespace korvo::gallery {

using namespace Qt::StringLiterals;

namespace {

const QStringList sampleTasks{u"Home page layout"_s, u"Answer the printer"_s, u"Invoice for October"_s};

struct State {
    QString name;
    std::function<void(ViewWorld &)> prepare;
};

const QList<State> &states()
{
    static const QList<State> all{
        {u"running"_s,
         [](ViewWorld &world) {
             world.showTimer({});
             world.showTasks(sampleTasks);
         }},
        {u"idle"_s, [](ViewWorld &world) { world.showTasks(sampleTasks); }},
        {u"empty"_s, [](ViewWorld &) {}},
        {u"setup"_s, [](ViewWorld &world) { world.settings.settings.setApiKey({}); }},
        {u"long"_s,
         [](ViewWorld &world) {
             world.showTimer({.taskName = u"Rewrite the quarterly report on the migration of the booking system for "
                                          "the northern branches"_s,
                              .elapsed = 45296,
                              .project = u"Booking system of the northern branches"_s,
                              .client = u"Northwind Traders International"_s,
                              .totalMinutes = 123456});
             QStringList names{u"Rewrite the quarterly report on the migration of the booking system"_s};
             for (int i = 2; i <= 20; ++i)
                 names.append(u"Task number %1 with <b>marks</b> & a name that goes on and on and on"_s.arg(i));
             world.showTasks(names);
         }},
        {u"banner"_s,
         [](ViewWorld &world) {
             world.showTimer({.elapsed = 1500});
             world.showTasks(20);
             world.poll();
             world.notion.isOffline = true;
         }},
        {u"busy"_s,
         [](ViewWorld &world) {
             world.showTimer({.elapsed = 9000});
             world.showTasks(sampleTasks);
             world.poll();
             world.notion.isHolding = true;
             world.viewModel->stopTimer();
         }},
    };
    return all;
}

/// A workspace in one state, as long as a view of it is drawn.
class Workspace {
public:
    explicit Workspace(const State &state)
    {
        state.prepare(world);
        if (!world.notion.isHolding)
            world.poll();
    }
    ~Workspace()
    {
        world.viewModel.reset();
        world.notion.release();
    }
    Q_DISABLE_COPY_MOVE(Workspace)

    ViewWorld world;
};

QImage pictureOf(QWidget &view, const Alteration &alter)
{
    view.show();
    settleLayout();
    if (alter)
        alter(view);
    for (auto *indicator : view.findChildren<BusyIndicator *>()) {
        if (indicator->isVisible()) { // From its first picture again.
            indicator->hide();
            indicator->show();
        }
    }
    return view.grab().toImage();
}

QImage drawPanel(const State &state, bool hasFocusRing, const Alteration &alter)
{
    Workspace workspace(state);
    auto &world = workspace.world;
    MenuBarView view(
        *world.viewModel, [] {}, world.settings.settings, world.clock);
    view.setMaximumRoom(420);
    view.resize(view.sizeHint());
    if (hasFocusRing) {
        view.show();
        view.activateWindow();
        QCoreApplication::processEvents();
        for (int i = 0; i < 2 && view.focusWidget(); ++i)
            QTest::keyClick(view.focusWidget(), Qt::Key_Tab);
    }
    return pictureOf(view, alter);
}

QImage drawSystemViews(const State &state, bool isDark, const Alteration &alter)
{
    Workspace workspace(state);
    auto &world = workspace.world;
    QWidget host;
    host.setPalette(isDark ? QPalette(QColor(50, 50, 50)) : QPalette(QColor(240, 240, 240)));
    auto *active = new ActiveTimerView(*world.viewModel, world.clock);
    host.setLayout(vstack({.spacing = 12, .padding = padding(0, 12)}, vstack({.padding = padding(16, 0)}, active),
                          new TodayTasksView(*world.viewModel)));
    host.setFixedSize(
        300, host.layout()->hasHeightForWidth() ? host.layout()->heightForWidth(300) : host.sizeHint().height());
    return pictureOf(host, alter);
}

/// The three databases of the sample, as the settings load them.
void showDatabases(ViewWorld &world)
{
    using namespace databases;
    world.notion.answer(u"GET /users/me"_s, {});
    world.notion.answer(u"GET /databases/tracker"_s,
                        database({{u"Name"_s, column(u"title"_s)},
                                  {u"Task"_s, relation(u"tasks"_s)},
                                  {u"Start"_s, column(u"date"_s)},
                                  {u"End"_s, column(u"date"_s)},
                                  {u"Status"_s, choice(u"select"_s, {u"Running"_s, u"Stopped"_s})}}));
    world.notion.answer(u"GET /databases/tasks"_s,
                        database({{u"Name"_s, column(u"title"_s)},
                                  {u"Date"_s, column(u"date"_s)},
                                  {u"Timer"_s, choice(u"status"_s, {u"Running"_s, u"Stopped"_s})},
                                  {u"Project"_s, relation(u"projects"_s)},
                                  {u"Total minutes"_s, column(u"rollup"_s)}}));
    world.notion.answer(u"GET /databases/projects"_s, database({{u"Client"_s, relation(u"clients"_s)}}));
}

QPalette lightPalette()
{
    return {QColor(239, 239, 239)};
}

QPalette darkPalette()
{
    QPalette dark(QColor(53, 53, 53));
    dark.setColor(QPalette::Base, QColor(35, 35, 35));
    dark.setColor(QPalette::Highlight, QColor(42, 130, 218));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(QPalette::Disabled, role, QColor(130, 130, 130));
    return dark;
}

QImage drawSettings(SettingsTab tab, bool isNew, bool isDark, const Alteration &alter)
{
    QApplication::setPalette(isDark ? darkPalette() : lightPalette());
    QImage picture;
    {
        ViewWorld world;
        FakeScreens screens;
        showDatabases(world);
        if (isNew) {
            world.settings.settings.setApiKey({});
            world.settings.settings.setTimeTrackerDBId({});
            world.settings.settings.setTasksDBId({});
        }
        world.settings.settings.setReminderEnabled(true);
        SettingsView view(*world.viewModel, world.settings.settings, world.notion, world.clock, screens, {});
        view.resize(640, 620);
        view.show();
        view.settingsVM().testConnection();
        ViewWorld::spinUntil([] { return spawnedCount() == 0; });
        view.setSelectedTab(tab);
        picture = pictureOf(view, alter);
    }
    QApplication::setPalette(lightPalette());
    return picture;
}

/// A sheet of `columns` by `rows` places, each of which `drawAt` fills from its own corner.
QImage drawSheet(int columns, int rows, const QSizeF &place, double gap,
                 const std::function<void(QPainter &, int column, int row)> &drawAt)
{
    const QSizeF whole(columns * (place.width() + gap) + gap, rows * (place.height() + gap) + gap);
    const double scale = qApp->devicePixelRatio();
    QImage sheet((whole * scale).toSize(), QImage::Format_RGB32);
    sheet.setDevicePixelRatio(scale);
    sheet.fill(QColor(90, 90, 90));
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            QPainter painter(&sheet);
            painter.translate(gap + column * (place.width() + gap), gap + row * (place.height() + gap));
            drawAt(painter, column, row);
        }
    }
    return sheet;
}

/// The ring in its four colours, at the start of the hour, after a quarter and a second before its end.
QImage drawRings(const Alteration &)
{
    return drawSheet(3, 4, {18, 18}, 6, [](QPainter &painter, int column, int row) {
        constexpr double elapsed[] = {0, 900, 3599};
        constexpr QColor colors[] = {theme::systemGreen, theme::systemCyan, theme::systemOrange, theme::systemRed};
        const auto image = makeActivityRingImage(elapsed[column] / 3600, colors[row]);
        image.draw(painter, image.size);
    });
}

/// What stands in the tray without a ring, on a dark bar and on a light one.
QImage drawStatusSymbols(const Alteration &)
{
    return drawSheet(2, 2, {18, 18}, 6, [](QPainter &painter, int column, int row) {
        const auto image = makeSymbolImage(column == 0 ? Symbol::timer : Symbol::wifiExclamationmark, {});
        painter.setPen(row == 0 ? Qt::white : Qt::black);
        image.draw(painter, image.size);
    });
}

/// The tile of the dock, from minutes to a whole day.
QImage drawTiles(const Alteration &)
{
    return drawSheet(4, 1, dockIconSize, 6, [](QPainter &painter, int column, int) {
        const QString texts[] = {u"07"_s, u"99"_s, u"1h"_s, u"24h"_s};
        constexpr double elapsed[] = {420, 5940, 6000, 86400};
        constexpr QColor colors[] = {theme::systemGreen, theme::systemCyan, theme::systemCyan, theme::systemRed};
        painter.setFont(QApplication::font());
        drawDockIcon(painter, dockIconSize, texts[column], colors[column], elapsed[column]);
    });
}

} // namespace

void useFixedLook()
{
    QApplication::setStyle(u"Fusion"_s);
    QApplication::setPalette(lightPalette());
    QFont font(u"DejaVu Sans"_s);
    font.setPixelSize(13);
    QApplication::setFont(font);
}

QList<Sample> panels()
{
    QList<Sample> samples;
    for (const auto &state : states()) {
        const auto draw = [&state](const Alteration &alter) { return drawPanel(state, false, alter); };
        samples.append({u"panel-"_s + state.name, draw});
    }
    return samples;
}

QList<Sample> focusRings()
{
    QList<Sample> samples;
    for (const auto &state : states()) {
        const auto draw = [&state](const Alteration &alter) { return drawPanel(state, true, alter); };
        samples.append({u"panel-"_s + state.name + u"-keyboard"_s, draw});
    }
    return samples;
}

QList<Sample> systemViews()
{
    QList<Sample> samples;
    for (const auto &state : states()) {
        for (const bool isDark : {true, false}) {
            const auto draw
                = [&state, isDark](const Alteration &alter) { return drawSystemViews(state, isDark, alter); };
            samples.append({u"system-"_s + state.name + (isDark ? u"-dark"_s : u"-light"_s), draw});
        }
    }
    return samples;
}

QList<Sample> settingsTabs()
{
    QList<Sample> samples;
    for (const bool isDark : {false, true}) {
        for (const bool isNew : {true, false}) {
            for (const auto tab : allSettingsTabs) {
                const auto draw = [=](const Alteration &alter) { return drawSettings(tab, isNew, isDark, alter); };
                samples.append({u"settings-"_s + rawValue(tab).toLower().remove(u' ') + (isNew ? u"-new"_s : QString())
                                    + (isDark ? u"-dark"_s : u"-light"_s),
                                draw});
            }
        }
    }
    return samples;
}

QList<Sample> faces()
{
    return {{u"tray-rings"_s, drawRings}, {u"tray-symbols"_s, drawStatusSymbols}, {u"dock-tiles"_s, drawTiles}};
}

QList<Sample> references()
{
    return panels() + systemViews() + faces();
}

QString fileName(const Sample &sample)
{
    return u"%1@%2x.png"_s.arg(sample.name).arg(qApp->devicePixelRatio());
}

} // namespace korvo::gallery
