#include "Platform/Freedesktop/DBusMenu.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace korvo {

// The interface's structures, under the names that its authors give them.
struct MenuItemLayout { // (ia{sv}av)
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;
};
struct MenuItemProperties { // (ia{sv})
    int id = 0;
    QVariantMap properties;
};
struct MenuItemRemovals { // (ias)
    int id = 0;
    QStringList properties;
};
struct MenuEvent { // (isvu)
    int id = 0;
    QString event;
    QDBusVariant data;
    uint timestamp = 0;
};

QDBusArgument &operator<<(QDBusArgument &argument, const MenuItemLayout &item)
{
    argument.beginStructure();
    argument << item.id << item.properties << item.children;
    argument.endStructure();
    return argument;
}
const QDBusArgument &operator>>(const QDBusArgument &argument, MenuItemLayout &item)
{
    argument.beginStructure();
    argument >> item.id >> item.properties >> item.children;
    argument.endStructure();
    return argument;
}
QDBusArgument &operator<<(QDBusArgument &argument, const MenuItemProperties &item)
{
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.endStructure();
    return argument;
}
const QDBusArgument &operator>>(const QDBusArgument &argument, MenuItemProperties &item)
{
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.endStructure();
    return argument;
}
QDBusArgument &operator<<(QDBusArgument &argument, const MenuItemRemovals &item)
{
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.endStructure();
    return argument;
}
const QDBusArgument &operator>>(const QDBusArgument &argument, MenuItemRemovals &item)
{
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.endStructure();
    return argument;
}
QDBusArgument &operator<<(QDBusArgument &argument, const MenuEvent &event)
{
    argument.beginStructure();
    argument << event.id << event.event << event.data << event.timestamp;
    argument.endStructure();
    return argument;
}
const QDBusArgument &operator>>(const QDBusArgument &argument, MenuEvent &event)
{
    argument.beginStructure();
    argument >> event.id >> event.event >> event.data >> event.timestamp;
    argument.endStructure();
    return argument;
}

namespace {

constexpr auto menuInterface = "com.canonical.dbusmenu"_L1;
constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties"_L1;

constexpr auto introspection = R"xml(
  <interface name="com.canonical.dbusmenu">
    <property name="Version" type="u" access="read"/>
    <property name="TextDirection" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="IconThemePath" type="as" access="read"/>
    <method name="GetLayout">
      <arg type="i" name="parentId" direction="in"/>
      <arg type="i" name="recursionDepth" direction="in"/>
      <arg type="as" name="propertyNames" direction="in"/>
      <arg type="u" name="revision" direction="out"/>
      <arg type="(ia{sv}av)" name="layout" direction="out"/>
    </method>
    <method name="GetGroupProperties">
      <arg type="ai" name="ids" direction="in"/>
      <arg type="as" name="propertyNames" direction="in"/>
      <arg type="a(ia{sv})" name="properties" direction="out"/>
    </method>
    <method name="GetProperty">
      <arg type="i" name="id" direction="in"/>
      <arg type="s" name="name" direction="in"/>
      <arg type="v" name="value" direction="out"/>
    </method>
    <method name="Event">
      <arg type="i" name="id" direction="in"/>
      <arg type="s" name="eventId" direction="in"/>
      <arg type="v" name="data" direction="in"/>
      <arg type="u" name="timestamp" direction="in"/>
    </method>
    <method name="EventGroup">
      <arg type="a(isvu)" name="events" direction="in"/>
      <arg type="ai" name="idErrors" direction="out"/>
    </method>
    <method name="AboutToShow">
      <arg type="i" name="id" direction="in"/>
      <arg type="b" name="needUpdate" direction="out"/>
    </method>
    <method name="AboutToShowGroup">
      <arg type="ai" name="ids" direction="in"/>
      <arg type="ai" name="updatesNeeded" direction="out"/>
      <arg type="ai" name="idErrors" direction="out"/>
    </method>
    <signal name="ItemsPropertiesUpdated">
      <arg type="a(ia{sv})" name="updatedProps"/>
      <arg type="a(ias)" name="removedProps"/>
    </signal>
    <signal name="LayoutUpdated">
      <arg type="u" name="revision"/>
      <arg type="i" name="parent"/>
    </signal>
    <signal name="ItemActivationRequested">
      <arg type="i" name="id"/>
      <arg type="u" name="timestamp"/>
    </signal>
  </interface>
)xml"_L1;

/// The properties of the menu as a whole.
QVariantMap menuProperties()
{
    return {{u"Version"_s, 3U},
            {u"TextDirection"_s, u"ltr"_s},
            {u"Status"_s, u"normal"_s},
            {u"IconThemePath"_s, QStringList()}};
}

