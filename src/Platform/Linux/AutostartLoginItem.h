#pragma once

#include "Platform/LoginItem.h"

#include <QString>

namespace korvo {

/// An entry in the user's autostart folder, which every freedesktop.org session reads at login. What the user has added
/// to the entry stays in it. Source: Desktop Application Autostart Specification 0.5, and the keys by which GNOME's
/// and MATE's settings switch an entry off.
class AutostartLoginItem final : public LoginItem {
public:
    /// `configFolder` is the user's configuration folder, `program` the absolute path of the executable; that of the
    /// running one if it is empty, asked for when needed, since there may be no application object before.
    explicit AutostartLoginItem(const QString &configFolder = defaultConfigFolder(), const QString &program = {});

    std::optional<QString> registerItem() override;
    std::optional<QString> unregisterItem() override;
    Status status() const override;

    /// Source: XDG Base Directory Specification 0.8.
    static QString defaultConfigFolder();

private:
    QString program() const;

    const QString m_path; ///< Of the entry.
    const QString m_program;
};

} // namespace korvo
