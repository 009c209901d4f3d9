#pragma once

#include "vdplatform_export.h"

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPixmap>
#include <QTextCharFormat>

// The look of the console's information cards.
class VDPLATFORM_EXPORT PropertyPanelHelper
{
public:
    // Section titles: clearly heavier than the content.
    static QTextCharFormat titleformat();
    // Section content.
    static QTextCharFormat textformat();
    // The object's name beside its photo.
    static QTextCharFormat nameformat();

    // The photo of an object of `type` from stored image data (see VDGuiGlobals::imageFromDB),
    // scaled to the card; a placeholder for the type when `data` holds no picture.
    static QPixmap pixmapByPhotoType(const QString& type, const QByteArray& data, bool scaled,
                                     const QString& fallbackPath);
    // A label: an icon and a text on a rounded coloured ground, with the given paddings.
    static QPixmap createColoredText(const QIcon& icon, const QString& text, const QColor& textColor,
                                     const QColor& backColor, const QFont& font, int horizontalPadding,
                                     int verticalPadding);

private:
    PropertyPanelHelper() = delete;
};