/// What a person sees of an entry. Properties at their defaults are left out, as the interface wishes.
QVariantMap propertiesOfEntry(const StatusMenuEntry &entry)
{
    if (entry.label.isEmpty())
        return {{u"type"_s, u"separator"_s}};
    QString label = entry.label;
    label.replace(u'_', "__"_L1); // One alone would mark the letter after it as the key for the entry.
    QVariantMap properties{{u"label"_s, label}};
    if (!entry.isEnabled)
        properties.insert(u"enabled"_s, false);
    return properties;
}

/// Only those of `properties` that `names` names; all if it names none.
QVariantMap selected(const QVariantMap &properties, const QStringList &names)
{
    if (names.isEmpty())
        return properties;
    QVariantMap some;
    for (const QString &name : names) {
        if (properties.contains(name))
            some.insert(name, properties.value(name));
    }
    return some;
}

QDBusMessage badArguments(const QDBusMessage &call, const QString &what)
{
    return call.createErrorReply(QDBusError::InvalidArgs, what);
}

} // namespace

DBusMenu::DBusMenu(QDBusConnection connection, QString path, QObject *parent) :
    QDBusVirtualObject(parent),
    m_connection(std::move(connection)),
    m_path(std::move(path))
{
    qDBusRegisterMetaType<MenuItemLayout>();
    qDBusRegisterMetaType<MenuItemProperties>();
    qDBusRegisterMetaType<QList<MenuItemProperties>>();
    qDBusRegisterMetaType<MenuItemRemovals>();
    qDBusRegisterMetaType<QList<MenuItemRemovals>>();
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<QList<MenuEvent>>();
    m_connection.registerVirtualObject(m_path, this);
}

DBusMenu::~DBusMenu()
{
    m_connection.unregisterObject(m_path);
}

void DBusMenu::setEntries(const QList<StatusMenuEntry> &entries)
{
    const QList<StatusMenuEntry> former = std::exchange(m_entries, entries);
    bool isSameLayout = former.size() == entries.size();
    QList<MenuItemProperties> updates;
    QList<MenuItemRemovals> removals;
    for (qsizetype i = 0; isSameLayout && i < entries.size(); ++i) {
        const StatusMenuEntry &was = former[i];
        const StatusMenuEntry &is = entries[i];
        if (was.label == is.label && was.isEnabled == is.isEnabled)
            continue;
        isSameLayout = was.label.isEmpty() == is.label.isEmpty();
        const int id = int(i) + 1;
        updates.append({id, propertiesOfEntry(is)});
        if (!was.isEnabled && is.isEnabled)
            removals.append({id, {u"enabled"_s}}); // Back to the default.
    }
    if (isSameLayout && updates.isEmpty())
        return;

    ++m_revision;
    if (!isSameLayout) {
        announceLayout();
    } else if (m_isAnnouncing && m_toldRevision) {
        auto signal = QDBusMessage::createSignal(m_path, menuInterface, u"ItemsPropertiesUpdated"_s);
        signal << QVariant::fromValue(updates) << QVariant::fromValue(removals);
        m_connection.send(signal);
        m_toldRevision = m_revision;
    }
}

void DBusMenu::setAnnouncing(bool isAnnouncing)
{
    m_isAnnouncing = isAnnouncing;
    announceLayout();
}

void DBusMenu::announceLayout()
{
    if (!m_isAnnouncing || !m_toldRevision || m_toldRevision == m_revision)
        return;
    auto signal = QDBusMessage::createSignal(m_path, menuInterface, u"LayoutUpdated"_s);
    signal << m_revision << 0;
    m_connection.send(signal);
    m_toldRevision = m_revision;
}

QString DBusMenu::introspect(const QString &) const
{
    return introspection;
}

bool DBusMenu::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    if (message.type() != QDBusMessage::MethodCallMessage || message.path() != m_path)
        return false;
    const QString interface = message.interface();
    QDBusMessage reply;
    if (interface == propertiesInterface)
        reply = property(message);
    else if (interface == menuInterface || interface.isEmpty())
        reply = answer(message);
    else
        return false;
    if (reply.type() == QDBusMessage::InvalidMessage)
        return false;
    if (message.isReplyRequired())
        m_connection.send(reply);
    return true;
}

