#include "Views/Picker.h"

#include "Views/FormSection.h"

#include <QAbstractItemView>
#include <QFontMetrics>
#include <QListView>
#include <QWheelEvent>

#include <utility>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr int widthInCharacters = 30; // The same for all, so that their edges stand in line.

/// What a picker of strings shows. Comes to it as one, so that it never selects out of options that are gone.
struct Choice {
    QStringList options;
    QString value;

    bool operator==(const Choice &) const = default;
};

} // namespace

Picker::Picker(QWidget *parent) : QComboBox(parent)
{
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(1);
    setMinimumHeight(controlHeight(*this));
    setFocusPolicy(Qt::StrongFocus);
    view()->setTextElideMode(Qt::ElideRight);
    view()->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    if (auto *list = qobject_cast<QListView *>(view()))
        list->setUniformItemSizes(true);
}

Picker::Picker(const Binding<QString> &selection, std::function<QStringList()> options, QWidget *parent) :
    Picker(parent)
{
    const auto read = [get = selection.get, options = std::move(options)] { return Choice{options(), get()}; };
    follow(*this, read, [this](const Choice &choice) {
        offer(choice.options);
        setCurrentIndex(findData(choice.value, Qt::UserRole, Qt::MatchExactly | Qt::MatchCaseSensitive));
    });
    connect(this, &QComboBox::activated, this, [this, selection](int index) {
        const auto value = itemData(index).toString();
        if (value != selection.get())
            selection.set(value);
    });
}

Picker::Picker(const Binding<double> &selection, const QList<Entry> &entries, QWidget *parent) : Picker(parent)
{
    for (const auto &entry : entries)
        addItem(entry.text, entry.value);
    follow(*this, selection.get, [this](double value) { setCurrentIndex(findData(value)); });
    connect(this, &QComboBox::activated, this, [this, selection](int index) {
        const auto value = itemData(index).toDouble();
        if (value != selection.get())
            selection.set(value);
    });
}

void Picker::offer(const QStringList &options)
{
    if (count() > 0 && options == m_options)
        return;
    hidePopup();
    m_options = options;
    clear();
    addItem(tr("Select..."), QString());
    for (const auto &option : options) {
        addItem(option, option);
        setItemData(count() - 1, u"<p>"_s + option.toHtmlEscaped() + u"</p>"_s, Qt::ToolTipRole); // It may be cut.
    }
}

QSize Picker::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * widthInCharacters, QComboBox::sizeHint().height()};
}

/// No wider than the picker, however long an entry is.
void Picker::showPopup()
{
    view()->parentWidget()->setMaximumWidth(width());
    QComboBox::showPopup();
}

/// Left to the page: a wheel that scrolls it must not change what happens to come under the pointer.
void Picker::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

} // namespace korvo
