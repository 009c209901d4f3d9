#pragma once

#include <QObject>

// The information card of one request: its sections, and what it says of what is unknown.
class RequestInfoPanelTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void card_data();
    void card();
};
