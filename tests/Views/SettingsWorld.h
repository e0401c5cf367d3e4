#pragma once

#include "Fakes/FakeLoginItem.h"
#include "Fakes/FakeScreens.h"
#include "Fakes/NotionDatabases.h"
#include "LookUp.h"
#include "ViewWorld.h"
#include "Views/Picker.h"
#include "Views/SettingsView.h"

#include <QAbstractItemView>
#include <QTest>

#include <memory>

namespace korvo {

/// The settings of a user, on a desktop and a workspace that a test describes.
class SettingsWorld : public ViewWorld {
public:
    SettingsWorld()
    {
        LoginItem::setShared(&loginItem);
        answer(QStringLiteral("tracker"), trackerProperties());
        answer(QStringLiteral("tasks"), tasksProperties());
        answer(QStringLiteral("projects"),
               {{QStringLiteral("Client"), databases::relation(QStringLiteral("clients"))}});
    }
    ~SettingsWorld()
    {
        view.reset();
        LoginItem::setShared(nullptr);
    }
    Q_DISABLE_COPY_MOVE(SettingsWorld)

    static QJsonObject trackerProperties()
    {
        using namespace databases;
        return {{QStringLiteral("Task"), relation(QStringLiteral("tasks"))},
                {QStringLiteral("Start"), column(QStringLiteral("date"))},
                {QStringLiteral("End"), column(QStringLiteral("date"))},
                {QStringLiteral("Status"),
                 choice(QStringLiteral("select"), {QStringLiteral("Running"), QStringLiteral("Stopped")})},
                {QStringLiteral("Mood"), choice(QStringLiteral("select"), {QStringLiteral("Good")})}};
    }
    static QJsonObject tasksProperties()
    {
        using namespace databases;
        return {{QStringLiteral("Name"), column(QStringLiteral("title"))},
                {QStringLiteral("Date"), column(QStringLiteral("date"))},
                {QStringLiteral("Timer"),
                 choice(QStringLiteral("status"), {QStringLiteral("Tracking"), QStringLiteral("Idle")})},
                {QStringLiteral("Phase"), choice(QStringLiteral("select"), {QStringLiteral("Draft")})},
                {QStringLiteral("Project"), relation(QStringLiteral("projects"))},
                {QStringLiteral("Team"), relation(QStringLiteral("teams"))},
                {QStringLiteral("Total minutes"), column(QStringLiteral("rollup"))}};
    }

    void answer(const QString &databaseId, const QJsonObject &properties)
    {
        const auto call = QStringLiteral("GET /databases/") + databaseId;
        notion.forget(call);
        notion.answer(call, databases::database(properties));
    }
    void refuse(const QString &databaseId, int status = 404, const QString &message = {})
    {
        const auto call = QStringLiteral("GET /databases/") + databaseId;
        notion.forget(call);
        notion.answer(call, {{QStringLiteral("message"), message}}, status);
    }

    AppSettings &store() { return settings.settings; }
    void change(QString FieldMapping::*role, const QString &value)
    {
        store().changeFieldMapping([role, value](FieldMapping &mapping) { mapping.*role = value; });
    }

    /// Shows a new view at a tab, and leaves what it loads under way.
    SettingsView &appear(SettingsTab tab = SettingsTab::connection, const QSize &size = {640, 620})
    {
        view = std::make_unique<SettingsView>(
            *viewModel, store(), notion, clock, screens,
            SettingsCallbacks{.onDockIconChange = [this] { ++dockChanges; },
                              .onHotkeyChange =
                                  [this] {
                                      hotkeys.append({store().quickAddKeyCode(), store().quickAddModifiers()});
                                  }});
        view->setSelectedTab(tab);
        view->resize(size);
        view->show();
        settleLayout();
        return *view;
    }
    /// The same, when all has been loaded.
    SettingsView &show(SettingsTab tab = SettingsTab::connection, const QSize &size = {640, 620})
    {
        appear(tab, size);
        settle();
        return *view;
    }
    void settle()
    {
        spinUntil([this] {
            notion.release();
            return !view->settingsVM().isLoadingTTSchema() && !view->settingsVM().isLoadingTasksSchema()
                && !view->settingsVM().isLoadingProjectsSchema() && !view->settingsVM().isTestingConnection()
                && spawnedCount() == pollCount();
        });
        settleLayout();
    }
    int pollCount() { return clock.sleeperCount(); } ///< Of loops that sleep.

    /// The visible picker of that label; null if there is none.
    Picker *picker(const QString &label) const
    {
        for (auto *one : visibleIn<Picker>(*view)) {
            if (one->accessibleName() == label)
                return one;
        }
        return nullptr;
    }
    QStringList offered(const QString &label) const
    {
        QStringList texts;
        if (const auto *one = picker(label)) {
            for (int i = 0; i < one->count(); ++i)
                texts.append(one->itemText(i));
        }
        return texts;
    }
    /// Chooses an entry as the user does, by popup and Return.
    void choose(const QString &label, const QString &entry)
    {
        auto *one = picker(label);
        if (!one || one->findText(entry) < 0)
            qFatal("There is no %s to be chosen for %s", qPrintable(entry), qPrintable(label));
        one->showPopup();
        one->view()->setCurrentIndex(one->model()->index(one->findText(entry), 0));
        QTest::keyClick(one->view(), Qt::Key_Return);
        settleLayout();
    }
    template <typename Widget = QWidget> Widget *child(const QString &name) const
    {
        return childIn<Widget>(*view, name);
    }
    /// The visible section of that title.
    QWidget *sectionTitled(const QString &title) const
    {
        for (auto *one : visibleIn<QWidget>(*view)) {
            if (one->inherits("korvo::FormSection") && one->accessibleName() == title)
                return one;
        }
        return nullptr;
    }

    FakeLoginItem loginItem;
    FakeScreens screens;
    int dockChanges = 0;
    QList<std::pair<quint32, quint32>> hotkeys; ///< The shortcut at each change of it.
    std::unique_ptr<SettingsView> view;
};

} // namespace korvo
