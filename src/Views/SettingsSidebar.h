#pragma once

#include "Views/SettingsTab.h"

#include <QListWidget>

namespace korvo {

/// The list of the settings' pages, of which one is always chosen.
class SettingsSidebar : public QListWidget {
    Q_OBJECT
public:
    explicit SettingsSidebar(QWidget *parent = nullptr);

    static constexpr int columnWidth = 170;

    SettingsTab selectedTab() const;
    void setSelectedTab(SettingsTab tab);

signals:
    void selectedTabChanged(korvo::SettingsTab tab);

protected:
    void changeEvent(QEvent *event) override;

private:
    void takeColors();
};

} // namespace korvo
