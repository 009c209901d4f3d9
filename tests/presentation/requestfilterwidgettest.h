#pragma once

#include <QObject>

// The state buttons and the list of state values they send to the table's filter.
class RequestFilterWidgetTest : public QObject
{
    Q_OBJECT
private slots:
    void values_data();
    void values();
};
