#include "Views/SettingsTab.h"

namespace korvo {

using namespace Qt::StringLiterals;

QString rawValue(SettingsTab tab)
{
    switch (tab) {
    case SettingsTab::connection:
        return u"Connection"_s;
    case SettingsTab::timeTracker:
        return u"Time Tracker"_s;
    case SettingsTab::tasks:
        return u"Tasks"_s;
    case SettingsTab::general:
        return u"General"_s;
    }
    return {};
}

Symbol iconOf(SettingsTab tab)
{
    switch (tab) {
    case SettingsTab::connection:
        return Symbol::network;
    case SettingsTab::timeTracker:
        return Symbol::clock;
    case SettingsTab::tasks:
        return Symbol::checklist;
    case SettingsTab::general:
        break;
    }
    return Symbol::gearshape;
}

} // namespace korvo
