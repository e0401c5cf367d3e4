#pragma once

#include <QMetaType>
#include <QTest>

namespace korvo {

/// What a user can do to the workspace.
enum class Action { start, stop, quickAdd };
inline constexpr Action allActions[] = {Action::start, Action::stop, Action::quickAdd};

/// As in the name of a test's row.
inline const char *nameOf(Action action)
{
    switch (action) {
    case Action::start:
        return "start";
    case Action::stop:
        return "stop";
    case Action::quickAdd:
        return "quick add";
    }
    return "";
}

inline void addActionColumn()
{
    QTest::addColumn<Action>("action");
}

/// A row for each action, in the column "action".
inline void addActionRows()
{
    addActionColumn();
    for (const auto action : allActions)
        QTest::newRow(nameOf(action)) << action;
}

} // namespace korvo
