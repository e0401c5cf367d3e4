#include "Views/LinkText.h"

#include "Views/TextStyle.h"
#include "Views/Theme.h"

#include <QDesktopServices>
#include <QEvent>
#include <QFocusEvent>
#include <QUrl>

namespace korvo {

using namespace Qt::StringLiterals;

LinkText::LinkText(const QString &richText, QWidget *parent) : QLabel(parent), m_richText(richText)
{
    setTextFormat(Qt::RichText);
    setWordWrap(true);
    setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    setFocusPolicy(Qt::TabFocus);
    takeLook();
    connect(this, &QLabel::linkActivated, this, [](const QString &link) {
        const QUrl url(link);
        if (url.scheme() == u"https"_s)
            QDesktopServices::openUrl(url);
    });
}

bool LinkText::event(QEvent *event)
{
    const bool isHandled = QLabel::event(event);
    if (event->type() == QEvent::ApplicationFontChange || event->type() == QEvent::ApplicationPaletteChange
        || event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange)
        takeLook();
    return isHandled;
}

/// Chooses the link at once, which would otherwise take another Tab.
void LinkText::focusInEvent(QFocusEvent *event)
{
    QLabel::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason)
        focusNextPrevChild(event->reason() == Qt::TabFocusReason);
}

/// By the colours around it, since its own are the outcome.
void LinkText::takeLook()
{
    const QFont callout = makeFont(SystemText::callout);
    if (callout != font())
        setFont(callout);
    const auto around = parentWidget() ? parentWidget()->palette() : QPalette();
    const auto ink = theme::secondaryOn(around);
    const auto link = theme::linkOn(around);
    if (palette().color(QPalette::WindowText) != ink)
        setInk(*this, ink);
    if (link == m_linkColor)
        return;
    m_linkColor = link;
    // Rich text takes the colour of links from the program's palette, whatever the widget's own says.
    setText(QString(m_richText).replace(u"<a "_s, u"<a style=\"color: %1\" "_s.arg(link.name())));
}

} // namespace korvo
