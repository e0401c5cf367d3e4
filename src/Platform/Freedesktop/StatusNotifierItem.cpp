#include "Platform/Freedesktop/StatusNotifierItem.h"

#include "Platform/Freedesktop/DBusMenu.h"
#include "Platform/Freedesktop/StatusButton.h"
#include "Platform/Freedesktop/StatusMenu.h"
#include "Platform/Freedesktop/StatusNotifierObject.h"

#include <QCoreApplication>
#include <QMenu>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr auto itemPath = "/StatusNotifierItem"_L1;
constexpr auto menuPath = "/MenuBar"_L1;

/// A connection to the session bus that nothing else in the process uses.
class OwnConnection {
public:
    explicit OwnConnection(QString name) :
        m_name(std::move(name)),
        m_connection(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_name))
    {
    }
    ~OwnConnection() { QDBusConnection::disconnectFromBus(m_name); }
    OwnConnection(const OwnConnection &) = delete;
    OwnConnection &operator=(const OwnConnection &) = delete;

    const QDBusConnection &connection() const { return m_connection; }

private:
    QString m_name;
    QDBusConnection m_connection;
};

} // namespace

/// What lives on the item's connection, which goes last.
struct StatusNotifierItem::Bus {
    explicit Bus(int number) :
        own(u"korvo-status-item-%1"_s.arg(number)),
        object(own.connection(), itemPath, menuPath),
        menu(own.connection(), menuPath),
        registration(own.connection(),
                     u"org.kde.StatusNotifierItem-%1-%2"_s.arg(QCoreApplication::applicationPid()).arg(number))
    {
    }

    OwnConnection own;
    StatusNotifierObject object;
    DBusMenu menu;
    StatusNotifierRegistration registration;
};

StatusNotifierItem::StatusNotifierItem(QObject *parent) : StatusItem(parent)
{
    static int count = 0;
    m_bus = std::make_unique<Bus>(++count);
    connect(&m_bus->object, &StatusNotifierObject::activateRequested, this, [this](const QPoint &hint) {
        m_lastButton = statusButton(hint);
        emit activated(*m_lastButton);
    });
    connect(&m_bus->object, &StatusNotifierObject::contextMenuRequested, this, &StatusNotifierItem::openMenu);
    connect(&m_bus->menu, &DBusMenu::opened, this, &StatusItem::menuOpened);
    connect(&m_bus->registration, &StatusNotifierRegistration::indicatorServicesChanged, this,
            [this] { m_bus->object.setFileReaders(m_bus->registration.indicatorServices()); });
    connect(&m_bus->registration, &StatusNotifierRegistration::stateChanged, this, &StatusNotifierItem::followState);
    connect(&m_bus->registration, &StatusNotifierRegistration::disconnected, this, &StatusNotifierItem::disconnected);
}

StatusNotifierItem::~StatusNotifierItem() = default;

void StatusNotifierItem::setImage(const StatusImage &image)
{
    m_bus->object.setImage(image);
}

void StatusNotifierItem::setTitle(const QString &title)
{
    m_bus->object.setLabel(title);
}

void StatusNotifierItem::setToolTip(const QString &headline, const QString &text)
{
    m_bus->object.setToolTip(headline, text);
}

void StatusNotifierItem::setMenu(const QList<StatusMenuEntry> &menu)
{
    m_menu = menu;
    m_bus->menu.setEntries(menu);
}

QRect StatusNotifierItem::button() const
{
    return m_lastButton ? *m_lastButton : statusButton(std::nullopt);
}

bool StatusNotifierItem::isShown() const
{
    return state() == StatusNotifierRegistration::State::shown;
}

StatusNotifierRegistration::State StatusNotifierItem::state() const
{
    return m_bus->registration.state();
}

bool StatusNotifierItem::isConnected() const
{
    return m_bus->own.connection().isConnected();
}

void StatusNotifierItem::followState()
{
    m_bus->object.setAnnouncing(isShown());
    m_bus->menu.setAnnouncing(isShown());
    if (!isShown())
        m_lastButton.reset();
    emit stateChanged();
    if (std::exchange(m_wasShown, isShown()) != isShown())
        emit isShownChanged();
}

/// For trays that know no menus: they ask the program to open its own.
void StatusNotifierItem::openMenu(const QPoint &hint)
{
    emit menuOpened();
    if (!m_popup)
        m_popup = std::make_unique<QMenu>();
    fillStatusMenu(*m_popup, m_menu);
    m_popup->popup(statusButton(hint).center());
}

} // namespace korvo
