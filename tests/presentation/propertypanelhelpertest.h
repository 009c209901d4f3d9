#pragma once

#include <QObject>

// The look of the information card that the platform lends: formats, photos, labels.
class PropertyPanelHelperTest : public QObject
{
    Q_OBJECT
private slots:
    void formats();
    void photo_data();
    void photo();
    void label();
};