QDBusMessage DBusMenu::property(const QDBusMessage &call) const
{
    const QVariantList arguments = call.arguments();
    if (call.member() == "GetAll"_L1 && call.signature() == "s"_L1)
        return call.createReply(menuProperties());
    if (call.member() == "Get"_L1 && call.signature() == "ss"_L1) {
        const QString name = arguments[1].toString();
        const QVariant value = menuProperties().value(name);
        if (value.isValid())
            return call.createReply(QVariant::fromValue(QDBusVariant(value)));
        return call.createErrorReply(QDBusError::UnknownProperty, name);
    }
    if (call.member() == "Set"_L1)
        return call.createErrorReply(QDBusError::PropertyReadOnly, u"The menu is read only"_s);
    return {};
}

QDBusMessage DBusMenu::answer(const QDBusMessage &call)
{
    const QString member = call.member();
    const QString signature = call.signature();
    const QVariantList arguments = call.arguments();

    if (member == "GetLayout"_L1 && signature == "iias"_L1) {
        const int parent = arguments[0].toInt();
        if (!isKnown(parent))
            return badArguments(call, u"No such menu entry"_s);
        const QStringList names = arguments[2].toStringList();
        MenuItemLayout layout{parent, selected(propertiesOf(parent), names), {}};
        if (parent == 0 && arguments[1].toInt() != 0) {
            for (int id = 1; id <= m_entries.size(); ++id) {
                const MenuItemLayout entry{id, selected(propertiesOf(id), names), {}};
                layout.children.append(QDBusVariant(QVariant::fromValue(entry)));
            }
        }
        m_toldRevision = m_revision;
        return call.createReply({m_revision, QVariant::fromValue(layout)});
    }
    if (member == "GetGroupProperties"_L1 && signature == "aias"_L1) {
        auto ids = qdbus_cast<QList<int>>(arguments[0]);
        const QStringList names = arguments[1].toStringList();
        if (ids.isEmpty()) { // All of them.
            for (int id = 0; id <= m_entries.size(); ++id)
                ids.append(id);
        }
        QList<MenuItemProperties> properties;
        for (const int id : std::as_const(ids)) {
            if (isKnown(id))
                properties.append({id, selected(propertiesOf(id), names)});
        }
        return call.createReply(QVariant::fromValue(properties));
    }
    if (member == "GetProperty"_L1 && signature == "is"_L1) {
        const QVariant value = propertiesOf(arguments[0].toInt()).value(arguments[1].toString());
        if (!value.isValid())
            return badArguments(call, u"No such menu entry or property"_s);
        return call.createReply(QVariant::fromValue(QDBusVariant(value)));
    }
    if (member == "Event"_L1 && signature == "isvu"_L1) {
        if (!receiveEvent(arguments[0].toInt(), arguments[1].toString()))
            return badArguments(call, u"No such menu entry"_s);
        return call.createReply();
    }
    if (member == "EventGroup"_L1 && signature == "a(isvu)"_L1) {
        QList<int> unknown;
        const auto events = qdbus_cast<QList<MenuEvent>>(arguments[0]);
        for (const MenuEvent &event : events) {
            if (!receiveEvent(event.id, event.event))
                unknown.append(event.id);
        }
        return call.createReply(QVariant::fromValue(unknown));
    }
    if (member == "AboutToShow"_L1 && signature == "i"_L1) {
        if (!isKnown(arguments[0].toInt()))
            return badArguments(call, u"No such menu entry"_s);
        emit opened();
        return call.createReply(false); // Every change has been told already.
    }
    if (member == "AboutToShowGroup"_L1 && signature == "ai"_L1) {
        auto ids = qdbus_cast<QList<int>>(arguments[0]);
        emit opened();
        ids.removeIf([this](int id) { return isKnown(id); });
        return call.createReply({QVariant::fromValue(QList<int>()), QVariant::fromValue(ids)});
    }
    return {};
}

/// False if there is no such entry. The action runs later: it may open windows or end the program, and the tray that
/// tells of the click should have its answer before.
bool DBusMenu::receiveEvent(int id, const QString &event)
{
    if (!isKnown(id))
        return false;
    if (id == 0 && event == "opened"_L1)
        emit opened();
    if (id > 0 && event == "clicked"_L1) {
        const StatusMenuEntry &entry = m_entries[id - 1];
        if (entry.isEnabled && entry.action)
            QMetaObject::invokeMethod(this, entry.action, Qt::QueuedConnection);
    }
    return true;
}

QVariantMap DBusMenu::propertiesOf(int id) const
{
    if (id == 0)
        return {{u"children-display"_s, u"submenu"_s}};
    return isKnown(id) ? propertiesOfEntry(m_entries[id - 1]) : QVariantMap();
}

} // namespace korvo

Q_DECLARE_METATYPE(korvo::MenuItemLayout)
