#pragma once

#include <QObject>

// The table's cells as the view, the proxy and the card read them.
class RequestModelTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void state_data();
    void state();
    void stateSetByHand();
    void confirmer_data();
    void confirmer();
    void creator_data();
    void creator();
    void accessGroups_data();
    void accessGroups();
    void worker_data();
    void worker();
    void convoy_data();
    void convoy();
    void storeOverRowCopy();
    void dates_data();
    void dates();
    void sortsByDate();
};
