#pragma once

#include "Views/Binding.h"

#include <QLineEdit>

namespace korvo {

/// A field of one line that writes its text, as it was typed, at every keystroke.
class SettingField : public QLineEdit {
    Q_OBJECT
public:
    explicit SettingField(const Binding<QString> &text, QWidget *parent = nullptr);
};

} // namespace korvo
