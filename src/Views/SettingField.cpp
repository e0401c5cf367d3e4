#include "Views/SettingField.h"

#include "Views/FormSection.h"

#include <QSignalBlocker>

#include <limits>

namespace korvo {

SettingField::SettingField(const Binding<QString> &text, QWidget *parent) : QLineEdit(parent)
{
    setMinimumHeight(controlHeight(*this));
    setMaxLength(std::numeric_limits<int>::max()); // What is there already is never cut.
    follow(*this, text.get, [this](const QString &value) {
        if (value == this->text())
            return; // Also where it was typed here: the cursor stays.
        const QSignalBlocker isOurs(this);
        setText(value);
        setCursorPosition(0);
    });
    connect(this, &QLineEdit::textChanged, this, [text](const QString &value) {
        if (value != text.get())
            text.set(value);
    });
}

} // namespace korvo
