#pragma once

#include <QColor>

// Colours of the console's style that plug-ins share.
namespace vdstyle {
inline const QColor vdMainColor = QColor(QStringLiteral("#00C4B3"));
inline const QColor vdModuleBtnNormalColor = QColor(QStringLiteral("#828282"));
inline const QColor vdOrange = QColor(QStringLiteral("#F38300"));
inline const QColor vdDisabled = QColor(QStringLiteral("#E5E5E5"));
}  // namespace vdstyle
