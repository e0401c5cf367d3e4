#include "Platform/Freedesktop/TrayStatusItem.h"

#include "Platform/Freedesktop/StatusNotifierItem.h"
#include "Platform/Freedesktop/XEmbedStatusItem.h"

namespace korvo {

TrayStatusItem::TrayStatusItem(QObject *parent) :
    TrayStatusItem([] { return std::make_unique<XEmbedStatusItem>(); }, parent)
{
}

TrayStatusItem::TrayStatusItem(MakeItem makeFallback, QObject *parent) :
    StatusItem(parent),
    m_makeFallback(std::move(makeFallback)),
    m_notifier(std::make_unique<StatusNotifierItem>())
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, &TrayStatusItem::fallBack);
    m_reconnect.setInterval(reconnectInterval);
    connect(&m_reconnect, &QTimer::timeout, this, &TrayStatusItem::reconnect);
    listenToNotifier();
    followNotifier(); // With no bus there will be no signal.
}

TrayStatusItem::~TrayStatusItem() = default;

void TrayStatusItem::setImage(const StatusImage &image)
{
    m_notifier->setImage(image); // Also the same one, which tells it to look at its bar again.
    if (m_image.key == image.key && m_image.description == image.description)
        return;
    m_image = image;
    if (m_fallback)
        m_fallback->setImage(image);
}

void TrayStatusItem::setTitle(const QString &title)
{
    if (m_title == title)
        return;
    m_title = title;
    m_notifier->setTitle(title);
    if (m_fallback)
        m_fallback->setTitle(title);
}

void TrayStatusItem::setToolTip(const QString &headline, const QString &text)
{
    if (m_headline == headline && m_text == text)
        return;
    m_headline = headline;
    m_text = text;
    m_notifier->setToolTip(headline, text);
    if (m_fallback)
        m_fallback->setToolTip(headline, text);
}

QRect TrayStatusItem::button() const
{
    return m_fallback && !m_notifier->isShown() ? m_fallback->button() : m_notifier->button();
}

void TrayStatusItem::setMenu(const QList<StatusMenuEntry> &menu)
{
    m_menu = menu; // Actions cannot be compared, and may have changed.
    m_notifier->setMenu(menu);
    if (m_fallback)
        m_fallback->setMenu(menu);
}

void TrayStatusItem::listenToNotifier()
{
    connect(m_notifier.get(), &StatusItem::activated, this, &StatusItem::activated);
    connect(m_notifier.get(), &StatusItem::menuOpened, this, &StatusItem::menuOpened);
    connect(m_notifier.get(), &StatusNotifierItem::stateChanged, this, &TrayStatusItem::followNotifier);
    connect(m_notifier.get(), &StatusNotifierItem::disconnected, &m_reconnect, [this] { m_reconnect.start(); });
}

/// A connection that broke stays broken, so the item is made once more on a new one.
void TrayStatusItem::reconnect()
{
    auto notifier = std::make_unique<StatusNotifierItem>();
    if (!notifier->isConnected())
        return; // The timer goes on.
    m_reconnect.stop();
    m_notifier = std::move(notifier);
    m_notifier->setImage(m_image);
    m_notifier->setTitle(m_title);
    m_notifier->setToolTip(m_headline, m_text);
    m_notifier->setMenu(m_menu);
    listenToNotifier();
    followNotifier();
    emit busReturned();
}

void TrayStatusItem::followNotifier()
{
    using State = StatusNotifierRegistration::State;
    switch (m_notifier->state()) {
    case State::shown:
        m_wasShownByNotifier = true;
        m_patience.stop();
        m_fallback.reset();
        break;
    case State::absent:
        if (m_wasShownByNotifier)
            m_patience.start();
        else
            fallBack();
        break;
    case State::asking:
    case State::refused: // Qt's icon would ask the same watcher, and be refused too.
        m_patience.stop();
        break;
    }
    updateShown();
}

void TrayStatusItem::fallBack()
{
    if (m_fallback)
        return;
    m_fallback = m_makeFallback();
    m_fallback->setImage(m_image);
    m_fallback->setTitle(m_title);
    m_fallback->setToolTip(m_headline, m_text);
    m_fallback->setMenu(m_menu);
    connect(m_fallback.get(), &StatusItem::activated, this, &StatusItem::activated);
    connect(m_fallback.get(), &StatusItem::menuOpened, this, &StatusItem::menuOpened);
    connect(m_fallback.get(), &StatusItem::isShownChanged, this, &TrayStatusItem::updateShown);
    updateShown();
}

void TrayStatusItem::updateShown()
{
    const bool isShown = m_notifier->isShown() || (m_fallback && m_fallback->isShown());
    if (std::exchange(m_isShown, isShown) != isShown)
        emit isShownChanged();
}

} // namespace korvo
