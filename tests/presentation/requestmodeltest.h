#pragma once

#include <QObject>

// The table's cells as the view, the proxy and the card read them, and the state buttons that
// filter them.
class RequestModelTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void state_data();
    void state();
    void cellsFromTheStore_data();
    void cellsFromTheStore();
    void worker_data();
    void worker();
    void dates_data();
    void dates();
    void stateFilter_data();
    void stateFilter();
};
