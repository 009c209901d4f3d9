#pragma once

#include "constants.h"
#include "vdplatform_export.h"

#include <QColor>
#include <QImage>
#include <QPointer>
#include <QWidget>

// Texts, colours and pictures that look the same all over the console.
class VDPLATFORM_EXPORT VDGuiGlobals
{
public:
    // The operator's word for a state; a value outside the known ones is named with its number.
    static QString passRequestStateName(vorandel::PassRequestState state);
    // Background colour of an event category: 1 success (green), 2 information (blue),
    // 3 warning (yellow), 4 alarm (red); anything else is invalid.
    static QColor eventCategoryColor(unsigned int category);
    static QColor titleColor();

    // A stored image: JPEG bytes as hexadecimal text. imageFromDB also takes raw image bytes.
    static QImage imageFromDB(const QByteArray& data);
    static QByteArray imageToDB(const QImage& image, int quality = 90);

    // The console's main window: the parent of message boxes.
    static QPointer<QWidget> vdApp;

private:
    VDGuiGlobals() = delete;
};
