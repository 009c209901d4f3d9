#pragma once

#include <QLabel>
#include <QPalette>

#include <initializer_list>

namespace requestview {

// The labels that mark what the operator must fill in: red, and grey while disabled.
inline void markRequired(std::initializer_list<QLabel*> labels)
{
    for (QLabel* label : labels) {
        QPalette palette = label->palette();
        palette.setColor(QPalette::Active, QPalette::WindowText, QColor(255, 0, 0));
        palette.setColor(QPalette::Inactive, QPalette::WindowText, QColor(255, 0, 0));
        palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(120, 120, 120));
        label->setPalette(palette);
    }
}

}  // namespace requestview
