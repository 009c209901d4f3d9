#pragma once

#include <QObject>

class ConsoleOptionsTest : public QObject
{
    Q_OBJECT
private slots:
    void defaults();
    void goodValues_data();
    void goodValues();
    void badValues_data();
    void badValues();
    void helpAndVersion_data();
    void helpAndVersion();
};
