#pragma once

#include <QObject>

class IconThemeTest : public QObject
{
    Q_OBJECT
private slots:
    void isCurrent();
    void drawsEveryIconOfThePlugin_data();
    void drawsEveryIconOfThePlugin();
};
